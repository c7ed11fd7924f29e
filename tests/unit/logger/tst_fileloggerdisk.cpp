#include "childprocess.h"
#include "debuglines.h"
#include "loggerform.h"
#include "messageboxes.h"

#include <QStandardPaths>

/// Faults of disks and rights, each in a process of its own, which makes its own application.
class TestFileLoggerDisk : public QObject
{
    Q_OBJECT

private slots:
    void pathWithoutPermissionIsTold_data();
    void pathWithoutPermissionIsTold();
    void fullDiskKeepsWholeLinesAndTheWindow();
    void roomThatComesBackIsUsed();
};

namespace {
/// What goes wrong in a child is told by text, since QtTest counts in the parent only.
#define CHECK(condition)                                                                                               \
    do {                                                                                                               \
        if (!(condition))                                                                                              \
            return QStringLiteral("line %1: %2").arg(__LINE__).arg(QLatin1String(#condition));                         \
    } while (false)

/// An application with a home of its own.
class OwnApplication
{
public:
    OwnApplication()
    {
        for (const char *variable : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
            qputenv(variable, QFile::encodeName(m_home.path()));
        m_application = std::make_unique<QApplication>(m_argumentCount, m_arguments);
        LoggerForm::forgetSettings();
    }

private:
    QTemporaryDir m_home;
    char m_name[8] = "logger";
    char *m_arguments[2] = {m_name, nullptr};
    int m_argumentCount = 1;
    std::unique_ptr<QApplication> m_application;
};

/// Logs frames until the disk takes no more; gives the lines that should be there.
QByteArray fillDisk(LoggerForm &form)
{
    QByteArray lines = "# timestamp id (dlc): data\n";
    for (quint32 id = 0; id < 100000 && DebugLines::texts().filter(QStringLiteral("write failed:")).isEmpty(); ++id) {
        CAN::CanRxMessage frame = received(id);
        lines += form.window->message2Str(&frame);
        form.adapter.receive(frame);
    }
    return lines;
}
} // namespace

void TestFileLoggerDisk::pathWithoutPermissionIsTold_data()
{
    QTest::addColumn<bool>("fileExists");
    QTest::newRow("in a folder that may not be changed") << false;
    QTest::newRow("of a file that may not be written") << true;
}

void TestFileLoggerDisk::pathWithoutPermissionIsTold()
{
    QFETCH(bool, fileExists);
    const QString failure = ChildProcess::runWithoutRights([&]() -> QString {
        const OwnApplication application;
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("log.txt"));
        QFile file(path);
        CHECK(!fileExists || (file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::ReadOwner)));
        CHECK(fileExists || QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::ExeOwner));
        LoggerForm form;
        const MessageBoxes boxes;
        form.setPath(path);
        form.click("btnStart");
        CHECK(boxes.shown.size() == 1);
        CHECK(boxes.shown.first().text
              == QStringLiteral("File '") + path + QStringLiteral("' cannot be opened for logging."));
        CHECK(!form.isLogging());
        CHECK(QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        return {};
    });
    QCOMPARE(failure, QString());
}

void TestFileLoggerDisk::fullDiskKeepsWholeLinesAndTheWindow()
{
    const QTemporaryDir disk;
    const QString failure = ChildProcess::runOnSmallDisk(disk.path(), "256k", [&]() -> QString {
        const OwnApplication application;
        LoggerForm form;
        const QString path = disk.filePath(QStringLiteral("log.txt"));
        form.setPath(path);
        form.click("btnStart");
        const DebugLines debug;
        const QByteArray lines = fillDisk(form);
        const int count = form.countText().toInt();
        CHECK(count == lines.count('\n') - 1);
        for (int i = 0; i < 1000; ++i)
            form.receive(1);
        CHECK(form.countText().toInt() == count + 1000);
        CHECK(DebugLines::texts().last().contains(QLatin1String("addNewMessage(")));
        CHECK(DebugLines::texts().last().endsWith(QLatin1String("write failed: \"No space left on device\"")));
        CHECK(form.isLogging());
        form.click("btnStop");
        CHECK(!form.isLogging());
        QFile file(path);
        CHECK(file.open(QIODevice::ReadOnly));
        const QByteArray content = file.readAll();
        CHECK(content.size() > 200 * 1024);
        CHECK(lines.startsWith(content));
        return {};
    });
    QCOMPARE(failure, QString());
}

void TestFileLoggerDisk::roomThatComesBackIsUsed()
{
    const QTemporaryDir disk;
    const QString failure = ChildProcess::runOnSmallDisk(disk.path(), "256k", [&]() -> QString {
        const OwnApplication application;
        LoggerForm form;
        QFile other(disk.filePath(QStringLiteral("other")));
        CHECK(other.open(QIODevice::WriteOnly) && other.write(QByteArray(100 * 1024, 'x')) > 0);
        other.close();
        const QString path = disk.filePath(QStringLiteral("log.txt"));
        form.setPath(path);
        form.click("btnStart");
        const DebugLines debug;
        // The last of these lines is the one that was not taken.
        const QByteArray lines = fillDisk(form);
        const QByteArray taken = lines.left(lines.lastIndexOf('\n', -2) + 1);
        CHECK(other.remove());
        CAN::CanRxMessage next = received(0x7FF);
        form.adapter.receive(next);
        form.click("btnStop");
        QFile file(path);
        CHECK(file.open(QIODevice::ReadOnly));
        CHECK(file.readAll() == taken + form.window->message2Str(&next));
        return {};
    });
    QCOMPARE(failure, QString());
}

QTEST_APPLESS_MAIN(TestFileLoggerDisk)
#include "tst_fileloggerdisk.moc"
