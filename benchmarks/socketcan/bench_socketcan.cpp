// What it costs to receive a frame from a CAN link: CPU time a frame of an adapter, with one listener that counts. Beside
// it, each alone on the same load, stand `candump -L` that writes a file, and the least that could be done: a loop around
// recvmmsg() on a blocking socket, which gets times and drop counts as the adapter does, and looks at nothing.
//
//     bench_socketcan [seconds a measurement]
//
// Four links carry the load, vcan0 to vcan3, with an adapter or a loop each: a quiet bus takes too little time to be
// measured alone. Where they are missing, the program starts itself anew in a machine whose kernel knows CAN. The clocks
// there move in steps of 10 ms, which is sampling: so frames come at random within their period.

#include "cansocket.h"
#include "rtnetlink.h"
#include "socketcanadapter.h"

#include <QCoreApplication>

#include <linux/can.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {
constexpr int batchSize = 128;
constexpr int rounds = 3;
constexpr qint64 second = 1000000000;
constexpr int linkCount = 4;

struct Load
{
    const char *name;
    int links;
    int framesAPeriod;
    qint64 period; // ns, of one link
};

// Adapters on USB hand on what came within a few hundred microseconds together.
constexpr Load loads[] = {
    {"4 x 500/s, one by one", 4, 1, second / 500},    {"4 x 1,000/s, one by one", 4, 1, second / 1000},
    {"4 x 1,900/s, one by one", 4, 1, second / 1900}, {"8,000/s, one by one", 1, 1, second / 8000},
    {"8,000/s, by tens", 1, 10, second / 800},        {"40,000/s, by tens", 1, 10, second / 4000},
};

QString linkName(int link)
{
    return QStringLiteral("vcan%1").arg(link);
}

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

FileDescriptor openLink(int number)
{
    const std::optional<LinkProperties> link = readCanLink(linkName(number));
    return link ? openCanSocket(link->index, false).descriptor : FileDescriptor();
}

std::vector<FileDescriptor> openLinks(int count)
{
    std::vector<FileDescriptor> links;
    for (int number = 0; number < count; ++number)
        links.push_back(openLink(number));
    return links;
}

