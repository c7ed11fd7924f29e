#include "markingtranslator.h"
#include "rowbuilderform.h"

#include <QGroupBox>
#include <QLabel>

#include <functional>
#include <memory>

Q_DECLARE_METATYPE(std::function<void(BuilderForm &)>)

class TestCanMessageBuilder : public QObject
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

    void buildShowsTheMessageOfThePage_data();
    void buildShowsTheMessageOfThePage();
    void commandBeyondTheListIsOpen();
    void objectTextThatIsNoNumberCountsAsZero();
    void subindexBeyondAByteIsOpen_data();
    void subindexBeyondAByteIsOpen();
    void shortcutBuilds();

    void buttonsCloseTheDialog();
    void enterAccepts();
    void tabKeyWalksInReadingOrder();

private:
    std::unique_ptr<RowBuilderForm> m_form;
};

void TestCanMessageBuilder::init()
{
    m_form = std::make_unique<RowBuilderForm>();
    QVERIFY(m_form->show());
}

void TestCanMessageBuilder::formIsAsApplicationsKnowIt()
{
    QCOMPARE(m_form->builder.windowTitle(), QStringLiteral("Dialog"));
    QCOMPARE(m_form->find<QLabel>("label")->text(), QStringLiteral("CAN Trigger Message"));
    QCOMPARE(m_form->find<QGroupBox>("groupBox")->title(), QStringLiteral("Message Builder"));
    QCOMPARE(m_form->find<QAbstractButton>("btn_build")->text(), QStringLiteral("Build"));
    QCOMPARE(m_form->find<QAbstractButton>("btn_ok")->text(), QStringLiteral("Ok"));
    QCOMPARE(m_form->find<QAbstractButton>("btn_cancel")->text(), QStringLiteral("Cancel"));
    QCOMPARE(m_form->pages(),
             (QStringList{QStringLiteral("tab NMT"), QStringLiteral("tab_2 PDO"), QStringLiteral("tab_3 SDO"),
                          QStringLiteral("tab_4 Heartbeat"), QStringLiteral("tab_5 EMCY")}));
    QCOMPARE(m_form->find<QTabWidget>("tabWidget")->currentIndex(), 0);
    QCOMPARE(m_form->table()->rowCount(), 1);
    QStringList headers;
    for (int i = 0; i < m_form->table()->columnCount(); ++i)
        headers += m_form->table()->horizontalHeaderItem(i)->text();
    QCOMPARE(headers, texts("CAN-ID 0 1 2 3 4 5 6 7"));
    QCOMPARE(m_form->table()->verticalHeaderItem(0)->text(), QStringLiteral("New Row"));
}

void TestCanMessageBuilder::numberHasItsRange_data()
{
    addRangesOfThePages();
    QTest::newRow("spinBox_pdoLength") << "spinBox_pdoLength" << 0 << 8;
}

void TestCanMessageBuilder::numberHasItsRange()
{
    QFETCH(QString, name);
    const auto *number = m_form->find<QSpinBox>(name.toLatin1().constData());
    QTEST(number->minimum(), "least");
    QTEST(number->maximum(), "most");
    QTEST(number->value(), "least");
}

void TestCanMessageBuilder::pdoLengthStartsAtZero()
{
    QCOMPARE(m_form->find<QSpinBox>("spinBox_pdoLength")->value(), 0);
}

void TestCanMessageBuilder::boxHasItsChoices_data()
{
    addChoicesOfThePages();
}

void TestCanMessageBuilder::boxHasItsChoices()
{
    QFETCH(QString, name);
    QTEST(m_form->items(name.toLatin1().constData()), "texts");
}

void TestCanMessageBuilder::fieldHasItsLabel_data()
{
    addLabelsOfThePages();
}

void TestCanMessageBuilder::fieldHasItsLabel()
{
    QFETCH(QString, field);
    QTEST(m_form->labelOf(field.toLatin1().constData()), "label");
}

void TestCanMessageBuilder::everyErrorClassIsThereWithItsKey()
{
    const auto *box = m_form->find<QComboBox>("comboBox_emcyCode");
    QCOMPARE(box->count(), 25);
    QCOMPARE(entriesByKey(*box), emergencyTexts());
}

