#include "rowbuilderform.h"

#include <QHeaderView>

#include <memory>

class TestCanMessageBuilderRow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void rowHasASizeThatSuitsItsFont();
    void identifierHasRoomAtTheFontOfADesktop();
    void identifierTellsItsHeadingInATip();
    void rowGrowsWithTheFont();
    void rowFollowsAChangeOfTheFont();

    void shorterMessageLeavesNothingOfALongerOne();
    void messageWithoutBytesHasOnlyItsIdentifier();
    void valueAbove255IsOpen();
    void lengthBeyondTheBytesShowsThemAll();

    void listFillsTheRowFromItsStart();
    void listLeavesTheCellsBehindIt();
    void emptyListChangesNothing();
    void textsBeyondTheRowAreDropped();
    void emptyCellsLeaveNoGap();

    void typedCellIsTakenAsItIs();
    void enterInACellEndsTheEditingOnly();

private:
    const QFont m_usualFont = QApplication::font();
    std::unique_ptr<RowBuilderForm> m_form;
};

void TestCanMessageBuilderRow::init()
{
    m_form = std::make_unique<RowBuilderForm>();
    QVERIFY(m_form->show());
}

void TestCanMessageBuilderRow::cleanup()
{
    QApplication::setFont(m_usualFont);
}

void TestCanMessageBuilderRow::rowHasASizeThatSuitsItsFont()
{
    QCOMPARE(m_form->table()->maximumHeight(), 50);
    QCOMPARE(m_form->table()->horizontalHeader()->defaultSectionSize(), 50);
    QCOMPARE(m_form->table()->rowHeight(0), 23);
    QVERIFY(!m_form->table()->horizontalHeader()->highlightSections());
    QVERIFY(!m_form->table()->verticalHeader()->highlightSections());
    QVERIFY(!m_form->table()->horizontalHeader()->stretchLastSection());
    for (int column = 0; column < m_form->table()->columnCount(); ++column)
        QCOMPARE(m_form->table()->columnWidth(column), 50);
}

void TestCanMessageBuilderRow::identifierHasRoomAtTheFontOfADesktop()
{
    QFont usual = m_usualFont;
    usual.setPointSizeF(9);
    QApplication::setFont(usual);
    init();
    m_form->builder.setCurrentMessage(texts("0x77f"));
    const QModelIndex identifier = m_form->table()->model()->index(0, 0);
    QVERIFY(m_form->table()->columnWidth(0) >= m_form->table()->sizeHintForIndex(identifier).width());
}

void TestCanMessageBuilderRow::identifierTellsItsHeadingInATip()
{
    QCOMPARE(m_form->table()->horizontalHeaderItem(0)->toolTip(), QStringLiteral("CAN identifier"));
}

void TestCanMessageBuilderRow::rowGrowsWithTheFont()
{
    QFont large = m_usualFont;
    large.setPointSizeF(2 * m_usualFont.pointSizeF());
    QApplication::setFont(large);
    init();
    QVERIFY(m_form->table()->rowHeight(0) >= QFontMetrics(large).height());
    QTRY_VERIFY(m_form->table()->viewport()->height() >= m_form->table()->rowHeight(0));
    QVERIFY(m_form->table()->columnWidth(1) >= QFontMetrics(large).horizontalAdvance(QStringLiteral("0xff")));
    QVERIFY(m_form->table()->columnWidth(0) >= m_form->table()->horizontalHeader()->sectionSizeHint(0));
    QVERIFY(m_form->table()->viewport()->width() >= m_form->table()->horizontalHeader()->length());
}

void TestCanMessageBuilderRow::rowFollowsAChangeOfTheFont()
{
    const int usualHeight = m_form->table()->maximumHeight();
    QFont large = m_usualFont;
    large.setPointSizeF(2 * m_usualFont.pointSizeF());
    QApplication::setFont(large);
    QTRY_VERIFY(m_form->table()->rowHeight(0) >= QFontMetrics(large).height());
    QVERIFY(m_form->table()->maximumHeight() > usualHeight);
    QApplication::setFont(m_usualFont);
    QTRY_COMPARE(m_form->table()->maximumHeight(), usualHeight);
    QCOMPARE(m_form->table()->columnWidth(0), 50);
}

