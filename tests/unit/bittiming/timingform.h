#pragma once

#include "canbusparameterdialog.h"

#include <QAbstractButton>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QtTest>

/// 250 kbit/s at 8 MHz, 87.5 %.
inline CAN::CANClassicBusParameter classicTiming()
{
    CAN::CANClassicBusParameter values;
    values.bitrate = 250;
    values.samplePoint = 87.5;
    values.timing = {2, 13, 2, 1, 0};
    values.name = QStringLiteral("Bench");
    return values;
}

/// The same as a data phase.
inline CAN::CANFDBusParameter dataTiming()
{
    CAN::CANFDBusParameter values;
    values.bitrate = 250;
    values.name = QStringLiteral("Bench");
    values.samplePoint = 87.5;
    values.timing = {2, 13, 2, 1, 0};
    values.tdco = 7;
    return values;
}

/// A user at the bit timing dialog.
class TimingForm
{
public:
    CANBusParameterDialog dialog;

    /// Fills the form with the timing that all tests start from, of either phase, as `change` leaves it.
    template <typename Change>
    void open(bool fd, Change change)
    {
        CAN::CANClassicBusParameter classic = classicTiming();
        CAN::CANFDBusParameter data = dataTiming();
        change(classic);
        change(data);
        if (fd)
            dialog.setValues(data, AbstractCanAdapter::CanAdapterIxxatVci3);
        else
            dialog.setValues(classic);
    }
    void open(bool fd)
    {
        open(fd, [](auto &) {});
    }

    bool show()
    {
        dialog.show();
        return QTest::qWaitForWindowExposed(&dialog);
    }

    template <typename Widget = QWidget>
    Widget *find(const char *name) const
    {
        auto *widget = dialog.findChild<Widget *>(QString::fromLatin1(name));
        if (!widget)
            qFatal("the form has no %s", name);
        return widget;
    }

    int number(const char *spinBox) const { return find<QSpinBox>(spinBox)->value(); }
    void setNumber(const char *spinBox, int value) { find<QSpinBox>(spinBox)->setValue(value); }
    double samplePoint() const { return find<QDoubleSpinBox>("sbSamplePoint")->value(); }
    void setSamplePoint(double value) { find<QDoubleSpinBox>("sbSamplePoint")->setValue(value); }
    QString text(const char *label) const { return find<QLabel>(label)->text(); }
    void click(const char *button) { QTest::mouseClick(find<QAbstractButton>(button), Qt::LeftButton); }

    /// Prescaler, TSeg1, TSeg2, SJW.
    QList<int> registers() const
    {
        return {number("sbPrescaler"), number("sbTSeg1"), number("sbTSeg2"), number("sbSJW")};
    }

    /// What the dialog says of its state: the warnings that stand, and whether OK can be had.
    QString state() const
    {
        QStringList words;
        if (!text("lblBitrateChanged").isEmpty())
            words += QStringLiteral("bitrate changed");
        if (!text("lblTimingsChanged").isEmpty())
            words += QStringLiteral("timings changed");
        words += QLatin1String(find<QDialogButtonBox>("buttonBox")->isEnabled() ? "ok" : "no ok");
        return words.join(QStringLiteral(", "));
    }
};
