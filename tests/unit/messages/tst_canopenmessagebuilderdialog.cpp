#include "builderform.h"
#include "canopenmessagebuilderdialog.h"
#include "canrawmessageeditor.h"
#include "comparedrecords.h"
#include "markingtranslator.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLayout>
#include <QGroupBox>
#include <QPushButton>

#include <functional>
#include <memory>

using CANRAW::CanRawCompareMessage;
Q_DECLARE_METATYPE(std::function<void(BuilderForm &)>)

// Applications are built with these numbers.
static_assert(CANopenMessageBuilderDialog::BuildNmt == 0);
static_assert(CANopenMessageBuilderDialog::BuildPdo == 1);
static_assert(CANopenMessageBuilderDialog::BuildSdo == 2);
static_assert(CANopenMessageBuilderDialog::BuildHeartbeat == 3);
static_assert(CANopenMessageBuilderDialog::BuildEmcy == 4);

class TestCANopenMessageBuilderDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void formIsAsApplicationsKnowIt();
    void numberHasItsRange_data();
    void numberHasItsRange();
    void pdoLengthStartsAtZero();
    void boxHasItsChoices_data();
    void boxHasItsChoices();
    void fieldHasItsLabel_data();
    void fieldHasItsLabel();
    void everyErrorClassIsThereWithItsKey();
    void errorClassesSpeakTheLanguageOfTheApplication();
    void buildFillsTheEditor_data();
    void buildFillsTheEditor();
    void buildLeavesTheFlagsUnchecked();
    void pdoWithoutLengthKeepsTheChosenOne();
    void pageOfAnotherNameCountsAsNmt();
    void shortcutBuilds();
    void messageGoesInAndOut();
    void handChangesAfterBuildCount();
    void entriesStayFromRunToRun();
    void buttonsCloseTheDialog();
    void enterAccepts();
    void focusStartsAtTheIdentifier();
    void tabKeyWalksInReadingOrder();
    void withoutEditorTheMessageStaysAsItIs();

private:
    CanRawCompareMessage message() const
    {
        CanRawCompareMessage read(false);
        m_dialog->getMessage(read);
        return read;
    }

    std::unique_ptr<CANopenMessageBuilderDialog> m_dialog;
    std::unique_ptr<BuilderForm> m_form;
};

void TestCANopenMessageBuilderDialog::init()
{
    m_dialog = std::make_unique<CANopenMessageBuilderDialog>(nullptr);
    m_form = std::make_unique<BuilderForm>(*m_dialog, "btnBuild");
    QVERIFY(m_form->show());
}

void TestCANopenMessageBuilderDialog::formIsAsApplicationsKnowIt()
{
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("CANopen Message builder"));
    QCOMPARE(m_form->find<QGroupBox>("gbCANMessage")->title(), QStringLiteral("CAN Message"));
    QCOMPARE(m_form->find<QGroupBox>("gbMessageBuilder")->title(), QStringLiteral("Message Builder"));
    QCOMPARE(m_form->find<QPushButton>("btnBuild")->text(), QStringLiteral("Build"));
    QCOMPARE(m_form->pages(),
             (QStringList{QStringLiteral("tab_nmt NMT"), QStringLiteral("tab_pdo PDO"), QStringLiteral("tab_sdo SDO"),
                          QStringLiteral("tab_heartbeat Heartbeat"), QStringLiteral("tab_emcy EMCY")}));
    QCOMPARE(m_form->find<QTabWidget>("tabWidget")->currentIndex(), 0);
    auto *editor = m_dialog->findChild<CanRawMessageEditor *>();
    QCOMPARE(m_form->find<QLayout>("layoutMessageEditor")->indexOf(editor), 0);
}

void TestCANopenMessageBuilderDialog::numberHasItsRange_data()
{
    addRangesOfThePages();
    QTest::newRow("spinBox_pdoLength") << "spinBox_pdoLength" << -1 << 8;
}

void TestCANopenMessageBuilderDialog::numberHasItsRange()
{
    QFETCH(QString, name);
    const auto *number = m_form->find<QSpinBox>(name.toLatin1().constData());
    QTEST(number->minimum(), "least");
    QTEST(number->maximum(), "most");
    QCOMPARE(number->value(), qMax(0, number->minimum()));
}

void TestCANopenMessageBuilderDialog::pdoLengthStartsAtZero()
{
    QCOMPARE(m_form->find<QSpinBox>("spinBox_pdoLength")->value(), 0);
}

void TestCANopenMessageBuilderDialog::boxHasItsChoices_data()
{
    addChoicesOfThePages();
}

void TestCANopenMessageBuilderDialog::boxHasItsChoices()
{
    QFETCH(QString, name);
    QTEST(m_form->items(name.toLatin1().constData()), "texts");
}

void TestCANopenMessageBuilderDialog::fieldHasItsLabel_data()
{
    addLabelsOfThePages();
}

void TestCANopenMessageBuilderDialog::fieldHasItsLabel()
{
    QFETCH(QString, field);
    QTEST(m_form->labelOf(field.toLatin1().constData()), "label");
}

