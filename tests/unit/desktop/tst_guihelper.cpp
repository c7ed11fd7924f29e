#include "guihelper.h"

#include "messageboxes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDialog>
#include <QDockWidget>
#include <QGroupBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>
#include <QVBoxLayout>

#include <limits>
#include <memory>

namespace {
const QString group = QStringLiteral("Form");

QtMessageHandler testsHandler = nullptr;

/// The platform without a screen complains of each window that is shown, which says nothing of ours.
void passOn(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (!text.startsWith(QLatin1String("This plugin does not support")))
        testsHandler(type, context, text);
}

/// A window with one widget of each kind, in its start state.
struct Form
{
    template <typename Widget>
    Widget *add(const char *name, QWidget *parent = nullptr)
    {
        auto *widget = new Widget(parent == nullptr ? &window : parent);
        widget->setObjectName(QLatin1String(name));
        return widget;
    }

    QMainWindow window;
    QLineEdit *edit = add<QLineEdit>("edit");
    QPlainTextEdit *plain = add<QPlainTextEdit>("plain");
    QSpinBox *spin = add<QSpinBox>("spin");
    QDoubleSpinBox *doubleSpin = add<QDoubleSpinBox>("doubleSpin");
    QComboBox *combo = add<QComboBox>("combo");
    QComboBox *editableCombo = add<QComboBox>("editableCombo");
    QDateTimeEdit *dateTime = add<QDateTimeEdit>("dateTime");
    QDateEdit *date = add<QDateEdit>("date");
    QTimeEdit *time = add<QTimeEdit>("time");
    QCheckBox *check = add<QCheckBox>("check");
    QCheckBox *tristate = add<QCheckBox>("tristate");
    QGroupBox *groupBox = add<QGroupBox>("groupBox");
    QGroupBox *plainGroup = add<QGroupBox>("plainGroup");
    QPushButton *button = add<QPushButton>("button");

    Form()
    {
        spin->setRange(-1000, 1000);
        doubleSpin->setRange(-1e6, 1e6);
        doubleSpin->setDecimals(6);
        const QStringList items = {QStringLiteral("none"), QStringLiteral("even"), QStringLiteral("odd")};
        combo->addItems(items);
        editableCombo->setEditable(true);
        editableCombo->addItems(items);
        tristate->setTristate(true);
        groupBox->setCheckable(true);
        groupBox->setChecked(false);
        button->setCheckable(true);
    }

    void fill()
    {
        edit->setText(QStringLiteral("/tmp/log.txt"));
        plain->setPlainText(QStringLiteral("0x181, 0x182\n700-77F"));
        spin->setValue(-42);
        doubleSpin->setValue(0.812345);
        combo->setCurrentIndex(2);
        editableCombo->setEditText(QStringLiteral("mark"));
        dateTime->setDateTime({{2031, 2, 28}, {23, 59, 58, 123}});
        date->setDate({2024, 2, 29});
        time->setTime({4, 5, 6, 789});
        check->setChecked(true);
        tristate->setCheckState(Qt::PartiallyChecked);
        groupBox->setChecked(true);
        button->setChecked(true);
    }

    QStringList values() const
    {
        return {edit->text(),
                plain->toPlainText(),
                QString::number(spin->value()),
                QString::number(doubleSpin->value(), 'g', 10),
                QStringLiteral("%1 %2").arg(combo->currentIndex()).arg(combo->currentText()),
                editableCombo->currentText(),
                dateTime->dateTime().toString(Qt::ISODateWithMs),
                date->date().toString(Qt::ISODate),
                time->time().toString(Qt::ISODateWithMs),
                QString::number(check->checkState()),
                QString::number(tristate->checkState()),
                QString::number(groupBox->isChecked()),
                QString::number(button->isChecked())};
    }
};
} // namespace

class TestGuiHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { qInstallMessageHandler(testsHandler); }
    void init();

    void messageBoxSaysAllAndGivesItsButton();
    void messageBoxOutlivesItsParentsEnd();

    void valuesComeBackFromTheFile();
    void pushButtonsAreNeverKept();
    void whatWasNotStoredStays();
    void eachKindStandsUnderItsName();
    void anyTextComesBack_data();
    void anyTextComesBack();
    void geometryAndStateComeBack();
    void damagedGeometryAndStateChangeNothing();

    void excludedWidgetsAreLeftOut_data();
    void excludedWidgetsAreLeftOut();
    void exclusionCountsWhenReadingToo();
    void exclusionOfAContainerLeavesItsChildrenIn();
    void excludedWindowKeepsItsPlaceToItself();
    void namelessAndInnerWidgetsAreSkipped();
    void otherKindsAreSkipped();
    void nestedWidgetsAreReached();
    void dialogOfTheWindowStandsOnItsOwn();
    void floatingDockBelongsToTheWindow();

    void comboBoxShowsWhatWasSaved_data();
    void comboBoxShowsWhatWasSaved();
    void itemsOfTheSameTextAreToldApart();
    void nothingChosenComesBackAsNothing();
    void emptyEditableComboBoxComesBackEmpty();

    void unusableValueLeavesTheWidget_data();
    void unusableValueLeavesTheWidget();
    void boundariesOfARangeComeBack();
    void checkedGroupMustBeCheckable();
    void changesAreSignalled();
    void slotMayDeleteOtherWidgets();

    void singleValuesStandBesideTheWidgets();
    void missingValueIsInvalid();
    void groupsDoNotMix();
    void emptyGroupMeansTheTop();
    void applicationSettingsAreTheDefault();
    void callersGroupIsRespected();
    void nullWindowIsHarmless();
    void strangeNamesAreKeptApart();

private:
    std::unique_ptr<QSettings> open() const { return std::make_unique<QSettings>(m_file, QSettings::IniFormat); }

    /// Through the file and not through what a QSettings object still has in mind.
    void save(QWidget &window, const QString &exceptions = {}) const
    {
        const auto settings = open();
        GuiHelper::saveSettings(&window, group, exceptions, settings.get());
    }
    void restore(QWidget &window, const QString &exceptions = {}) const
    {
        const auto settings = open();
        GuiHelper::restoreSettings(&window, group, exceptions, settings.get());
    }
    void store(const QString &key, const QVariant &value) const
    {
        open()->setValue(group + QLatin1Char('/') + key, value);
    }
    QVariant stored(const QString &key) const { return open()->value(group + QLatin1Char('/') + key); }
    QStringList storedKeys() const { return open()->allKeys(); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file;
};

void TestGuiHelper::initTestCase()
{
    testsHandler = qInstallMessageHandler(passOn);
    QCoreApplication::setOrganizationName(QStringLiteral("Kestrune"));
    QCoreApplication::setApplicationName(QStringLiteral("tst_guihelper"));
}

void TestGuiHelper::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_file = m_folder->filePath(QStringLiteral("settings.ini"));
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder->path());
}

void TestGuiHelper::messageBoxSaysAllAndGivesItsButton()
{
    MessageBoxes boxes;
    QWidget parent;
    const int button = GuiHelper::showMessageBox(&parent, QStringLiteral("Title"), QStringLiteral("Text"),
                                                 QStringLiteral("More"), QMessageBox::Ok | QMessageBox::Cancel,
                                                 QMessageBox::Warning);
    QCOMPARE(button, int(QMessageBox::Ok));
    QCOMPARE(boxes.shown.size(), 1);
    const MessageBoxes::Box &box = boxes.shown.first();
    QCOMPARE(box.title, QStringLiteral("Title"));
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("Text|More")});
    QCOMPARE(box.buttons, QMessageBox::Ok | QMessageBox::Cancel);
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.parent.data(), &parent);
    QVERIFY(parent.children().isEmpty());

    GuiHelper::showMessageBox(nullptr, {}, QStringLiteral("Alone"), {}, QMessageBox::Ok, QMessageBox::Information);
    QCOMPARE(boxes.shown.size(), 2);
    QVERIFY(boxes.shown.last().parent.isNull());
}

void TestGuiHelper::messageBoxOutlivesItsParentsEnd()
{
    MessageBoxes boxes;
    auto parent = std::make_unique<QWidget>();
    boxes.whileShown = [&] { parent.reset(); };
    const int button = GuiHelper::showMessageBox(parent.get(), {}, QStringLiteral("Text"), {}, QMessageBox::Ok,
                                                 QMessageBox::Warning);
    QCOMPARE(button, int(QMessageBox::NoButton));
    QVERIFY(parent == nullptr);
}

