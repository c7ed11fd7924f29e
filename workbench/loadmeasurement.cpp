#include "loadmeasurement.h"

#include "demonetworkrunner.h"
#include "demosession.h"
#include "mainwindow.h"
#include "waiting.h"

namespace {
constexpr int patience = 10'000;
}

LoadMeasurement::LoadMeasurement(MainWindow *window, int framesPerSecond, int seconds)
    : m_window(window)
    , m_framesPerSecond(framesPerSecond)
    , m_seconds(seconds)
{
}

bool LoadMeasurement::run()
{
    m_window->startDemo();
    DemoSession *demo = m_window->demo();
    Session *session = m_window->session();
    if (!waitUntil([demo] { return demo->isNetworkRunning(); }, patience)) {
        m_obstacle = session->failure().isEmpty()
            ? tr("The demo network did not start: %1").arg(demo->network()->errorText())
            : session->failure();
        return false;
    }
    DemoNetworkRunner *network = demo->network();
    network->setExtraLoad(m_framesPerSecond);
    m_window->restartStallMeter();
    waitFor(m_seconds * 1000);
    const qint64 longestStall = m_window->stallMeter().longest();
    network->setExtraLoad(0);
    network->stop();

    const quint64 sent = network->framesSent();
    const auto stored = [session] { return static_cast<quint64>(session->trace()->getMessageCount()); };
    waitUntil([&] { return stored() >= sent; }, patience);
    const AbstractCanAdapter *first = session->adapters()->adapterAt(0);
    const AbstractCanAdapter *second = session->adapters()->adapterAt(1);
    const quint64 wanted = static_cast<quint64>(m_framesPerSecond) * static_cast<quint64>(m_seconds);
    m_report.add(tr("Frames of the extra load"), tr("about %1").arg(wanted),
                 QString::number(network->extraFramesSent()), network->extraFramesSent() > 0);
    m_report.compare(tr("Frames that Demo 1 received"), sent, first->framesReceived());
    m_report.compare(tr("Frames that Demo 2 received"), sent, second->framesReceived());
    m_report.compare(tr("Frames in the trace"), sent, stored());
    m_report.compare(tr("Frames lost"), 0,
                     network->framesLost() + first->framesLost() + second->framesLost()
                         + session->trace()->lostMessageCount());
    m_report.add(tr("Longest time that the window did not react"), tr("(for information)"),
                 tr("%1 ms").arg(longestStall), true);
    return m_report.allPassed();
}
