// Our trace files in the hands of other programs, and theirs in ours.

#include "datachunkhandler.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {
using Change = void (*)(CAN::CanRxMessage &);

CAN::CanRxMessage frame(
    quint32 id, const QByteArray &data, Change change = [](CAN::CanRxMessage &) {})
{
    CAN::CanRxMessage frame;
    frame.timeStamp = CanTimeStamp(1600000000, 250000);
    frame.message.id = id;
    frame.message.length = static_cast<quint8>(data.size());
    std::copy(data.begin(), data.end(), frame.message.data);
    change(frame);
    return frame;
}

/// Runs a program of the packages; what it wrote, or what went wrong.
QByteArray output(const QString &program, const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    // Times in that of the world, texts in UTF-8, whoever runs this.
    process.setEnvironment({QStringLiteral("PATH=") + QString::fromLocal8Bit(qgetenv("PATH")), QStringLiteral("TZ=UTC"),
                            QStringLiteral("LC_ALL=C.UTF-8"), QStringLiteral("HOME=/nonexistent")});
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return "failed: " + process.errorString().toLocal8Bit() + process.readAllStandardError();
    return process.readAllStandardOutput();
}

/// The analyser's view of a file: these fields of each frame, with a ';' between.
QStringList analysed(const QString &fileName, const QStringList &fields)
{
    QStringList arguments{QStringLiteral("-r"), fileName,
                          QStringLiteral("-T"), QStringLiteral("fields"),
                          QStringLiteral("-E"), QStringLiteral("separator=;")};
    for (const QString &field : fields)
        arguments << QStringLiteral("-e") << field;
    const QString text = QString::fromUtf8(output(QStringLiteral("tshark"), arguments));
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QVector<CAN::CanRxMessage> framesOf(const DatachunkHandler &trace)
{
    return trace.getMessages(0, trace.getMessageCount());
}
} // namespace

Q_DECLARE_METATYPE(QVector<CAN::CanRxMessage>)

class TestOtherPrograms : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void analyserSeesEachFrameAsItWas_data();
    void analyserSeesEachFrameAsItWas();
    void analyserSeesTheTimes();
    void analyserSeesTheNotes();
    void analyserReadsRecordings();
    void capturesOfOtherProgramsLoad_data();
    void capturesOfOtherProgramsLoad();
    void mergedTracesLoad();
    void commentsOfOtherProgramsAreNotes();
    void capturesMadeOfTextLoad_data();
    void capturesMadeOfTextLoad();
    void captureOfAnotherNetworkIsRefused();

private:
    QString path(const char *name) const { return m_directory->filePath(QLatin1String(name)); }
    QString save(const QVector<CAN::CanRxMessage> &frames);

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestOtherPrograms::init()
{
    m_directory.reset(new QTemporaryDir);
}

QString TestOtherPrograms::save(const QVector<CAN::CanRxMessage> &frames)
{
    DatachunkHandler trace;
    for (const CAN::CanRxMessage &frame : frames)
        trace.appendCanMessage(frame);
    const QString fileName = path("trace.qrm");
    return trace.saveQrmFile(fileName) ? fileName : QString();
}

void TestOtherPrograms::analyserSeesEachFrameAsItWas_data()
{
    QTest::addColumn<CAN::CanRxMessage>("sent");
    QTest::addColumn<QString>("seen");

    const auto row = [](const char *name, const CAN::CanRxMessage &sent, const char *seen) {
        QTest::newRow(name) << sent << QString::fromLatin1(seen);
    };
    // Protocols; identifier, extended, remote, error; length, data; and if it is CAN FD, rate switch and error state.
    row("standard", frame(0x123, "abc"), "can:data;291;0;0;0;3;616263;;");
    row("no data", frame(0x7FF, {}), "can;2047;0;0;0;0;;;");
    row("extended", frame(0x1ABCDEF0, "abcdefgh", [](auto &f) { f.message.ext = true; }),
        "can:data;448585456;1;0;0;8;6162636465666768;;");
    row("remote", frame(0x123, QByteArray(4, '\0'), [](auto &f) { f.message.rtr = true; }),
        "can:data;291;0;1;0;4;00000000;;");
    row("error", frame(0x4, QByteArray(8, '\1'), [](auto &f) { f.message.errorFrame = true; }), "can;;;;1;8;;;");
    row("fd", frame(0x123, "abc", [](auto &f) { f.message.fd = true; }), "can:data;291;0;;;3;616263;0;0");
    row("fd with switched rate", frame(0x123, "abc", [](auto &f) { f.message.fd = f.message.brs = true; }),
        "can:data;291;0;;;3;616263;1;0");
    row("fd of a passive sender", frame(0x123, "abc", [](auto &f) { f.message.fd = f.message.extraFlag = true; }),
        "can:data;291;0;;;3;616263;0;1");
    row("fd with an extended identifier", frame(0x10000, "a", [](auto &f) { f.message.fd = f.message.ext = true; }),
        "can:data;65536;1;;;1;61;0;0");
    row("classic of a passive sender", frame(0x123, "a", [](auto &f) { f.message.extraFlag = true; }),
        "can:data;291;0;0;0;1;61;;");
}