/// @return frames sent
quint64 send(const Load &load, qint64 duration)
{
    const std::vector<FileDescriptor> links = openLinks(load.links);
    can_frame frame = {};
    frame.can_id = 0x123;
    frame.can_dlc = 8;
    quint64 sent = 0;
    std::minstd_rand random;
    const qint64 step = load.period / load.links;
    std::uniform_int_distribution<qint64> withinStep(0, step - 1);
    const qint64 begin = now(CLOCK_MONOTONIC);
    std::size_t link = 0;
    for (qint64 next = begin; next < begin + duration; next += step) {
        sleepUntil(next + withinStep(random));
        for (int i = 0; i < load.framesAPeriod; ++i) {
            if (::send(links[link].get(), &frame, sizeof frame, 0) == sizeof frame)
                ++sent;
        }
        link = (link + 1) % links.size();
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

using Ready = std::function<void()>;

void receiveBare(int link)
{
    const FileDescriptor socket = openLink(link);
    Batch batch;
    for (;;) {
        for (mmsghdr &header : batch.headers)
            header.msg_hdr.msg_controllen = ReceptionInfo::controlSize;
        ::recvmmsg(socket.get(), batch.headers, batchSize, MSG_WAITFORONE, nullptr);
    }
}

void receiveBare(int links, const Ready &ready)
{
    for (int link = 0; link < links; ++link)
        std::thread([link] { receiveBare(link); }).detach();
    ready();
    ::pause();
}

void receiveByAdapter(int links, const Ready &ready)
{
    int argumentCount = 0;
    const QCoreApplication application(argumentCount, nullptr);
    std::vector<std::unique_ptr<SocketCanAdapter>> adapters;
    std::atomic<quint64> frames{0};
    for (int link = 0; link < links; ++link) {
        adapters.push_back(std::make_unique<SocketCanAdapter>(linkName(link)));
        SocketCanAdapter *adapter = adapters.back().get();
        QObject::connect(
            adapter, &AbstractCanAdapter::newCanMessage, adapter, [&frames] { ++frames; }, Qt::DirectConnection);
        adapter->open();
        adapter->setRunning(true);
    }
    ready();
    ::pause();
}

void receiveByCandump(int links, const Ready &)
{
    const int file = ::open("/tmp/bench_socketcan.log", O_CREAT | O_TRUNC | O_WRONLY, 0644);
    ::dup2(file, STDOUT_FILENO);
    std::vector<std::string> arguments = {"candump", "-L"};
    for (int link = 0; link < links; ++link)
        arguments.push_back(linkName(link).toStdString());
    std::vector<char *> pointers;
    for (std::string &argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    ::execvp(pointers.front(), pointers.data());
    std::_Exit(1);
}

struct Contender
{
    const char *name;
    void (*receive)(int links, const Ready &ready);
    bool saysReady;
};

constexpr Contender contenders[] = {
    {"adapter", receiveByAdapter, true},
    {"recvmmsg", receiveBare, true},
    {"candump", receiveByCandump, false},
};

struct Price
{
    qint64 time = 0; // ns
    quint64 frames = 0;

    double microsecondsAFrame() const { return double(time) / 1000 / double(frames); }
    void add(const Price &other)
    {
        time += other.time;
        frames += other.frames;
    }
};

/// What another process took for the load.
Price measure(const Contender &contender, const Load &load, qint64 duration)
{
    int pipeEnds[2] = {};
    if (::pipe(pipeEnds) != 0)
        return {};
    const pid_t child = ::fork();
    if (child == 0) {
        contender.receive(load.links, [&] {
            const char byte = 1;
            if (::write(pipeEnds[1], &byte, 1) != 1)
                std::_Exit(1);
        });
        std::_Exit(0);
    }
    char byte = 0;
    if (contender.saysReady && ::read(pipeEnds[0], &byte, 1) != 1)
        return {};
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
    return {used, frames};
}

void run(qint64 duration)
{
    std::printf("CPU time in microseconds a frame, over %d rounds\n\n%-26s%10s%10s%10s%22s\n", rounds, "load",
                "adapter", "recvmmsg", "candump", "adapter / recvmmsg");
    for (const Load &load : loads) {
        // In turn, so that what else goes on in this computer meets all of them.
        Price prices[std::size(contenders)];
        for (int round = 0; round < rounds; ++round) {
            for (std::size_t i = 0; i < std::size(contenders); ++i)
                prices[i].add(measure(contenders[i], load, duration));
        }
        const double adapter = prices[0].microsecondsAFrame();
        const double bare = prices[1].microsecondsAFrame();
        std::printf("%-26s%10.2f%10.2f%10.2f%22.2f\n", load.name, adapter, bare, prices[2].microsecondsAFrame(),
                    adapter / bare);
        std::fflush(stdout);
    }
}
} // namespace

int main(int argc, char *argv[])
{
    const std::vector<FileDescriptor> links = openLinks(linkCount);
    if (!std::all_of(links.begin(), links.end(), [](const FileDescriptor &link) { return link.isValid(); })) {
        const char *const script = "for link in vcan2 vcan3; do ip link add $link mtu 72 up type vcan || exit; done\n"
                                   "exec \"$0\" \"$@\"";
        ::execl(VCAN_RUN, VCAN_RUN, "-t", "1800", "bash", "-c", script, argv[0], argc > 1 ? argv[1] : nullptr, nullptr);
        std::perror(VCAN_RUN);
        return 1;
    }
    const double seconds = argc > 1 ? std::atof(argv[1]) : 3.0;
    run(qint64(seconds * double(second)));
    return 0;
}
