#include "tour.h"

#include "boxwatcher.h"
#include "canopen.h"
#include "canopentext.h"
#include "demonetworkrunner.h"
#include "demonodeprofiles.h"
#include "demosession.h"
#include "frameprobe.h"
#include "frametext.h"
#include "frameview.h"
#include "mainwindow.h"
#include "tracepage.h"
#include "transmitpanel.h"
#include "waiting.h"

#include <QApplication>
#include <QDir>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QPushButton>
#include <QtEndian>

#include <algorithm>

Q_LOGGING_CATEGORY(lcTour, "kestrune.workbench")

namespace {
constexpr int patience = 10'000; // ms; much longer than anything here takes on an idle machine
constexpr quint64 framesEachWay = 1000;
constexpr quint32 firstToSecond = 0x6E1; // identifiers that no node of the network uses
constexpr quint32 secondToFirst = 0x6E2;
constexpr quint32 panelIdentifier = 0x6E3;
constexpr quint32 cyclicIdentifier = 0x6E4;
constexpr quint64 cyclicFrames = 25;
constexpr double cyclicPeriod = 20.0; // ms
constexpr double largeFont = 2.0;
constexpr quint64 savedNumber = 4711;

quint8 lastNode()
{
    return demoNodeProfiles().back().nodeId;
}

CAN::CanMessage numberedFrame(quint32 identifier, quint32 number)
{
    CAN::CanMessage message;
    message.id = identifier;
    CanOpen::append<quint32>(message, number);
    return message;
}

/// Writes the frames; gives how many the adapter took.
quint64 writeNumbered(AbstractCanAdapter *adapter, quint32 identifier)
{
    quint64 taken = 0;
    for (quint32 number = 0; number < framesEachWay; ++number) {
        CAN::CanMessage message = numberedFrame(identifier, number);
        if (adapter->write(&message) == AbstractCanAdapter::WriteOk)
            ++taken;
    }
    return taken;
}

bool isInOrder(const QVector<CAN::CanMessage> &frames)
{
    quint32 expected = 0;
    return std::all_of(frames.cbegin(), frames.cend(), [&expected](const CAN::CanMessage &frame) {
        return frame.length == sizeof expected && qFromLittleEndian<quint32>(frame.data) == expected++;
    });
}

QString yesOrNo(bool yes)
{
    return yes ? Tour::tr("yes") : Tour::tr("no");
}

QPalette darkPalette()
{
    QPalette palette(QColor(0x3A, 0x3D, 0x41), QColor(0x2B, 0x2D, 0x30));
    const QColor text(0xE6, 0xE6, 0xE6);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, text);
    palette.setColor(QPalette::Base, QColor(0x1E, 0x1F, 0x22));
    palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x28, 0x2B));
    palette.setColor(QPalette::ToolTipBase, QColor(0x3A, 0x3D, 0x41));
    palette.setColor(QPalette::Highlight, QColor(0x2F, 0x65, 0xCA));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x82, 0x85));
    return palette;
}
} // namespace

const Tour::Step Tour::steps[] = {
    {"empty window", &Tour::showEmptyWindow},     {"connect", &Tour::connectDemo},
    {"meet all nodes", &Tour::meetAllNodes},      {"send both ways", &Tour::sendBothWays},
    {"read an object", &Tour::readObject},        {"stop and start a node", &Tour::stopAndStartNode},
    {"bit rate switch", &Tour::seeBitRateSwitch}, {"send from the panel", &Tour::sendFromPanel},
    {"send cyclically", &Tour::sendCyclically},   {"show traffic", &Tour::showTraffic},
    {"connect again", &Tour::connectAgain},       {"save and reopen", &Tour::saveAndReopen},
    {"lose nothing", &Tour::loseNothing},
};