void TestOtherPrograms::analyserSeesEachFrameAsItWas()
{
    QFETCH(CAN::CanRxMessage, sent);
    const QStringList seen = analysed(
        save({sent}),
        {QStringLiteral("frame.protocols"), QStringLiteral("can.id"), QStringLiteral("can.flags.xtd"),
         QStringLiteral("can.flags.rtr"), QStringLiteral("can.flags.err"), QStringLiteral("can.len"),
         QStringLiteral("data.data"), QStringLiteral("canfd.flags.brs"), QStringLiteral("canfd.flags.esi")});
    QTEST(seen.join(QLatin1Char('\n')), "seen");
}

void TestOtherPrograms::analyserSeesTheTimes()
{
    const QString fileName = save({
        frame(1, "a", [](auto &f) { f.timeStamp = CanTimeStamp(0, 0); }),
        frame(2, "a", [](auto &f) { f.timeStamp = CanTimeStamp(2147483647, 999999); }),
        frame(3, "a", [](auto &f) { f.timeStamp = CanTimeStamp(-3600, 0); }),
        frame(4, "a", [](auto &f) { f.timeStamp = CanTimeStamp(-2147483648, 0); }),
        frame(5, "a", [](auto &f) { f.timeStamp = CanTimeStamp(1600000000, 123456); }),
    });
    QCOMPARE(analysed(fileName, {QStringLiteral("frame.time_epoch")}),
             (QStringList{QStringLiteral("0.000000000"), QStringLiteral("2147483647.999999000"),
                          QStringLiteral("-3600.000000000"), QStringLiteral("-2147483648.000000000"),
                          QStringLiteral("1600000000.123456000")}));
}

void TestOtherPrograms::analyserSeesTheNotes()
{
    DatachunkHandler trace;
    trace.addMessageNoteToNextMessage(QStringLiteral("Connect:Demo:500"));
    trace.appendCanMessage(frame(1, "a"));
    trace.appendCanMessage(frame(2, "a"));
    trace.appendCanMessage(frame(3, "a"));
    trace.addMessageNoteToLastMessage(QStringLiteral("Pr\u00fcfstand"));
    trace.addMessageNoteToLastMessage(QStringLiteral("Disconnected"));
    QVERIFY(trace.saveQrmFile(path("trace.qrm")));
    QCOMPARE(analysed(path("trace.qrm"), {QStringLiteral("frame.number"), QStringLiteral("frame.comment")}),
             (QStringList{QStringLiteral("1;Connect:Demo:500"), QStringLiteral("2;"),
                          QStringLiteral("3;Pr\u00fcfstand,Disconnected")}));
}

void TestOtherPrograms::analyserReadsRecordings()
{
    DatachunkHandler trace;
    QVERIFY(trace.startRecording(path("trace.qrm")));
    trace.appendCanMessage(frame(1, "a"));
    const QStringList fields{QStringLiteral("can.id")};
    QTRY_COMPARE(analysed(path("trace.qrm"), fields), QStringList{QStringLiteral("1")});
    trace.addMessageNoteToLastMessage(QStringLiteral("late"));
    trace.appendCanMessage(frame(2, "a", [](auto &f) { f.timeStamp.seconds = -1; }));
    trace.stopRecording();
    QCOMPARE(analysed(path("trace.qrm"), fields), (QStringList{QStringLiteral("1"), QStringLiteral("2")}));
}

void TestOtherPrograms::capturesOfOtherProgramsLoad_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QStringList>("arguments");

    const QString editcap = QStringLiteral("editcap");
    const QString in = QStringLiteral("IN");
    const QString out = QStringLiteral("OUT");
    for (const char *format : {"pcap", "nsecpcap", "pcapng"})
        QTest::addRow("editcap, %s", format)
            << editcap << QStringList{QStringLiteral("-F"), QLatin1String(format), in, out};
    QTest::newRow("editcap, told the link type") << editcap << QStringList{QStringLiteral("-F"),
                                                                           QStringLiteral("pcap"),
                                                                           QStringLiteral("-T"),
                                                                           QStringLiteral("socketcan"),
                                                                           in,
                                                                           out};
    QTest::newRow("mergecap") << QStringLiteral("mergecap") << QStringList{QStringLiteral("-w"), out, in};
    QTest::newRow("tshark") << QStringLiteral("tshark")
                            << QStringList{QStringLiteral("-r"), in, QStringLiteral("-w"), out};
}

