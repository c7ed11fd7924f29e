#pragma once

#include "adaptercontract.h"
#include "kestrune_export.h"

#include <QDialog>

#include <memory>

class Ui_CANFDBusParameterDialog;

/// Shows and edits the data phase of a CAN FD timing as plain texts: nothing is converted, compared or limited.
/// Call setValues(), run the dialog, and on acceptance read getValues(). GUI thread only.
class KESTRUNE_EXPORT CANFDBusParameterDialog : public QDialog
{
    Q_OBJECT

public:
    explicit CANFDBusParameterDialog(QWidget *parent = nullptr);
    ~CANFDBusParameterDialog() override;

    /// Offers the transceiver delay offset for the type that can set it; for others it passes through unseen.
    void setValues(CAN::CANFDBusParameter values, AbstractCanAdapter::CanAdapterType type);

    /// What the texts say, as a user-defined timing. Numbers may be hexadecimal with 0x or octal with 0; text that is
    /// no number counts as 0, and what does not fit its field is cut to its width. Prescaler and sample point, which
    /// the form does not show, are 0.
    CAN::CANFDBusParameter getValues();

private:
    std::unique_ptr<Ui_CANFDBusParameterDialog> ui;
};
