#include "canrawmessageeditor.h"
#include "comparedrecords.h"
#include "qhexedit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>

#include <memory>

using CANRAW::CanRawCompareMessage;

namespace {
QStringList lengths(const char *joined)
{
    return QStringLiteral("- -|%1").arg(QLatin1String(joined)).split(QLatin1Char('|'));
}

const QStringList classicLengths = lengths("0|1|2|3|4|5|6|7|8");
const QStringList fdLengths = lengths("0|1|2|3|4|5|6|7|8|12|16|20|24|32|48|64");
} // namespace

class TestCanRawMessageEditor : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void formIsAsApplicationsKnowIt();
    void flagsStandInTheirOrder();
    void newEditorAsksForNothing();
    void newEditorShows64Bytes();
    void longestFrameIsSeenWithoutScrolling();
    void tabKeyWalksInReadingOrder();

    void identifierIsReadInAnyBase_data();
    void identifierIsReadInAnyBase();
    void identifierIsShownInHexadecimal_data();
    void identifierIsShownInHexadecimal();
    void flagsGoBothWays_data();
    void flagsGoBothWays();
    void storedFlagThatIsNoStateShowsClear_data();
    void storedFlagThatIsNoStateShowsClear();
    void chosenLengthIsRead_data();
    void chosenLengthIsRead();
    void typedByteIsRead();

    void frameTypeChoosesTheLengths_data();
    void frameTypeChoosesTheLengths();
    void openLengthShowsTheLongestFrame_data();
    void openLengthShowsTheLongestFrame();
    void chosenLengthSetsTheBytesInView();
    void lengthSurvivesTheChangeOfTheList();
    void lengthThatTheNewListLacksLeavesItsBytesInView();
    void changeOfTheListIsToldAsAChoice();

    void messageGoesInAndOut();
    void dataBeyondTheLengthComesBack();
    void lengthOutsideTheListChangesNothing();
    void fdLengthFindsItsList();
    void unsetLengthIsTheFirstChoice();
    void unsetIdentifierEmptiesTheField();
    void settingAMessageLeavesTheBytesInView();

    void considerAllSetsEveryBit();
    void considerNoneClearsEveryBit();
    void withoutConsiderationTheButtonsHide();
    void withoutConsiderationTypingMarksNoByte();
    void twoValuedBoxIsSetOrClear();
    void twoValuedBoxKeepsThePartialStateUntilClicked();
    void withoutByteEditorTheRestStillWorks();

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        return m_editor->findChild<Widget *>(QString::fromLatin1(name));
    }
    QHexEdit *hexEdit() const { return m_editor->findChild<QHexEdit *>(); }
    /// On the box itself: the widget may be wider than what reacts.
    static void click(QCheckBox *box) { QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(5, box->height() / 2)); }
    QComboBox *lengthBox() const { return find<QComboBox>("cbLength"); }
    QStringList offeredLengths() const;
    void chooseLength(const QString &text);
    int bytesInView() const;

    std::unique_ptr<CanRawMessageEditor> m_editor;
};

void TestCanRawMessageEditor::init()
{
    m_editor = std::make_unique<CanRawMessageEditor>(nullptr);
    m_editor->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_editor.get()));
}

QStringList TestCanRawMessageEditor::offeredLengths() const
{
    QStringList texts;
    for (int i = 0; i < lengthBox()->count(); ++i)
        texts += lengthBox()->itemText(i);
    return texts;
}

void TestCanRawMessageEditor::chooseLength(const QString &text)
{
    const int steps = offeredLengths().indexOf(text) - lengthBox()->currentIndex();
    for (int i = 0; i < qAbs(steps); ++i)
        QTest::keyClick(lengthBox(), steps > 0 ? Qt::Key_Down : Qt::Key_Up);
}