void TestGuiHelper::valuesComeBackFromTheFile()
{
    Form saved;
    saved.fill();
    saved.button->setChecked(false);
    save(saved.window);
    Form restored;
    QVERIFY(restored.values() != saved.values());
    restore(restored.window);
    QCOMPARE(restored.values(), saved.values());
}

void TestGuiHelper::pushButtonsAreNeverKept()
{
    Form saved;
    saved.fill();
    save(saved.window);
    QVERIFY(!storedKeys().contains(QStringLiteral("Form/button")));
    Form restored;
    restore(restored.window);
    QVERIFY(!restored.button->isChecked());
    store(QStringLiteral("button"), true);
    restore(restored.window);
    QVERIFY(!restored.button->isChecked());
}

void TestGuiHelper::whatWasNotStoredStays()
{
    Form form;
    form.fill();
    const QStringList before = form.values();
    restore(form.window);
    QCOMPARE(form.values(), before);
    QVERIFY(storedKeys().isEmpty());
}

void TestGuiHelper::eachKindStandsUnderItsName()
{
    Form form;
    form.fill();
    save(form.window);
    QStringList keys = storedKeys();
    keys.sort();
    QStringList expected;
    for (const char *key :
         {"check", "combo", "combo/index", "date", "dateTime", "doubleSpin", "edit", "editableCombo",
          "editableCombo/index", "groupBox", "plain", "spin", "time", "tristate", "window/geometry", "window/state"}) {
        expected.append(QStringLiteral("Form/") + QLatin1String(key));
    }
    QCOMPARE(keys, expected);
    QCOMPARE(stored(QStringLiteral("dateTime")).toString(), QStringLiteral("2031-02-28T23:59:58.123"));
    QCOMPARE(stored(QStringLiteral("combo")).toString(), QStringLiteral("odd"));
}

void TestGuiHelper::anyTextComesBack_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("commas") << QStringLiteral("181, 182,183");
    QTest::newRow("at sign") << QStringLiteral("@Invalid()");
    QTest::newRow("quotes and backslashes") << QStringLiteral("\"C:\\new\\x41\";=%1");
    QTest::newRow("lines") << QStringLiteral("one\ntwo\n\nthree\t");
    QTest::newRow("blanks around") << QStringLiteral("  text ");
    QTest::newRow("letters of the world") << QString::fromUtf8("Prüfstand 測試 \xF0\x9F\x9A\x97");
    QTest::newRow("number") << QStringLiteral("007");
    QTest::newRow("truth") << QStringLiteral("true");
    QTest::newRow("long") << QString(100000, QLatin1Char('x'));
}

void TestGuiHelper::anyTextComesBack()
{
    QFETCH(QString, text);
    Form saved;
    saved.plain->setPlainText(text);
    saved.edit->setText(text);
    saved.editableCombo->setEditText(text);
    save(saved.window);
    Form restored;
    restored.plain->setPlainText(QStringLiteral("before"));
    restored.edit->setText(QStringLiteral("before"));
    restored.editableCombo->setEditText(QStringLiteral("before"));
    restore(restored.window);
    QCOMPARE(restored.plain->toPlainText(), saved.plain->toPlainText());
    QCOMPARE(restored.edit->text(), saved.edit->text());
    QCOMPARE(restored.editableCombo->currentText(), saved.editableCombo->currentText());
}

void TestGuiHelper::geometryAndStateComeBack()
{
    const auto makeWindow = [] {
        auto window = std::make_unique<QMainWindow>();
        for (const char *name : {"left", "right"}) {
            auto *dock = new QDockWidget(window.get());
            dock->setObjectName(QLatin1String(name));
            window->addDockWidget(Qt::LeftDockWidgetArea, dock);
        }
        return window;
    };
    const auto saved = makeWindow();
    saved->setGeometry(60, 70, 432, 321);
    saved->addDockWidget(Qt::RightDockWidgetArea, saved->findChild<QDockWidget *>(QStringLiteral("right")));
    saved->show();
    QVERIFY(QTest::qWaitForWindowExposed(saved.get()));
    save(*saved);

    const auto restored = makeWindow();
    restore(*restored);
    restored->show();
    QVERIFY(QTest::qWaitForWindowExposed(restored.get()));
    QCOMPARE(restored->geometry(), saved->geometry());
    QCOMPARE(restored->dockWidgetArea(restored->findChild<QDockWidget *>(QStringLiteral("right"))),
             Qt::RightDockWidgetArea);

    QWidget plainWindow;
    save(plainWindow);
    QVERIFY(stored(QStringLiteral("window/geometry")).isValid());
}

