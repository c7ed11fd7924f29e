#include "tracestore.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<CAN::CanRxMessage>, "frames go to the file and back as bytes");

namespace {
constexpr std::size_t recordSize = sizeof(CAN::CanRxMessage);
constexpr std::size_t blocksInCache = 8;

std::size_t chunksToHold(unsigned frames)
{
    // The chunk that grows comes on top, so that the promised number is there even when it has just begun.
    return frames / TraceStore::chunkFrames + (frames % TraceStore::chunkFrames != 0 ? 1 : 0) + 1;
}
} // namespace

/// Room for frames, as bytes: a frame's place costs nothing before the frame is there.
template <unsigned frames>
struct TraceStore::Records
{
    static constexpr std::size_t size = frames * recordSize;

    Records() {} // NOLINT: "= default" would let make_shared clear the bytes

    unsigned char *at(unsigned place) { return bytes + place * recordSize; }
    const unsigned char *at(unsigned place) const { return bytes + place * recordSize; }

    alignas(CAN::CanRxMessage) unsigned char bytes[size];
};

TraceStore::TraceStore(Limits limits)
    : m_limits(std::move(limits))
    , m_chunksInMemory(chunksToHold(m_limits.framesInMemory))
{
}

struct TraceStore::Garbage
{
    std::deque<std::shared_ptr<Chunk>> chunks;
    std::deque<CachedBlock> cache;
    std::map<unsigned, QStringList> notes;
    std::shared_ptr<TraceFile> file;
};

std::optional<TraceStore::Failure> TraceStore::append(const CAN::CanRxMessage &message)
{
    return append(&message, 1);
}

std::optional<TraceStore::Failure> TraceStore::append(const CAN::CanRxMessage *messages, unsigned count,
                                                      const std::vector<PlacedNotes> &notes)
{
    Lock lock(m_mutex);
    auto nextNotes = notes.begin();
    unsigned done = 0;
    while (done < count) {
        if (m_count == m_capacity) {
            if (makeRoom(lock))
                continue;
            m_lost += count - done;
            if (m_failureTold)
                return std::nullopt;
            m_failureTold = true;
            return m_failure;
        }
        const unsigned taken = std::min({count - done, m_capacity - m_count, chunkFrames - m_count % chunkFrames});
        for (; nextNotes != notes.end() && nextNotes->place < done + taken; ++nextNotes)
            m_notes[m_count + (nextNotes->place - done)] = nextNotes->notes;
        copyIn(messages + done, taken);
        done += taken;
    }
    return std::nullopt;
}

void TraceStore::clear()
{
    Garbage garbage;
    const std::lock_guard lock(m_mutex);
    forgetAll(garbage);
}

bool TraceStore::clear(unsigned first, Rest &rest)
{
    Garbage garbage;
    const std::lock_guard lock(m_mutex);
    if (first < m_count && first / chunkFrames < m_chunksInFile)
        return false;
    for (unsigned i = first; i < m_count; ++i) {
        rest.frames.append(CAN::CanRxMessage());
        std::memcpy(&rest.frames.last(), chunkOf(i).at(i % chunkFrames), recordSize);
    }
    rest.notes = notesFrom(first, m_count - std::min(first, m_count));
    if (first > 0)
        rest.notesBefore = notesOf(first - 1);
    forgetAll(garbage);
    return true;
}

unsigned TraceStore::count() const
{
    const std::lock_guard lock(m_mutex);
    return m_count;
}