int TestCanRawMessageEditor::bytesInView() const
{
    // All bytes are zeros in the tests that ask, and an address is followed by a blank like a byte.
    int count = 0;
    for (const QString &line : hexEdit()->toReadableString().split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        count += line.mid(line.indexOf(QLatin1Char(' '))).count(QLatin1String(" 00"));
    return count;
}

void TestCanRawMessageEditor::formIsAsApplicationsKnowIt()
{
    QCOMPARE(m_editor->windowTitle(), QStringLiteral("Form"));
    QCOMPARE(m_editor->size(), QSize(588, 490));
    QCOMPARE(find<QLabel>("label")->text(), QStringLiteral("CAN ID"));
    QCOMPARE(find<QLabel>("label_2")->text(), QStringLiteral("Length"));
    QCOMPARE(find<QGroupBox>("gbDataHex")->title(), QStringLiteral("Data"));
    QCOMPARE(find<QGroupBox>("groupBox")->title(), QStringLiteral("Message flags"));
    QCOMPARE(find<QPushButton>("btnConsiderAll")->text(), QStringLiteral("Consider all"));
    QCOMPARE(find<QPushButton>("btnConsiderNone")->text(), QStringLiteral("Consider none"));
    QCOMPARE(find<QCheckBox>("chFd")->text(), QStringLiteral("FD"));
    QCOMPARE(find<QCheckBox>("chBrs")->text(), QStringLiteral("BRS"));
    QCOMPARE(find<QCheckBox>("chRtr")->text(), QStringLiteral("RTR"));
    QCOMPARE(find<QCheckBox>("chExt")->text(), QStringLiteral("EXT"));
    QCOMPARE(find<QLayout>("layoutHexData")->itemAt(0)->widget(), static_cast<QWidget *>(hexEdit()));
}

void TestCanRawMessageEditor::flagsStandInTheirOrder()
{
    int right = -1;
    for (const char *name : {"chFd", "chBrs", "chRtr", "chExt"}) {
        const auto *box = find<QCheckBox>(name);
        QVERIFY2(box->x() > right, name);
        QVERIFY2(box->isTristate(), name);
        right = box->geometry().right();
    }
}

void TestCanRawMessageEditor::newEditorAsksForNothing()
{
    const CanRawCompareMessage message = m_editor->getMessage();
    QVERIFY(message.valid);
    QVERIFY(!message.id.isSet);
    QVERIFY(!message.length.isSet);
    for (const qint32 flag : {message.fd, message.brs, message.rtr, message.ext})
        QCOMPARE(flag, qint32(Qt::PartiallyChecked));
    QCOMPARE(message.data, QByteArray(64, '\0'));
    QCOMPARE(message.consideration.count(true), 0);
    QCOMPARE(message.consideration.size(), 16777215);
}

void TestCanRawMessageEditor::newEditorShows64Bytes()
{
    QCOMPARE(bytesInView(), 64);
    QCOMPARE(offeredLengths(), fdLengths);
    QCOMPARE(lengthBox()->currentText(), QStringLiteral("- -"));
    QVERIFY(hexEdit()->overwriteMode());
}

void TestCanRawMessageEditor::longestFrameIsSeenWithoutScrolling()
{
    m_editor->resize(m_editor->minimumSizeHint());
    QTRY_VERIFY(hexEdit()->viewport()->size().height() >= hexEdit()->widget()->minimumHeight());
    QVERIFY(hexEdit()->viewport()->size().width() >= hexEdit()->widget()->minimumWidth());
}

void TestCanRawMessageEditor::tabKeyWalksInReadingOrder()
{
    QApplication::setActiveWindow(m_editor.get());
    find<QLineEdit>("edtCanId")->setFocus();
    QList<QWidget *> order = {lengthBox(), hexEdit()->focusProxy()};
    for (const char *name : {"btnConsiderAll", "btnConsiderNone", "chFd", "chBrs", "chRtr", "chExt", "edtCanId"})
        order += find<QWidget>(name);
    for (QWidget *expected : qAsConst(order)) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), expected);
    }
}

void TestCanRawMessageEditor::identifierIsReadInAnyBase_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isSet");
    QTest::addColumn<quint32>("value");
    QTest::newRow("hexadecimal") << "0x181" << true << 0x181u;
    QTest::newRow("octal") << "0601" << true << 0x181u;
    QTest::newRow("decimal") << "385" << true << 0x181u;
    QTest::newRow("zero") << "0" << true << 0u;
    QTest::newRow("beyond 29 bits") << "0x20000000" << true << 0x20000000u;
    QTest::newRow("largest") << "0xFFFFFFFF" << true << 0xFFFFFFFFu;
    QTest::newRow("beyond 32 bits") << "0x100000000" << false << 0u;
    QTest::newRow("empty") << "" << false << 0u;
    QTest::newRow("prefix alone") << "0x" << false << 0u;
    QTest::newRow("hexadecimal without a prefix") << "18A" << false << 0u;
    QTest::newRow("negative") << "-1" << false << 0u;
    QTest::newRow("word") << "heartbeat" << false << 0u;
}