void TestGuiHelper::damagedGeometryAndStateChangeNothing()
{
    QMainWindow window;
    window.setGeometry(60, 70, 432, 321);
    const QByteArray state = window.saveState();
    const QVariantList damages = {QByteArray("garbage"), QByteArray(), QStringLiteral("x"), 5,
                                  QStringList{QStringLiteral("a"), QStringLiteral("b")}};
    for (const QVariant &damaged : damages) {
        store(QStringLiteral("window/geometry"), damaged);
        store(QStringLiteral("window/state"), damaged);
        restore(window);
        QCOMPARE(window.geometry(), QRect(60, 70, 432, 321));
        QCOMPARE(window.saveState(), state);
    }
}

void TestGuiHelper::excludedWidgetsAreLeftOut_data()
{
    QTest::addColumn<QVariant>("property");
    QTest::addColumn<QString>("exceptions");
    QTest::addColumn<bool>("kept");
    QTest::newRow("no exception") << QVariant() << QString() << true;
    QTest::newRow("property") << QVariant(true) << QString() << false;
    QTest::newRow("property set to false") << QVariant(false) << QString() << true;
    QTest::newRow("only name") << QVariant() << QStringLiteral("edit") << false;
    QTest::newRow("one of several names") << QVariant() << QStringLiteral("spin,edit,combo") << false;
    QTest::newRow("blanks around names") << QVariant() << QStringLiteral(" spin ,\tedit , ") << false;
    QTest::newRow("other names") << QVariant() << QStringLiteral("spin,editable,Edit,,") << true;
}

void TestGuiHelper::excludedWidgetsAreLeftOut()
{
    QFETCH(QVariant, property);
    QFETCH(QString, exceptions);
    Form form;
    form.edit->setProperty("ExcludeSaving", property);
    save(form.window, exceptions);
    QTEST(storedKeys().contains(QStringLiteral("Form/edit")), "kept");
    QVERIFY(storedKeys().contains(QStringLiteral("Form/plain")));
}

void TestGuiHelper::exclusionCountsWhenReadingToo()
{
    Form saved;
    saved.fill();
    save(saved.window);
    Form restored;
    const QString before = restored.date->text();
    restored.groupBox->setProperty("ExcludeSaving", true);
    restore(restored.window, QStringLiteral("edit, date"));
    QVERIFY(!restored.groupBox->isChecked());
    QCOMPARE(restored.edit->text(), QString());
    QCOMPARE(restored.date->text(), before);
    QCOMPARE(restored.spin->value(), -42);
}

void TestGuiHelper::exclusionOfAContainerLeavesItsChildrenIn()
{
    Form form;
    form.groupBox->setProperty("ExcludeSaving", true);
    auto *inner = form.add<QLineEdit>("inner", form.groupBox);
    inner->setText(QStringLiteral("kept"));
    save(form.window);
    QVERIFY(!stored(QStringLiteral("groupBox")).isValid());
    QCOMPARE(stored(QStringLiteral("inner")).toString(), QStringLiteral("kept"));
}

void TestGuiHelper::excludedWindowKeepsItsPlaceToItself()
{
    Form form;
    form.window.setProperty("ExcludeSaving", true);
    save(form.window);
    QVERIFY(!stored(QStringLiteral("window/geometry")).isValid());
    QVERIFY(!stored(QStringLiteral("window/state")).isValid());
    QVERIFY(stored(QStringLiteral("edit")).isValid());

    form.window.setProperty("ExcludeSaving", false);
    form.window.setObjectName(QStringLiteral("MainWindow"));
    save(form.window, QStringLiteral("MainWindow"));
    QVERIFY(!stored(QStringLiteral("window/geometry")).isValid());
    save(form.window);
    form.window.setGeometry(1, 2, 333, 222);
    restore(form.window, QStringLiteral("MainWindow"));
    QCOMPARE(form.window.geometry(), QRect(1, 2, 333, 222));
}

