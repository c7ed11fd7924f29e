#pragma once

#include <QtGlobal>

#include <csignal>
#include <sys/resource.h>

/// Files of this process grow no further than this while it lives, as on a disk that is full.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
        : m_before(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_limit);
        rlimit tight = m_limit;
        tight.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &tight);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_before);
    }

private:
    rlimit m_limit{};
    void (*m_before)(int);
    Q_DISABLE_COPY(FullDisk)
};
