#pragma once

#include "canrecords.h"

#include <QStringList>
#include <QVector>

#include <memory>

class DatachunkHandlerPrivate;

/// The store of a trace. Frames are kept in chunks: the newest in memory, older ones in an unlinked temporary file, so
/// that memory stays bounded however long the trace grows. Appending takes constant time.
///
/// All functions are safe from any thread. A frame's index never changes while the trace lives. Notes stay in memory.
///
/// The temporary file lies in the directory that the environment variable TMPDIR names, otherwise in /var/tmp or /tmp.
/// If it cannot be made or cannot grow, the trace keeps what it has, and every frame that comes later is lost, even if
/// there is room again: a trace has no gaps. clear() begins a new one, which tries again.
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

    /// Forgets all frames, notes and losses, and gives the disk space back.
    void clear();

public slots:
    void appendCanMessage(CAN::CanRxMessage message);

signals:
    /// The first time in a trace that a frame could not be stored. From the appending thread.
    /// @param reason what happened and what to do, for the user
    void storageFailed(const QString &reason);

private:
    std::unique_ptr<DatachunkHandlerPrivate> d;
};
