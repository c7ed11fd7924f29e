#include "canrawmessageeditor.h"
#include "canrawmessageeditordialog.h"
#include "comparedrecords.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>

#include <memory>

using CANRAW::CanRawCompareMessage;

class TestCanRawMessageEditorDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void formIsAsApplicationsKnowIt();
    void messageGoesInAndOut();
    void handChangesCount();
    void considerationReachesTheEditor();
    void triStateReachesTheEditor();
    void buttonsCloseTheDialog();
    void enterAccepts();
    void withoutEditorTheMessageStaysAsItIs();

private:
    CanRawMessageEditor *editor() const { return m_dialog->findChild<CanRawMessageEditor *>(); }
    QPushButton *button(QDialogButtonBox::StandardButton which) const
    {
        return m_dialog->findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"))->button(which);
    }

    std::unique_ptr<CanRawMessageEditorDialog> m_dialog;
};

void TestCanRawMessageEditorDialog::init()
{
    m_dialog = std::make_unique<CanRawMessageEditorDialog>(nullptr);
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
}

void TestCanRawMessageEditorDialog::formIsAsApplicationsKnowIt()
{
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("Dialog"));
    const auto *place = m_dialog->findChild<QLayout *>(QStringLiteral("layoutForEditorWidget"));
    QCOMPARE(place->indexOf(editor()), 0);
    const auto *outer = m_dialog->findChild<QLayout *>(QStringLiteral("verticalLayout_2"));
    QVERIFY(outer->itemAt(0)->layout() == place);
    QCOMPARE(outer->itemAt(1)->layout()->objectName(), QStringLiteral("horizontalLayout"));
}

void TestCanRawMessageEditorDialog::messageGoesInAndOut()
{
    CanRawCompareMessage message;
    message.id.value = 0x123;
    message.length.value = 2;
    message.data = "ab";
    message.consideration = bitsOf("10");
    QVERIFY(m_dialog->setMessage(message));
    CanRawCompareMessage read(false);
    QVERIFY(m_dialog->getMessage(read));
    QCOMPARE(allFields(read), allFields(message));
}

void TestCanRawMessageEditorDialog::handChangesCount()
{
    m_dialog->setMessage(CanRawCompareMessage());
    m_dialog->findChild<QLineEdit *>(QStringLiteral("edtCanId"))->clear();
    CanRawCompareMessage read;
    m_dialog->getMessage(read);
    QVERIFY(!read.id.isSet);
}

void TestCanRawMessageEditorDialog::considerationReachesTheEditor()
{
    const auto *considerAll = m_dialog->findChild<QPushButton *>(QStringLiteral("btnConsiderAll"));
    QVERIFY(considerAll->isVisible());
    m_dialog->setConsideration(false);
    QVERIFY(!considerAll->isVisible());
}

void TestCanRawMessageEditorDialog::triStateReachesTheEditor()
{
    const auto *box = m_dialog->findChild<QCheckBox *>(QStringLiteral("chBrs"));
    QVERIFY(box->isTristate());
    m_dialog->setTriState(false);
    QVERIFY(!box->isTristate());
}

void TestCanRawMessageEditorDialog::buttonsCloseTheDialog()
{
    QSignalSpy finished(m_dialog.get(), &QDialog::finished);
    QTest::mouseClick(button(QDialogButtonBox::Ok), Qt::LeftButton);
    QCOMPARE(finished.takeLast(), QVariantList{QDialog::Accepted});
    m_dialog->show();
    QTest::mouseClick(button(QDialogButtonBox::Cancel), Qt::LeftButton);
    QCOMPARE(finished.takeLast(), QVariantList{QDialog::Rejected});
}

void TestCanRawMessageEditorDialog::enterAccepts()
{
    QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
    auto *identifier = m_dialog->findChild<QLineEdit *>(QStringLiteral("edtCanId"));
    identifier->setFocus();
    QTest::keyClick(identifier, Qt::Key_Return);
    QCOMPARE(accepted.count(), 1);
}

void TestCanRawMessageEditorDialog::withoutEditorTheMessageStaysAsItIs()
{
    delete editor();
    QVERIFY(m_dialog->setMessage(CanRawCompareMessage(false)));
    m_dialog->setConsideration(true);
    m_dialog->setTriState(true);
    CanRawCompareMessage message;
    message.id.value = 5;
    const QString before = allFields(message);
    QVERIFY(!m_dialog->getMessage(message));
    QCOMPARE(allFields(message), before);
}

QTEST_MAIN(TestCanRawMessageEditorDialog)
#include "tst_canrawmessageeditordialog.moc"
