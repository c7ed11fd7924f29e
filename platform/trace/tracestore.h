#pragma once

#include "tracefile.h"

#include "canrecords.h"

#include <QStringList>
#include <QVector>

#include <condition_variable>
#include <deque>
#include <limits>
#include <map>
#include <mutex>
#include <optional>

/// The frames and notes behind DatachunkHandler, which adds the words for the user. Safe from any thread.
///
/// A trace is a row of chunks of equal size. The newest ones, and always the one that grows, are in memory; the others
/// stand in the file, one behind the other, so that a frame's place follows from its index. A full chunk never
/// changes, so it moves to the file without the lock being held, and no reader waits for the disk on account of that.
class TraceStore
{
public:
    static constexpr unsigned chunkFrames = 4096;
    /// The most frames of one readRange().
    static constexpr unsigned rangeFrames = 1U << 24;

    struct Limits
    {
        unsigned framesInMemory = 100000;
        unsigned frames = std::numeric_limits<unsigned>::max();
        std::vector<std::string> directories = TraceFile::usualDirectories();
    };

    /// Why no frame is taken any more.
    struct Failure
    {
        enum Kind { NoFile, WriteFailed, NoMemory, CountExhausted };
        Kind kind;
        int error = 0;         ///< the system's number, where it gave one
        std::string directory; ///< of the file, where there is one
    };

    /// The notes of one frame among several.
    struct PlacedNotes
    {
        unsigned place;
        QStringList notes;
    };

    /// What a trace had from some frame on.
    struct Rest
    {
        QVector<CAN::CanRxMessage> frames;
        std::vector<PlacedNotes> notes;
        QStringList notesBefore; ///< those of the frame before
    };

    explicit TraceStore(Limits limits);

    /// A failure is told once, with the first frame that is lost; that frame and all later ones only count as lost.
    std::optional<Failure> append(const CAN::CanRxMessage &message);
    /// Many frames at little more than the cost of copying them. They stay together unless a chunk moves to the file
    /// in the middle and somebody else appends at that moment.
    /// @param notes with the place of their frame among these, in rising order
    std::optional<Failure> append(const CAN::CanRxMessage *messages, unsigned count,
                                  const std::vector<PlacedNotes> &notes = {});
    void clear();
    /// clear(), and hands out the frames from `first` on: those that came since somebody has copied the others. False,
    /// with nothing cleared, if some of them are not in memory any more.
    bool clear(unsigned first, Rest &rest);

    unsigned count() const;
    /// Why no more frames are taken, if so.
    std::optional<Failure> failure() const;
    /// A number that changes with clear(): indexes from before mean other frames after.
    quint64 generation() const;
    quint64 lost() const;
    /// How many of the frames are in the file and no longer in memory.
    unsigned framesInFile() const;

    std::optional<CAN::CanRxMessage> last() const;
    /// False past the end, or if the file does not give the frame back.
    bool read(CAN::CanRxMessage &message, unsigned index) const;
    /// Ends early at the end of the trace and after rangeFrames. None at all if the file does not give them back, or if
    /// there is no memory for them.
    QVector<CAN::CanRxMessage> readRange(unsigned first, unsigned count) const;

    void addNoteToNext(const QString &note);
    void addNoteToLast(const QString &note);
    QStringList notes(unsigned index) const;
    /// Those of the `count` frames from `first` on, with their places from `first`.
    std::vector<PlacedNotes> notesOfRange(unsigned first, unsigned count) const;

private:
    using Lock = std::unique_lock<std::mutex>;
    template <unsigned frames>
    struct Records;
    using Chunk = Records<chunkFrames>;
    /// What is read back at once for a single old frame: enough for a screenful, little enough for a jump.
    static constexpr unsigned blockFrames = 512;
    using Block = Records<blockFrames>;
    struct CachedBlock
    {
        unsigned number;
        std::shared_ptr<const Block> block;
    };

    QStringList notesOf(unsigned index) const;
    std::vector<PlacedNotes> notesFrom(unsigned first, unsigned count) const;
    void copyIn(const CAN::CanRxMessage *messages, unsigned count);
    bool makeRoom(Lock &lock);
    bool moveOldestToFile(Lock &lock);
    bool addChunk();
    std::optional<Failure> writeChunk(const Chunk &chunk, unsigned number, std::shared_ptr<TraceFile> &file) const;
    /// What clear() gives back, to be freed when others can go on.
    struct Garbage;
    void forgetAll(Garbage &garbage);
    Chunk &chunkOf(unsigned index) const;
    std::shared_ptr<const Block> cachedBlock(unsigned number) const;
    void keepBlock(unsigned number, std::shared_ptr<const Block> block) const;

    const Limits m_limits;
    const std::size_t m_chunksInMemory;

    mutable std::mutex m_mutex;
    unsigned m_count = 0;
    /// Frames that the chunks so far can hold.
    unsigned m_capacity = 0;
    /// Those in memory, oldest first.
    std::deque<std::shared_ptr<Chunk>> m_chunks;
    unsigned m_chunksInFile = 0;
    std::shared_ptr<TraceFile> m_file;
    /// A chunk is on its way to the file.
    bool m_moving = false;
    std::condition_variable m_moved;
    /// Which trace it is: clear() starts a new one.
    quint64 m_generation = 0;
    std::optional<Failure> m_failure;
    bool m_failureTold = false;
    quint64 m_lost = 0;
    QStringList m_nextNotes;
    std::map<unsigned, QStringList> m_notes;
    /// Latest used first.
    mutable std::deque<CachedBlock> m_cache;

    Q_DISABLE_COPY(TraceStore)
};
