#pragma once

#include "adaptercontract.h"
#include "adaptercontracttest.h"
#include "candumpline.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

#include <csignal>

// The parts of a test that runs in the machine of vcan-run.sh: its links, and the programs of others at their far end.
namespace Vcan {
constexpr int patience = 20000; // ms

enum Output { Shown, Quiet };

/// Runs a command to its end.
inline bool run(const QString &commandLine, Output output = Shown)
{
    QStringList arguments = QProcess::splitCommand(commandLine);
    QProcess process;
    if (output == Shown)
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(arguments.takeFirst(), arguments);
    return process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

inline bool run(const char *commandLine)
{
    return run(QString::fromLatin1(commandLine));
}

/// What a command prints.
inline QByteArray outputOf(const char *commandLine)
{
    QStringList arguments = QProcess::splitCommand(QString::fromLatin1(commandLine));
    QProcess process;
    process.start(arguments.takeFirst(), arguments);
    process.waitForFinished(patience);
    return process.readAllStandardOutput();
}

/// Sockets that receive from the link.
inline int listeners(const char *link)
{
    QFile list(QStringLiteral("/proc/net/can/rcvlist_all"));
    list.open(QIODevice::ReadOnly);
    const QRegularExpression entry(QStringLiteral("^\\s+%1\\s+0").arg(QLatin1String(link)),
                                   QRegularExpression::MultilineOption);
    return QString::fromLatin1(list.readAll()).count(entry);
}

/// A program that goes on beside the test, and what it prints.
class Tool
{
public:
    explicit Tool(const QString &commandLine)
    {
        QStringList arguments = QProcess::splitCommand(commandLine);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(arguments.takeFirst(), arguments);
        m_process.waitForStarted(patience);
    }
    ~Tool()
    {
        m_process.kill();
        m_process.waitForFinished(patience);
    }

    /// The next line; empty if none comes.
    QString line()
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(patience))
                return {};
        }
        return QString::fromLatin1(m_process.readLine()).trimmed();
    }
    void say(const QByteArray &line)
    {
        m_process.write(line + '\n');
        m_process.waitForBytesWritten(patience);
    }
    bool endsWithoutError()
    {
        return (m_process.state() == QProcess::NotRunning || m_process.waitForFinished(patience))
            && m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }
    /// It does nothing more, without an end.
    void freeze() { ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP); }

private:
    QProcess m_process;
};

/// candump, from when it listens.
class Candump
{
public:
    explicit Candump(const char *link, const char *filter = "")
        : m_before(listeners(link))
        , m_tool(QStringLiteral("stdbuf -oL candump -L %1%2").arg(QLatin1String(link), QLatin1String(filter)))
    {
        QElapsedTimer elapsed;
        elapsed.start();
        while (listeners(link) == m_before && elapsed.elapsed() < patience)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }

    /// The next frame; one without a text if none comes.
    CandumpLine line() { return CandumpLine::parse(m_tool.line()); }
    QList<CandumpLine> lines(int count)
    {
        QList<CandumpLine> list;
        while (list.size() < count && (list.isEmpty() || !list.last().frame.isEmpty()))
            list.append(line());
        return list;
    }
    /// The next frame without its time: "123#1122".
    QString frame() { return line().frame; }

private:
    const int m_before;
    Tool m_tool;
};

using AdapterPtr = std::unique_ptr<AbstractCanAdapter>;

inline AdapterPtr makeAdapter(const char *link, bool fd = true)
{
    AdapterPtr adapter(
        CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterSocketCan, QString::fromLatin1(link)));
    adapter->setCanAdapterOption(AbstractCanAdapter::OptionUseCanFd, fd);
    return adapter;
}

/// Opens and starts, as a connection does.
inline bool start(AbstractCanAdapter &adapter)
{
    if (adapter.open() != AbstractCanAdapter::OpenOk) {
        qWarning("%s", qPrintable(adapter.errorText()));
        return false;
    }
    adapter.setRunning(true);
    return adapter.getRunning();
}

/// The states that an adapter tells, from whichever thread.
class StateRecord
{
public:
    using Entry = std::pair<CAN::CanState, CanTimeStamp>;

    explicit StateRecord(AbstractCanAdapter &adapter)
    {
        QObject::connect(
            &adapter, &AbstractCanAdapter::newCanState, &m_context,
            [this](CAN::CanState state, CanTimeStamp stamp) {
                const std::lock_guard lock(m_mutex);
                m_entries.emplace_back(state, stamp);
            },
            Qt::DirectConnection);
    }

    std::vector<Entry> entries() const
    {
        const std::lock_guard lock(m_mutex);
        return m_entries;
    }
    QList<CAN::CanState> states() const
    {
        QList<CAN::CanState> list;
        for (const Entry &entry : entries())
            list.append(entry.first);
        return list;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
    QObject m_context;
};
} // namespace Vcan
