#pragma once

#include "canrecords.h"

#include <QPair>
#include <QPointer>
#include <QStringList>

#include <memory>

class AbstractCanAdapterPrivate;
class CanAdapterFamily;

/// One CAN interface: what the rest of the system needs of a piece of hardware, or of a bus in software.
///
/// An adapter is made by CanAdapterFactory::createCanAdapter(). Its settings are numbered options. Everything but
/// write() and the counters belongs to the thread that made the object; newCanMessage(), newCanState() and
/// interfaceError() may be emitted from the adapter's own receive thread.
///
/// A class that derives from this one closes its hardware in its own destructor: the base class can no longer do it.
class KESTRUNE_PLATFORM_EXPORT AbstractCanAdapter : public QObject
{
    Q_OBJECT

public:
    enum CanAdapterType : unsigned int {
        CanAdapterNone = 0, ///< no type chosen yet; never in a list
        CanAdapterSocketCan = 1,
        CanAdapterPcanBasic = 2,
        CanAdapterSontheim = 3,
        CanAdapterCan4Linux = 4,
        CanAdapterEmsCpc = 5,
        CanAdapterDemo = 6,
        CanAdapterSystecUsb = 7,
        CanAdapterSystecEthernet = 8,
        CanAdapterKvaser = 9,
        CanAdapterVectorVxl = 10,
        CanAdapterJanzTec = 11,
        CanAdapterGridConnectUsb = 12,
        CanAdapterSerialInternExtern = 13,
        CanAdapterMqPedelecUsb = 14,
        CanAdapterVelmorSerial = 15,
        CanAdapterPcanAdvanced = 16,
        CanAdapterIxxatVci3 = 17,
        CanAdapterUsbVendor18 = 18,
        CanAdapterNoBtrRow19 = 19,
        CanAdapterFixedNetwork20 = 20,
        CanAdapterSystecXm3 = 21,
    };
    Q_ENUM(CanAdapterType)

    enum AdapterOption : unsigned int {
        OptionUseCanFd = 0,    ///< bool
        OptionAdapterType = 1, ///< unsigned int, a CanAdapterType
        OptionAdapterName = 2, ///< string, as shown to the user
        OptionDeviceName = 3,  ///< string, the device text
        OptionDeviceData = 4,  ///< unsigned int, the feature word of the device
        OptionIpAddress = 5,   ///< string
        OptionPort = 6,        ///< string
        OptionReserved7 = 7,
        OptionHardwareFlowControl = 8, ///< bool
        OptionSerialBaudrate = 9,      ///< unsigned int
        OptionParity = 10,             ///< int: 0 none, 1 even, 2 odd
        OptionDataBits = 11,           ///< unsigned int, 5 to 8
        OptionStopBits = 12,           ///< unsigned int: 1 one, 2 two, 3 one and a half
        OptionInternExtern = 13,       ///< int: 0 intern, 1 extern
        OptionReconnectTimeout = 14,   ///< int, ms
        OptionConnectTimeout = 15,     ///< int, ms
        OptionDisconnectTimeout = 16,  ///< int, ms
        OptionIpProtocol = 17,         ///< int: 0 TCP, 1 UDP
        OptionReserved18 = 18,
        OptionReserved19 = 19,
        OptionReserved20 = 20,
        OptionPeakAdvValues = 21, ///< PeakAdvValues
        OptionResetDevice = 22,   ///< bool
        OptionSingleWire = 23,    ///< bool
        OptionLowSpeed = 24,      ///< bool
        OptionReserved25 = 25,
        OptionAutoBusOn = 26,            ///< bool
        OptionLogErrorFrames = 27,       ///< bool
        OptionContinuousSystemTime = 28, ///< bool
        OptionSystemTimestamp = 29,      ///< bool
        OptionAdapterId = 30,            ///< unsigned short, the key in the collection; no setting of a form
        OptionReserved31 = 31,
        OptionReserved32 = 32,
        OptionListenOnly = 33,          ///< bool
        OptionActive = 34,              ///< bool; no setting of a form
        OptionPrimary = 35,             ///< bool; no setting of a form
        OptionBtrExt = 36,              ///< unsigned int
        OptionDescription = 37,         ///< string
        OptionUsdoNodeId = 38,          ///< int, 1 to 127
        OptionXm3AdvValues = 39,        ///< SystecXM3AdvValues
        OptionLinkedAdapter = 40,       ///< unsigned int, identifier of the partner, 0 for none
        OptionClassicBusParameter = 41, ///< CAN::CANClassicBusParameter
        OptionFdBusParameter = 42,      ///< CAN::CANFDBusParameter
        OptionFdBitrate = 43,           ///< CAN::CANBitrateDesc
        OptionBitrate = 44,             ///< CAN::CANBitrateDesc
        OptionForcedEcho = 45,          ///< bool
    };
    Q_ENUM(AdapterOption)

