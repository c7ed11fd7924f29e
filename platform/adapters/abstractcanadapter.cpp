#include "adaptercontract.h"

#include "bitrateentry.h"
#include "optionbytes.h"

#include <QDataStream>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <mutex>

static_assert(offsetof(AbstractCanAdapter::SocketCANProps, canFd) == 0);
static_assert(offsetof(AbstractCanAdapter::SocketCANProps, bitrate) == 2);
static_assert(offsetof(AbstractCanAdapter::SocketCANProps, fdBitrate) == 4);
static_assert(offsetof(AbstractCanAdapter::SocketCANProps, restartMs) == 6);
static_assert(sizeof(AbstractCanAdapter::SocketCANProps) == 8);
static_assert(offsetof(AbstractCanAdapter::PeakAdvValues, useAdvanced) == 0);
static_assert(offsetof(AbstractCanAdapter::PeakAdvValues, clockMHz) == 4);
static_assert(offsetof(AbstractCanAdapter::PeakAdvValues, preScaler) == 8);
static_assert(offsetof(AbstractCanAdapter::PeakAdvValues, tSeg1) == 9);
static_assert(offsetof(AbstractCanAdapter::PeakAdvValues, tSeg2) == 10);
static_assert(offsetof(AbstractCanAdapter::PeakAdvValues, sjw) == 11);
static_assert(offsetof(AbstractCanAdapter::SystecXM3AdvValues, filterMode) == 0);
static_assert(offsetof(AbstractCanAdapter::SystecXM3AdvValues, canId1) == 4);
static_assert(offsetof(AbstractCanAdapter::SystecXM3AdvValues, canId4) == 16);
static_assert(offsetof(AbstractCanAdapter::SystecXM3AdvValues, filterAMR) == 20);
static_assert(offsetof(AbstractCanAdapter::SystecXM3AdvValues, filterACR) == 24);
static_assert(AbstractCanAdapter::optionCount == AbstractCanAdapter::OptionForcedEcho + 1);

class AbstractCanAdapterPrivate
{
public:
    QMap<unsigned int, QVariant> options;
    QPointer<AbstractCanAdapter> linkedAdapter;
    std::atomic<bool> running{false};
    std::atomic<quint64> received{0};
    std::atomic<quint64> sent{0};
    std::atomic<quint64> lost{0};
    mutable std::mutex errorMutex;
    QString errorText;
};

namespace {
void registerAdapterRecords()
{
    QMetaType::registerEqualsComparator<AbstractCanAdapter::SocketCANProps>();
    QMetaType::registerEqualsComparator<AbstractCanAdapter::PeakAdvValues>();
    QMetaType::registerEqualsComparator<AbstractCanAdapter::SystecXM3AdvValues>();
    qRegisterMetaTypeStreamOperators<AbstractCanAdapter::SocketCANProps>();
    qRegisterMetaTypeStreamOperators<AbstractCanAdapter::PeakAdvValues>();
    qRegisterMetaTypeStreamOperators<AbstractCanAdapter::SystecXM3AdvValues>();
}
Q_CONSTRUCTOR_FUNCTION(registerAdapterRecords)

/// What a network interface of the system is set to is no choice of the user's: two adapters on it are the same whatever
/// was last seen there.
bool isDictatedBySystem(AbstractCanAdapter::AdapterOption option)
{
    return option == AbstractCanAdapter::OptionUseCanFd || option == AbstractCanAdapter::OptionAutoBusOn
        || option == AbstractCanAdapter::OptionFdBitrate || option == AbstractCanAdapter::OptionBitrate;
}

/// The form offers the whole state of an interface as its bitrate; an option holds the one rate of it.
QVariant bitrateOf(const AbstractCanAdapter::SocketCANProps &props, AbstractCanAdapter::AdapterOption option)
{
    const quint16 bitrate = option == AbstractCanAdapter::OptionFdBitrate ? props.fdBitrate : props.bitrate;
    return QVariant::fromValue(bitrateEntry(bitrate));
}
} // namespace

QVariant AbstractCanAdapter::SocketCANProps::toQVariant() const
{
    return bitrate == 0 ? QVariant() : QVariant::fromValue(*this);
}

AbstractCanAdapter::AbstractCanAdapter(CanAdapterType type, const QString &device, QObject *parent)
    : QObject(parent)
    , d(std::make_unique<AbstractCanAdapterPrivate>())
{
    d->options.insert(OptionAdapterType, static_cast<unsigned int>(type));
    d->options.insert(OptionDeviceName, device);
}

AbstractCanAdapter::~AbstractCanAdapter() = default;

QVariant AbstractCanAdapter::getCanAdapterOption(AdapterOption option) const
{
    return d->options.value(option);
}

void AbstractCanAdapter::setCanAdapterOption(AdapterOption option, QVariant value)
{
    if (option >= optionCount)
        return;
    if (option == OptionListenOnly)
        listenOnly = value.toBool();
    const bool isBitrate = option == OptionFdBitrate || option == OptionBitrate;
    if (isBitrate && isSocketCan() && value.userType() == qMetaTypeId<SocketCANProps>())
        value = bitrateOf(value.value<SocketCANProps>(), option);
    d->options.insert(option, value);
}

bool AbstractCanAdapter::getRunning() const
{
    return d->running;
}

bool AbstractCanAdapter::isActiveAdapter() const
{
    return getCanAdapterOption(OptionActive).toBool();
}

void AbstractCanAdapter::setLinkedAdapter(QPointer<AbstractCanAdapter> adapter)
{
    d->linkedAdapter = adapter;
}

QPointer<AbstractCanAdapter> AbstractCanAdapter::linkedAdapter() const
{
    return d->linkedAdapter;
}