void TestCanRawMessageEditor::identifierIsReadInAnyBase()
{
    QFETCH(QString, text);
    QTest::keyClicks(find<QLineEdit>("edtCanId"), text);
    const CanRawCompareMessage message = m_editor->getMessage();
    QTEST(message.id.isSet, "isSet");
    QTEST(message.id.value, "value");
}

void TestCanRawMessageEditor::identifierIsShownInHexadecimal_data()
{
    QTest::addColumn<quint32>("id");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0u << "0x0";
    QTest::newRow("letters") << 0x7ABu << "0x7ab";
    QTest::newRow("largest") << 0xFFFFFFFFu << "0xffffffff";
}

void TestCanRawMessageEditor::identifierIsShownInHexadecimal()
{
    QFETCH(quint32, id);
    CanRawCompareMessage message;
    message.id.value = id;
    m_editor->setMessage(message);
    QTEST(find<QLineEdit>("edtCanId")->text(), "text");
}

void TestCanRawMessageEditor::flagsGoBothWays_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<int>("which");
    QTest::addColumn<int>("state");
    for (const int state : {0, 1, 2}) {
        int which = 0;
        for (const char *name : {"chFd", "chBrs", "chRtr", "chExt"})
            QTest::addRow("%s %d", name, state) << name << which++ << state;
    }
}

void TestCanRawMessageEditor::flagsGoBothWays()
{
    QFETCH(QString, box);
    QFETCH(int, which);
    QFETCH(int, state);
    static constexpr qint32 CanRawCompareMessage::*fields[] = {&CanRawCompareMessage::fd, &CanRawCompareMessage::brs,
                                                               &CanRawCompareMessage::rtr, &CanRawCompareMessage::ext};
    CanRawCompareMessage message;
    for (const auto field : fields)
        message.*field = state == 0 ? 2 : 0;
    message.*fields[which] = state;
    m_editor->setMessage(message);
    QCOMPARE(int(m_editor->findChild<QCheckBox *>(box)->checkState()), state);
    const CanRawCompareMessage read = m_editor->getMessage();
    for (const auto field : fields)
        QCOMPARE(read.*field, message.*field);
}

void TestCanRawMessageEditor::storedFlagThatIsNoStateShowsClear_data()
{
    QTest::addColumn<int>("stored");
    QTest::newRow("3") << 3;
    QTest::newRow("-1") << -1;
    QTest::newRow("largest") << 0x7FFFFFFF;
}

void TestCanRawMessageEditor::storedFlagThatIsNoStateShowsClear()
{
    QFETCH(int, stored);
    CanRawCompareMessage message;
    message.ext = stored;
    m_editor->setMessage(message);
    QCOMPARE(find<QCheckBox>("chExt")->checkState(), Qt::Unchecked);
}

void TestCanRawMessageEditor::chosenLengthIsRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isSet");
    QTest::addColumn<int>("value");
    QTest::newRow("open") << "- -" << false << 0;
    QTest::newRow("none") << "0" << true << 0;
    QTest::newRow("classic") << "8" << true << 8;
    QTest::newRow("longest") << "64" << true << 64;
}

void TestCanRawMessageEditor::chosenLengthIsRead()
{
    QFETCH(QString, text);
    chooseLength(text);
    const CanRawCompareMessage message = m_editor->getMessage();
    QTEST(message.length.isSet, "isSet");
    QTEST(int(message.length.value), "value");
}

void TestCanRawMessageEditor::typedByteIsRead()
{
    hexEdit()->setFocus();
    hexEdit()->setCursorPosition(0);
    QTest::keyClicks(hexEdit()->focusProxy(), QStringLiteral("a5"));
    const CanRawCompareMessage message = m_editor->getMessage();
    QCOMPARE(message.data, QByteArray::fromHex("a5") + QByteArray(63, '\0'));
    QVERIFY(message.consideration.testBit(0));
    QCOMPARE(message.consideration.count(true), 1);
}

void TestCanRawMessageEditor::frameTypeChoosesTheLengths_data()
{
    QTest::addColumn<int>("clicks");
    QTest::addColumn<QStringList>("offered");
    // From "does not matter" on, clicks lead to set, to clear, and back.
    QTest::newRow("does not matter") << 0 << fdLengths;
    QTest::newRow("CAN FD") << 1 << fdLengths;
    QTest::newRow("classic") << 2 << classicLengths;
    QTest::newRow("does not matter again") << 3 << fdLengths;
}

