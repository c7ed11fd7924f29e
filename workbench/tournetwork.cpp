#include "toursteps.h"

#include "canopen.h"
#include "canopentext.h"
#include "demonetworkrunner.h"
#include "demonodeprofiles.h"
#include "demosession.h"
#include "frameprobe.h"
#include "frametext.h"
#include "interfacename.h"
#include "mainwindow.h"
#include "tourcontext.h"
#include "touridentifiers.h"

#include <QtEndian>

#include <algorithm>

namespace {
constexpr quint64 framesEachWay = 1000;

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

bool isInOrder(const QVector<CAN::CanRxMessage> &frames)
{
    quint32 expected = 0;
    return std::all_of(frames.cbegin(), frames.cend(), [&expected](const CAN::CanRxMessage &frame) {
        const CAN::CanMessage &message = frame.message;
        return message.length == sizeof expected && qFromLittleEndian<quint32>(message.data) == expected++;
    });
}

} // namespace

namespace TourSteps {

bool connectDemo(TourContext &tour)
{
    tour.window()->startDemo();
    Session *session = tour.window()->session();
    const quint64 connected = static_cast<quint64>(session->adapters()->getConnectedAdapters().size());
    if (connected == 0)
        return tour.stop(session->failure());
    tour.report().compare(TourContext::tr("Interfaces that connect"), 2, connected);
    tour.report().add(TourContext::tr("Primary interface"), QStringLiteral("Demo 1"),
                      session->primaryAdapter() != nullptr ? interfaceName(*session->primaryAdapter())
                                                           : TourContext::tr("none"),
                      session->primaryAdapter() == tour.interfaceAt(0));
    if (connected < 2)
        return false;
    tour.probeInterfaces();
    return true;
}

bool meetAllNodes(TourContext &tour)
{
    TourContext::await([&] { return tour.allNodesHeard(); });
    for (const DemoNodeProfile &node : demoNodeProfiles()) {
        const quint32 identifier = CanOpen::cobHeartbeat + node.nodeId;
        const bool heard = tour.first()->count(identifier) > 0 && tour.second()->count(identifier) > 0;
        tour.report().add(TourContext::tr("Node %1 (%2)").arg(node.nodeId).arg(QLatin1String(node.name)),
                          TourContext::tr("heard on both interfaces"),
                          heard ? TourContext::tr("heard on both interfaces") : TourContext::tr("not heard on both"),
                          heard);
    }
    return true;
}

bool sendBothWays(TourContext &tour)
{
    AbstractCanAdapter *first = tour.interfaceAt(0);
    AbstractCanAdapter *second = tour.interfaceAt(1);
    tour.first()->keep(TourIdentifiers::secondToFirst);
    tour.second()->keep(TourIdentifiers::firstToSecond);
    const quint64 sentBefore = first->framesSent() + second->framesSent();
    const quint64 takenByFirst = writeNumbered(first, TourIdentifiers::firstToSecond);
    const quint64 takenBySecond = writeNumbered(second, TourIdentifiers::secondToFirst);
    TourContext::await([&] {
        return tour.second()->count(TourIdentifiers::firstToSecond) >= framesEachWay
            && tour.first()->count(TourIdentifiers::secondToFirst) >= framesEachWay;
    });

    tour.report().compare(TourContext::tr("Frames sent by Demo 1"), framesEachWay, takenByFirst);
    tour.report().compare(TourContext::tr("  received by Demo 2"), takenByFirst,
                          tour.second()->count(TourIdentifiers::firstToSecond));
    tour.report().compare(TourContext::tr("  in their order"), TourContext::tr("yes"),
                          TourContext::yesOrNo(isInOrder(tour.second()->kept(TourIdentifiers::firstToSecond))));
    tour.report().compare(TourContext::tr("Frames sent by Demo 2"), framesEachWay, takenBySecond);
    tour.report().compare(TourContext::tr("  received by Demo 1"), takenBySecond,
                          tour.first()->count(TourIdentifiers::secondToFirst));
    tour.report().compare(TourContext::tr("  in their order"), TourContext::tr("yes"),
                          TourContext::yesOrNo(isInOrder(tour.first()->kept(TourIdentifiers::secondToFirst))));
    tour.report().compare(TourContext::tr("Frames sent, as the interfaces count"), 2 * framesEachWay,
                          first->framesSent() + second->framesSent() - sentBefore);
    return true;
}

bool readObject(TourContext &tour)
{
    const DemoNodeProfile &node = demoNodeProfiles().front();
    const quint32 answerIdentifier = CanOpen::cobSdoResponse + node.nodeId;
    const quint64 answersBefore = tour.first()->count(answerIdentifier);
    CAN::CanMessage request;
    request.id = CanOpen::cobSdoRequest + node.nodeId;
    CanOpen::append<quint8>(request, 0x40);
    CanOpen::append<quint16>(request, CanOpen::objectDeviceType);
    CanOpen::append<quint8>(request, 0);
    CanOpen::append<quint32>(request, 0);
    tour.interfaceAt(0)->write(&request);
    TourContext::await([&] { return tour.first()->count(answerIdentifier) > answersBefore; });

    CAN::CanMessage answer = request;
    answer.id = answerIdentifier;
    answer.data[0] = 0x43;
    qToLittleEndian<quint32>(node.deviceType, answer.data + 4);
    tour.report().compare(TourContext::tr("Node %1 answers what it is").arg(node.nodeId), FrameText::data(answer),
                          FrameText::data(tour.first()->last(answerIdentifier)));
    return true;
}

bool stopAndStartNode(TourContext &tour)
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
        tour.interfaceAt(0)->write(&message);
        const auto wanted = static_cast<quint8>(command.second);
        TourContext::await([&] { return tour.first()->last(heartbeat).data[0] == wanted; });
        tour.report().compare(TourContext::tr("Node %1 after \"%2\"").arg(node).arg(CanOpenText::meaning(message)),
                              CanOpenText::nodeState(wanted),
                              CanOpenText::nodeState(tour.first()->last(heartbeat).data[0]));
    }
    return true;
}

