#pragma once

#include "vcanbench.h"

/// Two links over serial lines, slcan0 and slcan1, on one bus of 500 kBit/s, both up: with a bitrate and a controller whose
/// state can be moved.
class SlcanPair
{
public:
    enum Bitrate {
        SetOnLink, ///< the link has one; when the line is unplugged, the kernel waits a second for its answer
        SetOnLine, ///< the link knows none
    };

    explicit SlcanPair(Bitrate bitrate = SetOnLink)
        : m_bitrate(bitrate)
        , m_emulator(QStringLiteral(VCAN_FOLDER "/slcan_emulator.py"))
    {
        m_isReady = attach(0) && attach(1);
    }

    bool isReady() const { return m_isReady; }
    /// Has the adapter of slcan0 say something of its controller: "sw000128".
    void say(const QByteArray &text) { m_emulator.say("0 " + text); }
    /// Takes the adapter of slcan0 off its line, and slcan0 with it.
    bool unplug()
    {
        m_emulator.say("0 unplug");
        return QTest::qWaitFor([] { return !QFile::exists(QStringLiteral("/sys/class/net/slcan0")); });
    }
    bool plug()
    {
        m_emulator.say("0 plug");
        return attach(0);
    }
    /// Both adapters take nothing more.
    void freeze() { m_emulator.freeze(); }

private:
    /// Makes the link of the adapter whose terminal comes next.
    bool attach(int number)
    {
        const QString name = QStringLiteral("slcan%1").arg(number);
        const bool onLink = m_bitrate == SetOnLink;
        return Vcan::run(QStringLiteral("slcan_attach %1 -n %2 %3")
                             .arg(QLatin1String(onLink ? "" : "-o -s6"), name, m_emulator.line()),
                         Vcan::Quiet)
            && Vcan::run(QStringLiteral("ip link set %1 up %2")
                             .arg(name, QLatin1String(onLink ? "type can bitrate 500000" : "")));
    }

    const Bitrate m_bitrate;
    Vcan::Tool m_emulator;
    bool m_isReady = false;
};
