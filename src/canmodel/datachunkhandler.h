#pragma once

#include "canrecords.h"

#include <QStringList>
#include <QVector>

#include <memory>

class DatachunkHandlerPrivate;

/// What belongs to the trace store and to those that fill it.
struct KESTRUNE_PLATFORM_EXPORT DatachunkHelper
{
    Q_GADGET

public:
    /// Where the frames of a trace were imported from.
    enum ImportFileType {
        NoFile = 0,
        TraceFile = 1, ///< by DatachunkHandler::loadQrmFile()
    };
    Q_ENUM(ImportFileType)
};

/// The store of a trace. Frames are kept in chunks: the newest in memory, older ones in an unlinked temporary file, so
/// that memory stays bounded however long the trace grows. Appending takes constant time.
///
/// All functions are safe from any thread. A frame's index never changes while the trace lives. Notes stay in memory.
///
/// The temporary file lies in the directory that the environment variable TMPDIR names, otherwise in /var/tmp or /tmp.
/// If it cannot be made or cannot grow, the trace keeps what it has, and every frame that comes later is lost, even if
/// there is room again: a trace has no gaps. clear() begins a new one, which tries again.
///
/// Trace files, by custom named .qrm, are pcapng captures of SocketCAN frames, so that network analysers open them.
/// Stamps, flags and notes come back as they were, with these exceptions: stamps are normalised to microseconds between
/// 0 and 999999, identifiers keep 29 bits, at most 64 bytes of data count, a frame with more than 8 of them is a CAN FD
/// frame, and of a note 65535 bytes in UTF-8 are kept.
class KESTRUNE_PLATFORM_EXPORT DatachunkHandler : public QObject
{
    Q_OBJECT

public:
    /// @param framesInMemory how many of the newest frames stay in memory at least, 84 bytes each; up to 8191 more do,
    ///        since frames go to the file by the chunk
    explicit DatachunkHandler(QObject *parent = nullptr, unsigned int framesInMemory = 100000);
    ~DatachunkHandler() override;

    /// A note that is attached to the next frame. Several notes keep their order.
    void addMessageNoteToNextMessage(QString note);
    /// A note that is attached to the last frame; to the next one while there is none.
    void addMessageNoteToLastMessage(QString note);
    /// The notes of one frame.
    QStringList messageNotes(unsigned int index) const;

    unsigned int getMessageCount() const;
    /// A copy of the last frame; the default record while there is none.
    CAN::CanRxMessage getLastMessage() const;
    /// False past the end, and if the disk does not give the frame back; `message` is then as before.
    bool getMessageAtIndex(CAN::CanRxMessage &message, unsigned int index) const;
    /// Up to `count` frames from `first` on, in one go; fewer at the end of the trace, and 16777216 at most. None if the
    /// disk does not give them back.
    QVector<CAN::CanRxMessage> getMessages(unsigned int first, unsigned int count) const;

    /// Frames that could not be stored, since the disk is full or the trace has 4294967295 frames.
    quint64 lostMessageCount() const;

    /// Forgets all frames, notes and losses, and gives the disk space back. A recording that runs takes the frames first
    /// and goes on with those that follow.
    void clear();

    /// Replaces the trace by the frames and notes of a file: pcapng, or pcap with micro- or nanoseconds, in either byte
    /// order, of the link type for SocketCAN. Other packets are left out. Of a file that is cut off or damaged, all that
    /// stands before that place is loaded.
    ///
    /// The memory that it takes does not depend on the file, but for 64 MiB of notes at most. It takes its time: a GUI
    /// calls it from a thread of its own. Frames that are appended meanwhile land among the loaded ones.
    /// @return false if the file is refused, when the trace stays as it was; if the load was cancelled, or reading or
    ///         storing failed, when the trace has what was loaded; and at once while another load runs. importError()
    ///         says why.
    bool loadQrmFile(QString fileName);
    /// Ends a load that runs, soon. From any thread, also from a slot of sigQRMLoadingProgress().
    void cancelImport();
    /// Closes an import, as each load is to be: isImporting() ends and importFinished() goes out.
    /// @param text replaces importError() or, after a success, importRemark(), unless it is empty
    /// @param discard forgets the frames, for whoever has no use for half a trace
    void setImportFinished(bool success, DatachunkHelper::ImportFileType type, QString text, bool discard);
    /// From the begin of a load until setImportFinished().
    bool isImporting() const;
    /// Of the last import that was closed with success, until clear() or the next load.
    DatachunkHelper::ImportFileType importedFileType() const;
    /// Why the last import failed, and what to do, for the user; empty if it did not.
    QString importError() const;
    /// What the last import left out, for the user; empty if nothing.
    QString importRemark() const;

    /// Writes the frames that are there now, and their notes, into a trace file. One of that name is replaced at the end,
    /// and only if all went well.
    /// @param error why it failed, and what to do, for the user
    bool saveQrmFile(QString fileName, QString *error = nullptr) const;

    /// Writes all frames from the next one on into a trace file, while they come: twice a second or more often. After a
    /// crash, or on a full disk, the file has all whole frames up to that time. Who appends does not wait for it.
    /// A file of that name is overwritten at once. Another recording ends; while a file is loaded, none begins.
    /// Neither this nor stopRecording() is for a slot that is directly connected to recordingFailed().
    /// @param error why it failed, and what to do, for the user
    bool startRecording(QString fileName, QString *error = nullptr);
    /// Returns when all frames that were appended before are in the file.
    void stopRecording();
    bool isRecording() const;

public slots:
    void appendCanMessage(CAN::CanRxMessage message);

signals:
    /// The first time in a trace that a frame could not be stored. From the appending thread.
    /// @param reason what happened and what to do, for the user
    void storageFailed(const QString &reason);

    /// How far a load is, at most ten times a second, and at its begin and its end. From the loading thread.
    /// @param percent 0 to 100
    void sigQRMLoadingProgress(double percent);
    /// An import was closed.
    /// @param text importError() or importRemark()
    void importFinished(bool success, DatachunkHelper::ImportFileType type, const QString &text);

    /// The recording has ended by itself, since its file could not be written; what is in the file, is good. From the
    /// recording thread.
    /// @param reason what happened and what to do, for the user
    void recordingFailed(const QString &reason);

private:
    std::unique_ptr<DatachunkHandlerPrivate> d;
};
