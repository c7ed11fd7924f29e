#include "tracerecorder.h"

#include <QFile>

#include <cerrno>
#include <chrono>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr std::chrono::milliseconds interval(250);
/// One will do, unless the trace moves frames to its file faster than we write them.
constexpr int triesToClear = 100;

/// Writes all bytes if the system lets it. Gives how many it wrote, and in `error` why not all.
int writeAll(int descriptor, const QByteArray &bytes, int &error)
{
    int written = 0;
    error = 0;
    while (written < bytes.size() && error == 0) {
        const auto left = static_cast<std::size_t>(bytes.size() - written);
        const ssize_t step = ::write(descriptor, bytes.constData() + written, left);
        if (step > 0)
            written += static_cast<int>(step);
        else if (step == 0)
            error = ENOSPC;
        else if (errno != EINTR)
            error = errno;
    }
    return written;
}
} // namespace

TraceRecorder::TraceRecorder(TraceStore &store, std::function<void(const Failure &)> failed)
    : m_store(store)
    , m_failed(std::move(failed))
{
}

TraceRecorder::~TraceRecorder()
{
    stop();
}

int TraceRecorder::start(const QString &fileName)
{
    if (std::this_thread::get_id() == m_threadId)
        return EDEADLK;
    const std::lock_guard control(m_control);
    end();
    const int error = open(fileName);
    if (error != 0)
        return error;
    m_running = true;
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error &noThread) {
        const std::lock_guard lock(m_mutex);
        m_running = false;
        close();
        return noThread.code().value();
    }
    return 0;
}

void TraceRecorder::stop()
{
    // The recording that fails right now is at its end anyway.
    if (std::this_thread::get_id() == m_threadId)
        return;
    const std::lock_guard control(m_control);
    end();
}

void TraceRecorder::clearStore()
{
    const std::lock_guard lock(m_mutex);
    for (int i = 0; i < triesToClear && m_descriptor != -1; ++i) {
        catchUp();
        TraceStore::Rest rest;
        if (m_descriptor != -1 && m_store.clear(m_pieces->next(), rest)) {
            m_pieces->encodeRestAndRestart(rest);
            write();
            return;
        }
    }
    m_store.clear();
    if (m_pieces)
        m_pieces->restart();
}

int TraceRecorder::open(const QString &fileName)
{
    const std::lock_guard lock(m_mutex);
    // Not blocking: a pipe without a reader would hold us for ever.
    const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK;
    m_descriptor = ::open(QFile::encodeName(fileName).constData(), flags, 0666);
    if (m_descriptor == -1)
        return errno;
    struct stat status = {};
    const bool regular = ::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode);
    int error = regular ? 0 : EINVAL;
    if (regular && ::ftruncate(m_descriptor, 0) != 0)
        error = errno;
    m_fileName = fileName;
    m_fileBytes = 0;
    m_stopping = false;
    m_failure.reset();
    m_pieces.emplace(m_store, m_store.count());
    if (error == 0 && !write())
        error = m_failure->error;
    if (error != 0)
        close();
    return error;
}

void TraceRecorder::run()
{
    m_threadId = std::this_thread::get_id();
    Lock lock(m_mutex);
    while (!m_failure) {
        // What comes while we write has the next turn.
        const bool last = m_stopping;
        catchUp();
        if (last || m_failure)
            break;
        m_wake.wait_for(lock, interval, [this] { return m_stopping || m_failure; });
    }
    close();
    m_running = false;
    const std::optional<Failure> failure = m_failure;
    lock.unlock();
    if (failure)
        m_failed(*failure);
}

/// Writes the frames that are there now.
void TraceRecorder::catchUp()
{
    const unsigned end = m_store.count();
    do {
        if (m_pieces->encodeNext(end) == TracePieces::Unreadable)
            fail(Failure::TraceUnreadable, 0);
        else
            write();
    } while (!m_failure && m_pieces->next() < end);
}

/// Writes what is encoded. Of what the disk does not take, whole blocks stay.
bool TraceRecorder::write()
{
    int error = 0;
    const int written = writeAll(m_descriptor, m_pieces->bytes(), error);
    m_fileBytes += wholeBlocks(m_pieces->bytes(), written);
    m_pieces->clearBytes();
    if (error != 0)
        fail(Failure::WriteFailed, error);
    return error == 0;
}

void TraceRecorder::fail(Failure::Kind kind, int error)
{
    m_failure = Failure{kind, error, m_fileName};
    // A file that cannot be cut loads all the same, without the part of a block at its end.
    while (::ftruncate(m_descriptor, m_fileBytes) != 0 && errno == EINTR) {
    }
    close();
    m_wake.notify_all();
}

void TraceRecorder::close()
{
    if (m_descriptor != -1)
        ::close(m_descriptor);
    m_descriptor = -1;
}

/// Ends the thread, if there is one.
void TraceRecorder::end()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    m_thread.join();
    m_threadId = std::thread::id();
}
