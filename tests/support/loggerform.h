#pragma once

#include "canscheduler.h"
#include "fakeadapter.h"
#include "fileloggerwindow.h"

#include <QAbstractButton>
#include <QAction>
#include <QDateTimeEdit>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSettings>
#include <QSpinBox>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

/// A frame as it comes from a bus.
inline CAN::CanRxMessage received(quint32 id, const QByteArray &data = {})
{
    CAN::CanRxMessage record;
    record.timeStamp = {1, 2};
    record.message.id = id;
    record.message.length = static_cast<quint8>(data.size());
    std::copy(data.begin(), data.end(), record.message.data);
    return record;
}

/// A user at the logger's window, who logs to a file in a folder of its own, and an adapter whose frames are logged.
/// The application's settings begin empty, and stay from one form to the next within a test.
class LoggerForm
{
public:
    LoggerForm()
    {
        setPath(path());
        window->show();
        connectBus();
    }

    static void forgetSettings()
    {
        QCoreApplication::setOrganizationName(QStringLiteral("Kestrune"));
        QCoreApplication::setApplicationName(QStringLiteral("Falcon"));
        QSettings().clear();
    }

    FakeAdapter adapter;
    CanScheduler scheduler{&adapter};
    std::unique_ptr<FileLoggerWindow> window = std::make_unique<FileLoggerWindow>();

    template <typename Object>
    Object *find(const char *name) const
    {
        auto *object = window->findChild<Object *>(QString::fromLatin1(name));
        if (!object)
            qFatal("the form has no %s", name);
        return object;
    }

    // ---- What the user does.

    void setPath(const QString &path) { find<QLineEdit>("edtFilePath")->setText(path); }
    void click(const char *button) { QTest::mouseClick(find<QAbstractButton>(button), Qt::LeftButton); }
    void tick(const char *groupBox) { QTest::keyClick(find<QGroupBox>(groupBox), Qt::Key_Space); }
    void type(const char *edit, const QString &text) { find<QLineEdit>(edit)->setText(text); }
    void setNumber(const char *spinBox, int value) { find<QSpinBox>(spinBox)->setValue(value); }
    void setTime(const char *edit, const QDateTime &time) { find<QDateTimeEdit>(edit)->setDateTime(time); }
    void setFilter(const QString &text) { find<QPlainTextEdit>("textEditFilterList")->setPlainText(text); }

    void armStartByIds(const QString &ids)
    {
        tick("gbStartTriggersCANIDs");
        type("edtStartIds", ids);
        click("btnStartTriggers");
    }
    void armStopByIds(const QString &ids)
    {
        tick("gbStopTriggersCANIDs");
        type("edtStartIds_2", ids);
        click("btnStopTriggers");
    }
    void armStopByCount(int messages)
    {
        tick("gbStopTriggersCounter");
        setNumber("spCounter", messages);
        click("btnStopTriggers");
    }

    // ---- What the bus does.

    void connectBus() { window->canSchedulerChanged(&scheduler); }
    void receive(quint32 id, const QByteArray &data = {}) { adapter.receive(received(id, data)); }
    void receive(std::initializer_list<quint32> ids)
    {
        for (const quint32 id : ids)
            receive(id);
    }

    /// Waits until the window has looked at clock and file size so many times more.
    bool waitForPolls(int polls) const
    {
        const QSignalSpy spy(window->findChild<QTimer *>({}, Qt::FindDirectChildrenOnly), &QTimer::timeout);
        return QTest::qWaitFor([&] { return spy.count() >= polls; });
    }

    // ---- What the user sees.

    bool isLogging() const { return find<QAbstractButton>("btnStop")->isEnabled(); }
    bool isEnabled(const char *widget) const { return find<QWidget>(widget)->isEnabled(); }
    QString text(const char *button) const { return find<QAbstractButton>(button)->text(); }
    QString stopInfo() const { return find<QLabel>("lblStopInfo")->text(); }
    QString countText() const { return statusLabels().first()->text(); }
    QString statusText() const { return statusLabels().last()->text(); }
    QList<QLabel *> statusLabels() const { return find<QStatusBar>("statusbar")->findChildren<QLabel *>(); }

    QString path(const QString &name = QStringLiteral("log.txt")) const { return m_folder.filePath(name); }
    QByteArray content() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    /// The log without the line that names the columns: the identifier of each frame, and other lines as they are.
    QString log() const
    {
        QStringList lines = QString::fromLatin1(content()).split(QLatin1Char('\n'));
        if (lines.takeFirst() != QLatin1String("# timestamp id (dlc): data") || lines.takeLast() != QString())
            return QStringLiteral("no log");
        for (QString &line : lines) {
            if (line.startsWith(QLatin1Char(' ')))
                line = line.section(QStringLiteral("0x"), 1).section(QLatin1Char('/'), 0, 0);
        }
        return lines.join(QLatin1Char(' '));
    }

private:
    QTemporaryDir m_folder;
};

using LoggerAction = std::function<void(LoggerForm &)>;
Q_DECLARE_METATYPE(LoggerAction)
