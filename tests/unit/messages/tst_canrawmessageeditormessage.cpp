#include "comparedrecords.h"
#include "messageeditorform.h"

#include <QLineEdit>

#include <memory>

using CANRAW::CanRawCompareMessage;

class TestCanRawMessageEditorMessage : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void identifierIsReadInAnyBase_data();
    void identifierIsReadInAnyBase();
    void identifierIsShownInHexadecimal_data();
    void identifierIsShownInHexadecimal();
    void unsetIdentifierEmptiesTheField();

    void flagsGoBothWays_data();
    void flagsGoBothWays();
    void storedFlagThatIsNoStateShowsClear_data();
    void storedFlagThatIsNoStateShowsClear();

    void typedByteIsRead();
    void messageGoesInAndOut();
    void dataBeyondTheLengthComesBack();

private:
    std::unique_ptr<MessageEditorForm> m_form;
};

void TestCanRawMessageEditorMessage::init()
{
    m_form = std::make_unique<MessageEditorForm>();
    QVERIFY(m_form->show());
}

void TestCanRawMessageEditorMessage::identifierIsReadInAnyBase_data()
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

void TestCanRawMessageEditorMessage::identifierIsReadInAnyBase()
{
    QFETCH(QString, text);
    QTest::keyClicks(m_form->find<QLineEdit>("edtCanId"), text);
    const CanRawCompareMessage message = m_form->editor.getMessage();
    QTEST(message.id.isSet, "isSet");
    QTEST(message.id.value, "value");
}

void TestCanRawMessageEditorMessage::identifierIsShownInHexadecimal_data()
{
    QTest::addColumn<quint32>("id");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0u << "0x0";
    QTest::newRow("letters") << 0x7ABu << "0x7ab";
    QTest::newRow("largest") << 0xFFFFFFFFu << "0xffffffff";
}

void TestCanRawMessageEditorMessage::identifierIsShownInHexadecimal()
{
    QFETCH(quint32, id);
    CanRawCompareMessage message;
    message.id.value = id;
    m_form->editor.setMessage(message);
    QTEST(m_form->find<QLineEdit>("edtCanId")->text(), "text");
}

void TestCanRawMessageEditorMessage::unsetIdentifierEmptiesTheField()
{
    m_form->find<QLineEdit>("edtCanId")->setText(QStringLiteral("0x1"));
    CanRawCompareMessage message;
    message.id = {5, false};
    m_form->editor.setMessage(message);
    QCOMPARE(m_form->find<QLineEdit>("edtCanId")->text(), QString());
}

void TestCanRawMessageEditorMessage::flagsGoBothWays_data()
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

void TestCanRawMessageEditorMessage::flagsGoBothWays()
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
    m_form->editor.setMessage(message);
    QCOMPARE(int(m_form->editor.findChild<QCheckBox *>(box)->checkState()), state);
    const CanRawCompareMessage read = m_form->editor.getMessage();
    for (const auto field : fields)
        QCOMPARE(read.*field, message.*field);
}

void TestCanRawMessageEditorMessage::storedFlagThatIsNoStateShowsClear_data()
{
    QTest::addColumn<int>("stored");
    QTest::newRow("3") << 3;
    QTest::newRow("-1") << -1;
    QTest::newRow("largest") << 0x7FFFFFFF;
}

void TestCanRawMessageEditorMessage::storedFlagThatIsNoStateShowsClear()
{
    QFETCH(int, stored);
    CanRawCompareMessage message;
    message.ext = stored;
    m_form->editor.setMessage(message);
    QCOMPARE(m_form->find<QCheckBox>("chExt")->checkState(), Qt::Unchecked);
}

void TestCanRawMessageEditorMessage::typedByteIsRead()
{
    m_form->hexEdit()->setFocus();
    m_form->hexEdit()->setCursorPosition(0);
    QTest::keyClicks(m_form->hexEdit()->focusProxy(), QStringLiteral("a5"));
    const CanRawCompareMessage message = m_form->editor.getMessage();
    QCOMPARE(message.data, QByteArray::fromHex("a5") + QByteArray(63, '\0'));
    QVERIFY(message.consideration.testBit(0));
    QCOMPARE(message.consideration.count(true), 1);
}

void TestCanRawMessageEditorMessage::messageGoesInAndOut()
{
    CanRawCompareMessage message;
    message.id.value = 0x1ABCDEF0;
    message.length.value = 3;
    message.data = QByteArray::fromHex("0180ff");
    message.consideration = bitsOf("1010");
    message.rtr = Qt::PartiallyChecked;
    message.ext = Qt::Checked;
    m_form->editor.setMessage(message);
    QCOMPARE(allFields(m_form->editor.getMessage()), allFields(message));
}

void TestCanRawMessageEditorMessage::dataBeyondTheLengthComesBack()
{
    CanRawCompareMessage message;
    message.length.value = 2;
    message.data = QByteArray(100, 'x');
    m_form->editor.setMessage(message);
    QCOMPARE(m_form->editor.getMessage().data, QByteArray(100, 'x'));
}

QTEST_MAIN(TestCanRawMessageEditorMessage)
#include "tst_canrawmessageeditormessage.moc"