void TestCanMessageBuilderRow::shorterMessageLeavesNothingOfALongerOne()
{
    m_form->builder.buildSdoMessage();
    m_form->builder.buildHeartbeatMessage();
    QVERIFY(m_form->cell(1));
    for (int column = 2; column < m_form->table()->columnCount(); ++column)
        QVERIFY(!m_form->cell(column));
}

void TestCanMessageBuilderRow::messageWithoutBytesHasOnlyItsIdentifier()
{
    CanMessageBuilder::CMBMessage message;
    message.id = 0xFFFFFFFF;
    m_form->builder.setNewMessage(message);
    QCOMPARE(m_form->builder.getCurrentMessage(), texts("0xffffffff"));
}

void TestCanMessageBuilderRow::valueAbove255IsOpen()
{
    CanMessageBuilder::CMBMessage message;
    message.length = 4;
    message.data[0] = 0;
    message.data[1] = 0xFF;
    message.data[2] = 0x100;
    message.data[3] = 0xFFFF;
    m_form->builder.setNewMessage(message);
    QCOMPARE(m_form->builder.getCurrentMessage(), texts("0x0 0x0 0xff XX XX"));
}

void TestCanMessageBuilderRow::lengthBeyondTheBytesShowsThemAll()
{
    CanMessageBuilder::CMBMessage message;
    message.length = 255;
    m_form->builder.setNewMessage(message);
    QCOMPARE(m_form->builder.getCurrentMessage(), texts("0x0 XX XX XX XX XX XX XX XX"));
}

void TestCanMessageBuilderRow::listFillsTheRowFromItsStart()
{
    m_form->builder.setCurrentMessage(texts("0x701 0x5"));
    QCOMPARE(m_form->cell(0)->text(), QStringLiteral("0x701"));
    QCOMPARE(m_form->cell(1)->text(), QStringLiteral("0x5"));
    QVERIFY(!m_form->cell(2));
}

void TestCanMessageBuilderRow::listLeavesTheCellsBehindIt()
{
    m_form->builder.setCurrentMessage(texts("a b c d e f g h i"));
    m_form->builder.setCurrentMessage(texts("1 2"));
    QCOMPARE(m_form->builder.getCurrentMessage(), texts("1 2 c d e f g h i"));
}

void TestCanMessageBuilderRow::emptyListChangesNothing()
{
    m_form->builder.setCurrentMessage(texts("a b"));
    m_form->builder.setCurrentMessage({});
    QCOMPARE(m_form->builder.getCurrentMessage(), texts("a b"));
}

void TestCanMessageBuilderRow::textsBeyondTheRowAreDropped()
{
    m_form->builder.setCurrentMessage(texts("a b c d e f g h i j k"));
    QCOMPARE(m_form->builder.getCurrentMessage(), texts("a b c d e f g h i"));
    QCOMPARE(m_form->table()->columnCount(), 9);
}

void TestCanMessageBuilderRow::emptyCellsLeaveNoGap()
{
    m_form->builder.setCurrentMessage({QString(), QStringLiteral("b"), QString(), QStringLiteral("d")});
    QCOMPARE(m_form->builder.getCurrentMessage(), texts("b d"));
}

void TestCanMessageBuilderRow::typedCellIsTakenAsItIs()
{
    m_form->builder.setCurrentMessage(texts("0x1"));
    QLineEdit *editor = m_form->editCell(0);
    QVERIFY(editor);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("any text"));
    QTest::keyClick(editor, Qt::Key_Tab);
    QCOMPARE(m_form->builder.getCurrentMessage(), QStringList{QStringLiteral("any text")});
}

void TestCanMessageBuilderRow::enterInACellEndsTheEditingOnly()
{
    m_form->builder.setCurrentMessage(texts("0x1"));
    QSignalSpy finished(&m_form->builder, &QDialog::finished);
    QLineEdit *editor = m_form->editCell(0);
    QVERIFY(editor);
    editor->setText(QStringLiteral("0x2"));
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(m_form->builder.getCurrentMessage(), texts("0x2"));
    QCOMPARE(finished.count(), 0);
}

QTEST_MAIN(TestCanMessageBuilderRow)
#include "tst_canmessagebuilderrow.moc"