void TestCanMessageBuilder::errorClassesSpeakTheLanguageOfTheApplication()
{
    const MarkingTranslator translator;
    const RowBuilderForm translated;
    QVERIFY(translated.items("comboBox_emcyCode").contains(MarkingTranslator::marked("Voltage")));
}

void TestCanMessageBuilder::buildShowsTheMessageOfThePage_data()
{
    using Fill = std::function<void(BuilderForm &)>;
    QTest::addColumn<QString>("page");
    QTest::addColumn<Fill>("fill");
    QTest::addColumn<QStringList>("row");
    const auto nmt = [](const QString &command, int node) {
        return Fill([=](BuilderForm &form) {
            form.choose("comboBox_nmtCmd", command);
            form.setNumber("spinBox_nmtNodeId", node);
        });
    };
    QTest::newRow("NMT as it starts") << "NMT" << Fill([](BuilderForm &) {}) << texts("0x0 0x80 0x1");
    QTest::newRow("NMT start") << "NMT" << nmt(QStringLiteral("Start Node"), 2) << texts("0x0 0x1 0x2");
    QTest::newRow("NMT stop") << "NMT" << nmt(QStringLiteral("Stop Node"), 127) << texts("0x0 0x2 0x7f");
    QTest::newRow("NMT reset communication") << "NMT" << nmt(QStringLiteral("Reset Comm"), 3) << texts("0x0 0x82 0x3");
    QTest::newRow("NMT reset node") << "NMT" << nmt(QStringLiteral("Reset Node"), 5) << texts("0x0 0x81 0x5");
    QTest::newRow("PDO without bytes") << "PDO" << Fill([](BuilderForm &) {}) << texts("0x181");
    QTest::newRow("PDO") << "PDO" << Fill([](BuilderForm &form) { form.setNumber("spinBox_pdoLength", 3); })
                         << texts("0x181 XX XX XX");
    QTest::newRow("longest PDO") << "PDO" << Fill([](BuilderForm &form) {
        form.setNumber("spinBox_pdoCobId", 0x57F);
        form.setNumber("spinBox_pdoLength", 8);
    }) << texts("0x57f XX XX XX XX XX XX XX XX");
    const auto sdo = [](const QString &type, int node, const QString &index, const QString &subindex) {
        return Fill([=](BuilderForm &form) {
            form.choose("comboBox_sdoType", type);
            form.setNumber("spinBox_sdoNodeId", node);
            form.type("edt_sdoIndex", index);
            form.type("edt_sdoSub", subindex);
        });
    };
    QTest::newRow("SDO request") << "SDO"
                                 << sdo(QStringLiteral("Request"), 1, QStringLiteral("1017"), QStringLiteral("0"))
                                 << texts("0x581 XX 0x17 0x10 0x0 XX XX XX XX");
    QTest::newRow("SDO response") << "SDO"
                                  << sdo(QStringLiteral("Response"), 2, QStringLiteral("2000"), QStringLiteral("1"))
                                  << texts("0x602 XX 0x0 0x20 0x1 XX XX XX XX");
    const auto heartbeat = [](const QString &state, int node) {
        return Fill([=](BuilderForm &form) {
            form.choose("comboBox_hbState", state);
            form.setNumber("spinBox_hbNodeId", node);
        });
    };
    QTest::newRow("boot-up") << "Heartbeat" << heartbeat(QStringLiteral("Bootup"), 1) << texts("0x701 0x0");
    QTest::newRow("stopped") << "Heartbeat" << heartbeat(QStringLiteral("Stopped"), 2) << texts("0x702 0x4");
    QTest::newRow("operational") << "Heartbeat" << heartbeat(QStringLiteral("Operational"), 1) << texts("0x701 0x5");
    QTest::newRow("pre-operational") << "Heartbeat" << heartbeat(QStringLiteral("Pre-Operational"), 127)
                                     << texts("0x77f 0x7f");
    QTest::newRow("EMCY of any node") << "EMCY" << Fill([](BuilderForm &form) {
        form.choose("comboBox_emcyCode", QStringLiteral("Voltage"));
        form.setNumber("spinBox_emcyNodeId", 9);
    }) << texts("0x0 0x30 XX XX XX XX XX XX XX");
    QTest::newRow("EMCY of the device") << "EMCY" << Fill([](BuilderForm &form) {
        form.choose("comboBox_emcyCode", QStringLiteral("CANopen device specific"));
    }) << texts("0x0 0xff XX XX XX XX XX XX XX");
}

