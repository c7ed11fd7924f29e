#include "demonodeprofiles.h"

#include "canopen.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr qint64 millisecond = 1000;
constexpr qint64 second = 1000 * millisecond;

/// A whole number from -amplitude to +amplitude.
int noise(const ProcessSample &sample, int amplitude)
{
    const auto range = static_cast<NoiseGenerator::result_type>(2 * amplitude + 1);
    return static_cast<int>(sample.noise() % range) - amplitude;
}

/// @param phase in turns
double sine(const ProcessSample &sample, qint64 period, double phase = 0.0)
{
    constexpr double turn = 6.283185307179586;
    return std::sin(turn * (static_cast<double>(sample.time % period) / static_cast<double>(period) + phase));
}

struct Motion
{
    qint32 position; ///< increments
    qint32 velocity; ///< increments a second
};

/// An axis that runs to and fro, with a rest at each end.
Motion axisMotion(qint64 time)
{
    constexpr qint32 stroke = 100000;
    constexpr qint64 moveTime = 2 * second;
    constexpr qint64 restTime = 500 * millisecond;
    constexpr qint32 speed = static_cast<qint32>(stroke * second / moveTime);

    const qint64 elapsed = time % (moveTime + restTime);
    const auto distance = static_cast<qint32>(stroke * std::min(elapsed, moveTime) / moveTime);
    const qint32 velocity = elapsed < moveTime ? speed : 0;
    const bool backward = time / (moveTime + restTime) % 2 == 1;
    return backward ? Motion{stroke - distance, -velocity} : Motion{distance, velocity};
}

void fillAxisPosition(CAN::CanMessage &pdo, const ProcessSample &sample)
{
    constexpr quint16 operationEnabled = 0x0237;
    constexpr quint16 targetReached = 0x0400;
    const Motion motion = axisMotion(sample.time);
    CanOpen::append<quint16>(pdo, motion.velocity == 0 ? operationEnabled | targetReached : operationEnabled);
    CanOpen::append<qint32>(pdo, motion.position);
}

void fillAxisLoad(CAN::CanMessage &pdo, const ProcessSample &sample)
{
    constexpr int friction = 150; // torque in 0.1 % of the rated one
    const Motion motion = axisMotion(sample.time);
    const int direction = (motion.velocity > 0) - (motion.velocity < 0);
    CanOpen::append<qint32>(pdo, motion.velocity + noise(sample, 20));
    CanOpen::append<qint16>(pdo, static_cast<qint16>(direction * friction + noise(sample, 8)));
    CanOpen::append<quint16>(pdo, static_cast<quint16>(sample.count));
}

/// Room and coolant, in 0.01 °C.
void fillTemperatures(CAN::CanMessage &pdo, const ProcessSample &sample)
{
    const double room = 2300 + 250 * sine(sample, 60 * second);
    const double coolant = 6100 + 900 * sine(sample, 90 * second, 0.25);
    CanOpen::append<qint16>(pdo, static_cast<qint16>(std::lround(room) + noise(sample, 5)));
    CanOpen::append<qint16>(pdo, static_cast<qint16>(std::lround(coolant) + noise(sample, 15)));
    CanOpen::append<quint16>(pdo, static_cast<quint16>(sample.count));
}

/// One input after the other is on for a moment; the outputs count the rounds.
void fillInputsAndOutputs(CAN::CanMessage &pdo, const ProcessSample &sample)
{
    constexpr qint64 inputTime = 250 * millisecond;
    const qint64 step = sample.time / inputTime;
    CanOpen::append<quint8>(pdo, static_cast<quint8>(1U << (step % 8)));
    CanOpen::append<quint8>(pdo, static_cast<quint8>(step / 8));
    CanOpen::append<quint16>(pdo, static_cast<quint16>(sample.count));
}

/// A shaft that swings between forward and backward: its position is the integral of its speed.
void fillEncoder(CAN::CanMessage &pdo, const ProcessSample &sample)
{
    constexpr qint64 swing = 20 * second;
    constexpr double topSpeed = 1500;          // 1/min
    constexpr double highestPosition = 651898; // steps, at 4096 a turn
    const double cosine = sine(sample, swing, 0.25);
    CanOpen::append<quint32>(pdo, static_cast<quint32>(std::lround(highestPosition * (1 - cosine) / 2)));
    CanOpen::append<qint16>(pdo, static_cast<qint16>(std::lround(topSpeed * sine(sample, swing)) + noise(sample, 2)));
}