void TestGuiHelper::namelessAndInnerWidgetsAreSkipped()
{
    QWidget window;
    auto *nameless = new QLineEdit(&window);
    nameless->setText(QStringLiteral("x"));
    auto *spin = new QSpinBox(&window);
    auto *combo = new QComboBox(&window);
    combo->setEditable(true);
    combo->lineEdit()->setObjectName(QStringLiteral("inner"));
    auto *internal = new QLineEdit(&window);
    internal->setObjectName(QStringLiteral("qt_internal"));
    QVERIFY(spin->findChild<QLineEdit *>(QStringLiteral("qt_spinbox_lineedit")) != nullptr);
    save(window);
    QCOMPARE(storedKeys(), QStringList{QStringLiteral("Form/window/geometry")});
}

void TestGuiHelper::otherKindsAreSkipped()
{
    Form form;
    form.add<QRadioButton>("radio");
    form.add<QSlider>("slider");
    form.add<QTabWidget>("tabs");
    save(form.window);
    for (const char *name : {"radio", "slider", "tabs", "plainGroup"})
        QVERIFY2(!stored(QLatin1String(name)).isValid(), name);
}

void TestGuiHelper::nestedWidgetsAreReached()
{
    QWidget window;
    auto *tabs = new QTabWidget(&window);
    auto *page = new QWidget;
    auto *edit = new QLineEdit(page);
    edit->setObjectName(QStringLiteral("deep"));
    edit->setText(QStringLiteral("value"));
    tabs->addTab(page, QStringLiteral("Page"));
    save(window);
    edit->clear();
    restore(window);
    QCOMPARE(edit->text(), QStringLiteral("value"));
}

void TestGuiHelper::dialogOfTheWindowStandsOnItsOwn()
{
    Form form;
    auto *dialog = form.add<QDialog>("dialog");
    auto *edit = form.add<QLineEdit>("dialogEdit", dialog);
    edit->setText(QStringLiteral("dialog's"));
    save(form.window);
    QVERIFY(!stored(QStringLiteral("dialogEdit")).isValid());
    // Asked for itself, it is a window like any other.
    save(*dialog);
    edit->clear();
    restore(*dialog);
    QCOMPARE(edit->text(), QStringLiteral("dialog's"));
}

void TestGuiHelper::floatingDockBelongsToTheWindow()
{
    Form form;
    auto *dock = form.add<QDockWidget>("dock");
    form.window.addDockWidget(Qt::LeftDockWidgetArea, dock);
    auto *content = new QWidget;
    dock->setWidget(content);
    form.add<QLineEdit>("dockEdit", content)->setText(QStringLiteral("docked"));
    dock->setFloating(true);
    QVERIFY(dock->isWindow());
    save(form.window);
    QCOMPARE(stored(QStringLiteral("dockEdit")).toString(), QStringLiteral("docked"));
}

void TestGuiHelper::comboBoxShowsWhatWasSaved_data()
{
    QTest::addColumn<bool>("editable");
    QTest::addColumn<QStringList>("itemsNow");
    QTest::addColumn<QString>("shown");
    const QStringList same = {QStringLiteral("can0"), QStringLiteral("can1"), QStringLiteral("can2")};
    const QStringList moved = {QStringLiteral("vcan0"), QStringLiteral("can0"), QStringLiteral("can1")};
    const QStringList gone = {QStringLiteral("can0"), QStringLiteral("CAN1"), QStringLiteral("can10")};
    for (const bool editable : {false, true}) {
        const char *kind = editable ? "editable" : "fixed";
        QTest::addRow("%s, same items", kind) << editable << same << QStringLiteral("can1");
        QTest::addRow("%s, items moved", kind) << editable << moved << QStringLiteral("can1");
        // A fixed box cannot show it, and nothing else was meant.
        QTest::addRow("%s, item gone", kind)
            << editable << gone << (editable ? QStringLiteral("can1") : QStringLiteral("can0"));
        QTest::addRow("%s, no items", kind)
            << editable << QStringList() << (editable ? QStringLiteral("can1") : QString());
    }
}