QByteArray AbstractCanAdapter::getValuesAsByteArray() const
{
    return writeOptionValues(d->options);
}

bool AbstractCanAdapter::restoreValues(const QByteArray &bytes)
{
    const OptionValues restored = readOptionValues(bytes);
    bool allKnown = restored.complete;
    for (auto value = restored.values.cbegin(); value != restored.values.cend(); ++value) {
        // What the adapter is was decided when it was made.
        if (value.key() == OptionAdapterType || value.key() == OptionDeviceName)
            continue;
        allKnown = allKnown && value.key() < optionCount;
        setCanAdapterOption(static_cast<AdapterOption>(value.key()), *value);
    }
    return allKnown;
}

bool AbstractCanAdapter::operator==(const AbstractCanAdapter &other) const
{
    // The list is virtual and, as adapter libraries have it, not const.
    const QList<AdapterOption> mine = const_cast<AbstractCanAdapter *>(this)->getSupportedOptions();
    const QList<AdapterOption> theirs = const_cast<AbstractCanAdapter &>(other).getSupportedOptions();
    const auto sameValue = [&](AdapterOption option) {
        return (isSocketCan() && isDictatedBySystem(option))
            || getCanAdapterOption(option) == other.getCanAdapterOption(option);
    };
    return sameValue(OptionAdapterType) && mine == theirs && std::all_of(mine.begin(), mine.end(), sameValue);
}

bool AbstractCanAdapter::isSocketCan() const
{
    return getCanAdapterOption(OptionAdapterType).toUInt() == CanAdapterSocketCan;
}

bool AbstractCanAdapter::operator!=(const AbstractCanAdapter &other) const
{
    return !(*this == other);
}

quint64 AbstractCanAdapter::framesReceived() const
{
    return d->received.load(std::memory_order_relaxed);
}

quint64 AbstractCanAdapter::framesSent() const
{
    return d->sent.load(std::memory_order_relaxed);
}

quint64 AbstractCanAdapter::framesLost() const
{
    return d->lost.load(std::memory_order_relaxed);
}

QString AbstractCanAdapter::errorText() const
{
    const std::lock_guard lock(d->errorMutex);
    return d->errorText;
}

void AbstractCanAdapter::setRunningState(bool running)
{
    if (d->running.exchange(running) != running)
        emit runningChanged(running);
}

void AbstractCanAdapter::setErrorText(const QString &text)
{
    const std::lock_guard lock(d->errorMutex);
    d->errorText = text;
}

void AbstractCanAdapter::countReceived(quint64 frames)
{
    d->received.fetch_add(frames, std::memory_order_relaxed);
}

void AbstractCanAdapter::countSent(quint64 frames)
{
    d->sent.fetch_add(frames, std::memory_order_relaxed);
}

void AbstractCanAdapter::countLost(quint64 frames)
{
    d->lost.fetch_add(frames, std::memory_order_relaxed);
}

void AbstractCanAdapter::resetCounters()
{
    d->received = 0;
    d->sent = 0;
    d->lost = 0;
}

bool operator==(const AbstractCanAdapter::SocketCANProps &a, const AbstractCanAdapter::SocketCANProps &b)
{
    return a.canFd == b.canFd && a.bitrate == b.bitrate && a.fdBitrate == b.fdBitrate && a.restartMs == b.restartMs;
}

bool operator==(const AbstractCanAdapter::PeakAdvValues &a, const AbstractCanAdapter::PeakAdvValues &b)
{
    return a.useAdvanced == b.useAdvanced && a.clockMHz == b.clockMHz && a.preScaler == b.preScaler
        && a.tSeg1 == b.tSeg1 && a.tSeg2 == b.tSeg2 && a.sjw == b.sjw;
}

bool operator==(const AbstractCanAdapter::SystecXM3AdvValues &a, const AbstractCanAdapter::SystecXM3AdvValues &b)
{
    return a.filterMode == b.filterMode && a.canId1 == b.canId1 && a.canId2 == b.canId2 && a.canId3 == b.canId3
        && a.canId4 == b.canId4 && a.filterAMR == b.filterAMR && a.filterACR == b.filterACR;
}

QDataStream &operator<<(QDataStream &stream, const AbstractCanAdapter::SocketCANProps &value)
{
    return stream << value.canFd << value.bitrate << value.fdBitrate << value.restartMs;
}

QDataStream &operator>>(QDataStream &stream, AbstractCanAdapter::SocketCANProps &value)
{
    return stream >> value.canFd >> value.bitrate >> value.fdBitrate >> value.restartMs;
}

QDataStream &operator<<(QDataStream &stream, const AbstractCanAdapter::PeakAdvValues &value)
{
    return stream << value.useAdvanced << value.clockMHz << value.preScaler << value.tSeg1 << value.tSeg2 << value.sjw;
}

QDataStream &operator>>(QDataStream &stream, AbstractCanAdapter::PeakAdvValues &value)
{
    return stream >> value.useAdvanced >> value.clockMHz >> value.preScaler >> value.tSeg1 >> value.tSeg2 >> value.sjw;
}

QDataStream &operator<<(QDataStream &stream, const AbstractCanAdapter::SystecXM3AdvValues &value)
{
    return stream << value.filterMode << value.canId1 << value.canId2 << value.canId3 << value.canId4 << value.filterAMR
                  << value.filterACR;
}

QDataStream &operator>>(QDataStream &stream, AbstractCanAdapter::SystecXM3AdvValues &value)
{
    return stream >> value.filterMode >> value.canId1 >> value.canId2 >> value.canId3 >> value.canId4 >> value.filterAMR
        >> value.filterACR;
}