void TestCANopenMessageBuilderDialog::everyErrorClassIsThereWithItsKey()
{
    const auto *box = m_form->find<QComboBox>("comboBox_emcyCode");
    QCOMPARE(box->count(), 25);
    QCOMPARE(entriesByKey(*box), emergencyTexts());
}

void TestCANopenMessageBuilderDialog::errorClassesSpeakTheLanguageOfTheApplication()
{
    const MarkingTranslator translator;
    CANopenMessageBuilderDialog translated(nullptr);
    const BuilderForm form(translated, "btnBuild");
    QVERIFY(form.items("comboBox_emcyCode").contains(MarkingTranslator::marked("Voltage")));
}

void TestCANopenMessageBuilderDialog::buildFillsTheEditor_data()
{
    using Fill = std::function<void(BuilderForm &)>;
    QTest::addColumn<QString>("page");
    QTest::addColumn<Fill>("fill");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("length");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QBitArray>("consideration");
    const auto hex = [](const char *text) { return QByteArray::fromHex(text); };
    QTest::newRow("NMT") << "NMT" << Fill([](BuilderForm &form) {
        form.choose("comboBox_nmtCmd", QStringLiteral("Reset Node"));
        form.setNumber("spinBox_nmtNodeId", 5);
    }) << "0x0"
                         << "2" << hex("8105") << setBits(2);
    QTest::newRow("PDO without bytes") << "PDO" << Fill([](BuilderForm &) {}) << "0x181"
                                       << "0" << QByteArray() << QBitArray(64);
    QTest::newRow("PDO") << "PDO" << Fill([](BuilderForm &form) {
        form.setNumber("spinBox_pdoCobId", 0x57F);
        form.setNumber("spinBox_pdoLength", 8);
    }) << "0x57f"
                         << "8" << QByteArray(8, '\0') << QBitArray(64);
    QTest::newRow("SDO request") << "SDO" << Fill([](BuilderForm &form) {
        form.type("edt_sdoIndex", QStringLiteral("1017"));
        form.type("edt_sdoSub", QStringLiteral("0"));
    }) << "0x581"
                                 << "8" << hex("0017100000000000") << setBits(4);
    QTest::newRow("SDO response") << "SDO" << Fill([](BuilderForm &form) {
        form.choose("comboBox_sdoType", QStringLiteral("Response"));
        form.setNumber("spinBox_sdoNodeId", 127);
        form.type("edt_sdoIndex", QStringLiteral("2000"));
        form.type("edt_sdoSub", QStringLiteral("1FE"));
    }) << "0x67f"
                                  << "8" << hex("000020fe00000000") << setBits(4);
    QTest::newRow("SDO of no object") << "SDO" << Fill([](BuilderForm &form) {
        form.type("edt_sdoIndex", QStringLiteral("speed"));
    }) << "0x581"
                                      << "8" << QByteArray(8, '\0') << setBits(4);
    QTest::newRow("heartbeat") << "Heartbeat" << Fill([](BuilderForm &form) {
        form.choose("comboBox_hbState", QStringLiteral("Pre-Operational"));
        form.setNumber("spinBox_hbNodeId", 127);
    }) << "0x77f"
                               << "1" << hex("7f") << setBits(1);
    QTest::newRow("EMCY of any node") << "EMCY" << Fill([](BuilderForm &form) {
        form.choose("comboBox_emcyCode", QStringLiteral("Generic error"));
        form.setNumber("spinBox_emcyNodeId", 77);
    }) << "0x0"
                                      << "8" << hex("1000000000000000") << setBits(1);
}

void TestCANopenMessageBuilderDialog::buildFillsTheEditor()
{
    QFETCH(QString, page);
    QFETCH(std::function<void(BuilderForm &)>, fill);
    m_form->goTo(page);
    fill(*m_form);
    m_form->build();
    QTEST(m_form->find<QLineEdit>("edtCanId")->text(), "id");
    QTEST(m_form->find<QComboBox>("cbLength")->currentText(), "length");
    QTEST(message().data, "data");
    QTEST(message().consideration, "consideration");
}

void TestCANopenMessageBuilderDialog::buildLeavesTheFlagsUnchecked()
{
    for (const char *page : {"NMT", "PDO", "SDO", "Heartbeat", "EMCY"}) {
        m_dialog->setMessage(CanRawCompareMessage(false));
        m_form->goTo(QString::fromLatin1(page));
        m_form->build();
        for (const char *name : {"chFd", "chBrs", "chRtr", "chExt"})
            QCOMPARE(m_form->find<QCheckBox>(name)->checkState(), Qt::Unchecked);
    }
}

void TestCANopenMessageBuilderDialog::pdoWithoutLengthKeepsTheChosenOne()
{
    CanRawCompareMessage before;
    before.length.value = 6;
    m_dialog->setMessage(before);
    m_form->goTo(QStringLiteral("PDO"));
    m_form->setNumber("spinBox_pdoLength", -1);
    m_form->build();
    QCOMPARE(int(message().length.value), 6);
    QCOMPARE(message().data, QByteArray());
    QCOMPARE(message().id.value, 385u);
}

