#include "canopenmessagebuilderdialog.h"
#include "framemarks.h"
#include "messagecommands.h"
#include "messages.h"
#include "messagetemplate.h"
#include "transmitpanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>

class TestMessageCommands : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void builderStartsWithTheFrameOfThePanel();
    void wrongInputStartsTheBuilderEmpty();
    void builtMessageComesToThePanel();
    void cancelledBuilderLeavesThePanelAlone();
    void frameToSendHasNoOpenParts();
    void acceptedTemplateMarksFrames();
    void cancelledTemplateMarksNothing();
    void templateStartsWithTheExample();
    void changedMarkReplacesTheOldOne();
    void markThatWentMeanwhileIsMadeAnew();
    void identifierIsMarkedAtOnce();
    void fullListSaysWhatToDo();

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        return m_window->findChild<Widget *>(QString::fromLatin1(name));
    }
    CANopenMessageBuilderDialog *frameDialog() const { return find<CANopenMessageBuilderDialog>("dlgBuildMessage"); }
    CANopenMessageBuilderDialog *markDialog() const { return find<CANopenMessageBuilderDialog>("dlgMarkFrames"); }

    std::unique_ptr<QWidget> m_window;
    TransmitPanel *m_panel;
    FrameMarks *m_marks;
    MessageCommands *m_commands;
};

void TestMessageCommands::init()
{
    m_window = std::make_unique<QWidget>();
    m_panel = new TransmitPanel(m_window.get());
    m_marks = new FrameMarks(m_window.get());
    m_commands = new MessageCommands(m_panel, m_marks, m_window.get());
}

void TestMessageCommands::cleanup()
{
    m_window.reset();
}

void TestMessageCommands::builderStartsWithTheFrameOfThePanel()
{
    m_panel->setInput(inputFor(dataFrame(0x18FF00AA, "0102", true)));
    find<QPushButton>("btnBuildMessage")->click();
    QVERIFY(frameDialog() != nullptr);
    QVERIFY(frameDialog()->isVisible());
    CANRAW::CanRawCompareMessage message;
    QVERIFY(frameDialog()->getMessage(message));
    QCOMPARE(message.id.value, 0x18FF00AAU);
    QCOMPARE(int(message.length.value), 2);
    QCOMPARE(message.data.left(2), QByteArray("\1\2"));
    QCOMPARE(message.ext, int(Qt::Checked));
}

void TestMessageCommands::wrongInputStartsTheBuilderEmpty()
{
    FrameInput wrong;
    wrong.identifier = QStringLiteral("xyz");
    m_panel->setInput(wrong);
    m_commands->buildMessage();
    CANRAW::CanRawCompareMessage message;
    QVERIFY(frameDialog()->getMessage(message));
    QCOMPARE(message.id.value, 0U);
    QCOMPARE(int(message.length.value), 0);
}

void TestMessageCommands::builtMessageComesToThePanel()
{
    m_commands->buildMessage();
    frameDialog()->findChild<QTabWidget *>(QStringLiteral("tabWidget"))->setCurrentIndex(3);
    frameDialog()->findChild<QComboBox *>(QStringLiteral("comboBox_hbState"))->setCurrentIndex(2);
    frameDialog()->findChild<QPushButton *>(QStringLiteral("btnBuild"))->click();
    frameDialog()->accept();
    QCOMPARE(m_panel->input().identifier, QStringLiteral("701"));
    QCOMPARE(m_panel->input().data, QStringLiteral("05"));
    QVERIFY(!m_panel->input().extended);
}

void TestMessageCommands::cancelledBuilderLeavesThePanelAlone()
{
    const QString before = m_panel->input().identifier;
    m_commands->buildMessage();
    frameDialog()->findChild<QPushButton *>(QStringLiteral("btnBuild"))->click();
    frameDialog()->reject();
    QCOMPARE(m_panel->input().identifier, before);
}

void TestMessageCommands::frameToSendHasNoOpenParts()
{
    m_commands->buildMessage();
    for (const char *name : {"chFd", "chBrs", "chRtr", "chExt"})
        QVERIFY(!frameDialog()->findChild<QCheckBox *>(QString::fromLatin1(name))->isTristate());
    QVERIFY(frameDialog()->findChild<QPushButton *>(QStringLiteral("btnConsiderAll"))->isHidden());
}

void TestMessageCommands::acceptedTemplateMarksFrames()
{
    m_commands->addMark({});
    markDialog()->findChild<QLineEdit *>(QStringLiteral("edtCanId"))->setText(QStringLiteral("0x181"));
    markDialog()->accept();
    QCOMPARE(m_marks->count(), 1);
    QVERIFY(m_marks->colorFor(at(0, dataFrame(0x181, "0102"))) >= 0);
    QCOMPARE(m_marks->colorFor(at(0, dataFrame(0x182, "0102"))), -1);
}

void TestMessageCommands::cancelledTemplateMarksNothing()
{
    m_commands->addMark({});
    markDialog()->reject();
    QCOMPARE(m_marks->count(), 0);
}

void TestMessageCommands::templateStartsWithTheExample()
{
    m_commands->addMark(dataFrame(0x181, "0102"));
    QCOMPARE(markDialog()->findChild<QLineEdit *>(QStringLiteral("edtCanId"))->text(), QStringLiteral("0x181"));
    CANRAW::CanRawCompareMessage message;
    markDialog()->getMessage(message);
    QCOMPARE(message.data.left(2), QByteArray("\1\2"));
    QVERIFY(!message.length.isSet);
}

void TestMessageCommands::changedMarkReplacesTheOldOne()
{
    m_marks->add(MessageTemplate::forIdentifier(dataFrame(1)));
    m_marks->add(MessageTemplate::forIdentifier(dataFrame(2)));
    m_commands->changeMark(1);
    markDialog()->findChild<QLineEdit *>(QStringLiteral("edtCanId"))->setText(QStringLiteral("3"));
    markDialog()->accept();
    QCOMPARE(m_marks->count(), 2);
    QCOMPARE(m_marks->at(1).id.value, 3U);
}

void TestMessageCommands::markThatWentMeanwhileIsMadeAnew()
{
    m_marks->add(MessageTemplate::forIdentifier(dataFrame(1)));
    m_commands->changeMark(0);
    m_marks->clear();
    markDialog()->accept();
    QCOMPARE(m_marks->count(), 1);
}

void TestMessageCommands::identifierIsMarkedAtOnce()
{
    m_commands->markIdentifier(dataFrame(0x181, "01"));
    QVERIFY(m_marks->colorFor(at(0, dataFrame(0x181, "0203"))) >= 0);
    QVERIFY(markDialog() == nullptr);
}

void TestMessageCommands::fullListSaysWhatToDo()
{
    for (int i = 0; i < FrameMarks::maxMarks; ++i)
        m_marks->add(MessageTemplate::forIdentifier(dataFrame(static_cast<quint32>(i))));
    const QSignalSpy remarks(m_commands, &MessageCommands::remark);
    m_commands->markIdentifier(dataFrame(0x181));
    m_commands->addMark({});
    QCOMPARE(remarks.count(), 2);
    QCOMPARE(remarks.first().first().toString(),
             QStringLiteral("There are 8 marks already. Remove one below the trace first."));
    QVERIFY(markDialog() == nullptr);
}

QTEST_MAIN(TestMessageCommands)
#include "tst_messagecommands.moc"
