#include "childprocess.h"
#include "storagefailuretext.h"
#include "traceframes.h"
#include "tracestore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

Q_DECLARE_METATYPE(TraceStore::Failure::Kind)

namespace {
constexpr unsigned chunk = TraceStore::chunkFrames;
constexpr qint64 chunkBytes = qint64(chunk) * 84;

/// The open files of this process that had a name in `directory`, but have none any more.
QStringList unlinkedFiles(const QString &directory)
{
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    QStringList found;
    const QStringList numbers = descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &number : numbers) {
        // A link to a file without a name leads to no file that QFileInfo could follow.
        char target[4096];
        const QByteArray link = QFile::encodeName(descriptors.filePath(number));
        const ssize_t size = ::readlink(link.constData(), target, sizeof target);
        const QByteArray name(target, static_cast<int>(std::max<ssize_t>(size, 0)));
        if (name.startsWith(QFile::encodeName(directory)) && name.endsWith("(deleted)"))
            found.append(descriptors.filePath(number));
    }
    return found;
}

TraceStore::Limits limits(unsigned framesInMemory, const QString &directory)
{
    TraceStore::Limits limits;
    limits.framesInMemory = framesInMemory;
    limits.directories = {directory.toStdString()};
    return limits;
}

void fill(TraceStore &store, unsigned frames)
{
    for (unsigned i = store.count(); i < frames; ++i)
        store.append(numberedFrame(i));
}

/// The frames from `first` on.
QVector<CAN::CanRxMessage> numbered(unsigned first, unsigned count)
{
    QVector<CAN::CanRxMessage> frames;
    for (unsigned i = 0; i < count; ++i)
        frames.append(numberedFrame(first + i));
    return frames;
}
} // namespace

class TestTraceStore : public QObject
{
    Q_OBJECT

private slots:
    void newestFramesStayInMemory_data();
    void newestFramesStayInMemory();
    void lostFramesBeginAtTheLimit_data();
    void lostFramesBeginAtTheLimit();
    void failureIsToldOnceATrace();
    void noFileIsMadeBeforeItIsNeeded();
    void fileHasNoName();
    void fileSystemsWithoutNamelessFilesServeToo();
    void fileGoesWithTheTraceAndWithTheStore();
    void firstUsableDirectoryTakesTheFile();
    void withoutAnyDirectoryTheTraceKeepsWhatItHas();
    void directoriesFollowTheEnvironment_data();
    void directoriesFollowTheEnvironment();
    void whatTheFileDoesNotGiveBackIsRefused();
    void blocksReadBackAreKept();
    void manyFramesAtOnceStandAsIfOneByOne_data();
    void manyFramesAtOnceStandAsIfOneByOne();
    void ofManyFramesThoseWithoutRoomAreLost();
    void notesComeWithTheirFrames();
    void notesThatWaitGoToTheFirstOfMany();
    void notesOfARangeCountFromItsBegin();
    void clearingHandsOutTheRest();
    void clearingHandsOutNothingWhereAllIsKnown();
    void restThatIsNotInMemoryPreventsTheClearing();
    void everyClearingIsAnotherGeneration();
    void rangeWithoutMemoryForItIsEmpty();
    void failureTextSaysWhatHappenedAndWhatToDo_data();
    void failureTextSaysWhatHappenedAndWhatToDo();
};

void TestTraceStore::newestFramesStayInMemory_data()
{
    QTest::addColumn<unsigned>("framesInMemory");
    QTest::addColumn<unsigned>("frames");
    QTest::addColumn<unsigned>("inFile");

    QTest::newRow("none wanted, one chunk") << 0u << chunk << 0u;
    QTest::newRow("none wanted, one frame more") << 0u << chunk + 1 << chunk;
    QTest::newRow("none wanted, two chunks") << 0u << 2 * chunk << chunk;
    QTest::newRow("none wanted, two chunks and a frame") << 0u << 2 * chunk + 1 << 2 * chunk;
    QTest::newRow("one wanted, two chunks") << 1u << 2 * chunk << 0u;
    QTest::newRow("one wanted, two chunks and a frame") << 1u << 2 * chunk + 1 << chunk;
    QTest::newRow("one short of a chunk, two chunks") << chunk - 1 << 2 * chunk << 0u;
    QTest::newRow("one short of a chunk, two chunks and a frame") << chunk - 1 << 2 * chunk + 1 << chunk;
    QTest::newRow("a chunk wanted, two chunks") << chunk << 2 * chunk << 0u;
    QTest::newRow("a chunk wanted, two chunks and a frame") << chunk << 2 * chunk + 1 << chunk;
    QTest::newRow("one more than a chunk, three chunks") << chunk + 1 << 3 * chunk << 0u;
    QTest::newRow("one more than a chunk, three chunks and a frame") << chunk + 1 << 3 * chunk + 1 << chunk;
    QTest::newRow("all that can be counted") << std::numeric_limits<unsigned>::max() << 10 * chunk << 0u;
}

