#pragma once

#include "vcanbench.h"

/// Two links over serial lines, slcan0 and slcan1, on one bus of 500 kBit/s, both up: with a bitrate and a controller whose
/// state can be moved.
class SlcanPair
{
public:
    SlcanPair()
        : m_emulator(QStringLiteral(VCAN_FOLDER "/slcan_emulator.py"))
        , m_terminals(m_emulator.line().split(QLatin1Char(' ')))
    {
        m_isReady = m_terminals.size() == 2 && attach(0) && attach(1);
    }

    bool isReady() const { return m_isReady; }
    /// Has the adapter of slcan0 say something of its controller: "sw000128".
    void say(const QByteArray &text) { m_emulator.say("0 " + text); }
    /// Takes the adapter of slcan0 off its line.
    void unplug() { m_emulator.say("0 unplug"); }

    /// Both adapters take nothing more.
    void freeze() { m_emulator.freeze(); }

private:
    bool attach(int number)
    {
        const QString name = QStringLiteral("slcan%1").arg(number);
        return Vcan::run(QStringLiteral("slcan_attach -n %1 %2").arg(name, m_terminals.at(number)), Vcan::Quiet)
            && Vcan::run(QStringLiteral("ip link set %1 type can bitrate 500000").arg(name))
            && Vcan::run(QStringLiteral("ip link set %1 up").arg(name));
    }

    Vcan::Tool m_emulator;
    QStringList m_terminals;
    bool m_isReady = false;
};
