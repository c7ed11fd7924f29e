// What it costs to receive a frame from a CAN link: CPU time a frame of an adapter, with one listener that counts. Beside
// it, each alone on the same load, stand `candump -L` that writes a file, and the least that could be done: a loop around
// recvmmsg() on a blocking socket, which gets times and drop counts as the adapter does, and looks at nothing.
//
//     bench_socketcan [seconds a measurement]
//
// Where the kernel knows no CAN, the program starts itself anew in a machine whose kernel does.

#include "cansocket.h"
#include "rtnetlink.h"
#include "socketcanadapter.h"

#include <QCoreApplication>

#include <linux/can.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <vector>

namespace {
constexpr int batchSize = 128;
constexpr int rounds = 3;
constexpr qint64 second = 1000000000;
const QString linkName = QStringLiteral("vcan0");

struct Load
{
    const char *name;
    int framesAPeriod;
    qint64 period; // ns
};

// Adapters on USB hand on what came within a few hundred microseconds together.
constexpr Load loads[] = {
    {"8,000/s, one by one", 1, second / 8000},
    {"8,000/s, by tens", 10, second / 800},
    {"40,000/s, by tens", 10, second / 4000},
};

qint64 now(clockid_t clock)
{
    timespec time = {};
    ::clock_gettime(clock, &time);
    return qint64(time.tv_sec) * second + time.tv_nsec;
}

void sleepUntil(qint64 deadline)
{
    const timespec time = {deadline / second, deadline % second};
    ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr);
}

FileDescriptor openLink()
{
    const std::optional<LinkProperties> link = readCanLink(linkName);
    return link ? openCanSocket(link->index, false).descriptor : FileDescriptor();
}

/// @return frames sent
quint64 send(const Load &load, qint64 duration)
{
    const FileDescriptor socket = openLink();
    can_frame frame = {};
    frame.can_id = 0x123;
    frame.can_dlc = 8;
    quint64 sent = 0;
    const qint64 begin = now(CLOCK_MONOTONIC);
    for (qint64 next = begin; next < begin + duration; next += load.period) {
        sleepUntil(next);
        for (int i = 0; i < load.framesAPeriod; ++i) {
            if (::send(socket.get(), &frame, sizeof frame, 0) == sizeof frame)
                ++sent;
        }
    }
    return sent;
}

struct Batch
{
    Batch()
    {
        for (int i = 0; i < batchSize; ++i) {
            blocks[i] = {&frames[i], sizeof frames[i]};
            headers[i].msg_hdr.msg_iov = &blocks[i];
            headers[i].msg_hdr.msg_iovlen = 1;
            headers[i].msg_hdr.msg_control = controls[i];
        }
    }

    canfd_frame frames[batchSize] = {};
    iovec blocks[batchSize] = {};
    mmsghdr headers[batchSize] = {};
    alignas(cmsghdr) char controls[batchSize][ReceptionInfo::controlSize] = {};
};

void receiveBare(const std::function<void()> &ready)
{
    const FileDescriptor socket = openLink();
    ::fcntl(socket.get(), F_SETFL, 0);
    Batch batch;
    ready();
    for (;;) {
        for (mmsghdr &header : batch.headers)
            header.msg_hdr.msg_controllen = ReceptionInfo::controlSize;
        ::recvmmsg(socket.get(), batch.headers, batchSize, MSG_WAITFORONE, nullptr);
    }
}

void receiveByAdapter(const std::function<void()> &ready)
{
    int argumentCount = 0;
    const QCoreApplication application(argumentCount, nullptr);
    SocketCanAdapter adapter(linkName);
    quint64 frames = 0;
    QObject::connect(
        &adapter, &AbstractCanAdapter::newCanMessage, &adapter, [&frames] { ++frames; }, Qt::DirectConnection);
    adapter.open();
    adapter.setRunning(true);
    ready();
    ::pause();
}

void receiveByCandump(const std::function<void()> &)
{
    const int file = ::open("/tmp/bench_socketcan.log", O_CREAT | O_TRUNC | O_WRONLY, 0644);
    ::dup2(file, STDOUT_FILENO);
    ::execlp("candump", "candump", "-L", qPrintable(linkName), nullptr);
    std::_Exit(1);
}

struct Contender
{
    const char *name;
    void (*receive)(const std::function<void()> &ready);
    bool saysReady;
};

constexpr Contender contenders[] = {
    {"adapter", receiveByAdapter, true},
    {"recvmmsg", receiveBare, true},
    {"candump", receiveByCandump, false},
};

/// CPU time of another process in ns a frame. The clock moves in steps of 10 ms there.
double measure(const Contender &contender, const Load &load, qint64 duration)
{
    int pipeEnds[2] = {};
    if (::pipe(pipeEnds) != 0)
        return NAN;
    const pid_t child = ::fork();
    if (child == 0) {
        contender.receive([&] {
            const char byte = 1;
            if (::write(pipeEnds[1], &byte, 1) != 1)
                std::_Exit(1);
        });
        std::_Exit(0);
    }
    char byte = 0;
    if (contender.saysReady && ::read(pipeEnds[0], &byte, 1) != 1)
        return NAN;
    // What comes up with the first frames is no part of the price of a frame.
    send(load, second / 2);
    clockid_t clock = 0;
    ::clock_getcpuclockid(child, &clock);
    const qint64 before = now(clock);
    const quint64 frames = send(load, duration);
    sleepUntil(now(CLOCK_MONOTONIC) + second / 10);
    const qint64 used = now(clock) - before;
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
    return double(used) / double(frames);
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void run(qint64 duration)
{
    std::printf("CPU time in microseconds a frame, medians of %d\n\n%-22s%10s%10s%10s%22s\n", rounds, "load", "adapter",
                "recvmmsg", "candump", "adapter / recvmmsg");
    for (const Load &load : loads) {
        // In turn, so that what else goes on in this computer meets all of them.
        std::vector<double> times[std::size(contenders)];
        for (int round = 0; round < rounds; ++round) {
            for (std::size_t i = 0; i < std::size(contenders); ++i)
                times[i].push_back(measure(contenders[i], load, duration));
        }
        const double adapter = median(times[0]);
        const double bare = median(times[1]);
        std::printf("%-22s%10.2f%10.2f%10.2f%22.2f\n", load.name, adapter / 1000, bare / 1000, median(times[2]) / 1000,
                    adapter / bare);
        std::fflush(stdout);
    }
}
} // namespace

int main(int argc, char *argv[])
{
    if (!openLink().isValid()) {
        ::execl(VCAN_RUN, VCAN_RUN, "-t", "600", argv[0], argc > 1 ? argv[1] : nullptr, nullptr);
        std::perror(VCAN_RUN);
        return 1;
    }
    const double seconds = argc > 1 ? std::atof(argv[1]) : 1.0;
    run(qint64(seconds * double(second)));
    return 0;
}