    /// Code that walks all options loops from 0 up to and excluding this.
    static constexpr unsigned int optionCount = 46;

    /// The bits of a device's feature word.
    enum DeviceFeature : unsigned int {
        FeatureListenOnly = 0x10,
        FeatureLowSpeedSelectable = 0x40,
        FeatureCanFd = 0x80,
        FeatureErrorFrames = 0x100,
        FeatureAutoBusOnChangeable = 0x200,
        FeatureLowSpeedOnly = 0x400,     ///< takes effect when FeatureLowSpeedSelectable is clear
        FeatureAutoBusOnDefault = 0x800, ///< state of auto bus on when FeatureAutoBusOnChangeable is clear
        FeatureAutoBusOnForced = 0x1000,
        FeaturesUnknown = 0x80000000, ///< in place of a feature word: ask the factory by device name
    };

    /// What open() answers. Any other number says that the interface does not exist or is busy.
    enum OpenResult : int {
        OpenOk = 0,
        OpenBusy = 1,
        OpenInvalidBitrate = 3,
        OpenOtherSettings = 4, ///< open, but the device was already running with other settings
        OpenInvalidDevice = 5,
    };

    /// What write() answers.
    enum WriteResult : int {
        WriteOk = 0,
        WriteNotOpen = 1,
        WriteListenOnly = 2,
        WriteInvalidFrame = 3, ///< longer than its kind allows, or of a kind that is switched off
        WriteLost = 4,         ///< the hardware did not take the frame within its time-out
    };

    /// State of a network interface as the system reports it.
    struct KESTRUNE_PLATFORM_EXPORT SocketCANProps
    {
        bool canFd = false;
        quint16 bitrate = 500;    ///< kBit/s; 0 means that the system gave no answer
        quint16 fdBitrate = 2000; ///< kBit/s
        quint16 restartMs = 0;    ///< restart delay after bus off in ms, 0 for none

        /// The record in a variant, or an invalid variant when `bitrate` is 0.
        QVariant toQVariant() const;
    };

    /// Hand-made timing of the adapter type "PCAN Advanced".
    struct PeakAdvValues
    {
        bool useAdvanced = false;
        quint32 clockMHz = 0;
        quint8 preScaler = 0;
        quint8 tSeg1 = 0;
        quint8 tSeg2 = 0;
        quint8 sjw = 0;
    };

    /// Hardware filter of the adapter type CanAdapterSystecXm3.
    struct SystecXM3AdvValues
    {
        quint32 filterMode = 0;
        quint32 canId1 = 0;
        quint32 canId2 = 0;
        quint32 canId3 = 0;
        quint32 canId4 = 0;
        quint32 filterAMR = 0xFFFFFFFF; ///< acceptance mask
        quint32 filterACR = 0;          ///< acceptance code
    };

    /// Listen-only state. The interface form writes it directly, before it writes the options.
    bool listenOnly = false;

    AbstractCanAdapter(CanAdapterType type, const QString &device, QObject *parent = nullptr);
    ~AbstractCanAdapter() override;

    /// Opens the hardware with the options and bitrates set so far; an OpenResult or another number.
    /// Runs on the GUI thread and must not block for long.
    virtual int open() = 0;
    /// Closes the hardware; getRunning() gives false afterwards. Harmless on a closed adapter.
    virtual void close() = 0;
    /// @param bitrate kBit/s, for the next open()
    virtual void setBitrate(quint16 bitrate) = 0;
    /// @param bitrate of the data phase, kBit/s, for the next open()
    virtual void setFdBitrate(quint16 bitrate) = 0;
    virtual int getDeviceNumber() = 0;
    /// Called with true after a successful open(), when all connections stand.
    virtual void setRunning(bool running) = 0;
    /// The options that are settings of this adapter. Never OptionAdapterId, OptionActive and OptionPrimary,
    /// which the collection keeps.
    virtual QList<AdapterOption> getSupportedOptions() = 0;
    /// Limits of the controller for the arbitration phase (false) or the data phase (true).
    virtual CAN::CANBitTimingThresholds getThresholds(bool dataPhase) = 0;

public slots:
    /// Sends one frame, from any thread; the frame stays the caller's. Blocks no longer than the adapter's
    /// time-out. A frame that is not sent is counted as lost.
    virtual AbstractCanAdapter::WriteResult write(CAN::CanMessage *message) = 0;

public:
    /// Invalid if the adapter has no such value.
    QVariant getCanAdapterOption(AdapterOption option) const;
    /// SocketCANProps given to a SocketCAN adapter as one of its two bitrates are stored as that CANBitrateDesc.
    void setCanAdapterOption(AdapterOption option, QVariant value);

