#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <csignal>
#include <functional>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

/// Parts of a test that must not run in the test's own process: with fewer rights, on a disk of their own, or up to a
/// violent end. Only for tests without a GUI and without threads of their own at that moment.
namespace ChildProcess {
/// What the body found wrong; empty if all was right.
using Body = std::function<QString()>;

/// Runs `body` in a child; gives what it returned, or how the child ended if it did not come so far.
inline QString run(const Body &body)
{
    int ends[2] = {};
    if (pipe(ends) != 0)
        return QStringLiteral("no pipe");
    const pid_t child = fork();
    if (child == 0) {
        const QByteArray verdict = body().toUtf8();
        const ssize_t written = write(ends[1], verdict.constData(), static_cast<size_t>(verdict.size()));
        _exit(written == verdict.size() ? 0 : 1);
    }
    close(ends[1]);
    QFile verdict;
    verdict.open(ends[0], QIODevice::ReadOnly, QFile::AutoCloseHandle);
    const QString text = QString::fromUtf8(verdict.readAll());
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status))
        return QStringLiteral("ended by signal %1").arg(WTERMSIG(status));
    return WEXITSTATUS(status) == 0 ? text : QStringLiteral("ended with %1").arg(WEXITSTATUS(status));
}

constexpr uid_t nobody = 65534;

/// As run(), with the rights of nobody: for root no file is unreadable.
inline QString runWithoutRights(const Body &body)
{
    return run([&body] {
        if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0))
            return QStringLiteral("rights could not be given up");
        return body();
    });
}

/// As run(), with a small disk of its own mounted at `folder`, which nobody else sees.
inline QString runOnSmallDisk(const QString &folder, const QByteArray &size, const Body &body)
{
    return run([&] {
        const int ownNamespaces = geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER;
        if (unshare(ownNamespaces) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
            || mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", 0, ("size=" + size).constData()) != 0)
            return QStringLiteral("no small disk could be mounted");
        return body();
    });
}
} // namespace ChildProcess
