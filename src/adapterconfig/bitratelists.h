#pragma once

#include "adaptercontract.h"

#include <QCoreApplication>

#include <optional>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

/// The bitrate lists of the interface form: what they offer for an adapter type, what stays selected when they are
/// filled anew, and the two bit timings that a user makes by hand instead.
///
/// Part of CanInterfaceWidget, which owns the controls and tells when an index changes; not for use on its own.
class BitrateLists
{
    Q_DECLARE_TR_FUNCTIONS(BitrateLists)

public:
    /// Data of the entry that stands for the timing made by hand.
    static constexpr int UserBitrateMarker = 65535;
    /// Data of the entry that stands for the bitrate given by a register value; in the classic list only.
    static constexpr int BtrExtMarker = 65450;

    struct Controls
    {
        QComboBox *classic = nullptr; ///< bitrate of a classic bus, or of the arbitration phase
        QComboBox *data = nullptr;    ///< bitrate of the CAN FD data phase
        QPushButton *editClassic = nullptr;
        QPushButton *editData = nullptr;
        QLabel *lblBtr = nullptr;
        QLineEdit *edtBtr = nullptr;
    };

    /// All controls must be there, and outlive their use here.
    explicit BitrateLists(const Controls &formControls);

    /// @param bitrate to fall back on, in kBit/s
    void setDefaultBitrate(quint16 bitrate);

    /// Fills both lists. What was selected stays so if the new lists still offer it.
    /// @param fdBus whether the classic list is for the arbitration phase of a CAN FD bus
    void updateBitrates(AbstractCanAdapter::CanAdapterType type, bool fdBus);
    /// Takes away what low-speed CAN cannot do, hand-made timings included; if `lowSpeed` is off, fills the lists.
    void updateLSBitrates(bool lowSpeed, AbstractCanAdapter::CanAdapterType type, bool fdBus);

    /// Selects the first entry of that bitrate whose sample point, if both sides name one, is the same. The bitrate of a
    /// match becomes the one to fall back on, for all types. Without a match nothing changes.
    void setBitrateInUi(const CAN::CANBitrateDesc &description);
    /// The same for the data phase, whose bitrates nothing falls back on.
    void setFdBitrateInUi(const CAN::CANBitrateDesc &description);

    /// Adds the entry of the timing made by hand to the classic list, or takes it away; what is so already stays.
    void toggleCANUserBitrate(bool on);
    /// The same in the list of the data phase.
    void toggleCANFDUserBitrate(bool on);
    /// Adds the entry of the register value to the classic list. Off takes an entry out of the data list instead, at the
    /// place where the classic one has its own.
    void toggleSystecBtrExt(bool on);

    // For the lists' signals.
    void classicIndexChanged(int index);
    void dataIndexChanged(int index);

    /// Lets the user work out a timing, in a modal dialog.
    /// @param limits those of the adapter, if there is one
    void editClassicTiming(const std::optional<CAN::CANBitTimingThresholds> &limits);
    void editDataTiming(const std::optional<CAN::CANBitTimingThresholds> &limits,
                        AbstractCanAdapter::CanAdapterType type);

    CAN::CANClassicBusParameter classicParameter() const;
    CAN::CANFDBusParameter fdParameter() const;
    /// Selects the user's entry for a record that says it is user-defined. While that entry is selected, for whatever
    /// reason, the record held is a user-defined one; otherwise it is held as given.
    void setClassicParameter(const CAN::CANClassicBusParameter &parameter);
    /// The same, but selects the entry for a record that has a name.
    void setFdParameter(const CAN::CANFDBusParameter &parameter);

private:
    /// @return the index of the bitrate to fall back on, 0 if the list has none such
    int fillClassicList(const QList<CAN::CANBitrateDesc> &bitrates);
    void fillDataList(const QList<CAN::CANBitrateDesc> &bitrates);
    static void restoreSelection(QComboBox *list, const QString &text, const QString &userName, int defaultIndex);
    // False where the list has no entry for the user's timing.
    static bool nameUserBitrate(QComboBox *list, const QString &name);
    static bool selectUserBitrate(QComboBox *list, const QString &name);
    static void toggleUserBitrate(QComboBox *list, bool on);

    quint16 defaultBitrate = 250;       // kBit/s
    quint16 lastBitrateFromAdapter = 0; // kBit/s, 0 for none
    CAN::CANClassicBusParameter classic;
    CAN::CANFDBusParameter fd;
    const Controls controls;
};
