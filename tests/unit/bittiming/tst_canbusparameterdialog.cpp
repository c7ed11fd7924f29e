#include "timingform.h"

#include <QGroupBox>
#include <QPushButton>
#include <QSignalSpy>

#include <memory>

class TestCANBusParameterDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void formIsAsApplicationsKnowIt();
    void buttonHasItsText_data();
    void buttonHasItsText();
    void groupHasItsTitle_data();
    void groupHasItsTitle();
    void fieldHasItsLabel_data();
    void fieldHasItsLabel();
    void numberHasItsRange_data();
    void numberHasItsRange();
    void samplePointHasItsRange();
    void clockCannotBeEntered();
    void limitsShowAsText();
    void limitsNarrowNoControl();
    void limitsTouchNoTiming_data();
    void limitsTouchNoTiming();
    void classicTimingGoesInAndOut();
    void dataPhaseGoesInAndOut();
    void numbersBeyondTheFormAreBounded_data();
    void numbersBeyondTheFormAreBounded();
    void offsetShowsForTheTypeThatSetsIt_data();
    void offsetShowsForTheTypeThatSetsIt();
    void classicTimingHidesTheOffset();
    void offsetPassesThroughUnseen();
    void offsetIsCutToEightBits();
    void handChangesCount();
    void buttonsCloseTheDialog();
    void enterAccepts();
    void enterDoesNothingWhileOkIsWithheld();
    void warningsFindTheirRoom();
    void focusStartsAtTheName();
    void tabKeyWalksInReadingOrder();

private:
    std::unique_ptr<TimingForm> m_form;
};

void TestCANBusParameterDialog::init()
{
    m_form = std::make_unique<TimingForm>();
}

void TestCANBusParameterDialog::formIsAsApplicationsKnowIt()
{
    QCOMPARE(m_form->dialog.windowTitle(), QStringLiteral("CAN Bus Parameter"));
    QCOMPARE(m_form->find<QDialogButtonBox>("buttonBox")->standardButtons(),
             QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QVERIFY(m_form->find<QLabel>("lblBitrateChanged")->wordWrap());
    QVERIFY(m_form->find<QLabel>("lblTimingsChanged")->wordWrap());
    QCOMPARE(m_form->text("lblBitrateChanged") + m_form->text("lblTimingsChanged") + m_form->text("lblInfo"),
             QString());
}

void TestCANBusParameterDialog::buttonHasItsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("btnUpdateTimings") << "Update timings";
    QTest::newRow("btnUpdateBitrate") << "Update bitrate";
}

void TestCANBusParameterDialog::buttonHasItsText()
{
    QTEST(m_form->find<QPushButton>(QTest::currentDataTag())->text(), "text");
}

void TestCANBusParameterDialog::groupHasItsTitle_data()
{
    QTest::addColumn<QString>("title");
    QTest::newRow("groupBox_3") << "Clock";
    QTest::newRow("gbBitrate") << "Bitrate";
    QTest::newRow("gbTimings") << "Timings";
}

void TestCANBusParameterDialog::groupHasItsTitle()
{
    QTEST(m_form->find<QGroupBox>(QTest::currentDataTag())->title(), "title");
}

void TestCANBusParameterDialog::fieldHasItsLabel_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::newRow("label_5") << "edtName"
                             << "Name";
    QTest::newRow("label_8") << "edtClock"
                             << "Frequency";
    QTest::newRow("label") << "sbBitrate"
                           << "Bitrate";
    QTest::newRow("label_6") << "sbSamplePoint"
                             << "Sample Point";
    QTest::newRow("label_7") << "sbPrescaler"
                             << "Prescaler";
    QTest::newRow("label_2") << "sbTSeg1"
                             << "TSeg1";
    QTest::newRow("label_3") << "sbTSeg2"
                             << "TSeg2";
    QTest::newRow("label_4") << "sbSJW"
                             << "SJW";
    QTest::newRow("lblTDCO") << "sbTDCO"
                             << "TDCO";
}

void TestCANBusParameterDialog::fieldHasItsLabel()
{
    const auto *label = m_form->find<QLabel>(QTest::currentDataTag());
    QTEST(label->text(), "text");
    QTEST(label->buddy()->objectName(), "field");
}

void TestCANBusParameterDialog::numberHasItsRange_data()
{
    QTest::addColumn<int>("most");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("sbBitrate") << 10000 << " kbit/s";
    for (const char *name : {"sbPrescaler", "sbTSeg1", "sbTSeg2", "sbSJW", "sbTDCO"})
        QTest::newRow(name) << 1000 << "";
}

void TestCANBusParameterDialog::numberHasItsRange()
{
    const auto *number = m_form->find<QSpinBox>(QTest::currentDataTag());
    QCOMPARE(number->minimum(), 0);
    QCOMPARE(number->value(), 0);
    QTEST(number->maximum(), "most");
    QTEST(number->suffix(), "suffix");
}

