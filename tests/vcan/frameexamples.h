#pragma once

#include "canrecords.h"

#include <QTemporaryFile>

#include <algorithm>
#include <vector>

/// Frames of every kind, as we hold them and as can-utils write them.
namespace FrameExamples {
struct Example
{
    QString name;
    CAN::CanMessage message;
    QString text;
};

inline CAN::CanMessage makeMessage(quint32 id, const QByteArray &data, bool ext = false)
{
    CAN::CanMessage message;
    message.id = id;
    message.ext = ext;
    message.length = static_cast<quint8>(data.size());
    std::copy(data.begin(), data.end(), message.data);
    return message;
}

inline std::vector<Example> classic()
{
    CAN::CanMessage remote = makeMessage(0x701, {});
    remote.rtr = true;
    CAN::CanMessage longRemote = makeMessage(0x1BCDEF01, QByteArray(5, '\0'), true);
    longRemote.rtr = true;
    return {
        {QStringLiteral("no data"), makeMessage(0, {}), QStringLiteral("000#")},
        {QStringLiteral("eight bytes"), makeMessage(0x7FF, QByteArray::fromHex("00017F80FEFF0000")),
         QStringLiteral("7FF#00017F80FEFF0000")},
        {QStringLiteral("extended"), makeMessage(0x1FFFFFFF, "A", true), QStringLiteral("1FFFFFFF#41")},
        {QStringLiteral("small extended"), makeMessage(0x12, "A", true), QStringLiteral("00000012#41")},
        {QStringLiteral("remote"), remote, QStringLiteral("701#R")},
        {QStringLiteral("extended remote with a length"), longRemote, QStringLiteral("1BCDEF01#R5")},
    };
}

inline std::vector<Example> fd()
{
    // The kernel marks each of them by 4; the other bits are bit rate switch and error state indicator.
    constexpr int fdMark = 4;
    std::vector<Example> examples;
    for (int flags = 0; flags < 4; ++flags) {
        CAN::CanMessage message = makeMessage(0x123, "AB");
        message.fd = true;
        message.brs = (flags & 1) != 0;
        message.extraFlag = (flags & 2) != 0;
        examples.push_back({QStringLiteral("CAN FD, flags %1").arg(flags), message,
                            QStringLiteral("123##%1").arg(flags | fdMark) + QStringLiteral("4142")});
    }
    for (const int length : {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64}) {
        CAN::CanMessage message = makeMessage(0x1ABCDEF0, QByteArray(length, 'Z'), true);
        message.fd = true;
        examples.push_back({QStringLiteral("CAN FD, %1 bytes").arg(length), message,
                            QStringLiteral("1ABCDEF0##4") + QStringLiteral("5A").repeated(length)});
    }
    return examples;
}

inline std::vector<Example> all()
{
    std::vector<Example> examples = classic();
    const std::vector<Example> more = fd();
    examples.insert(examples.end(), more.begin(), more.end());
    return examples;
}

inline QStringList texts(const std::vector<Example> &examples)
{
    QStringList list;
    for (const Example &example : examples)
        list.append(example.text);
    return list;
}

inline QList<CAN::CanMessage> messages(const std::vector<Example> &examples)
{
    QList<CAN::CanMessage> list;
    for (const Example &example : examples)
        list.append(example.message);
    return list;
}

/// Makes a file as candump writes it, with a frame each millisecond.
inline bool record(QTemporaryFile &file, const char *link, const std::vector<Example> &examples)
{
    if (!file.open())
        return false;
    int number = 0;
    for (const Example &example : examples) {
        file.write("(1000." + QByteArray::number(1000 * ++number).rightJustified(6, '0') + ") " + link + ' '
                   + example.text.toLatin1() + '\n');
    }
    return file.flush();
}
} // namespace FrameExamples
