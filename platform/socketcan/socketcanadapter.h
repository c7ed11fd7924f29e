#pragma once

#include "canchannel.h"
#include "linkproperties.h"
#include "threadedadapter.h"

#include <QLoggingCategory>

#include <atomic>

Q_DECLARE_LOGGING_CATEGORY(lcSocketCan)

/// A CAN link of the system, whose device text begins with its name: "can0" or "can0|mcp251xfd".
///
/// The link belongs to the administrator: bitrates, CAN FD and the restart after bus off are as the system has them,
/// and nothing here changes them. A link that is there but down is OpenBusy; one that does not exist, or that is no CAN
/// link, OpenInvalidDevice, as is any where the kernel knows no CAN. If setBitrate() or OptionUseCanFd ask for what
/// the link does not have, open() answers OpenOtherSettings, and the options tell what it has.
///
/// CAN FD frames that come in are handed on whatever OptionUseCanFd says. Error frames always move the controller's
/// state, and are handed on and counted with OptionLogErrorFrames only. An echo of a sent frame (OptionForcedEcho) is
/// not counted as received. Listen-only means that write() refuses: whether the controller acknowledges what others
/// send is the administrator's choice.
///
/// The settings that sending does not need are read in open().
class SocketCanAdapter : public ThreadedAdapter, private CanChannelListener
{
    Q_OBJECT

public:
    explicit SocketCanAdapter(const QString &device, QObject *parent = nullptr);
    ~SocketCanAdapter() override;

    void setBitrate(quint16 bitrate) override;
    void setFdBitrate(quint16 bitrate) override;
    QList<AdapterOption> getSupportedOptions() override;
    CAN::CANBitTimingThresholds getThresholds(bool dataPhase) override;

protected:
    int openLink() override;
    /// Opens on an open socket in place of one of the link's.
    int openOn(FileDescriptor socket, const LinkProperties &link);

private:
    void endLink() override { m_channel.stop(); }
    bool isLinked() const override { return m_channel.isLinked(); }
    bool isReceiveThread() const override { return m_channel.isReceiveThread(); }
    WriteResult send(const CAN::CanMessage &message) override;
    void frameArrived(const canfd_frame &frame, std::size_t size, const ReceptionInfo &info) override;
    void framesDropped(quint32 frames) override;
    bool fellQuiet() override;
    void linkLost(int error) override;

    QString linkName() const;
    int adoptSettings(const LinkProperties &link);
    void readReceiveSettings();
    bool askState();
    void tellState(CAN::CanState state, CanTimeStamp stamp);

    quint16 m_wantedBitrate = 0;   // kBit/s; 0: whatever the link has
    quint16 m_wantedFdBitrate = 0; // kBit/s
    QString m_name;
    std::atomic<bool> m_busOff{false};
    // Of the receive thread, while there is one.
    bool m_hasController = false;
    bool m_logErrors = false;
    bool m_saidLoss = false;
    FrameClock m_clock;
    CAN::CanState m_state = CAN::CanStateUnknown;
    qint64 m_stateAskedAt = 0; // ns since 1970
    CanChannel m_channel;      // the last member: its thread uses the others
};