void TestCANBusParameterDialog::samplePointHasItsRange()
{
    const auto *number = m_form->find<QDoubleSpinBox>("sbSamplePoint");
    QCOMPARE(number->minimum(), 0.0);
    QCOMPARE(number->maximum(), 100.0);
    QCOMPARE(number->decimals(), 2);
    QCOMPARE(number->value(), 87.5);
    QCOMPARE(number->suffix(), QStringLiteral(" %"));
}

void TestCANBusParameterDialog::clockCannotBeEntered()
{
    const auto *clock = m_form->find<QLineEdit>("edtClock");
    QVERIFY(!clock->isEnabled());
    QVERIFY(clock->isReadOnly());
}

void TestCANBusParameterDialog::limitsShowAsText()
{
    m_form->dialog.setThresholds({80, 1, 255, 2, 256, 2, 128, 64, true});
    QCOMPARE(m_form->text("lblThresholds"),
             QStringLiteral("CANBitTimings(F: 80, Prescaler: 1 - 255, tSeg1: 2 - 256, tSeg2: 2 - 128, sjw: 64, "
                            "Valid: 1)"));
    QCOMPARE(m_form->find<QLineEdit>("edtClock")->text(), QStringLiteral("80 MHz"));
}

void TestCANBusParameterDialog::limitsNarrowNoControl()
{
    m_form->dialog.setThresholds({80, 2, 4, 2, 4, 2, 4, 2, true});
    QCOMPARE(m_form->find<QSpinBox>("sbTSeg1")->maximum(), 1000);
    QCOMPARE(m_form->find<QSpinBox>("sbPrescaler")->minimum(), 0);
}

void TestCANBusParameterDialog::limitsTouchNoTiming_data()
{
    QTest::addColumn<bool>("fd");
    QTest::addColumn<bool>("limitsFirst");
    QTest::newRow("classic, limits first") << false << true;
    QTest::newRow("classic, limits last") << false << false;
    QTest::newRow("data phase, limits first") << true << true;
    QTest::newRow("data phase, limits last") << true << false;
}

void TestCANBusParameterDialog::limitsTouchNoTiming()
{
    QFETCH(bool, fd);
    QFETCH(bool, limitsFirst);
    const CAN::CANBitTimingThresholds limits = {80, 1, 4, 2, 4, 2, 4, 2, true};
    if (limitsFirst)
        m_form->dialog.setThresholds(limits);
    m_form->open(fd);
    if (!limitsFirst)
        m_form->dialog.setThresholds(limits);
    QCOMPARE(m_form->registers(), (QList<int>{2, 13, 2, 1}));
    QCOMPARE(m_form->number("sbBitrate"), 250);
    // Whatever the checks compare with has stayed, too.
    for (const char *control : {"sbBitrate", "sbTSeg1"}) {
        m_form->find<QSpinBox>(control)->stepUp();
        m_form->find<QSpinBox>(control)->stepDown();
        QCOMPARE(m_form->state(), QStringLiteral("ok"));
    }
}

void TestCANBusParameterDialog::classicTimingGoesInAndOut()
{
    CAN::CANClassicBusParameter expected = classicTiming();
    m_form->dialog.setValues(expected);
    expected.userDefined = true;
    QCOMPARE(m_form->dialog.getValues(), expected);
}

void TestCANBusParameterDialog::dataPhaseGoesInAndOut()
{
    CAN::CANFDBusParameter expected = dataTiming();
    m_form->dialog.setValues(expected, AbstractCanAdapter::CanAdapterIxxatVci3);
    expected.userDefined = true;
    QCOMPARE(m_form->dialog.getFDValues(), expected);
}

void TestCANBusParameterDialog::numbersBeyondTheFormAreBounded_data()
{
    QTest::addColumn<bool>("fd");
    QTest::addColumn<quint32>("bitrate");
    for (const quint32 bitrate : {10001U, 2147483648U, 4294967295U}) {
        QTest::addRow("classic, %u", bitrate) << false << bitrate;
        QTest::addRow("data phase, %u", bitrate) << true << bitrate;
    }
}

void TestCANBusParameterDialog::numbersBeyondTheFormAreBounded()
{
    QFETCH(bool, fd);
    QFETCH(quint32, bitrate);
    m_form->open(fd, [bitrate](auto &values) {
        values.bitrate = bitrate;
        values.samplePoint = 1e300;
        values.timing.tSeg1 = 65535;
    });
    QCOMPARE(m_form->number("sbBitrate"), 10000);
    QCOMPARE(m_form->samplePoint(), 100.0);
    QCOMPARE(m_form->number("sbTSeg1"), 1000);
    QCOMPARE(m_form->state(), QStringLiteral("bitrate changed, timings changed, no ok"));
}

void TestCANBusParameterDialog::offsetShowsForTheTypeThatSetsIt_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("shown");
    for (int type = 0; type <= 22; ++type)
        QTest::addRow("type %d", type) << type << (type == 17);
}

void TestCANBusParameterDialog::offsetShowsForTheTypeThatSetsIt()
{
    QFETCH(int, type);
    m_form->dialog.setValues(dataTiming(), static_cast<AbstractCanAdapter::CanAdapterType>(type));
    QTEST(!m_form->find("sbTDCO")->isHidden(), "shown");
    QTEST(!m_form->find("lblTDCO")->isHidden(), "shown");
}