void TestCanMessageBuilder::buildShowsTheMessageOfThePage()
{
    QFETCH(QString, page);
    QFETCH(std::function<void(BuilderForm &)>, fill);
    m_form->goTo(page);
    fill(*m_form);
    m_form->build();
    QTEST(m_form->builder.getCurrentMessage(), "row");
}

void TestCanMessageBuilder::commandBeyondTheListIsOpen()
{
    m_form->find<QComboBox>("comboBox_nmtCmd")->setCurrentIndex(-1);
    m_form->build();
    QCOMPARE(m_form->builder.getCurrentMessage(), texts("0x0 XX 0x1"));
}

void TestCanMessageBuilder::objectTextThatIsNoNumberCountsAsZero()
{
    m_form->goTo(QStringLiteral("SDO"));
    m_form->type("edt_sdoIndex", QStringLiteral("speed"));
    m_form->build();
    QCOMPARE(m_form->builder.getCurrentMessage(), texts("0x581 XX 0x0 0x0 0x0 XX XX XX XX"));
}

void TestCanMessageBuilder::subindexBeyondAByteIsOpen_data()
{
    QTest::addColumn<QString>("subindex");
    QTest::addColumn<QString>("shown");
    QTest::newRow("largest byte") << "FF"
                                  << "0xff";
    QTest::newRow("first beyond") << "100"
                                  << "XX";
    QTest::newRow("with low bits") << "1FF"
                                   << "XX";
    QTest::newRow("of 17 bits, the lowest set") << "10001"
                                                << "XX";
}

void TestCanMessageBuilder::subindexBeyondAByteIsOpen()
{
    QFETCH(QString, subindex);
    m_form->goTo(QStringLiteral("SDO"));
    m_form->type("edt_sdoSub", subindex);
    m_form->build();
    QTEST(m_form->cell(4)->text(), "shown");
}

void TestCanMessageBuilder::shortcutBuilds()
{
    QApplication::setActiveWindow(&m_form->builder);
    QTest::keyClick(&m_form->builder, Qt::Key_B, Qt::ControlModifier);
    QTRY_COMPARE(m_form->builder.getCurrentMessage(), texts("0x0 0x80 0x1"));
}

void TestCanMessageBuilder::buttonsCloseTheDialog()
{
    QSignalSpy finished(&m_form->builder, &QDialog::finished);
    m_form->click("btn_ok");
    QCOMPARE(finished.takeLast(), QVariantList{QDialog::Accepted});
    QVERIFY(m_form->show());
    m_form->click("btn_cancel");
    QCOMPARE(finished.takeLast(), QVariantList{QDialog::Rejected});
}

void TestCanMessageBuilder::enterAccepts()
{
    QSignalSpy accepted(&m_form->builder, &QDialog::accepted);
    m_form->find<QSpinBox>("spinBox_nmtNodeId")->setFocus();
    QTest::keyClick(m_form->find<QSpinBox>("spinBox_nmtNodeId"), Qt::Key_Return);
    QCOMPARE(accepted.count(), 1);
}

void TestCanMessageBuilder::tabKeyWalksInReadingOrder()
{
    QApplication::setActiveWindow(&m_form->builder);
    m_form->table()->setFocus();
    QList<QWidget *> order = {m_form->find<QTabWidget>("tabWidget")->tabBar()};
    for (const char *name : {"spinBox_nmtNodeId", "comboBox_nmtCmd", "btn_build", "btn_ok", "btn_cancel"})
        order += m_form->find<QWidget>(name);
    order += m_form->table();
    for (QWidget *expected : qAsConst(order)) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), expected);
    }
}

QTEST_MAIN(TestCanMessageBuilder)
#include "tst_canmessagebuilder.moc"