std::optional<TraceStore::Failure> TraceStore::failure() const
{
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

quint64 TraceStore::generation() const
{
    const std::lock_guard lock(m_mutex);
    return m_generation;
}

quint64 TraceStore::lost() const
{
    const std::lock_guard lock(m_mutex);
    return m_lost;
}

unsigned TraceStore::framesInFile() const
{
    const std::lock_guard lock(m_mutex);
    return m_chunksInFile * chunkFrames;
}

std::optional<CAN::CanRxMessage> TraceStore::last() const
{
    const std::lock_guard lock(m_mutex);
    if (m_count == 0)
        return std::nullopt;
    // The newest chunk is always in memory.
    CAN::CanRxMessage message;
    std::memcpy(&message, chunkOf(m_count - 1).at((m_count - 1) % chunkFrames), recordSize);
    return message;
}

bool TraceStore::read(CAN::CanRxMessage &message, unsigned index) const
{
    Lock lock(m_mutex);
    if (index >= m_count)
        return false;
    if (index / chunkFrames >= m_chunksInFile) {
        std::memcpy(&message, chunkOf(index).at(index % chunkFrames), recordSize);
        return true;
    }
    const unsigned number = index / blockFrames;
    std::shared_ptr<const Block> block = cachedBlock(number);
    if (!block) {
        // Holding the file makes this the frame of the trace that was asked, even if that is cleared right now.
        const std::shared_ptr<TraceFile> file = m_file;
        lock.unlock();
        auto fresh = std::make_shared<Block>();
        if (file->read(fresh->bytes, Block::size, quint64(number) * Block::size) != 0)
            return false;
        block = fresh;
        lock.lock();
        if (file == m_file)
            keepBlock(number, block);
    }
    std::memcpy(&message, block->at(index % blockFrames), recordSize);
    return true;
}

QVector<CAN::CanRxMessage> TraceStore::readRange(unsigned first, unsigned count) const
{
    std::shared_ptr<TraceFile> file;
    std::vector<std::shared_ptr<const Chunk>> chunks;
    unsigned end = 0;
    unsigned inFile = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (first >= m_count || count == 0)
            return {};
        end = first + std::min({count, m_count - first, rangeFrames});
        inFile = m_chunksInFile * chunkFrames;
        file = m_file;
        if (end > inFile) {
            const auto from = m_chunks.begin() + (std::max(first, inFile) / chunkFrames - m_chunksInFile);
            chunks.assign(from, m_chunks.begin() + ((end - 1) / chunkFrames - m_chunksInFile + 1));
        }
    }
    // Frames that were there do not change, so the copying needs no lock.
    QVector<CAN::CanRxMessage> frames;
    try {
        frames.resize(static_cast<int>(end - first));
    } catch (const std::bad_alloc &) {
        return {};
    }
    auto *to = reinterpret_cast<unsigned char *>(frames.data());
    unsigned next = first;
    if (next < inFile) {
        const std::size_t size = (std::min(end, inFile) - next) * recordSize;
        if (file->read(to, size, next * quint64(recordSize)) != 0)
            return {};
        to += size;
        next = std::min(end, inFile);
    }
    for (const std::shared_ptr<const Chunk> &chunk : chunks) {
        const unsigned place = next % chunkFrames;
        const unsigned taken = std::min(end - next, chunkFrames - place);
        std::memcpy(to, chunk->at(place), taken * recordSize);
        to += taken * recordSize;
        next += taken;
    }
    return frames;
}

void TraceStore::addNoteToNext(const QString &note)
{
    const std::lock_guard lock(m_mutex);
    m_nextNotes.append(note);
}

void TraceStore::addNoteToLast(const QString &note)
{
    const std::lock_guard lock(m_mutex);
    (m_count == 0 ? m_nextNotes : m_notes[m_count - 1]).append(note);
}

QStringList TraceStore::notes(unsigned index) const
{
    const std::lock_guard lock(m_mutex);
    return notesOf(index);
}

std::vector<TraceStore::PlacedNotes> TraceStore::notesOfRange(unsigned first, unsigned count) const
{
    const std::lock_guard lock(m_mutex);
    return notesFrom(first, count);
}

QStringList TraceStore::notesOf(unsigned index) const
{
    const auto found = m_notes.find(index);
    return found == m_notes.end() ? QStringList() : found->second;
}

std::vector<TraceStore::PlacedNotes> TraceStore::notesFrom(unsigned first, unsigned count) const
{
    std::vector<PlacedNotes> found;
    for (auto notes = m_notes.lower_bound(first); notes != m_notes.end() && notes->first - first < count; ++notes)
        found.push_back({notes->first - first, notes->second});
    return found;
}