void TestCANBusParameterDialog::classicTimingHidesTheOffset()
{
    m_form->dialog.setValues(dataTiming(), AbstractCanAdapter::CanAdapterIxxatVci3);
    m_form->dialog.setValues(classicTiming());
    QVERIFY(m_form->find("sbTDCO")->isHidden());
    QVERIFY(m_form->find("lblTDCO")->isHidden());
}

void TestCANBusParameterDialog::offsetPassesThroughUnseen()
{
    m_form->dialog.setValues(dataTiming(), AbstractCanAdapter::CanAdapterDemo);
    QCOMPARE(int(m_form->dialog.getFDValues().tdco), 7);
}

void TestCANBusParameterDialog::offsetIsCutToEightBits()
{
    m_form->dialog.setValues(dataTiming(), AbstractCanAdapter::CanAdapterIxxatVci3);
    m_form->setNumber("sbTDCO", 256 + 7);
    QCOMPARE(int(m_form->dialog.getFDValues().tdco), 7);
    QCOMPARE(m_form->state(), QStringLiteral("ok"));
}

void TestCANBusParameterDialog::handChangesCount()
{
    m_form->dialog.setValues(classicTiming());
    m_form->find<QLineEdit>("edtName")->setText(QStringLiteral("Rig"));
    m_form->setNumber("sbSJW", 2);
    CAN::CANClassicBusParameter expected = classicTiming();
    expected.name = QStringLiteral("Rig");
    expected.timing.sjw = 2;
    expected.userDefined = true;
    QCOMPARE(m_form->dialog.getValues(), expected);
}

void TestCANBusParameterDialog::buttonsCloseTheDialog()
{
    QVERIFY(m_form->show());
    const auto *box = m_form->find<QDialogButtonBox>("buttonBox");
    QSignalSpy finished(&m_form->dialog, &QDialog::finished);
    QTest::mouseClick(box->button(QDialogButtonBox::Ok), Qt::LeftButton);
    QCOMPARE(finished.takeLast(), QVariantList{QDialog::Accepted});
    m_form->dialog.show();
    QTest::mouseClick(box->button(QDialogButtonBox::Cancel), Qt::LeftButton);
    QCOMPARE(finished.takeLast(), QVariantList{QDialog::Rejected});
}

void TestCANBusParameterDialog::enterAccepts()
{
    QVERIFY(m_form->show());
    QSignalSpy accepted(&m_form->dialog, &QDialog::accepted);
    QTest::keyClick(m_form->find("edtName"), Qt::Key_Return);
    QCOMPARE(accepted.count(), 1);
}

void TestCANBusParameterDialog::enterDoesNothingWhileOkIsWithheld()
{
    m_form->dialog.setValues(classicTiming());
    QVERIFY(m_form->show());
    m_form->setNumber("sbBitrate", 500);
    QTest::keyClick(m_form->find("sbBitrate"), Qt::Key_Return);
    QVERIFY(m_form->dialog.isVisible());
    QCOMPARE(m_form->number("sbTSeg1"), 13);
    QCOMPARE(m_form->state(), QStringLiteral("bitrate changed, no ok"));
}

void TestCANBusParameterDialog::warningsFindTheirRoom()
{
    m_form->dialog.setValues(dataTiming(), AbstractCanAdapter::CanAdapterIxxatVci3);
    QVERIFY(m_form->show());
    const int controlHeight = m_form->find("sbTSeg1")->height();
    m_form->setNumber("sbBitrate", 500);
    m_form->setNumber("sbTSeg1", 5);
    QTRY_VERIFY(m_form->find("lblTimingsChanged")->height() > 0);
    for (const char *name : {"lblBitrateChanged", "lblTimingsChanged"}) {
        const auto *label = m_form->find<QLabel>(name);
        QVERIFY2(label->height() >= label->heightForWidth(label->width()), name);
    }
    QCOMPARE(m_form->find("sbTSeg1")->height(), controlHeight);
}

void TestCANBusParameterDialog::focusStartsAtTheName()
{
    QVERIFY(m_form->show());
    QTRY_COMPARE(m_form->dialog.focusWidget(), m_form->find("edtName"));
}

void TestCANBusParameterDialog::tabKeyWalksInReadingOrder()
{
    m_form->dialog.setValues(dataTiming(), AbstractCanAdapter::CanAdapterIxxatVci3);
    QVERIFY(m_form->show());
    QStringList walked;
    for (int i = 0; i < 10; ++i) {
        walked += m_form->dialog.focusWidget()->objectName();
        QTest::keyClick(m_form->dialog.focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(walked.join(QLatin1Char(' ')),
             QStringLiteral("edtName sbBitrate sbSamplePoint btnUpdateTimings sbPrescaler sbTSeg1 sbTSeg2 sbSJW sbTDCO "
                            "btnUpdateBitrate"));
}

QTEST_MAIN(TestCANBusParameterDialog)
#include "tst_canbusparameterdialog.moc"
