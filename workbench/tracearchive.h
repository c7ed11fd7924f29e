#pragma once

#include <QObject>
#include <QThread>

class DatachunkHandler;

/// Reads the trace from files and writes it to them, without anybody waiting for the disk.
///
/// One thing at a time: a second call while one is under way does nothing. Recording goes on beside all.
class TraceArchive : public QObject
{
    Q_OBJECT

public:
    /// @param trace must outlive this object
    explicit TraceArchive(DatachunkHandler *trace, QObject *parent = nullptr);
    /// Cancels a load, and waits for a file that is being written.
    ~TraceArchive() override;

    /// Puts a file in the place of the trace.
    void open(const QString &fileName);
    /// Ends a load that is under way; what came so far stays.
    void cancel();
    void save(const QString &fileName);
    bool isBusy() const { return m_busy; }

    /// Writes all frames from now on to a file, too.
    void startRecording(const QString &fileName);
    void stopRecording();
    bool isRecording() const { return !m_recordedFile.isEmpty(); }
    /// Empty while nothing is recorded.
    QString recordedFile() const { return m_recordedFile; }

    /// Where such files stand unless the user says otherwise: in the documents.
    static QString usualDirectory();

signals:
    /// A file is being read or written now, or no longer.
    void busyChanged(bool busy);
    /// How much of a file is read. A file that is written does not tell.
    /// @param percent 0 to 100
    void progressed(double percent);
    /// The frames of the trace are others now.
    void traceReplaced();
    void recordingChanged();
    /// In words for the user: what is done, or what went wrong and what to do.
    void remark(const QString &text);

private:
    void setBusy(bool busy);
    template <typename Work, typename Done>
    void runAside(Work work, Done done);

    DatachunkHandler *m_trace;
    QThread m_thread;
    QObject *m_worker; ///< lives on the thread
    bool m_busy = false;
    QString m_recordedFile;
};