void TestTraceStore::newestFramesStayInMemory()
{
    QFETCH(unsigned, framesInMemory);
    QFETCH(unsigned, frames);
    QTemporaryDir directory;
    TraceStore store(limits(framesInMemory, directory.path()));

    fill(store, frames);

    QTEST(store.framesInFile(), "inFile");
    QCOMPARE(store.count(), frames);
    QCOMPARE(store.lost(), quint64(0));
    const QVector<CAN::CanRxMessage> all = store.readRange(0, frames);
    QCOMPARE(static_cast<unsigned>(all.size()), frames);
    QVERIFY(areNumbered(all, 0));
    const quint64 inMemory = frames - store.framesInFile();
    QVERIFY(inMemory >= std::min(framesInMemory, frames));
    QVERIFY(inMemory <= quint64(framesInMemory) + 8191);
}

void TestTraceStore::lostFramesBeginAtTheLimit_data()
{
    QTest::addColumn<unsigned>("limit");

    for (const unsigned limit : {0u, 1u, chunk - 1, chunk, chunk + 1, 3 * chunk - 1, 3 * chunk, 3 * chunk + 1})
        QTest::addRow("%u", limit) << limit;
}

void TestTraceStore::lostFramesBeginAtTheLimit()
{
    QFETCH(unsigned, limit);
    QTemporaryDir directory;
    TraceStore::Limits tight = limits(0, directory.path());
    tight.frames = limit;
    TraceStore store(tight);

    for (unsigned i = 0; i < limit; ++i)
        QVERIFY(!store.append(numberedFrame(i)));
    QCOMPARE(store.count(), limit);
    QCOMPARE(store.lost(), quint64(0));
    const auto failure = store.append(numberedFrame(limit));

    QVERIFY(failure);
    QCOMPARE(failure->kind, TraceStore::Failure::CountExhausted);
    QCOMPARE(store.count(), limit);
    QCOMPARE(store.lost(), quint64(1));
    QVERIFY(!store.append(numberedFrame(limit)));
    QCOMPARE(store.lost(), quint64(2));
    QCOMPARE(static_cast<unsigned>(store.readRange(0, limit + 1).size()), limit);
    QVERIFY(areNumbered(store.readRange(0, limit), 0));
}

void TestTraceStore::failureIsToldOnceATrace()
{
    TraceStore::Limits tight;
    tight.frames = 1;
    TraceStore store(tight);
    for (int trace = 0; trace < 3; ++trace) {
        QVERIFY(!store.append(numberedFrame(0)));
        QVERIFY(store.append(numberedFrame(1)));
        QVERIFY(!store.append(numberedFrame(2)));
        QCOMPARE(store.lost(), quint64(2));
        store.clear();
        QCOMPARE(store.lost(), quint64(0));
    }
}

void TestTraceStore::noFileIsMadeBeforeItIsNeeded()
{
    QTemporaryDir directory;
    TraceStore store(limits(chunk, directory.path()));
    fill(store, 2 * chunk);
    QCOMPARE(unlinkedFiles(directory.path()).size(), 0);
    fill(store, 2 * chunk + 1);
    QCOMPARE(unlinkedFiles(directory.path()).size(), 1);
}