bool seeBitRateSwitch(TourContext &tour)
{
    TourContext::await([&] { return tour.second()->switchedFrames() > 0; });
    const bool seen = tour.second()->switchedFrames() > 0;
    tour.report().add(TourContext::tr("CAN FD frames with bit rate switch"), TourContext::tr("some"),
                      QString::number(tour.second()->switchedFrames()), seen);
    return true;
}

bool connectAgain(TourContext &tour)
{
    Session *session = tour.window()->session();
    tour.window()->disconnectAdapters();
    tour.report().compare(TourContext::tr("Connected after a disconnection"), TourContext::tr("no"),
                          TourContext::yesOrNo(session->isConnected()));
    tour.report().compare(TourContext::tr("Scheduler after a disconnection"), TourContext::tr("none"),
                          session->scheduler() != nullptr ? TourContext::tr("one") : TourContext::tr("none"));
    tour.takePicture(QStringLiteral("disconnected"), TourContext::tr("the disconnected window"));
    tour.window()->connectAdapters();
    if (session->adapters()->getConnectedAdapters().size() < 2)
        return tour.stop(session->failure());
    tour.probeInterfaces();
    TourContext::await([&] { return tour.allNodesHeard() && tour.second()->count(TourIdentifiers::cyclic) > 0; });
    tour.report().compare(TourContext::tr("All nodes heard after connecting again"), TourContext::tr("yes"),
                          TourContext::yesOrNo(tour.allNodesHeard()));
    tour.report().compare(TourContext::tr("Cyclic frames go on after connecting again"), TourContext::tr("yes"),
                          TourContext::yesOrNo(tour.second()->count(TourIdentifiers::cyclic) > 0));
    tour.pressButton(QStringLiteral("btnStopAllCyclic"));
    return true;
}

bool loseNothing(TourContext &tour)
{
    for (int row = 0; row < 2; ++row) {
        tour.report().compare(TourContext::tr("Frames lost by Demo %1").arg(row + 1), 0,
                              tour.interfaceAt(row)->framesLost());
    }
    tour.report().compare(TourContext::tr("Frames lost by the network"), 0,
                          tour.window()->demo()->network()->framesLost());
    tour.report().compare(TourContext::tr("Frames that the trace did not keep"), 0,
                          tour.window()->session()->trace()->lostMessageCount());
    return true;
}

} // namespace TourSteps