Tour::Tour(MainWindow *window, const QString &outputDirectory, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_directory(outputDirectory)
{
}

Tour::~Tour() = default;

bool Tour::run()
{
    const BoxWatcher boxes;
    for (const Step &step : steps) {
        qCInfo(lcTour) << "Step:" << step.name;
        if (!(this->*step.run)())
            break;
    }
    m_report.compare(tr("Message boxes"), QString(), boxes.texts().join(QLatin1String(" | ")));
    return m_obstacle.isEmpty() && m_report.allPassed();
}

bool Tour::showEmptyWindow()
{
    if (!QDir().mkpath(m_directory))
        return stop(tr("\"%1\" cannot be made. Give another directory with --out.").arg(m_directory));
    m_report.add(tr("A window without interfaces says what to do"), tr("empty state"),
                 m_window->tracePage()->showsEmptyState() ? tr("empty state") : tr("a list"),
                 m_window->tracePage()->showsEmptyState());
    takePicture(QStringLiteral("empty"), tr("the empty window"));
    return true;
}

bool Tour::connectDemo()
{
    m_window->startDemo();
    Session *session = m_window->session();
    const quint64 connected = static_cast<quint64>(session->adapters()->getConnectedAdapters().size());
    if (connected == 0)
        return stop(session->failure());
    m_report.compare(tr("Interfaces that connect"), 2, connected);
    m_report.add(tr("Primary interface"), QStringLiteral("Demo 1"),
                 session->primaryAdapter() != nullptr
                     ? session->primaryAdapter()->getCanAdapterOption(AbstractCanAdapter::OptionAdapterName).toString()
                     : tr("none"),
                 session->primaryAdapter() == interfaceAt(0));
    if (connected < 2)
        return false;
    probeInterfaces();
    return true;
}

bool Tour::meetAllNodes()
{
    waitUntil([this] { return allNodesHeard(); }, patience);
    for (const DemoNodeProfile &node : demoNodeProfiles()) {
        const quint32 identifier = CanOpen::cobHeartbeat + node.nodeId;
        const bool heard = m_first->count(identifier) > 0 && m_second->count(identifier) > 0;
        m_report.add(tr("Node %1 (%2)").arg(node.nodeId).arg(QLatin1String(node.name)), tr("heard on both interfaces"),
                     heard ? tr("heard on both interfaces") : tr("not heard on both"), heard);
    }
    return true;
}

bool Tour::sendBothWays()
{
    AbstractCanAdapter *first = interfaceAt(0);
    AbstractCanAdapter *second = interfaceAt(1);
    m_first->keep(secondToFirst);
    m_second->keep(firstToSecond);
    const quint64 sentBefore = first->framesSent() + second->framesSent();
    const quint64 takenByFirst = writeNumbered(first, firstToSecond);
    const quint64 takenBySecond = writeNumbered(second, secondToFirst);
    waitUntil(
        [this] {
            return m_second->count(firstToSecond) >= framesEachWay && m_first->count(secondToFirst) >= framesEachWay;
        },
        patience);

    m_report.compare(tr("Frames sent by Demo 1"), framesEachWay, takenByFirst);
    m_report.compare(tr("  received by Demo 2"), takenByFirst, m_second->count(firstToSecond));
    m_report.compare(tr("  in their order"), tr("yes"), yesOrNo(isInOrder(m_second->kept(firstToSecond))));
    m_report.compare(tr("Frames sent by Demo 2"), framesEachWay, takenBySecond);
    m_report.compare(tr("  received by Demo 1"), takenBySecond, m_first->count(secondToFirst));
    m_report.compare(tr("  in their order"), tr("yes"), yesOrNo(isInOrder(m_first->kept(secondToFirst))));
    m_report.compare(tr("Frames sent, as the interfaces count"), 2 * framesEachWay,
                     first->framesSent() + second->framesSent() - sentBefore);
    return true;
}

bool Tour::readObject()
{
    const DemoNodeProfile &node = demoNodeProfiles().front();
    const quint32 answerIdentifier = CanOpen::cobSdoResponse + node.nodeId;
    const quint64 answersBefore = m_first->count(answerIdentifier);
    CAN::CanMessage request;
    request.id = CanOpen::cobSdoRequest + node.nodeId;
    CanOpen::append<quint8>(request, 0x40);
    CanOpen::append<quint16>(request, CanOpen::objectDeviceType);
    CanOpen::append<quint8>(request, 0);
    CanOpen::append<quint32>(request, 0);
    interfaceAt(0)->write(&request);
    waitUntil([&] { return m_first->count(answerIdentifier) > answersBefore; }, patience);

    CAN::CanMessage answer = request;
    answer.id = answerIdentifier;
    answer.data[0] = 0x43;
    qToLittleEndian<quint32>(node.deviceType, answer.data + 4);
    m_report.compare(tr("Node %1 answers what it is").arg(node.nodeId), FrameText::data(answer),
                     FrameText::data(m_first->last(answerIdentifier)));
    return true;
}

bool Tour::stopAndStartNode()
{
    const quint8 node = lastNode();
    const quint32 heartbeat = CanOpen::cobHeartbeat + node;
    const QPair<CanOpen::NmtCommand, CanOpen::NmtState> commands[] = {
        {CanOpen::NmtCommand::Stop, CanOpen::NmtState::Stopped},
        {CanOpen::NmtCommand::Start, CanOpen::NmtState::Operational},
    };
    for (const auto &command : commands) {
        CAN::CanMessage message;
        message.id = CanOpen::cobNmt;
        CanOpen::append<quint8>(message, static_cast<quint8>(command.first));
        CanOpen::append<quint8>(message, node);
        interfaceAt(0)->write(&message);
        const auto wanted = static_cast<quint8>(command.second);
        waitUntil([&] { return m_first->last(heartbeat).data[0] == wanted; }, patience);
        m_report.compare(tr("Node %1 after \"%2\"").arg(node).arg(CanOpenText::meaning(message)),
                         CanOpenText::nodeState(wanted), CanOpenText::nodeState(m_first->last(heartbeat).data[0]));
    }
    return true;
}

bool Tour::seeBitRateSwitch()
{
    waitUntil([this] { return m_second->switchedFrames() > 0; }, patience);
    const bool seen = m_second->switchedFrames() > 0;
    m_report.add(tr("CAN FD frames with bit rate switch"), tr("some"), QString::number(m_second->switchedFrames()),
                 seen);
    return true;
}

bool Tour::sendFromPanel()
{
    fillPanel(FrameText::identifier(panelIdentifier, false), QStringLiteral("DE AD BE EF"));
    pressButton(QStringLiteral("btnSend"));
    waitUntil([this] { return m_second->count(panelIdentifier) > 0; }, patience);
    m_report.compare(tr("Frame sent from the transmit panel"), QStringLiteral("DE AD BE EF"),
                     FrameText::data(m_second->last(panelIdentifier)));
    return true;
}

bool Tour::sendCyclically()
{
    fillPanel(FrameText::identifier(cyclicIdentifier, false), QStringLiteral("01 02"));
    m_window->transmitPanel()->findChild<QDoubleSpinBox *>(QStringLiteral("sbPeriod"))->setValue(cyclicPeriod);
    pressButton(QStringLiteral("btnSendCyclically"));
    const bool came = waitUntil([this] { return m_second->count(cyclicIdentifier) >= cyclicFrames; }, patience);
    m_report.add(tr("Cyclic frames, every %1 ms").arg(cyclicPeriod), tr("at least %1").arg(cyclicFrames),
                 QString::number(m_second->count(cyclicIdentifier)), came);

    pressButton(QStringLiteral("btnStopAllCyclic"));
    // What was sent before the stop has arrived when a frame that was sent after it has.
    const quint64 marks = m_second->count(panelIdentifier);
    fillPanel(FrameText::identifier(panelIdentifier, false), QStringLiteral("00"));
    pressButton(QStringLiteral("btnSend"));
    waitUntil([&] { return m_second->count(panelIdentifier) > marks; }, patience);
    const quint64 atStop = m_second->count(cyclicIdentifier);
    waitFor(static_cast<int>(10 * cyclicPeriod));
    m_report.compare(tr("Cyclic frames after \"Stop all\""), 0, m_second->count(cyclicIdentifier) - atStop);
    // Goes on, to be seen in the pictures and after connecting again.
    fillPanel(FrameText::identifier(cyclicIdentifier, false), QStringLiteral("01 02"));
    pressButton(QStringLiteral("btnSendCyclically"));
    return true;
}

bool Tour::showTraffic()
{
    const auto rows = [](TracePage *page) { return page->view()->model()->rowCount(); };
    constexpr int screenful = 40;
    constexpr int fewIdentifiers = 10;
    waitUntil(
        [&] { return rows(m_window->tracePage()) > screenful && rows(m_window->identifierPage()) > fewIdentifiers; },
        patience);
    m_report.add(tr("Rows of the trace"), tr("more than %1").arg(screenful),
                 QString::number(rows(m_window->tracePage())), rows(m_window->tracePage()) > screenful);
    m_report.add(tr("Rows by identifier"), tr("more than %1").arg(fewIdentifiers),
                 QString::number(rows(m_window->identifierPage())), rows(m_window->identifierPage()) > fewIdentifiers);
    fillPanel(QStringLiteral("123"), QStringLiteral("01 02 03 04"));

    takePicture(QStringLiteral("trace"), tr("the trace"));
    m_window->showPage(m_window->identifierPage());
    takePicture(QStringLiteral("identifiers"), tr("the identifiers"));

    const QPalette palette = QApplication::palette();
    QApplication::setPalette(darkPalette());
    takePicture(QStringLiteral("identifiers-dark"), tr("the identifiers on dark ground"));
    m_window->showPage(m_window->tracePage());
    takePicture(QStringLiteral("trace-dark"), tr("the trace on dark ground"));
    QApplication::setPalette(palette);

    const QSize size = m_window->size();
    const QFont font = QApplication::font();
    QFont large = font;
    large.setPointSizeF(large.pointSizeF() * largeFont);
    QApplication::setFont(large);
    takePicture(QStringLiteral("trace-large-font"), tr("the trace in a font of 200 %"));
    QApplication::setFont(font);
    m_window->resize(size);
    return true;
}

bool Tour::connectAgain()
{
    Session *session = m_window->session();
    m_window->disconnectAdapters();
    m_report.compare(tr("Connected after a disconnection"), tr("no"), yesOrNo(session->isConnected()));
    m_report.compare(tr("Scheduler after a disconnection"), tr("none"),
                     session->scheduler() != nullptr ? tr("one") : tr("none"));
    takePicture(QStringLiteral("disconnected"), tr("the disconnected window"));
    m_window->connectAdapters();
    if (session->adapters()->getConnectedAdapters().size() < 2)
        return stop(session->failure());
    probeInterfaces();
    waitUntil([this] { return allNodesHeard() && m_second->count(cyclicIdentifier) > 0; }, patience);
    m_report.compare(tr("All nodes heard after connecting again"), tr("yes"), yesOrNo(allNodesHeard()));
    m_report.compare(tr("Cyclic frames go on after connecting again"), tr("yes"),
                     yesOrNo(m_second->count(cyclicIdentifier) > 0));
    pressButton(QStringLiteral("btnStopAllCyclic"));
    return true;
}

bool Tour::saveAndReopen()
{
    SettingsDatabase *settings = m_window->session()->settings();
    settings->setValue(QStringLiteral("tour"), savedNumber);
    m_report.add(tr("Settings saved"), tr("yes"), yesOrNo(m_window->session()->saveSettings()),
                 QFile::exists(settings->getSettingsFileBaseName()));

    // What the next start of the workbench does.
    SettingsDatabase reopened(nullptr);
    MultiCanAdapterHandler restored;
    const bool opened = reopened.openDatabase(QString());
    reopened.restoreAdapters(&restored);
    m_report.compare(tr("Settings opened again"), tr("yes"), yesOrNo(opened));
    m_report.compare(tr("Saved value"), savedNumber, reopened.value(QStringLiteral("tour"), 0).toULongLong());
    m_report.compare(tr("Interfaces that come back"), m_window->session()->adapters()->getAdapterCount(),
                     restored.getAdapterCount());
    for (quint16 row = 0; row < restored.getAdapterCount(); ++row) {
        const AbstractCanAdapter *before = interfaceAt(row);
        const AbstractCanAdapter *after = restored.adapterAt(row);
        const QByteArray wanted = before != nullptr ? before->getValuesAsByteArray() : QByteArray();
        m_report.compare(tr("  settings of interface %1 are the same").arg(row + 1), tr("yes"),
                         yesOrNo(wanted == after->getValuesAsByteArray()));
    }
    return true;
}

bool Tour::loseNothing()
{
    for (int row = 0; row < 2; ++row) {
        m_report.compare(tr("Frames lost by Demo %1").arg(row + 1), 0, interfaceAt(row)->framesLost());
    }
    m_report.compare(tr("Frames lost by the network"), 0, m_window->demo()->network()->framesLost());
    m_report.compare(tr("Frames that the trace did not keep"), 0, m_window->session()->trace()->lostMessageCount());
    return true;
}

bool Tour::stop(const QString &obstacle)
{
    m_obstacle = obstacle.isEmpty() ? tr("The interfaces did not connect.") : obstacle;
    return false;
}

AbstractCanAdapter *Tour::interfaceAt(int row) const
{
    return m_window->session()->adapters()->adapterAt(static_cast<quint16>(row));
}

void Tour::probeInterfaces()
{
    m_first = std::make_unique<FrameProbe>(interfaceAt(0));
    m_second = std::make_unique<FrameProbe>(interfaceAt(1));
}

bool Tour::allNodesHeard() const
{
    const std::vector<DemoNodeProfile> &nodes = demoNodeProfiles();
    return std::all_of(nodes.cbegin(), nodes.cend(), [this](const DemoNodeProfile &node) {
        const quint32 identifier = CanOpen::cobHeartbeat + node.nodeId;
        return m_first->count(identifier) > 0 && m_second->count(identifier) > 0;
    });
}

void Tour::fillPanel(const QString &identifier, const QString &data) const
{
    m_window->transmitPanel()->findChild<QLineEdit *>(QStringLiteral("edtIdentifier"))->setText(identifier);
    m_window->transmitPanel()->findChild<QLineEdit *>(QStringLiteral("edtData"))->setText(data);
}

void Tour::pressButton(const QString &objectName) const
{
    m_window->transmitPanel()->findChild<QPushButton *>(objectName)->click();
}

void Tour::takePicture(const QString &name, const QString &subject)
{
    constexpr int settleMilliseconds = 300; // the counters of the status bar show what the picture shows
    waitFor(settleMilliseconds);
    const QString path = QDir(m_directory).filePath(name + QLatin1String(".png"));
    const bool saved = m_window->grab().save(path, "PNG");
    m_report.add(tr("Picture of %1").arg(subject), path, saved ? path : tr("not written"), saved);
}