void TestGuiHelper::comboBoxShowsWhatWasSaved()
{
    QFETCH(bool, editable);
    QFETCH(QStringList, itemsNow);
    Form saved;
    QComboBox *box = editable ? saved.editableCombo : saved.combo;
    box->clear();
    box->addItems({QStringLiteral("can0"), QStringLiteral("can1"), QStringLiteral("can2")});
    box->setCurrentIndex(1);
    save(saved.window);

    Form restored;
    box = editable ? restored.editableCombo : restored.combo;
    box->clear();
    box->addItems(itemsNow);
    restore(restored.window);
    QTEST(box->currentText(), "shown");
    if (box->currentIndex() >= 0 && itemsNow.contains(box->currentText()))
        QCOMPARE(box->itemText(box->currentIndex()), box->currentText());
}

void TestGuiHelper::itemsOfTheSameTextAreToldApart()
{
    const QStringList twins = {QStringLiteral("a"), QStringLiteral("twin"), QStringLiteral("twin")};
    Form saved;
    saved.combo->clear();
    saved.combo->addItems(twins);
    saved.combo->setCurrentIndex(2);
    save(saved.window);
    Form restored;
    restored.combo->clear();
    restored.combo->addItems(twins);
    restore(restored.window);
    QCOMPARE(restored.combo->currentIndex(), 2);

    // Where the number is damaged, the text alone finds the first of them.
    for (const QVariant &damaged : {QVariant(QStringLiteral("two")), QVariant(-7), QVariant(99), QVariant()}) {
        store(QStringLiteral("combo/index"), damaged);
        restored.combo->setCurrentIndex(0);
        restore(restored.window);
        QCOMPARE(restored.combo->currentIndex(), 1);
    }
}

void TestGuiHelper::nothingChosenComesBackAsNothing()
{
    Form saved;
    saved.combo->setCurrentIndex(-1);
    save(saved.window);
    Form restored;
    restored.combo->addItem(QString());
    restore(restored.window);
    QCOMPARE(restored.combo->currentIndex(), -1);

    // An item without a text that is no longer there is not the same as nothing.
    store(QStringLiteral("combo/index"), 7);
    restored.combo->setCurrentIndex(1);
    restore(restored.window);
    QCOMPARE(restored.combo->currentIndex(), 1);
}

void TestGuiHelper::emptyEditableComboBoxComesBackEmpty()
{
    Form saved;
    saved.editableCombo->setCurrentIndex(2);
    saved.editableCombo->setEditText({});
    save(saved.window);
    Form restored;
    restored.editableCombo->setEditText(QStringLiteral("before"));
    restore(restored.window);
    QCOMPARE(restored.editableCombo->currentText(), QString());
}

void TestGuiHelper::unusableValueLeavesTheWidget_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    const auto add = [](const char *key, const char *what, const QVariant &value) {
        QTest::addRow("%s: %s", key, what) << QString(QLatin1String(key)) << value;
    };
    const QVariant list = QStringList{QStringLiteral("1"), QStringLiteral("2")};
    for (const char *key : {"edit", "plain", "spin", "doubleSpin", "combo", "editableCombo", "dateTime", "date", "time",
                            "check", "tristate", "groupBox"}) {
        add(key, "list", list);
        add(key, "bytes", QByteArray("1\0\xFF", 3));
        add(key, "invalid", QVariant());
        add(key, "point", QPoint(1, 2));
    }
    for (const char *key : {"spin", "doubleSpin", "dateTime", "date", "time", "check", "tristate", "groupBox"}) {
        add(key, "word", QStringLiteral("word"));
        add(key, "empty", QString());
    }
    add("spin", "fraction", 1.5);
    add("spin", "above the range", 1001);
    add("spin", "below the range", -1001);
    add("spin", "beyond an int", 4294967297LL);
    add("spin", "beyond any number", QStringLiteral("99999999999999999999999"));
    add("doubleSpin", "above the range", 1e7);
    add("doubleSpin", "no number", QStringLiteral("nan"));
    add("doubleSpin", "infinite", QStringLiteral("inf"));
    add("dateTime", "no such day", QStringLiteral("2023-02-29T00:00:00"));
    add("dateTime", "before the range", QStringLiteral("1500-01-01T00:00:00"));
    add("date", "no such day", QStringLiteral("2023-13-01"));
    add("date", "after the range", QStringLiteral("2101-01-01"));
    add("time", "no such hour", QStringLiteral("25:00:00"));
    add("check", "above the states", 3);
    add("check", "below the states", -1);
    add("check", "partly, where that cannot be", int(Qt::PartiallyChecked));
    add("groupBox", "number", 7);
}

