#include "canreplayer.h"
#include "frameexamples.h"
#include "textrecording.h"
#include "vcanbench.h"

/// What candump has recorded, played by our replay.
class TestVcanReplay : public QObject
{
    Q_OBJECT

private slots:
    void recordedSceneComesBackFrameByFrame();
    void recordedGapsAreKept();
};

namespace {
constexpr qint64 tolerance = 20000; // microseconds

/// What candump sees while a command plays its frames on vcan0.
QList<CandumpLine> recordScene(const QString &player, int frames)
{
    Vcan::Candump dump("vcan0");
    return Vcan::run(player, Vcan::Quiet) ? dump.lines(frames) : QList<CandumpLine>();
}

/// What candump sees while our replay plays a scene on vcan0.
QList<CandumpLine> replayScene(const QList<CandumpLine> &scene)
{
    QByteArray log;
    for (const CandumpLine &line : scene)
        log += line.logLine();
    const Recording recording(log);
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    if (!Vcan::start(*adapter))
        return {};
    Vcan::Candump dump("vcan0");
    CANReplayer replayer(recording.path());
    QSignalSpy finished(&replayer, &CANReplayer::finished);
    replayer.setCanApdater(adapter.get());
    replayer.start();
    return finished.wait(Vcan::patience) ? dump.lines(scene.size()) : QList<CandumpLine>();
}

QStringList frames(const QList<CandumpLine> &lines)
{
    QStringList list;
    for (const CandumpLine &line : lines)
        list.append(line.frame);
    return list;
}

/// From each frame to the next, in microseconds.
QList<qint64> gaps(const QList<CandumpLine> &lines)
{
    QList<qint64> list;
    for (int i = 1; i < lines.size(); ++i) {
        const CanTimeStamp gap = lines[i - 1].time.timeDifference(lines[i].time);
        list.append(qint64(gap.seconds) * 1000000 + gap.microseconds);
    }
    return list;
}
} // namespace

void TestVcanReplay::recordedSceneComesBackFrameByFrame()
{
    constexpr int randomFrames = 200;
    QTemporaryFile file;
    QVERIFY(FrameExamples::record(file, "vcan0", FrameExamples::all()));
    QList<CandumpLine> scene = recordScene(QStringLiteral("canplayer -I ") + file.fileName(),
                                           int(FrameExamples::all().size()));
    QCOMPARE(frames(scene), FrameExamples::texts(FrameExamples::all()));
    scene += recordScene(QStringLiteral("cangen vcan0 -m -g 1 -n %1").arg(randomFrames), randomFrames);
    QCOMPARE(frames(replayScene(scene)), frames(scene));
}

void TestVcanReplay::recordedGapsAreKept()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    for (const char *time : {"0.000", "0.005", "0.006", "0.106", "0.107", "0.108", "0.358", "0.408", "0.409", "1.000"})
        file.write(QByteArray("(") + time + "000) vcan0 123#\n");
    QVERIFY(file.flush());
    const QList<CandumpLine> scene = recordScene(QStringLiteral("canplayer -I ") + file.fileName(), 10);
    const QList<qint64> recorded = gaps(scene);
    const QList<qint64> played = gaps(replayScene(scene));
    QCOMPARE(played.size(), recorded.size());
    for (int i = 0; i < played.size(); ++i) {
        QVERIFY2(qAbs(played[i] - recorded[i]) <= tolerance,
                 qPrintable(QStringLiteral("gap %1: %2 us for %3").arg(i).arg(played[i]).arg(recorded[i])));
    }
}

QTEST_GUILESS_MAIN(TestVcanReplay)
#include "tst_vcanreplay.moc"