void TestTraceStore::fileHasNoName()
{
    QTemporaryDir directory;
    TraceStore store(limits(0, directory.path()));
    fill(store, 3 * chunk);
    QCOMPARE(QDir(directory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
    const QStringList files = unlinkedFiles(directory.path());
    QCOMPARE(files.size(), 1);
    QFile file(files.first());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.size(), 2 * chunkBytes);
}

void TestTraceStore::fileSystemsWithoutNamelessFilesServeToo()
{
    QTemporaryDir directory;
    int error = -1;
    const auto file = TraceFile::make({directory.path().toStdString()}, error, false);
    QVERIFY(file);
    QCOMPARE(error, 0);
    QCOMPARE(QDir(directory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
    QCOMPARE(unlinkedFiles(directory.path()).size(), 1);

    const QByteArray written = "written";
    QCOMPARE(file->write(written.constData(), 7, 1000), 0);
    QByteArray read(7, '\0');
    QCOMPARE(file->read(read.data(), 7, 1000), 0);
    QCOMPARE(read, written);
    QCOMPARE(file->read(read.data(), 7, 1001), EIO);
}

void TestTraceStore::fileGoesWithTheTraceAndWithTheStore()
{
    QTemporaryDir directory;
    {
        TraceStore store(limits(0, directory.path()));
        fill(store, 3 * chunk);
        QCOMPARE(unlinkedFiles(directory.path()).size(), 1);
        store.clear();
        QCOMPARE(unlinkedFiles(directory.path()).size(), 0);
        fill(store, 3 * chunk);
        QCOMPARE(unlinkedFiles(directory.path()).size(), 1);
    }
    QCOMPARE(unlinkedFiles(directory.path()).size(), 0);
}

void TestTraceStore::firstUsableDirectoryTakesTheFile()
{
    QTemporaryDir first;
    QTemporaryDir second;
    TraceStore::Limits several;
    several.framesInMemory = 0;
    several.directories = {first.filePath(QStringLiteral("missing")).toStdString(), second.path().toStdString(),
                           first.path().toStdString()};
    TraceStore store(several);
    fill(store, 2 * chunk);
    QCOMPARE(unlinkedFiles(first.path()).size(), 0);
    QCOMPARE(unlinkedFiles(second.path()).size(), 1);
    QCOMPARE(store.lost(), quint64(0));
}

void TestTraceStore::withoutAnyDirectoryTheTraceKeepsWhatItHas()
{
    QTemporaryDir directory;
    TraceStore store(limits(0, directory.filePath(QStringLiteral("missing"))));
    fill(store, chunk);

    const auto failure = store.append(numberedFrame(chunk));

    QVERIFY(failure);
    QCOMPARE(failure->kind, TraceStore::Failure::NoFile);
    QCOMPARE(failure->error, ENOENT);
    QCOMPARE(store.count(), chunk);
    QCOMPARE(store.lost(), quint64(1));
    QVERIFY(areNumbered(store.readRange(0, chunk), 0));
    QCOMPARE(store.last().value(), numberedFrame(chunk - 1));
}

void TestTraceStore::directoriesFollowTheEnvironment_data()
{
    QTest::addColumn<QByteArray>("chosen");
    QTest::addColumn<QStringList>("directories");

    const QStringList usual = {QStringLiteral("/var/tmp"), QStringLiteral("/tmp")};
    QTest::newRow("not set") << QByteArray() << usual;
    QTest::newRow("empty") << QByteArray("") << usual;
    QTest::newRow("set") << QByteArray("/data/tmp") << QStringList{QStringLiteral("/data/tmp")} + usual;
}

void TestTraceStore::directoriesFollowTheEnvironment()
{
    QFETCH(QByteArray, chosen);
    const QByteArray before = qgetenv("TMPDIR");
    chosen.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", chosen);

    QStringList directories;
    for (const std::string &directory : TraceFile::usualDirectories())
        directories.append(QString::fromStdString(directory));

    before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", before);
    QTEST(directories, "directories");
}

void TestTraceStore::whatTheFileDoesNotGiveBackIsRefused()
{
    QTemporaryDir directory;
    TraceStore store(limits(0, directory.path()));
    fill(store, 3 * chunk);
    // As a disk does that breaks: the second chunk is gone.
    const QByteArray file = QFile::encodeName(unlinkedFiles(directory.path()).value(0));
    QCOMPARE(::truncate(file.constData(), chunkBytes), 0);

    CAN::CanRxMessage message = numberedFrame(77);
    QVERIFY(!store.read(message, chunk));
    QCOMPARE(message, numberedFrame(77));
    QVERIFY(store.readRange(chunk - 1, 2).isEmpty());
    QVERIFY(store.read(message, chunk - 1));
    QCOMPARE(message, numberedFrame(chunk - 1));
    QVERIFY(store.read(message, 2 * chunk));
    QCOMPARE(message, numberedFrame(2 * chunk));
}

void TestTraceStore::blocksReadBackAreKept()
{
    QTemporaryDir directory;
    TraceStore store(limits(0, directory.path()));
    fill(store, 3 * chunk);
    CAN::CanRxMessage message;
    QVERIFY(store.read(message, 1000));

    // Whoever scrolls on around there does not ask the disk again.
    const QByteArray file = QFile::encodeName(unlinkedFiles(directory.path()).value(0));
    QCOMPARE(::truncate(file.constData(), 0), 0);

    QVERIFY(store.read(message, 1001));
    QCOMPARE(message, numberedFrame(1001));
    QVERIFY(store.read(message, 999));
    QCOMPARE(message, numberedFrame(999));
    store.clear();
    for (unsigned i = 0; i < 3 * chunk; ++i)
        store.append(numberedFrame(i + 5));
    QVERIFY(store.read(message, 1000));
    QCOMPARE(message, numberedFrame(1005));
}

void TestTraceStore::manyFramesAtOnceStandAsIfOneByOne_data()
{
    QTest::addColumn<unsigned>("before");
    QTest::addColumn<unsigned>("many");

    for (const unsigned before : {0u, 1u, chunk - 1, chunk, chunk + 1}) {
        for (const unsigned many : {0u, 1u, chunk - 1, chunk, chunk + 1, 3 * chunk})
            QTest::addRow("%u, then %u", before, many) << before << many;
    }
}

void TestTraceStore::manyFramesAtOnceStandAsIfOneByOne()
{
    QFETCH(unsigned, before);
    QFETCH(unsigned, many);
    QTemporaryDir directory;
    TraceStore store(limits(0, directory.path()));
    fill(store, before);

    QVERIFY(!store.append(numbered(before, many).constData(), many));
    fill(store, before + many + 1);

    QCOMPARE(store.count(), before + many + 1);
    QVERIFY(areNumbered(store.readRange(0, store.count()), 0));
}

void TestTraceStore::ofManyFramesThoseWithoutRoomAreLost()
{
    QTemporaryDir directory;
    TraceStore::Limits tight = limits(0, directory.path());
    tight.frames = chunk + 10;
    TraceStore store(tight);

    const auto failure = store.append(numbered(0, chunk + 15).constData(), chunk + 15);

    QVERIFY(failure);
    QCOMPARE(failure->kind, TraceStore::Failure::CountExhausted);
    QCOMPARE(store.count(), chunk + 10);
    QCOMPARE(store.lost(), quint64(5));
    QVERIFY(store.failure());
    QVERIFY(areNumbered(store.readRange(0, chunk + 10), 0));
    QVERIFY(!store.append(numbered(0, 3).constData(), 3));
    QCOMPARE(store.lost(), quint64(8));
}

void TestTraceStore::notesComeWithTheirFrames()
{
    QTemporaryDir directory;
    TraceStore store(limits(0, directory.path()));
    fill(store, chunk - 1);
    const QStringList one{QStringLiteral("one")};
    const QStringList two{QStringLiteral("two"), QStringLiteral("more")};

    store.append(numbered(chunk - 1, chunk + 5).constData(), chunk + 5, {{0, one}, {1, two}, {chunk + 4, one}});

    QCOMPARE(store.notes(chunk - 1), one);
    QCOMPARE(store.notes(chunk), two);
    QCOMPARE(store.notes(2 * chunk + 3), one);
    QCOMPARE(store.notesOfRange(0, 3 * chunk).size(), std::size_t(3));
}

void TestTraceStore::notesThatWaitGoToTheFirstOfMany()
{
    TraceStore store{TraceStore::Limits()};
    store.addNoteToNext(QStringLiteral("waiting"));
    store.append(numbered(0, 3).constData(), 3, {{0, {QStringLiteral("its own")}}});
    QCOMPARE(store.notes(0), (QStringList{QStringLiteral("waiting"), QStringLiteral("its own")}));
    QCOMPARE(store.notes(1), QStringList());
}

void TestTraceStore::notesOfARangeCountFromItsBegin()
{
    TraceStore store{TraceStore::Limits()};
    for (unsigned i = 0; i < 10; ++i) {
        store.addNoteToNext(QString::number(i));
        store.append(numberedFrame(i));
    }
    const std::vector<TraceStore::PlacedNotes> notes = store.notesOfRange(4, 2);
    QCOMPARE(notes.size(), std::size_t(2));
    QCOMPARE(notes[0].place, 0u);
    QCOMPARE(notes[0].notes, QStringList{QStringLiteral("4")});
    QCOMPARE(notes[1].place, 1u);
    QCOMPARE(notes[1].notes, QStringList{QStringLiteral("5")});
    QVERIFY(store.notesOfRange(10, 5).empty());
    QCOMPARE(store.notesOfRange(9, std::numeric_limits<unsigned>::max()).size(), std::size_t(1));
}

void TestTraceStore::clearingHandsOutTheRest()
{
    QTemporaryDir directory;
    TraceStore store(limits(0, directory.path()));
    fill(store, 2 * chunk + 10);
    store.addNoteToLast(QStringLiteral("of the last"));
    TraceStore::Rest rest;

    QVERIFY(store.clear(2 * chunk + 8, rest));

    QCOMPARE(store.count(), 0u);
    QCOMPARE(rest.frames.size(), 2);
    QVERIFY(areNumbered(rest.frames, 2 * chunk + 8));
    QCOMPARE(rest.notes.size(), std::size_t(1));
    QCOMPARE(rest.notes[0].place, 1u);
    QCOMPARE(rest.notesBefore, QStringList());
}

void TestTraceStore::clearingHandsOutNothingWhereAllIsKnown()
{
    TraceStore store{TraceStore::Limits()};
    fill(store, 5);
    store.addNoteToLast(QStringLiteral("late"));
    TraceStore::Rest rest;
    QVERIFY(store.clear(5, rest));
    QVERIFY(rest.frames.isEmpty());
    QVERIFY(rest.notes.empty());
    QCOMPARE(rest.notesBefore, QStringList{QStringLiteral("late")});
}

void TestTraceStore::restThatIsNotInMemoryPreventsTheClearing()
{
    QTemporaryDir directory;
    TraceStore store(limits(0, directory.path()));
    fill(store, 2 * chunk + 10);
    QCOMPARE(store.framesInFile(), 2 * chunk);
    TraceStore::Rest rest;
    QVERIFY(!store.clear(2 * chunk - 1, rest));
    QCOMPARE(store.count(), 2 * chunk + 10);
    QVERIFY(rest.frames.isEmpty());
    QVERIFY(store.clear(2 * chunk, rest));
    QVERIFY(areNumbered(rest.frames, 2 * chunk));
}

void TestTraceStore::everyClearingIsAnotherGeneration()
{
    TraceStore store{TraceStore::Limits()};
    const quint64 first = store.generation();
    store.append(numberedFrame(0));
    QCOMPARE(store.generation(), first);
    store.clear();
    const quint64 second = store.generation();
    QVERIFY(second != first);
    TraceStore::Rest rest;
    store.clear(0, rest);
    QVERIFY(store.generation() != second);
}

void TestTraceStore::rangeWithoutMemoryForItIsEmpty()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("The sanitizer ends a program that is out of memory.");
#endif
    // More than any memory that the process has given back and kept.
    constexpr unsigned frames = 500000;
    TraceStore store{TraceStore::Limits()};
    fill(store, frames);
    const QString verdict = ChildProcess::run([&store] {
        rlimit limit = {};
        getrlimit(RLIMIT_AS, &limit);
        limit.rlim_cur = 1;
        setrlimit(RLIMIT_AS, &limit);
        const bool empty = store.readRange(0, frames).isEmpty();
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_AS, &limit);
        return empty ? QString() : QStringLiteral("frames");
    });
    QCOMPARE(verdict, QString());
    QCOMPARE(static_cast<unsigned>(store.readRange(0, frames).size()), frames);
}

void TestTraceStore::failureTextSaysWhatHappenedAndWhatToDo_data()
{
    QTest::addColumn<TraceStore::Failure::Kind>("kind");
    QTest::addColumn<QStringList>("parts");

    const QString next = QStringLiteral("tart a new trace.");
    QTest::newRow("no file") << TraceStore::Failure::NoFile
                             << QStringList{QStringLiteral("No space left on device"), QStringLiteral("TMPDIR"), next};
    QTest::newRow("file cannot grow") << TraceStore::Failure::WriteFailed
                                      << QStringList{QStringLiteral("No space left on device"),
                                                     QStringLiteral("/data/tmp"), QStringLiteral("TMPDIR"), next};
    QTest::newRow("no memory") << TraceStore::Failure::NoMemory << QStringList{QStringLiteral("memory"), next};
    QTest::newRow("count") << TraceStore::Failure::CountExhausted << QStringList{QStringLiteral("count"), next};
}

void TestTraceStore::failureTextSaysWhatHappenedAndWhatToDo()
{
    QFETCH(TraceStore::Failure::Kind, kind);
    QFETCH(QStringList, parts);
    const QString text = storageFailureText({kind, ENOSPC, "/data/tmp"});
    for (const QString &part : parts)
        QVERIFY2(text.contains(part), qPrintable(text));
}

QTEST_GUILESS_MAIN(TestTraceStore)
#include "tst_tracestore.moc"