void TestGuiHelper::unusableValueLeavesTheWidget()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    Form form;
    form.fill();
    form.date->setMaximumDate({2100, 12, 31});
    const QStringList before = form.values();
    store(key, value);
    restore(form.window);
    QCOMPARE(form.values(), before);

    // The same before it went through a file, where it still has its own type.
    QSettings settings(m_folder->filePath(QStringLiteral("other.ini")), QSettings::IniFormat);
    settings.setValue(group + QLatin1Char('/') + key, value);
    GuiHelper::restoreSettings(&form.window, group, {}, &settings);
    QCOMPARE(form.values(), before);
}

void TestGuiHelper::boundariesOfARangeComeBack()
{
    Form form;
    form.spin->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    form.dateTime->setMaximumDateTime({{9999, 12, 31}, {23, 59, 59, 999}});
    for (const bool highest : {false, true}) {
        form.spin->setValue(highest ? form.spin->maximum() : form.spin->minimum());
        form.doubleSpin->setValue(highest ? form.doubleSpin->maximum() : form.doubleSpin->minimum());
        form.dateTime->setDateTime(highest ? form.dateTime->maximumDateTime() : form.dateTime->minimumDateTime());
        form.date->setDate(highest ? form.date->maximumDate() : form.date->minimumDate());
        form.time->setTime(highest ? form.time->maximumTime() : form.time->minimumTime());
        const QStringList saved = form.values();
        save(form.window);
        form.spin->setValue(1);
        form.doubleSpin->setValue(1);
        form.dateTime->setDateTime({{2000, 2, 3}, {4, 5, 6}});
        form.date->setDate({2000, 2, 3});
        form.time->setTime({4, 5, 6});
        QVERIFY(form.values() != saved);
        restore(form.window);
        QCOMPARE(form.values(), saved);
    }
}

void TestGuiHelper::checkedGroupMustBeCheckable()
{
    Form form;
    store(QStringLiteral("plainGroup"), true);
    QSignalSpy toggled(form.plainGroup, &QGroupBox::toggled);
    restore(form.window);
    QVERIFY(!form.plainGroup->isCheckable());
    QCOMPARE(toggled.size(), 0);
}

void TestGuiHelper::changesAreSignalled()
{
    Form saved;
    saved.fill();
    save(saved.window);
    Form restored;
    QSignalSpy dateTime(restored.dateTime, &QDateTimeEdit::dateTimeChanged);
    QSignalSpy toggled(restored.groupBox, &QGroupBox::toggled);
    QSignalSpy text(restored.edit, &QLineEdit::textChanged);
    restore(restored.window);
    QCOMPARE(dateTime.size(), 1);
    QCOMPARE(toggled.size(), 1);
    QCOMPARE(text.size(), 1);
}

void TestGuiHelper::slotMayDeleteOtherWidgets()
{
    Form saved;
    saved.fill();
    save(saved.window);
    Form restored;
    connect(restored.edit, &QLineEdit::textChanged, this, [&] { delete restored.plain; });
    restore(restored.window);
    QCOMPARE(restored.spin->value(), -42);
}

void TestGuiHelper::singleValuesStandBesideTheWidgets()
{
    const QByteArray bytes("\x00\x01\xFF\"template", 12);
    {
        const auto settings = open();
        GuiHelper::saveSetting(group, QStringLiteral("StartMessage"), bytes, {}, settings.get());
        GuiHelper::saveSetting(group, QStringLiteral("Count"), 7, QStringLiteral("Deep"), settings.get());
    }
    QCOMPARE(storedKeys(), (QStringList{QStringLiteral("Form/Deep/Count"), QStringLiteral("Form/StartMessage")}));
    const auto settings = open();
    QCOMPARE(GuiHelper::restoreSetting(group, QStringLiteral("StartMessage"), {}, settings.get()), QVariant(bytes));
    const QVariant count = GuiHelper::restoreSetting(group, QStringLiteral("Count"), QStringLiteral("Deep"),
                                                     settings.get());
    QCOMPARE(count.toInt(), 7);
}