/// For as many as fit into the chunk that grows.
void TraceStore::copyIn(const CAN::CanRxMessage *messages, unsigned count)
{
    if (!m_nextNotes.isEmpty()) {
        QStringList &notes = m_notes[m_count];
        notes = std::exchange(m_nextNotes, {}) + notes;
    }
    std::memcpy(chunkOf(m_count).at(m_count % chunkFrames), messages, count * recordSize);
    m_count += count;
}

/// True if it is worth to look again, false if there is no room.
bool TraceStore::makeRoom(Lock &lock)
{
    if (m_failure)
        return false;
    if (m_count == m_limits.frames) {
        m_failure = Failure{Failure::CountExhausted, 0, {}};
        return false;
    }
    if (m_chunks.size() < m_chunksInMemory)
        return addChunk();
    if (!m_moving)
        return moveOldestToFile(lock);
    m_moved.wait(lock);
    return true;
}

bool TraceStore::moveOldestToFile(Lock &lock)
{
    const std::shared_ptr<Chunk> chunk = m_chunks.front();
    const unsigned number = m_chunksInFile;
    const quint64 generation = m_generation;
    std::shared_ptr<TraceFile> file = m_file;
    m_moving = true;
    lock.unlock();
    const std::optional<Failure> failure = writeChunk(*chunk, number, file);
    lock.lock();
    m_moving = false;
    m_moved.notify_all();
    if (generation != m_generation)
        return true;
    m_failure = failure;
    if (failure)
        return false;
    m_file = file;
    m_chunks.pop_front();
    ++m_chunksInFile;
    return true;
}

bool TraceStore::addChunk()
{
    try {
        m_chunks.push_back(std::make_shared<Chunk>());
    } catch (const std::bad_alloc &) {
        m_failure = Failure{Failure::NoMemory, 0, {}};
        return false;
    }
    const quint64 room = (quint64(m_chunksInFile) + m_chunks.size()) * chunkFrames;
    m_capacity = static_cast<unsigned>(std::min<quint64>(room, m_limits.frames));
    return true;
}

std::optional<TraceStore::Failure> TraceStore::writeChunk(const Chunk &chunk, unsigned number,
                                                          std::shared_ptr<TraceFile> &file) const
{
    int error = 0;
    if (!file)
        file = TraceFile::make(m_limits.directories, error);
    if (!file)
        return Failure{Failure::NoFile, error, {}};
    error = file->write(chunk.bytes, Chunk::size, quint64(number) * Chunk::size);
    if (error != 0)
        return Failure{Failure::WriteFailed, error, file->directory()};
    return std::nullopt;
}

void TraceStore::forgetAll(Garbage &garbage)
{
    m_chunks.swap(garbage.chunks);
    m_cache.swap(garbage.cache);
    m_notes.swap(garbage.notes);
    m_file.swap(garbage.file);
    m_nextNotes.clear();
    m_count = 0;
    m_capacity = 0;
    m_chunksInFile = 0;
    m_failure.reset();
    m_failureTold = false;
    m_lost = 0;
    ++m_generation;
}

TraceStore::Chunk &TraceStore::chunkOf(unsigned index) const
{
    return *m_chunks[index / chunkFrames - m_chunksInFile];
}

std::shared_ptr<const TraceStore::Block> TraceStore::cachedBlock(unsigned number) const
{
    const auto found = std::find_if(m_cache.begin(), m_cache.end(),
                                    [number](const CachedBlock &cached) { return cached.number == number; });
    if (found == m_cache.end())
        return nullptr;
    std::rotate(m_cache.begin(), found, found + 1);
    return m_cache.front().block;
}

void TraceStore::keepBlock(unsigned number, std::shared_ptr<const Block> block) const
{
    // Another reader may have been as fast.
    if (cachedBlock(number))
        return;
    m_cache.push_front({number, std::move(block)});
    if (m_cache.size() > blocksInCache)
        m_cache.pop_back();
}