/// Battery current in 10 mA, negative when it is discharged.
int batteryCurrent(const ProcessSample &sample)
{
    return static_cast<int>(std::lround(-1200 + 2500 * sine(sample, 30 * second))) + noise(sample, 20);
}

void fillBattery(CAN::CanMessage &pdo, const ProcessSample &sample)
{
    const int current = batteryCurrent(sample);
    CanOpen::append<quint16>(pdo, static_cast<quint16>(5920 + current / 40 + noise(sample, 2))); // 10 mV
    CanOpen::append<qint16>(pdo, static_cast<qint16>(current));
    CanOpen::append<quint8>(pdo, static_cast<quint8>(70 + std::lround(20 * sine(sample, 600 * second)))); // %
    CanOpen::append<qint8>(pdo, static_cast<qint8>(28 + std::lround(4 * sine(sample, 300 * second))));    // °C
    CanOpen::append<quint16>(pdo, static_cast<quint16>(sample.count));
}

void sendAsFd(CAN::CanMessage &pdo)
{
    pdo.fd = true;
    pdo.brs = true;
}

/// Sixteen cells in mV, none quite like the other.
void fillCellVoltages(CAN::CanMessage &pdo, const ProcessSample &sample)
{
    constexpr int cells = 16;
    sendAsFd(pdo);
    const auto common = static_cast<int>(std::lround(3700 + 40 * sine(sample, 30 * second)));
    for (int cell = 0; cell < cells; ++cell)
        CanOpen::append<quint16>(pdo, static_cast<quint16>(common + cell * 7 % 11 + noise(sample, 1)));
}

/// The logger: number of the record, time in ms, and current samples up to the brim.
void fillCurrentLog(CAN::CanMessage &pdo, const ProcessSample &sample)
{
    sendAsFd(pdo);
    CanOpen::append<quint32>(pdo, sample.count);
    CanOpen::append<quint32>(pdo, static_cast<quint32>(sample.time / millisecond));
    while (pdo.length < CAN::maxDataLength)
        CanOpen::append<qint16>(pdo, static_cast<qint16>(batteryCurrent(sample)));
}
} // namespace

const std::vector<DemoNodeProfile> &demoNodeProfiles()
{
    // Device types are those of the CiA profiles 402, 404, 401, 406 and 418; error codes are their classes' of CiA 301,
    // but for the drive's following error.
    static const std::vector<DemoNodeProfile> profiles = {
        {0x02,
         "Axis drive",
         0x00020192,
         0x00010402,
         0x00020001,
         0x10000002,
         500,
         20 * millisecond,
         {0x8611, 0x21},
         {{CanOpen::cobTpdo1, 10 * millisecond, fillAxisPosition},
          {CanOpen::cobTpdo2, 20 * millisecond, fillAxisLoad}}},
        {0x05,
         "Temperature sensor",
         0x00020194,
         0x00010404,
         0x00010003,
         0x10000005,
         1000,
         35 * millisecond,
         {0x4200, 0x09},
         {{CanOpen::cobTpdo1, 100 * millisecond, fillTemperatures}}},
        {0x0A,
         "Digital I/O",
         0x00030191,
         0x00010401,
         0x00010002,
         0x1000000A,
         800,
         50 * millisecond,
         {0x2300, 0x03},
         {{CanOpen::cobTpdo1, 50 * millisecond, fillInputsAndOutputs}}},
        {0x11,
         "Encoder",
         0x00020196,
         0x00010406,
         0x00030000,
         0x10000011,
         600,
         65 * millisecond,
         {0x5000, 0x81},
         {{CanOpen::cobTpdo1, 20 * millisecond, fillEncoder}}},
        {0x20,
         "Battery",
         0x000001A2,
         0x00010418,
         0x00010001,
         0x10000020,
         750,
         80 * millisecond,
         {0x3100, 0x05},
         {{CanOpen::cobTpdo1, 50 * millisecond, fillBattery},
          {CanOpen::cobTpdo3, 100 * millisecond, fillCellVoltages},
          {CanOpen::cobTpdo4, 100 * millisecond, fillCurrentLog}}},
    };
    return profiles;
}
