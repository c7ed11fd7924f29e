#pragma once

#include <QtGlobal>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// A temporary file without a name, which the system frees with the last reference to it, also if the program dies.
class TraceFile
{
public:
    /// Where temporary files go, in the order of preference: $TMPDIR, /var/tmp, /tmp. /tmp comes last since it often
    /// lies in memory, which a long trace is meant to spare.
    static std::vector<std::string> usualDirectories();

    /// Makes a file in the first of the directories that allows it. Null if none does; `error` then holds the system's
    /// error number of the first one.
    /// @param nameless use the system's files that never have a name where the file system knows them; otherwise the
    ///        name goes at once
    static std::shared_ptr<TraceFile> make(const std::vector<std::string> &directories, int &error,
                                           bool nameless = true);

    TraceFile(int descriptor, std::string directory);
    ~TraceFile();

    const std::string &directory() const { return m_directory; }

    /// Both give 0 or the system's error number, and either all bytes or a failure. From any thread.
    int write(const void *bytes, std::size_t size, quint64 offset);
    int read(void *bytes, std::size_t size, quint64 offset) const;

private:
    const int m_descriptor;
    const std::string m_directory;

    Q_DISABLE_COPY(TraceFile)
};
