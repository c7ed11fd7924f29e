#include "canrawcomparemessage.h"
#include "messageeditorform.h"

#include <memory>

using CANRAW::CanRawCompareMessage;

class TestCanRawMessageEditorLength : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void chosenLengthIsRead_data();
    void chosenLengthIsRead();
    void unsetLengthIsTheFirstChoice();
    void lengthOutsideTheListChangesNothing();
    void fdLengthFindsItsList();

    void frameTypeChoosesTheLengths_data();
    void frameTypeChoosesTheLengths();
    void lengthSurvivesTheChangeOfTheList();
    void changeOfTheListIsToldAsAChoice();

    void openLengthShowsTheLongestFrame_data();
    void openLengthShowsTheLongestFrame();
    void chosenLengthSetsTheBytesInView();
    void lengthThatTheNewListLacksLeavesItsBytesInView();
    void settingAMessageLeavesTheBytesInView();

private:
    std::unique_ptr<MessageEditorForm> m_form;
};

void TestCanRawMessageEditorLength::init()
{
    m_form = std::make_unique<MessageEditorForm>();
    QVERIFY(m_form->show());
}

void TestCanRawMessageEditorLength::chosenLengthIsRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isSet");
    QTest::addColumn<int>("value");
    QTest::newRow("open") << "- -" << false << 0;
    QTest::newRow("none") << "0" << true << 0;
    QTest::newRow("classic") << "8" << true << 8;
    QTest::newRow("longest") << "64" << true << 64;
}

void TestCanRawMessageEditorLength::chosenLengthIsRead()
{
    QFETCH(QString, text);
    m_form->chooseLength(text);
    const CanRawCompareMessage message = m_form->editor.getMessage();
    QTEST(message.length.isSet, "isSet");
    QTEST(int(message.length.value), "value");
}

void TestCanRawMessageEditorLength::unsetLengthIsTheFirstChoice()
{
    m_form->chooseLength(QStringLiteral("7"));
    CanRawCompareMessage message;
    message.length = {};
    m_form->editor.setMessage(message);
    QCOMPARE(m_form->lengthBox()->currentIndex(), 0);
}

void TestCanRawMessageEditorLength::lengthOutsideTheListChangesNothing()
{
    CanRawCompareMessage message;
    message.length.value = 3;
    m_form->editor.setMessage(message);
    message.length.value = 12;
    m_form->editor.setMessage(message);
    QCOMPARE(m_form->lengthBox()->currentText(), QStringLiteral("3"));
}

void TestCanRawMessageEditorLength::fdLengthFindsItsList()
{
    m_form->editor.setMessage(CanRawCompareMessage());
    QCOMPARE(m_form->offeredLengths(), OfferedLengths::classic());
    CanRawCompareMessage message;
    message.fd = Qt::Checked;
    message.length.value = 64;
    m_form->editor.setMessage(message);
    QCOMPARE(m_form->lengthBox()->currentText(), QStringLiteral("64"));
}

void TestCanRawMessageEditorLength::frameTypeChoosesTheLengths_data()
{
    QTest::addColumn<int>("clicks");
    QTest::addColumn<QStringList>("offered");
    // From "does not matter" on, clicks lead to set, to clear, and back.
    QTest::newRow("does not matter") << 0 << OfferedLengths::fd();
    QTest::newRow("CAN FD") << 1 << OfferedLengths::fd();
    QTest::newRow("classic") << 2 << OfferedLengths::classic();
    QTest::newRow("does not matter again") << 3 << OfferedLengths::fd();
}

void TestCanRawMessageEditorLength::frameTypeChoosesTheLengths()
{
    QFETCH(int, clicks);
    for (int i = 0; i < clicks; ++i)
        m_form->click(m_form->find<QCheckBox>("chFd"));
    QTEST(m_form->offeredLengths(), "offered");
}

void TestCanRawMessageEditorLength::lengthSurvivesTheChangeOfTheList()
{
    m_form->chooseLength(QStringLiteral("5"));
    m_form->find<QCheckBox>("chFd")->setCheckState(Qt::Unchecked);
    QCOMPARE(m_form->lengthBox()->currentText(), QStringLiteral("5"));
    QCOMPARE(m_form->bytesInView(), 5);
}

void TestCanRawMessageEditorLength::changeOfTheListIsToldAsAChoice()
{
    m_form->chooseLength(QStringLiteral("64"));
    QSignalSpy activated(m_form->lengthBox(), &QComboBox::textActivated);
    m_form->editor.changeLengthCombobox(false);
    QCOMPARE(activated.count(), 1);
    QCOMPARE(activated.first(), QVariantList{QStringLiteral("64")});
}

void TestCanRawMessageEditorLength::openLengthShowsTheLongestFrame_data()
{
    QTest::addColumn<int>("fd");
    QTest::addColumn<int>("bytes");
    QTest::newRow("classic") << 0 << 8;
    QTest::newRow("either") << 1 << 64;
    QTest::newRow("CAN FD") << 2 << 64;
}

void TestCanRawMessageEditorLength::openLengthShowsTheLongestFrame()
{
    QFETCH(int, fd);
    m_form->find<QCheckBox>("chFd")->setCheckState(static_cast<Qt::CheckState>(fd));
    m_form->chooseLength(QStringLiteral("2"));
    QCOMPARE(m_form->bytesInView(), 2);
    m_form->chooseLength(QStringLiteral("- -"));
    QTEST(m_form->bytesInView(), "bytes");
}

void TestCanRawMessageEditorLength::chosenLengthSetsTheBytesInView()
{
    m_form->chooseLength(QStringLiteral("12"));
    QCOMPARE(m_form->bytesInView(), 12);
    m_form->chooseLength(QStringLiteral("0"));
    QCOMPARE(m_form->bytesInView(), 0);
    m_form->chooseLength(QStringLiteral("48"));
    QCOMPARE(m_form->bytesInView(), 48);
}

void TestCanRawMessageEditorLength::lengthThatTheNewListLacksLeavesItsBytesInView()
{
    m_form->chooseLength(QStringLiteral("64"));
    m_form->find<QCheckBox>("chFd")->setCheckState(Qt::Unchecked);
    QCOMPARE(m_form->lengthBox()->currentText(), QStringLiteral("- -"));
    QCOMPARE(m_form->bytesInView(), 64);
}

void TestCanRawMessageEditorLength::settingAMessageLeavesTheBytesInView()
{
    m_form->chooseLength(QStringLiteral("4"));
    CanRawCompareMessage message(false);
    message.length.value = 8;
    message.data = QByteArray(64, '\0');
    m_form->editor.setMessage(message);
    QCOMPARE(m_form->lengthBox()->currentText(), QStringLiteral("8"));
    QCOMPARE(m_form->bytesInView(), 4);
}

QTEST_MAIN(TestCanRawMessageEditorLength)
#include "tst_canrawmessageeditorlength.moc"
