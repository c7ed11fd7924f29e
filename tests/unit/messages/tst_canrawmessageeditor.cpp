#include "comparedrecords.h"
#include "messageeditorform.h"

#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>

#include <memory>

using CANRAW::CanRawCompareMessage;

class TestCanRawMessageEditor : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void formIsAsApplicationsKnowIt();
    void flagsStandInTheirOrder();
    void identifierHasTwiceTheStretchOfTheLength();
    void newEditorAsksForNothing();
    void newEditorShows64Bytes();
    void linesHave16BytesAndNothingElse();
    void longestFrameIsSeenWithoutScrolling();
    void tabKeyWalksInReadingOrder();
    void focusGoesToTheIdentifier();

    void considerAllSetsEveryBit();
    void considerNoneClearsEveryBit();
    void withoutConsiderationTheButtonsHide();
    void withoutConsiderationTypingMarksNoByte();
    void withoutConsiderationNoChangeShows();
    void considerationBringsChangesBack();

    void twoValuedBoxIsSetOrClear();
    void partialStateCountsAsSetWhileBoxesAreTwoValued();
    void partialStateComesBackWithTheThirdValueUnlessClicked();
    void openFlagGivesItsBoxTheThirdValueBack();

    void withoutByteEditorTheRestStillWorks();

private:
    bool isShown(const QColor &color) const
    {
        const QImage picture = m_form->hexEdit()->viewport()->grab().toImage();
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.pixelColor(x, y) == color)
                    return true;
            }
        }
        return false;
    }

    std::unique_ptr<MessageEditorForm> m_form;
};

void TestCanRawMessageEditor::init()
{
    m_form = std::make_unique<MessageEditorForm>();
    QVERIFY(m_form->show());
}

void TestCanRawMessageEditor::formIsAsApplicationsKnowIt()
{
    QCOMPARE(m_form->editor.windowTitle(), QStringLiteral("Form"));
    QCOMPARE(m_form->editor.size(), QSize(588, 490));
    QCOMPARE(m_form->find<QLabel>("label")->text(), QStringLiteral("CAN ID"));
    QCOMPARE(m_form->find<QLabel>("label_2")->text(), QStringLiteral("Length"));
    QCOMPARE(m_form->find<QGroupBox>("gbDataHex")->title(), QStringLiteral("Data"));
    QCOMPARE(m_form->find<QGroupBox>("groupBox")->title(), QStringLiteral("Message flags"));
    QCOMPARE(m_form->find<QPushButton>("btnConsiderAll")->text(), QStringLiteral("Consider all"));
    QCOMPARE(m_form->find<QPushButton>("btnConsiderNone")->text(), QStringLiteral("Consider none"));
    QCOMPARE(m_form->find<QCheckBox>("chFd")->text(), QStringLiteral("FD"));
    QCOMPARE(m_form->find<QCheckBox>("chBrs")->text(), QStringLiteral("BRS"));
    QCOMPARE(m_form->find<QCheckBox>("chRtr")->text(), QStringLiteral("RTR"));
    QCOMPARE(m_form->find<QCheckBox>("chExt")->text(), QStringLiteral("EXT"));
    QCOMPARE(m_form->find<QLayout>("layoutHexData")->itemAt(0)->widget(), static_cast<QWidget *>(m_form->hexEdit()));
}

void TestCanRawMessageEditor::flagsStandInTheirOrder()
{
    int right = -1;
    for (const char *name : {"chFd", "chBrs", "chRtr", "chExt"}) {
        const auto *box = m_form->find<QCheckBox>(name);
        QVERIFY2(box->x() > right, name);
        QVERIFY2(box->isTristate(), name);
        right = box->geometry().right();
    }
}