void TestGuiHelper::missingValueIsInvalid()
{
    const auto settings = open();
    QVERIFY(!GuiHelper::restoreSetting(group, QStringLiteral("x"), {}, settings.get()).isValid());
    // A value without a name cannot be kept; the store itself would complain.
    GuiHelper::saveSetting({}, {}, 5, {}, settings.get());
    QVERIFY(!GuiHelper::restoreSetting({}, {}, {}, settings.get()).isValid());
    QVERIFY(settings->allKeys().isEmpty());
}

void TestGuiHelper::groupsDoNotMix()
{
    Form saved;
    saved.fill();
    const auto settings = open();
    GuiHelper::saveSettings(&saved.window, QStringLiteral("One"), {}, settings.get());
    Form restored;
    const QStringList before = restored.values();
    GuiHelper::restoreSettings(&restored.window, QStringLiteral("Two"), {}, settings.get());
    QCOMPARE(restored.values(), before);
}

void TestGuiHelper::emptyGroupMeansTheTop()
{
    Form form;
    form.edit->setText(QStringLiteral("top"));
    const auto settings = open();
    GuiHelper::saveSettings(&form.window, {}, {}, settings.get());
    QCOMPARE(settings->value(QStringLiteral("edit")).toString(), QStringLiteral("top"));
    form.edit->clear();
    GuiHelper::restoreSettings(&form.window, {}, {}, settings.get());
    QCOMPARE(form.edit->text(), QStringLiteral("top"));
}

void TestGuiHelper::applicationSettingsAreTheDefault()
{
    Form form;
    form.edit->setText(QStringLiteral("default"));
    GuiHelper::saveSettings(&form.window, group, {});
    GuiHelper::saveSetting(group, QStringLiteral("Single"), QStringLiteral("one"), {});
    QCOMPARE(QSettings().value(QStringLiteral("Form/edit")).toString(), QStringLiteral("default"));
    QVERIFY(QSettings().fileName().startsWith(m_folder->path()));
    form.edit->clear();
    GuiHelper::restoreSettings(&form.window, group, {});
    QCOMPARE(form.edit->text(), QStringLiteral("default"));
    QCOMPARE(GuiHelper::restoreSetting(group, QStringLiteral("Single"), {}).toString(), QStringLiteral("one"));
}

void TestGuiHelper::callersGroupIsRespected()
{
    Form form;
    const auto settings = open();
    settings->beginGroup(QStringLiteral("Outer"));
    GuiHelper::saveSettings(&form.window, group, {}, settings.get());
    QCOMPARE(settings->group(), QStringLiteral("Outer"));
    settings->endGroup();
    QVERIFY(settings->contains(QStringLiteral("Outer/Form/edit")));
}

void TestGuiHelper::nullWindowIsHarmless()
{
    const auto settings = open();
    GuiHelper::saveSettings(nullptr, group, {}, settings.get());
    GuiHelper::restoreSettings(nullptr, group, {}, settings.get());
    QVERIFY(settings->allKeys().isEmpty());
}

void TestGuiHelper::strangeNamesAreKeptApart()
{
    QStringList names;
    for (const char *name : {"/", "a/b", "a//b", "a%2Fb", "window/geometry", "window", "Größe", "a b", "c/index"})
        names.append(QString::fromUtf8(name));
    QWidget window;
    auto *combo = new QComboBox(&window);
    combo->setObjectName(QStringLiteral("c"));
    combo->addItems({QStringLiteral("twin"), QStringLiteral("twin")});
    combo->setCurrentIndex(1);
    QList<QLineEdit *> edits;
    for (const QString &name : qAsConst(names)) {
        edits.append(new QLineEdit(&window));
        edits.last()->setObjectName(name);
        edits.last()->setText(QStringLiteral("value of ") + name);
    }
    save(window);
    for (QLineEdit *edit : qAsConst(edits))
        edit->clear();
    combo->setCurrentIndex(0);
    restore(window);
    QCOMPARE(combo->currentIndex(), 1);
    QCOMPARE(stored(QStringLiteral("window/geometry")).type(), QVariant::ByteArray);
    for (int i = 0; i < names.size(); ++i)
        QCOMPARE(edits[i]->text(), QStringLiteral("value of ") + names[i]);
}

QTEST_MAIN(TestGuiHelper)
#include "tst_guihelper.moc"
