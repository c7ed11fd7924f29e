#include "loggerform.h"

#include <QIcon>
#include <QMenu>
#include <QPushButton>

class TestFileLoggerForm : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void windowIsTitled();
    void textIsAsUsersKnowIt_data();
    void textIsAsUsersKnowIt();
    void triggersStartUnticked_data();
    void triggersStartUnticked();
    void numbersHaveTheirRange_data();
    void numbersHaveTheirRange();
    void timesHaveTheirRange_data();
    void timesHaveTheirRange();
    void identifiersHaveRoom_data();
    void identifiersHaveRoom();
    void composedMessageIsForReadingOnly_data();
    void composedMessageIsForReadingOnly();
    void stopInformationIsCentred();
    void startShowsTheRecordIconOfTheTheme();
    void nothingIsLoggedAtFirst();
    void statusBarShowsCountBesideState();
    void newWindowIsDisconnected();
    void toggleButtonsStayInReachOfFrozenConditions();
    void menuHoldsBothActions();
    void tabKeyWalksInReadingOrder();

private:
    std::unique_ptr<LoggerForm> m_form;
};

namespace {
/// A folder of icon themes with one theme that has one icon.
class IconTheme
{
public:
    explicit IconTheme(const QString &icon)
    {
        QDir(m_folder.path()).mkpath(QStringLiteral("test/16x16"));
        QFile index(m_folder.filePath(QStringLiteral("test/index.theme")));
        if (index.open(QIODevice::WriteOnly))
            index.write("[Icon Theme]\nName=test\nDirectories=16x16\n[16x16]\nSize=16\n");
        QImage image(16, 16, QImage::Format_RGB32);
        image.fill(Qt::red);
        image.save(m_folder.filePath(QStringLiteral("test/16x16/%1.png").arg(icon)));
        QIcon::setThemeSearchPaths({m_folder.path()});
        QIcon::setThemeName(QStringLiteral("test"));
    }
    ~IconTheme()
    {
        QIcon::setThemeName(m_nameBefore);
        QIcon::setThemeSearchPaths(m_pathsBefore);
    }

private:
    Q_DISABLE_COPY(IconTheme)

    QTemporaryDir m_folder;
    QString m_nameBefore = QIcon::themeName();
    QStringList m_pathsBefore = QIcon::themeSearchPaths();
};
} // namespace

void TestFileLoggerForm::init()
{
    LoggerForm::forgetSettings();
    m_form = std::make_unique<LoggerForm>();
}

void TestFileLoggerForm::cleanup()
{
    m_form.reset();
}

void TestFileLoggerForm::windowIsTitled()
{
    QCOMPARE(m_form->window->windowTitle(), QStringLiteral("CAN File Logger"));
}

void TestFileLoggerForm::textIsAsUsersKnowIt_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *className, const char *text) {
        QTest::newRow(name) << QString::fromLatin1(className) << QString::fromLatin1(text);
    };
    row("menu_File_Logger", "QMenu", "&File Logger");
    row("action_Start_Logging", "QAction", "&Start Logging");
    row("action_Stop_close", "QAction", "Stop && &Close");
    row("lblFileName", "QLabel", "Log to file:");
    row("btnFileSelect", "QPushButton", "..");
    row("gbStartTriggers", "QGroupBox", "Start Conditions");
    row("gbStartTriggersTime", "QGroupBox", "Time");
    row("gbStartTriggersCANIDs", "QGroupBox", "CAN - IDs");
    row("gbStartTriggersCANMessage", "QGroupBox", "CAN Message");
    row("btn_buildCanMessage", "QPushButton", "...");
    row("lblStartInfo", "QLabel", "");
    row("btnStartTriggers", "QPushButton", "Activate Start Triggers");
    row("gbStopTriggers", "QGroupBox", "Trigger/Stop Conditions");
    row("gbStopTriggersTime", "QGroupBox", "Time");
    row("gbStopTriggersCANIDs", "QGroupBox", "CAN - IDs");
    row("gbStopTriggersCANMessage", "QGroupBox", "CAN Message");
    row("btn_buildCanStopMessage", "QPushButton", "...");
    row("gbStopTriggersFileSize", "QGroupBox", "File size");
    row("gbStopTriggersCounter", "QGroupBox", "Counter");
    row("lblStopInfo", "QLabel", "");
    row("btnStopTriggers", "QPushButton", "Activate Stop Triggers");
    row("groupBox_3", "QGroupBox", "Logging Filter");
    row("label_9", "QLabel", "Accepted CAN IDs");
    row("btnStart", "QPushButton", "Start logging");
    row("btnStop", "QPushButton", "Stop logging");
}

void TestFileLoggerForm::textIsAsUsersKnowIt()
{
    QFETCH(QString, text);
    const auto *object = m_form->find<QObject>(QTest::currentDataTag());
    QTEST(QString::fromLatin1(object->metaObject()->className()), "className");
    const QVariant title = object->property("title");
    QCOMPARE(title.isValid() ? title.toString() : object->property("text").toString(), text);
}

void TestFileLoggerForm::triggersStartUnticked_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name :
         {"gbStartTriggersTime", "gbStartTriggersCANIDs", "gbStartTriggersCANMessage", "gbStopTriggersTime",
          "gbStopTriggersCANIDs", "gbStopTriggersCANMessage", "gbStopTriggersFileSize", "gbStopTriggersCounter"})
        QTest::newRow(name) << QByteArray(name);
}

void TestFileLoggerForm::triggersStartUnticked()
{
    QFETCH(QByteArray, name);
    const auto *box = m_form->find<QGroupBox>(name.constData());
    QVERIFY(box->isCheckable());
    QVERIFY(!box->isChecked());
}