void TestCanRawMessageEditor::frameTypeChoosesTheLengths()
{
    QFETCH(int, clicks);
    for (int i = 0; i < clicks; ++i)
        click(find<QCheckBox>("chFd"));
    QTEST(offeredLengths(), "offered");
}

void TestCanRawMessageEditor::openLengthShowsTheLongestFrame_data()
{
    QTest::addColumn<int>("fd");
    QTest::addColumn<int>("bytes");
    QTest::newRow("classic") << 0 << 8;
    QTest::newRow("either") << 1 << 64;
    QTest::newRow("CAN FD") << 2 << 64;
}

void TestCanRawMessageEditor::openLengthShowsTheLongestFrame()
{
    QFETCH(int, fd);
    find<QCheckBox>("chFd")->setCheckState(static_cast<Qt::CheckState>(fd));
    chooseLength(QStringLiteral("2"));
    QCOMPARE(bytesInView(), 2);
    chooseLength(QStringLiteral("- -"));
    QTEST(bytesInView(), "bytes");
}

void TestCanRawMessageEditor::chosenLengthSetsTheBytesInView()
{
    chooseLength(QStringLiteral("12"));
    QCOMPARE(bytesInView(), 12);
    chooseLength(QStringLiteral("0"));
    QCOMPARE(bytesInView(), 0);
    chooseLength(QStringLiteral("48"));
    QCOMPARE(bytesInView(), 48);
}

void TestCanRawMessageEditor::lengthSurvivesTheChangeOfTheList()
{
    chooseLength(QStringLiteral("5"));
    find<QCheckBox>("chFd")->setCheckState(Qt::Unchecked);
    QCOMPARE(lengthBox()->currentText(), QStringLiteral("5"));
    QCOMPARE(bytesInView(), 5);
}

void TestCanRawMessageEditor::lengthThatTheNewListLacksLeavesItsBytesInView()
{
    chooseLength(QStringLiteral("64"));
    find<QCheckBox>("chFd")->setCheckState(Qt::Unchecked);
    QCOMPARE(lengthBox()->currentText(), QStringLiteral("- -"));
    QCOMPARE(bytesInView(), 64);
}

void TestCanRawMessageEditor::changeOfTheListIsToldAsAChoice()
{
    chooseLength(QStringLiteral("64"));
    QSignalSpy activated(lengthBox(), &QComboBox::textActivated);
    m_editor->changeLengthCombobox(false);
    QCOMPARE(activated.count(), 1);
    QCOMPARE(activated.first(), QVariantList{QStringLiteral("64")});
}

void TestCanRawMessageEditor::messageGoesInAndOut()
{
    CanRawCompareMessage message;
    message.id.value = 0x1ABCDEF0;
    message.length.value = 3;
    message.data = QByteArray::fromHex("0180ff");
    message.consideration = bitsOf("1010");
    message.rtr = Qt::PartiallyChecked;
    message.ext = Qt::Checked;
    m_editor->setMessage(message);
    QCOMPARE(allFields(m_editor->getMessage()), allFields(message));
}

void TestCanRawMessageEditor::dataBeyondTheLengthComesBack()
{
    CanRawCompareMessage message;
    message.length.value = 2;
    message.data = QByteArray(100, 'x');
    m_editor->setMessage(message);
    QCOMPARE(m_editor->getMessage().data, QByteArray(100, 'x'));
}

void TestCanRawMessageEditor::lengthOutsideTheListChangesNothing()
{
    CanRawCompareMessage message;
    message.length.value = 3;
    m_editor->setMessage(message);
    message.length.value = 12;
    m_editor->setMessage(message);
    QCOMPARE(lengthBox()->currentText(), QStringLiteral("3"));
}

void TestCanRawMessageEditor::fdLengthFindsItsList()
{
    m_editor->setMessage(CanRawCompareMessage());
    QCOMPARE(offeredLengths(), classicLengths);
    CanRawCompareMessage message;
    message.fd = Qt::Checked;
    message.length.value = 64;
    m_editor->setMessage(message);
    QCOMPARE(lengthBox()->currentText(), QStringLiteral("64"));
}