void TestOtherPrograms::capturesOfOtherProgramsLoad()
{
    QFETCH(QString, program);
    QFETCH(QStringList, arguments);
    const QVector<CAN::CanRxMessage> frames{
        frame(0x123, "abc"),
        frame(0x1ABCDEF0, QByteArray(64, 'x'),
              [](auto &f) { f.message.ext = f.message.fd = f.message.brs = f.message.extraFlag = true; }),
        frame(0x123, QByteArray(8, '\0'), [](auto &f) { f.message.rtr = true; }),
        frame(0x4, QByteArray(8, '\1'), [](auto &f) { f.message.errorFrame = true; }),
        frame(0x7FF, {}, [](auto &f) { f.timeStamp = CanTimeStamp(2147483647, 999999); }),
    };
    arguments.replaceInStrings(QRegularExpression(QStringLiteral("^IN$")), save(frames));
    arguments.replaceInStrings(QRegularExpression(QStringLiteral("^OUT$")), path("capture"));
    QCOMPARE(output(program, arguments), QByteArray());

    DatachunkHandler trace;
    QVERIFY2(trace.loadQrmFile(path("capture")), qPrintable(trace.importError()));

    QCOMPARE(framesOf(trace), frames);
    QCOMPARE(trace.importRemark(), QString());
}

void TestOtherPrograms::mergedTracesLoad()
{
    const auto at = [](int seconds) {
        CAN::CanRxMessage made = frame(static_cast<quint32>(seconds + 100), "a");
        made.timeStamp = CanTimeStamp(seconds, 0);
        return made;
    };
    QVERIFY(QFile::rename(save({at(1), at(3)}), path("first.qrm")));
    QVERIFY(QFile::rename(save({at(-2), at(2), at(4)}), path("second.qrm")));
    QCOMPARE(output(QStringLiteral("mergecap"),
                    {QStringLiteral("-w"), path("merged"), path("first.qrm"), path("second.qrm")}),
             QByteArray());

    DatachunkHandler trace;
    QVERIFY2(trace.loadQrmFile(path("merged")), qPrintable(trace.importError()));

    QCOMPARE(framesOf(trace), (QVector<CAN::CanRxMessage>{at(-2), at(1), at(2), at(3), at(4)}));
}

void TestOtherPrograms::commentsOfOtherProgramsAreNotes()
{
    const QString fileName = save({frame(1, "a"), frame(2, "a")});
    QCOMPARE(output(QStringLiteral("editcap"),
                    {QStringLiteral("-a"), QStringLiteral("2:seen by another"), QStringLiteral("--capture-comment"),
                     QStringLiteral("of the whole"), fileName, path("capture")}),
             QByteArray());
    DatachunkHandler trace;
    QVERIFY(trace.loadQrmFile(path("capture")));
    QCOMPARE(trace.messageNotes(0), QStringList());
    QCOMPARE(trace.messageNotes(1), QStringList{QStringLiteral("seen by another")});
}

void TestOtherPrograms::capturesMadeOfTextLoad_data()
{
    QTest::addColumn<QString>("format");
    for (const char *format : {"pcap", "nsecpcap", "pcapng"})
        QTest::newRow(format) << QString::fromLatin1(format);
}

void TestOtherPrograms::capturesMadeOfTextLoad()
{
    QFETCH(QString, format);
    output(QStringLiteral("text2pcap"),
           {QStringLiteral("-F"), format, QStringLiteral("-l"), QStringLiteral("227"), QStringLiteral("-"),
            path("capture")},
           "0000 00 00 01 23 03 00 00 00 61 62 63\n\n0000 80 01 00 00 01 04 00 00 62\n");
    DatachunkHandler trace;
    QVERIFY2(trace.loadQrmFile(path("capture")), qPrintable(trace.importError()));
    const QVector<CAN::CanRxMessage> loaded = framesOf(trace);
    QCOMPARE(loaded.size(), 2);
    QCOMPARE(loaded[0].message, frame(0x123, "abc").message);
    QCOMPARE(loaded[1].message, frame(0x10000, "b", [](auto &f) { f.message.ext = f.message.fd = true; }).message);
}

void TestOtherPrograms::captureOfAnotherNetworkIsRefused()
{
    output(QStringLiteral("text2pcap"),
           {QStringLiteral("-l"), QStringLiteral("1"), QStringLiteral("-"), path("capture")},
           "0000 00 00 01 23 03 00 00 00 61 62 63 00 00 00\n");
    DatachunkHandler trace;
    QVERIFY(!trace.loadQrmFile(path("capture")));
    QVERIFY2(trace.importError().contains(QStringLiteral("captured on another kind of network")),
             qPrintable(trace.importError()));
}

QTEST_GUILESS_MAIN(TestOtherPrograms)
#include "tst_otherprograms.moc"