void TestCanRawMessageEditor::identifierHasTwiceTheStretchOfTheLength()
{
    const auto *columns = m_form->find<QGridLayout>("gridLayout");
    QVERIFY(columns->itemAtPosition(1, 0)->widget() == m_form->find<QLineEdit>("edtCanId"));
    QVERIFY(columns->itemAtPosition(1, 1)->widget() == m_form->lengthBox());
    QCOMPARE(columns->columnStretch(0), 2);
    QCOMPARE(columns->columnStretch(1), 1);
}

void TestCanRawMessageEditor::newEditorAsksForNothing()
{
    const CanRawCompareMessage message = m_form->editor.getMessage();
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
    QCOMPARE(m_form->bytesInView(), 64);
    QCOMPARE(m_form->offeredLengths(), OfferedLengths::fd());
    QCOMPARE(m_form->lengthBox()->currentText(), QStringLiteral("- -"));
    QVERIFY(m_form->hexEdit()->overwriteMode());
}

void TestCanRawMessageEditor::linesHave16BytesAndNothingElse()
{
    const QWidget *bytes = m_form->hexEdit()->widget();
    const QFontMetrics metrics(m_form->hexEdit()->font());
    // Two digits a byte and a blank between two of them, no address ahead and no characters behind.
    QCOMPARE(bytes->minimumWidth(), (16 * 3 - 1) * metrics.horizontalAdvance(QLatin1Char('9')));
}

void TestCanRawMessageEditor::longestFrameIsSeenWithoutScrolling()
{
    m_form->editor.resize(m_form->editor.minimumSizeHint());
    QTRY_VERIFY(m_form->hexEdit()->viewport()->size().height() >= m_form->hexEdit()->widget()->minimumHeight());
    QVERIFY(m_form->hexEdit()->viewport()->size().width() >= m_form->hexEdit()->widget()->minimumWidth());
}

void TestCanRawMessageEditor::tabKeyWalksInReadingOrder()
{
    QApplication::setActiveWindow(&m_form->editor);
    m_form->find<QLineEdit>("edtCanId")->setFocus();
    QList<QWidget *> order = {m_form->lengthBox(), m_form->hexEdit()->focusProxy()};
    for (const char *name : {"btnConsiderAll", "btnConsiderNone", "chFd", "chBrs", "chRtr", "chExt", "edtCanId"})
        order += m_form->find<QWidget>(name);
    for (QWidget *expected : qAsConst(order)) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), expected);
    }
}

void TestCanRawMessageEditor::focusGoesToTheIdentifier()
{
    QApplication::setActiveWindow(&m_form->editor);
    m_form->hexEdit()->setFocus();
    m_form->editor.setFocus();
    QCOMPARE(QApplication::focusWidget(), m_form->find<QWidget>("edtCanId"));
}

void TestCanRawMessageEditor::considerAllSetsEveryBit()
{
    CanRawCompareMessage message;
    message.length.value = 2;
    message.consideration = QBitArray(300);
    m_form->editor.setMessage(message);
    QTest::mouseClick(m_form->find<QPushButton>("btnConsiderAll"), Qt::LeftButton);
    QCOMPARE(m_form->editor.getMessage().consideration, setBits(300));
}

void TestCanRawMessageEditor::considerNoneClearsEveryBit()
{
    CanRawCompareMessage message;
    message.consideration = setBits(300);
    m_form->editor.setMessage(message);
    QTest::mouseClick(m_form->find<QPushButton>("btnConsiderNone"), Qt::LeftButton);
    QCOMPARE(m_form->editor.getMessage().consideration, QBitArray(300));
}

void TestCanRawMessageEditor::withoutConsiderationTheButtonsHide()
{
    for (const bool on : {false, true}) {
        m_form->editor.setConsideration(on);
        QCOMPARE(m_form->find<QPushButton>("btnConsiderAll")->isVisible(), on);
        QCOMPARE(m_form->find<QPushButton>("btnConsiderNone")->isVisible(), on);
    }
}