void TestCanRawMessageEditor::unsetLengthIsTheFirstChoice()
{
    chooseLength(QStringLiteral("7"));
    CanRawCompareMessage message;
    message.length = {};
    m_editor->setMessage(message);
    QCOMPARE(lengthBox()->currentIndex(), 0);
}

void TestCanRawMessageEditor::unsetIdentifierEmptiesTheField()
{
    find<QLineEdit>("edtCanId")->setText(QStringLiteral("0x1"));
    CanRawCompareMessage message;
    message.id = {5, false};
    m_editor->setMessage(message);
    QCOMPARE(find<QLineEdit>("edtCanId")->text(), QString());
}

void TestCanRawMessageEditor::settingAMessageLeavesTheBytesInView()
{
    chooseLength(QStringLiteral("4"));
    CanRawCompareMessage message(false);
    message.length.value = 8;
    message.data = QByteArray(64, '\0');
    m_editor->setMessage(message);
    QCOMPARE(lengthBox()->currentText(), QStringLiteral("8"));
    QCOMPARE(bytesInView(), 4);
}

void TestCanRawMessageEditor::considerAllSetsEveryBit()
{
    CanRawCompareMessage message;
    message.length.value = 2;
    message.consideration = QBitArray(300);
    m_editor->setMessage(message);
    QTest::mouseClick(find<QPushButton>("btnConsiderAll"), Qt::LeftButton);
    QCOMPARE(m_editor->getMessage().consideration, setBits(300));
}

void TestCanRawMessageEditor::considerNoneClearsEveryBit()
{
    CanRawCompareMessage message;
    message.consideration = setBits(300);
    m_editor->setMessage(message);
    QTest::mouseClick(find<QPushButton>("btnConsiderNone"), Qt::LeftButton);
    QCOMPARE(m_editor->getMessage().consideration, QBitArray(300));
}

void TestCanRawMessageEditor::withoutConsiderationTheButtonsHide()
{
    for (const bool on : {false, true}) {
        m_editor->setConsideration(on);
        QCOMPARE(find<QPushButton>("btnConsiderAll")->isVisible(), on);
        QCOMPARE(find<QPushButton>("btnConsiderNone")->isVisible(), on);
    }
}

void TestCanRawMessageEditor::withoutConsiderationTypingMarksNoByte()
{
    m_editor->setConsideration(false);
    hexEdit()->setFocus();
    QTest::keyClicks(hexEdit()->focusProxy(), QStringLiteral("12"));
    QCOMPARE(m_editor->getMessage().data.at(0), '\x12');
    QCOMPARE(m_editor->getMessage().consideration.count(true), 0);
}

void TestCanRawMessageEditor::twoValuedBoxIsSetOrClear()
{
    m_editor->setTriState(false);
    auto *box = find<QCheckBox>("chRtr");
    QVERIFY(!box->isTristate());
    QSet<int> states;
    for (int i = 0; i < 4; ++i) {
        click(box);
        states += box->checkState();
    }
    QCOMPARE(states, (QSet<int>{Qt::Unchecked, Qt::Checked}));
}

void TestCanRawMessageEditor::twoValuedBoxKeepsThePartialStateUntilClicked()
{
    auto *clicked = find<QCheckBox>("chRtr");
    auto *leftAlone = find<QCheckBox>("chExt");
    m_editor->setTriState(false);
    click(clicked);
    m_editor->setTriState(true);
    QCOMPARE(leftAlone->checkState(), Qt::PartiallyChecked);
    QVERIFY(clicked->checkState() != Qt::PartiallyChecked);
}

void TestCanRawMessageEditor::withoutByteEditorTheRestStillWorks()
{
    delete hexEdit();
    QTest::mouseClick(find<QPushButton>("btnConsiderAll"), Qt::LeftButton);
    QTest::mouseClick(find<QPushButton>("btnConsiderNone"), Qt::LeftButton);
    m_editor->setConsideration(false);
    chooseLength(QStringLiteral("3"));
    CanRawCompareMessage message;
    message.id.value = 7;
    message.length.value = 3;
    message.data = "abc";
    message.consideration = setBits(3);
    m_editor->setMessage(message);
    CanRawCompareMessage expected;
    expected.id.value = 7;
    expected.length.value = 3;
    QCOMPARE(allFields(m_editor->getMessage()), allFields(expected));
}

QTEST_MAIN(TestCanRawMessageEditor)
#include "tst_canrawmessageeditor.moc"