void TestFileLoggerForm::numbersHaveTheirRange_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<int>("value");
    QTest::newRow("spFileSize") << QStringLiteral(" MB") << 100;
    QTest::newRow("spCounter") << QStringLiteral(" msgs") << 10000000;
}

void TestFileLoggerForm::numbersHaveTheirRange()
{
    const auto *number = m_form->find<QSpinBox>(QTest::currentDataTag());
    QTEST(number->suffix(), "suffix");
    QTEST(number->value(), "value");
    QCOMPARE(number->minimum(), 0);
    QCOMPARE(number->maximum(), 999999999);
}

void TestFileLoggerForm::timesHaveTheirRange_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("dateStart") << QByteArray("dateStart");
    QTest::newRow("dateStop") << QByteArray("dateStop");
}

void TestFileLoggerForm::timesHaveTheirRange()
{
    QFETCH(QByteArray, name);
    const auto *edit = m_form->find<QDateTimeEdit>(name.constData());
    QCOMPARE(edit->dateTime(), QDateTime(QDate(2099, 12, 31), QTime(23, 59, 59)));
    QCOMPARE(edit->minimumDate(), QDate(2013, 9, 16));
    QCOMPARE(edit->maximumDate(), QDate(9999, 12, 31));
}

void TestFileLoggerForm::identifiersHaveRoom_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("edtStartIds") << QByteArray("edtStartIds");
    QTest::newRow("edtStartIds_2") << QByteArray("edtStartIds_2");
}

void TestFileLoggerForm::identifiersHaveRoom()
{
    QFETCH(QByteArray, name);
    QCOMPARE(m_form->find<QLineEdit>(name.constData())->minimumWidth(), 200);
}

void TestFileLoggerForm::composedMessageIsForReadingOnly_data()
{
    QTest::addColumn<QByteArray>("box");
    QTest::newRow("le_canStartMessage") << QByteArray("gbStartTriggersCANMessage");
    QTest::newRow("le_canStopMessage") << QByteArray("gbStopTriggersCANMessage");
}

void TestFileLoggerForm::composedMessageIsForReadingOnly()
{
    QFETCH(QByteArray, box);
    m_form->tick(box.constData());
    const auto *edit = m_form->find<QLineEdit>(QTest::currentDataTag());
    QVERIFY(edit->isReadOnly());
    QVERIFY(!edit->isEnabled());
}

void TestFileLoggerForm::stopInformationIsCentred()
{
    QCOMPARE(m_form->find<QLabel>("lblStopInfo")->alignment(), Qt::Alignment(Qt::AlignCenter));
}

void TestFileLoggerForm::startShowsTheRecordIconOfTheTheme()
{
    const QString icon = QStringLiteral("media-record");
    const IconTheme theme(icon);
    const LoggerForm form;
    QCOMPARE(form.find<QAbstractButton>("btnStart")->icon().name(), icon);
}

void TestFileLoggerForm::nothingIsLoggedAtFirst()
{
    QVERIFY(m_form->isEnabled("btnStart"));
    QVERIFY(!m_form->isEnabled("btnStop"));
    QVERIFY(!m_form->isEnabled("btnStartTriggers"));
    QVERIFY(!m_form->isEnabled("btnStopTriggers"));
}

void TestFileLoggerForm::statusBarShowsCountBesideState()
{
    m_form->click("btnStart");
    m_form->receive(0x123);
    const QList<QLabel *> labels = m_form->statusLabels();
    QCOMPARE(labels.size(), 2);
    QCOMPARE(labels.first()->text(), QStringLiteral("1"));
    QCOMPARE(labels.last()->text(), QStringLiteral("Logging ..."));
    QTRY_VERIFY(labels.first()->x() < labels.last()->x());
}

void TestFileLoggerForm::newWindowIsDisconnected()
{
    const FileLoggerWindow window;
    const QLabel *label = window.statusBar()->findChildren<QLabel *>().last();
    QCOMPARE(label->text(), QStringLiteral("<font color=\"red\"><b>Disconnected</b></font>"));
    QCOMPARE(label->textFormat(), Qt::RichText);
}

void TestFileLoggerForm::toggleButtonsStayInReachOfFrozenConditions()
{
    m_form->armStartByIds({});
    m_form->armStopByIds({});
    QVERIFY(!m_form->isEnabled("gbStartTriggers"));
    QVERIFY(!m_form->isEnabled("gbStopTriggers"));
    QVERIFY(m_form->isEnabled("btnStartTriggers"));
    QVERIFY(m_form->isEnabled("btnStopTriggers"));
}

void TestFileLoggerForm::menuHoldsBothActions()
{
    const QList<QAction *> actions = m_form->find<QMenu>("menu_File_Logger")->actions();
    QCOMPARE(
        actions,
        (QList<QAction *>{m_form->find<QAction>("action_Start_Logging"), m_form->find<QAction>("action_Stop_close")}));
}

void TestFileLoggerForm::tabKeyWalksInReadingOrder()
{
    QApplication::setActiveWindow(m_form->window.get());
    m_form->find<QWidget>("edtFilePath")->setFocus();
    for (const char *name :
         {"btnFileSelect", "gbStartTriggersTime", "gbStartTriggersCANIDs", "gbStartTriggersCANMessage",
          "gbStopTriggersTime", "gbStopTriggersCANIDs", "gbStopTriggersCANMessage", "gbStopTriggersFileSize",
          "gbStopTriggersCounter", "textEditFilterList", "btnStart", "edtFilePath"}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget()->objectName(), QString::fromLatin1(name));
    }
}

QTEST_MAIN(TestFileLoggerForm)
#include "tst_fileloggerform.moc"