void TestCanRawMessageEditor::withoutConsiderationTypingMarksNoByte()
{
    m_form->editor.setConsideration(false);
    m_form->hexEdit()->setFocus();
    QTest::keyClicks(m_form->hexEdit()->focusProxy(), QStringLiteral("12"));
    QCOMPARE(m_form->editor.getMessage().data.at(0), '\x12');
    QCOMPARE(m_form->editor.getMessage().consideration.count(true), 0);
}

void TestCanRawMessageEditor::withoutConsiderationNoChangeShows()
{
    m_form->hexEdit()->setHighlightingColor(Qt::magenta);
    m_form->editor.setConsideration(false);
    m_form->typeBytes("12");
    QVERIFY(!isShown(Qt::magenta));
}

void TestCanRawMessageEditor::considerationBringsChangesBack()
{
    m_form->hexEdit()->setHighlightingColor(Qt::magenta);
    m_form->editor.setConsideration(false);
    m_form->typeBytes("12");
    m_form->editor.setConsideration(true);
    // The considered bytes would be shown in the place of the changed ones.
    m_form->hexEdit()->setConsideration(false);
    QVERIFY(isShown(Qt::magenta));
}

void TestCanRawMessageEditor::twoValuedBoxIsSetOrClear()
{
    m_form->editor.setTriState(false);
    auto *box = m_form->find<QCheckBox>("chRtr");
    QVERIFY(!box->isTristate());
    QSet<int> states;
    for (int i = 0; i < 4; ++i) {
        m_form->click(box);
        states += box->checkState();
    }
    QCOMPARE(states, (QSet<int>{Qt::Unchecked, Qt::Checked}));
}

void TestCanRawMessageEditor::partialStateCountsAsSetWhileBoxesAreTwoValued()
{
    m_form->editor.setTriState(false);
    const CanRawCompareMessage message = m_form->editor.getMessage();
    for (const qint32 flag : {message.fd, message.brs, message.rtr, message.ext})
        QCOMPARE(flag, qint32(Qt::Checked));
}

void TestCanRawMessageEditor::partialStateComesBackWithTheThirdValueUnlessClicked()
{
    auto *clicked = m_form->find<QCheckBox>("chRtr");
    auto *leftAlone = m_form->find<QCheckBox>("chExt");
    m_form->editor.setTriState(false);
    m_form->click(clicked);
    m_form->editor.setTriState(true);
    QCOMPARE(leftAlone->checkState(), Qt::PartiallyChecked);
    QCOMPARE(clicked->checkState(), Qt::Unchecked);
}

void TestCanRawMessageEditor::openFlagGivesItsBoxTheThirdValueBack()
{
    m_form->editor.setTriState(false);
    CanRawCompareMessage message;
    message.rtr = Qt::PartiallyChecked;
    m_form->editor.setMessage(message);
    QVERIFY(m_form->find<QCheckBox>("chRtr")->isTristate());
    QVERIFY(!m_form->find<QCheckBox>("chExt")->isTristate());
    QCOMPARE(m_form->editor.getMessage().rtr, qint32(Qt::PartiallyChecked));
}

void TestCanRawMessageEditor::withoutByteEditorTheRestStillWorks()
{
    delete m_form->hexEdit();
    QTest::mouseClick(m_form->find<QPushButton>("btnConsiderAll"), Qt::LeftButton);
    QTest::mouseClick(m_form->find<QPushButton>("btnConsiderNone"), Qt::LeftButton);
    m_form->editor.setConsideration(false);
    m_form->chooseLength(QStringLiteral("3"));
    CanRawCompareMessage message;
    message.id.value = 7;
    message.length.value = 3;
    message.data = "abc";
    message.consideration = setBits(3);
    m_form->editor.setMessage(message);
    CanRawCompareMessage expected;
    expected.id.value = 7;
    expected.length.value = 3;
    QCOMPARE(allFields(m_form->editor.getMessage()), allFields(expected));
}

QTEST_MAIN(TestCanRawMessageEditor)
#include "tst_canrawmessageeditor.moc"