    bool getRunning() const;
    /// The adapter takes part in a connection of several adapters: the value of OptionActive.
    bool isActiveAdapter() const;

    /// The partner adapter; null clears it.
    void setLinkedAdapter(QPointer<AbstractCanAdapter> adapter);
    QPointer<AbstractCanAdapter> linkedAdapter() const;

    /// All settings, with identifier, roles and link, in a form that restoreValues() reads back.
    QByteArray getValuesAsByteArray() const;
    /// Takes over what `bytes` holds. Unknown options are skipped; damaged bytes restore what comes before the
    /// damage. False if anything was missing, damaged or unknown. Type and device text stay as they are.
    bool restoreValues(const QByteArray &bytes);

    /// Same type and same values of all supported options. Of a SocketCAN adapter what the system dictates does not
    /// count: OptionUseCanFd, OptionAutoBusOn and the two bitrates.
    bool operator==(const AbstractCanAdapter &other) const;
    bool operator!=(const AbstractCanAdapter &other) const;

    // Counters since the last open(), readable from any thread.
    quint64 framesReceived() const;
    quint64 framesSent() const;
    quint64 framesLost() const; ///< in either direction

    /// Why the last open() failed or the connection ended, in words for the user; empty if all is well.
    QString errorText() const;

    /// Bitrate in kBit/s and sample point as a ratio of the given registers: one sync quantum, tSeg1, tSeg2.
    /// A prescaler or clock of 0 gives the default record.
    static CAN::CANBitrateDesc getBitrateFromTimings(quint16 clockMHz, quint8 preScaler, quint16 tSeg1, quint16 tSeg2);

    /// The registers that come closest to a bitrate and, among those, to a sample point.
    /// @param bitrate kBit/s
    /// @param samplePoint per cent
    /// @param found false if no setting within the limits stays within 0.5 % of the bitrate; the result is then zero
    /// @param exactOnly accept no deviation of the bitrate at all
    static CanBitTimingValues getTimingParameters(quint8 clockMHz, quint16 bitrate, double samplePoint, bool &found,
                                                  bool exactOnly, CAN::CANBitTimingThresholds thresholds);

signals:
    /// The connection ended by itself. Emitted once a connection, from any thread.
    void interfaceError();
    /// A frame came in. From the receive thread; the pointer is good during the call only.
    void newCanMessage(CAN::CanRxMessage *pCanMessage);
    void newCanState(CAN::CanState canState, CanTimeStamp ts);
    /// getRunning() changed. On the thread that made the object.
    void runningChanged(bool running);

protected:
    /// Sets what getRunning() gives; for close() and setRunning() of the derived class.
    void setRunningState(bool running);
    /// From any thread.
    void setErrorText(const QString &text);

    // From any thread.
    void countReceived(quint64 frames = 1);
    void countSent(quint64 frames = 1);
    void countLost(quint64 frames = 1);
    void resetCounters();

private:
    Q_DISABLE_COPY(AbstractCanAdapter)

    bool isSocketCan() const;

    std::unique_ptr<AbstractCanAdapterPrivate> d;
};

KESTRUNE_PLATFORM_EXPORT bool operator==(const AbstractCanAdapter::SocketCANProps &a,
                                         const AbstractCanAdapter::SocketCANProps &b);
KESTRUNE_PLATFORM_EXPORT bool operator==(const AbstractCanAdapter::PeakAdvValues &a,
                                         const AbstractCanAdapter::PeakAdvValues &b);
KESTRUNE_PLATFORM_EXPORT bool operator==(const AbstractCanAdapter::SystecXM3AdvValues &a,
                                         const AbstractCanAdapter::SystecXM3AdvValues &b);

