#include "tracefile.h"

#include <QByteArray>

#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace {
/// -1 and errno on failure.
int openUnlinked(const std::string &directory, bool nameless)
{
    const int descriptor = nameless ? ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600) : -1;
    if (descriptor != -1)
        return descriptor;
    std::string name = directory + "/kestrune-trace-XXXXXX";
    const int named = ::mkostemp(name.data(), O_CLOEXEC);
    if (named != -1)
        ::unlink(name.c_str());
    return named;
}

/// Calls transfer(offset within the bytes, bytes left) until all is done.
template <typename Transfer>
int transferAll(std::size_t size, Transfer transfer)
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t moved = transfer(done, size - done);
        if (moved > 0)
            done += static_cast<std::size_t>(moved);
        else if (moved == 0)
            return EIO; // a file that is shorter than it was written, or takes nothing
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}
} // namespace

std::vector<std::string> TraceFile::usualDirectories()
{
    std::vector<std::string> directories;
    const QByteArray chosen = qgetenv("TMPDIR");
    if (!chosen.isEmpty())
        directories.push_back(chosen.toStdString());
    directories.insert(directories.end(), {"/var/tmp", "/tmp"});
    return directories;
}

std::shared_ptr<TraceFile> TraceFile::make(const std::vector<std::string> &directories, int &error, bool nameless)
{
    error = 0;
    for (const std::string &directory : directories) {
        const int descriptor = openUnlinked(directory, nameless);
        if (descriptor != -1)
            return std::make_shared<TraceFile>(descriptor, directory);
        if (error == 0)
            error = errno;
    }
    return nullptr;
}

TraceFile::TraceFile(int descriptor, std::string directory)
    : m_descriptor(descriptor)
    , m_directory(std::move(directory))
{
}

TraceFile::~TraceFile()
{
    ::close(m_descriptor);
}

int TraceFile::write(const void *bytes, std::size_t size, quint64 offset)
{
    const char *from = static_cast<const char *>(bytes);
    return transferAll(size, [&](std::size_t done, std::size_t left) {
        return ::pwrite(m_descriptor, from + done, left, static_cast<off_t>(offset + done));
    });
}

int TraceFile::read(void *bytes, std::size_t size, quint64 offset) const
{
    char *to = static_cast<char *>(bytes);
    return transferAll(size, [&](std::size_t done, std::size_t left) {
        return ::pread(m_descriptor, to + done, left, static_cast<off_t>(offset + done));
    });
}
