#include "canfdbusparameterdialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using Adapter = AbstractCanAdapter;

class TestCANFDBusParameterDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void formIsAsApplicationsKnowIt();
    void fieldHasItsLabel_data();
    void fieldHasItsLabel();
    void offsetHasItsToolTip();
    void valuesShowInDecimal_data();
    void valuesShowInDecimal();
    void offsetShowsForTheTypeThatSetsIt_data();
    void offsetShowsForTheTypeThatSetsIt();
    void offsetHidesAgain();
    void offsetPassesThroughUnseen();
    void valuesComeBack();
    void prescalerAndSamplePointAreLost();
    void textIsReadAsNumber_data();
    void textIsReadAsNumber();
    void numberIsCutToItsField_data();
    void numberIsCutToItsField();
    void buttonsCloseTheDialog();
    void enterAccepts();
    void tabKeyWalksInReadingOrder();

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        return m_dialog->findChild<Widget *>(QString::fromLatin1(name));
    }
    void enter(const char *name, const QString &text) { find<QLineEdit>(name)->setText(text); }

    std::unique_ptr<CANFDBusParameterDialog> m_dialog;
};

namespace {
CAN::CANFDBusParameter dataTiming()
{
    CAN::CANFDBusParameter values;
    values.bitrate = 2000;
    values.name = QStringLiteral("Bench");
    values.samplePoint = 80.0;
    values.timing = {4, 15, 3, 2, 0};
    values.tdco = 16;
    return values;
}
} // namespace

void TestCANFDBusParameterDialog::init()
{
    m_dialog = std::make_unique<CANFDBusParameterDialog>(nullptr);
}

void TestCANFDBusParameterDialog::formIsAsApplicationsKnowIt()
{
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("CAN FD Bus Parameter"));
    QCOMPARE(find<QDialogButtonBox>("buttonBox")->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QVERIFY(find<QLineEdit>("edtTDCO")->isHidden());
    QVERIFY(find<QLabel>("lblTDCO")->isHidden());
}

void TestCANFDBusParameterDialog::fieldHasItsLabel_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("edtBitrate") << "Bitrate";
    QTest::newRow("edtTSeg1") << "TSeg1";
    QTest::newRow("edtTSeg2") << "TSeg2";
    QTest::newRow("edtSJW") << "SJW";
    QTest::newRow("edtTDCO") << "TDCO";
    QTest::newRow("edtName") << "Name";
}

void TestCANFDBusParameterDialog::fieldHasItsLabel()
{
    QString found;
    for (const QLabel *label : m_dialog->findChildren<QLabel *>()) {
        if (label->buddy() == find<QLineEdit>(QTest::currentDataTag()))
            found = label->text();
    }
    QTEST(found, "text");
}

void TestCANFDBusParameterDialog::offsetHasItsToolTip()
{
    const QString toolTip = QStringLiteral("Transceiver Delay Compensation Offset");
    QCOMPARE(find<QLabel>("lblTDCO")->toolTip(), toolTip);
    QCOMPARE(find<QLineEdit>("edtTDCO")->toolTip(), toolTip);
}

void TestCANFDBusParameterDialog::valuesShowInDecimal_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("edtBitrate") << "2000";
    QTest::newRow("edtTSeg1") << "15";
    QTest::newRow("edtTSeg2") << "3";
    QTest::newRow("edtSJW") << "2";
    QTest::newRow("edtTDCO") << "16";
    QTest::newRow("edtName") << "Bench";
}

void TestCANFDBusParameterDialog::valuesShowInDecimal()
{
    m_dialog->setValues(dataTiming(), Adapter::CanAdapterDemo);
    QTEST(find<QLineEdit>(QTest::currentDataTag())->text(), "text");
}

void TestCANFDBusParameterDialog::offsetShowsForTheTypeThatSetsIt_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("shown");
    for (int type = 0; type <= 22; ++type)
        QTest::addRow("type %d", type) << type << (type == 17);
}

void TestCANFDBusParameterDialog::offsetShowsForTheTypeThatSetsIt()
{
    QFETCH(int, type);
    m_dialog->setValues(dataTiming(), static_cast<Adapter::CanAdapterType>(type));
    QTEST(!find<QLineEdit>("edtTDCO")->isHidden(), "shown");
    QTEST(!find<QLabel>("lblTDCO")->isHidden(), "shown");
}

void TestCANFDBusParameterDialog::offsetHidesAgain()
{
    m_dialog->setValues(dataTiming(), Adapter::CanAdapterIxxatVci3);
    m_dialog->setValues(dataTiming(), Adapter::CanAdapterDemo);
    QVERIFY(find<QLineEdit>("edtTDCO")->isHidden());
}