inline bool operator!=(const AbstractCanAdapter::SocketCANProps &a, const AbstractCanAdapter::SocketCANProps &b)
{
    return !(a == b);
}
inline bool operator!=(const AbstractCanAdapter::PeakAdvValues &a, const AbstractCanAdapter::PeakAdvValues &b)
{
    return !(a == b);
}
inline bool operator!=(const AbstractCanAdapter::SystecXM3AdvValues &a, const AbstractCanAdapter::SystecXM3AdvValues &b)
{
    return !(a == b);
}

KESTRUNE_PLATFORM_EXPORT QDataStream &operator<<(QDataStream &stream, const AbstractCanAdapter::SocketCANProps &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator>>(QDataStream &stream, AbstractCanAdapter::SocketCANProps &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator<<(QDataStream &stream, const AbstractCanAdapter::PeakAdvValues &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator>>(QDataStream &stream, AbstractCanAdapter::PeakAdvValues &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator<<(QDataStream &stream,
                                                 const AbstractCanAdapter::SystecXM3AdvValues &value);
KESTRUNE_PLATFORM_EXPORT QDataStream &operator>>(QDataStream &stream, AbstractCanAdapter::SystecXM3AdvValues &value);

Q_DECLARE_METATYPE(AbstractCanAdapter::SocketCANProps)
Q_DECLARE_METATYPE(AbstractCanAdapter::PeakAdvValues)
Q_DECLARE_METATYPE(AbstractCanAdapter::SystecXM3AdvValues)

/// Which adapter type the USB devices of a vendor belong to, by vendor number; for hot-plug notices.
KESTRUNE_PLATFORM_EXPORT extern const QMap<unsigned int, AbstractCanAdapter::CanAdapterType> usbVendorAdapterTypes;

/// Tells that devices came or went; see CanAdapterFactory::notifier().
class KESTRUNE_PLATFORM_EXPORT CanAdapterNotifier : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

signals:
    void devicesChanged(AbstractCanAdapter::CanAdapterType type);
};

/// Makes adapters and answers what adapters there are: a face over the registered families.
/// An unknown type gets the answers of a family without devices. GUI thread only.
class KESTRUNE_PLATFORM_EXPORT CanAdapterFactory
{
public:
    /// A new adapter of the type, for the given device text; null if it cannot be made. The caller owns it.
    static AbstractCanAdapter *createCanAdapter(AbstractCanAdapter::CanAdapterType type, QString device);
    /// (visible name, type) in display order.
    static QList<QPair<QString, AbstractCanAdapter::CanAdapterType>> getImplementedAdapters();
    /// Device text to feature word, for the devices now present.
    static QMap<QString, unsigned int> getAdvInterfaceList(AbstractCanAdapter::CanAdapterType type);
    /// @param fd bitrates of the arbitration phase of a CAN FD bus, which may differ from a classic one's
    static QList<CAN::CANBitrateDesc> getSupportedBitrates(AbstractCanAdapter::CanAdapterType type, bool fd);
    static QList<CAN::CANBitrateDesc> getSupportedFDBitrates(AbstractCanAdapter::CanAdapterType type);
    static bool isBaudrateChangeable(AbstractCanAdapter::CanAdapterType type);
    static bool isAdditionalConfigAvailable(AbstractCanAdapter::CanAdapterType type);
    static bool isCANClassicBaudrateSettingAvailable(AbstractCanAdapter::CanAdapterType type);
    static bool isCANFDBaudrateSettingAvailable(AbstractCanAdapter::CanAdapterType type);
    static bool isInterfaceFd(AbstractCanAdapter::CanAdapterType type, QString device);
    static bool isInterfaceLowSpeed(AbstractCanAdapter::CanAdapterType type, QString device);
    static bool canDisableAutoBusOn(AbstractCanAdapter::CanAdapterType type, QString device);
    /// What the system says of this network interface now; `bitrate` 0 if it says nothing.
    static AbstractCanAdapter::SocketCANProps getSocketCanProps(QString device);

    /// Adds a family behind the others, or puts it in the place of the one of its type.
    static void registerFamily(std::unique_ptr<CanAdapterFamily> family);
    static void unregisterFamily(AbstractCanAdapter::CanAdapterType type);

    /// Lives as long as the process. Families emit its signal; forms listen.
    static CanAdapterNotifier *notifier();
};