void TestCANopenMessageBuilderDialog::pageOfAnotherNameCountsAsNmt()
{
    m_form->goTo(QStringLiteral("PDO"));
    m_form->find<QTabWidget>("tabWidget")->currentWidget()->setObjectName(QStringLiteral("tab_new"));
    m_form->build();
    QCOMPARE(message().data, QByteArray::fromHex("8001"));
}

void TestCANopenMessageBuilderDialog::shortcutBuilds()
{
    QApplication::setActiveWindow(m_dialog.get());
    QTest::keyClick(m_dialog.get(), Qt::Key_B, Qt::ControlModifier);
    QTRY_COMPARE(message().data, QByteArray::fromHex("8001"));
}

void TestCANopenMessageBuilderDialog::messageGoesInAndOut()
{
    CanRawCompareMessage given;
    given.id = {};
    given.length.value = 12;
    given.data = QByteArray(12, 'x');
    given.consideration = bitsOf("100000000001");
    given.fd = Qt::Checked;
    QVERIFY(m_dialog->setMessage(given));
    CanRawCompareMessage read(false);
    QVERIFY(m_dialog->getMessage(read));
    QCOMPARE(allFields(read), allFields(given));
}

void TestCANopenMessageBuilderDialog::handChangesAfterBuildCount()
{
    m_form->build();
    m_form->type("edtCanId", QStringLiteral("0x10"));
    QCOMPARE(message().id.value, 0x10u);
}

void TestCANopenMessageBuilderDialog::entriesStayFromRunToRun()
{
    m_form->goTo(QStringLiteral("Heartbeat"));
    m_form->setNumber("spinBox_hbNodeId", 9);
    m_dialog->reject();
    m_dialog->setMessage(CanRawCompareMessage(false));
    QVERIFY(m_form->show());
    m_form->build();
    QCOMPARE(message().id.value, 0x709u);
}

void TestCANopenMessageBuilderDialog::buttonsCloseTheDialog()
{
    const auto *box = m_form->find<QDialogButtonBox>("buttonBox");
    QSignalSpy finished(m_dialog.get(), &QDialog::finished);
    QTest::mouseClick(box->button(QDialogButtonBox::Ok), Qt::LeftButton);
    QCOMPARE(finished.takeLast(), QVariantList{QDialog::Accepted});
    QVERIFY(m_form->show());
    QTest::mouseClick(box->button(QDialogButtonBox::Cancel), Qt::LeftButton);
    QCOMPARE(finished.takeLast(), QVariantList{QDialog::Rejected});
}

void TestCANopenMessageBuilderDialog::enterAccepts()
{
    QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
    auto *identifier = m_form->find<QLineEdit>("edtCanId");
    identifier->setFocus();
    QTest::keyClick(identifier, Qt::Key_Return);
    QCOMPARE(accepted.count(), 1);
}

void TestCANopenMessageBuilderDialog::focusStartsAtTheIdentifier()
{
    QApplication::setActiveWindow(m_dialog.get());
    QCOMPARE(QApplication::focusWidget(), m_form->find<QWidget>("edtCanId"));
}

void TestCANopenMessageBuilderDialog::tabKeyWalksInReadingOrder()
{
    QApplication::setActiveWindow(m_dialog.get());
    const auto *buttons = m_form->find<QDialogButtonBox>("buttonBox");
    QList<QWidget *> order;
    for (const char *name : {"btnConsiderAll", "btnConsiderNone", "chFd", "chBrs", "chRtr", "chExt"})
        order += m_form->find<QWidget>(name);
    order += m_form->find<QTabWidget>("tabWidget")->tabBar();
    for (const char *name : {"spinBox_nmtNodeId", "comboBox_nmtCmd", "btnBuild"})
        order += m_form->find<QWidget>(name);
    order += {buttons->button(QDialogButtonBox::Ok), buttons->button(QDialogButtonBox::Cancel),
              m_form->find<QWidget>("edtCanId")};
    m_form->find<QWidget>("cbLength")->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab); // into the bytes
    for (QWidget *expected : qAsConst(order)) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), expected);
    }
}

void TestCANopenMessageBuilderDialog::withoutEditorTheMessageStaysAsItIs()
{
    delete m_dialog->findChild<CanRawMessageEditor *>();
    for (const char *page : {"NMT", "PDO", "SDO", "Heartbeat", "EMCY"}) {
        m_form->goTo(QString::fromLatin1(page));
        m_form->build();
    }
    QVERIFY(m_dialog->setMessage(CanRawCompareMessage()));
    CanRawCompareMessage kept;
    kept.id.value = 5;
    const QString before = allFields(kept);
    QVERIFY(!m_dialog->getMessage(kept));
    QCOMPARE(allFields(kept), before);
}

QTEST_MAIN(TestCANopenMessageBuilderDialog)
#include "tst_canopenmessagebuilderdialog.moc"