void TestCANFDBusParameterDialog::offsetPassesThroughUnseen()
{
    m_dialog->setValues(dataTiming(), Adapter::CanAdapterDemo);
    QCOMPARE(int(m_dialog->getValues().tdco), 16);
}

void TestCANFDBusParameterDialog::valuesComeBack()
{
    CAN::CANFDBusParameter expected = dataTiming();
    m_dialog->setValues(expected, Adapter::CanAdapterIxxatVci3);
    expected.samplePoint = 0.0;
    expected.timing.preScaler = 0;
    expected.userDefined = true;
    QCOMPARE(m_dialog->getValues(), expected);
}

void TestCANFDBusParameterDialog::prescalerAndSamplePointAreLost()
{
    m_dialog->setValues(dataTiming(), Adapter::CanAdapterIxxatVci3);
    QCOMPARE(int(m_dialog->getValues().timing.preScaler), 0);
    QCOMPARE(m_dialog->getValues().samplePoint, 0.0);
}

void TestCANFDBusParameterDialog::textIsReadAsNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<uint>("number");
    QTest::newRow("decimal") << "12" << 12U;
    QTest::newRow("hexadecimal") << "0x10" << 16U;
    QTest::newRow("octal") << "010" << 8U;
    QTest::newRow("letter behind") << "12a" << 0U;
    QTest::newRow("empty") << "" << 0U;
    QTest::newRow("negative") << "-1" << 0U;
    QTest::newRow("too large") << "4294967296" << 0U;
    QTest::newRow("words") << "fast" << 0U;
}

void TestCANFDBusParameterDialog::textIsReadAsNumber()
{
    QFETCH(QString, text);
    for (const char *name : {"edtBitrate", "edtTSeg1", "edtTSeg2", "edtSJW", "edtTDCO"})
        enter(name, text);
    const CAN::CANFDBusParameter read = m_dialog->getValues();
    QTEST(read.bitrate, "number");
    QTEST(uint(read.timing.tSeg1), "number");
    QTEST(uint(read.timing.tSeg2), "number");
    QTEST(uint(read.timing.sjw), "number");
    QTEST(uint(read.tdco), "number");
}

void TestCANFDBusParameterDialog::numberIsCutToItsField_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<uint>("segment");
    QTest::addColumn<uint>("offset");
    QTest::newRow("last of the offset") << "255" << 255U << 255U;
    QTest::newRow("beyond the offset") << "257" << 257U << 1U;
    QTest::newRow("last of a segment") << "65535" << 65535U << 255U;
    QTest::newRow("beyond a segment") << "65538" << 2U << 2U;
}

void TestCANFDBusParameterDialog::numberIsCutToItsField()
{
    QFETCH(QString, text);
    enter("edtTSeg1", text);
    enter("edtTDCO", text);
    QTEST(uint(m_dialog->getValues().timing.tSeg1), "segment");
    QTEST(uint(m_dialog->getValues().tdco), "offset");
}

void TestCANFDBusParameterDialog::buttonsCloseTheDialog()
{
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
    QSignalSpy finished(m_dialog.get(), &QDialog::finished);
    QTest::mouseClick(find<QDialogButtonBox>("buttonBox")->button(QDialogButtonBox::Ok), Qt::LeftButton);
    QCOMPARE(finished.takeLast(), QVariantList{QDialog::Accepted});
    m_dialog->show();
    QTest::mouseClick(find<QDialogButtonBox>("buttonBox")->button(QDialogButtonBox::Cancel), Qt::LeftButton);
    QCOMPARE(finished.takeLast(), QVariantList{QDialog::Rejected});
}

void TestCANFDBusParameterDialog::enterAccepts()
{
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
    QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
    QTest::keyClick(find<QLineEdit>("edtBitrate"), Qt::Key_Return);
    QCOMPARE(accepted.count(), 1);
}

void TestCANFDBusParameterDialog::tabKeyWalksInReadingOrder()
{
    m_dialog->setValues(dataTiming(), Adapter::CanAdapterIxxatVci3);
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
    QStringList walked;
    for (int i = 0; i < 6; ++i) {
        walked += m_dialog->focusWidget()->objectName();
        QTest::keyClick(m_dialog->focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(walked.join(QLatin1Char(' ')), QStringLiteral("edtBitrate edtTSeg1 edtTSeg2 edtSJW edtTDCO edtName"));
}

QTEST_MAIN(TestCANFDBusParameterDialog)
#include "tst_canfdbusparameterdialog.moc"
