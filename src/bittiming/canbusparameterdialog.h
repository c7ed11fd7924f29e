#pragma once

#include "adaptercontract.h"
#include "kestrune_export.h"

#include <QDialog>

#include <memory>

class Ui_CANBusParameterDialog;

/// Lets a user define a bit timing by hand, in two views of one thing: bitrate and sample point, or the registers.
///
/// The dialog converts only when the user asks for it, says which view is stale, and withholds OK meanwhile. Call
/// setThresholds() and one of the two setValues(), in any order, run the dialog modally, and on acceptance read
/// getValues() or getFDValues(). The limits inform the user and bound the search; the controls take any number.
///
/// One dialog serves one bus: after a CAN FD record was given, it compares with that, whatever is given later.
/// GUI thread only.
class KESTRUNE_EXPORT CANBusParameterDialog : public QDialog
{
    Q_OBJECT

public:
    explicit CANBusParameterDialog(QWidget *parent = nullptr);
    ~CANBusParameterDialog() override;

    /// Limits and clock for both conversions. Touches no entered value. Of a clock above 255 MHz, the search for a
    /// timing sees the low eight bits.
    void setThresholds(CAN::CANBitTimingThresholds const &thresholds);

    /// Shows the timing of a classic bus, or of the arbitration phase.
    /// A sample point with more than two decimals is rounded, and the dialog opens with the bitrate marked as changed.
    void setValues(CAN::CANClassicBusParameter values);
    /// Shows the timing of the CAN FD data phase, with the transceiver delay offset for the type that can set it.
    void setValues(CAN::CANFDBusParameter values, AbstractCanAdapter::CanAdapterType type);

    /// What the form says now, as a user-defined timing; whether or not its two views agree.
    CAN::CANClassicBusParameter getValues();
    /// The same as a data phase. An offset that cannot be set here comes back as it was given.
    CAN::CANFDBusParameter getFDValues();

private slots:
    void onUpdateBitrate();
    void onUpdateTimings();
    void onTimingsChanged(int);
    void onTimingsChanged(double);
    void onBitrateValueChange(int);
    void onBitrateValueChange(double);

private:
    /// Looks for changes of the timings, after which the bitrate is out of date.
    void updateBitrateValues();
    /// Looks for changes of bitrate and sample point, after which the timings are out of date.
    void updateTimingValues();
    void updateLabelText(QString text);

    void watchControls(const QObject *group, void (CANBusParameterDialog::*onNumber)(int),
                       void (CANBusParameterDialog::*onDecimals)(double));
    CanBitTimingValues enteredTiming() const;
    bool timingsChanged();
    bool bitrateChanged();
    double storedSamplePoint() const;
    /// Marks the bitrate as changed where the form shows the stored sample point with decimals cut off.
    void markCutSamplePoint();
    void makeRoomForWarnings();

    std::unique_ptr<Ui_CANBusParameterDialog> ui;
    CAN::CANBitTimingThresholds thresholds = {8, 1, 128, 3, 16, 2, 8, 8, false};
    // What both views last agreed on; fdMode says which of the two counts.
    CAN::CANClassicBusParameter storedClassic;
    CAN::CANFDBusParameter storedFd;
    bool fdMode = false;
};
