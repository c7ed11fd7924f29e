#pragma once

#include "adaptercontract.h"
#include "kestrune_export.h"

#include <QMap>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>

class BitrateLists;
class CapabilityBoxes;
class Ui_CanInterfaceWidget;
struct OptionTargets;
struct TypeTreatment;

/// A form in which a user describes one CAN adapter: its type, device, bitrates, capabilities, and the page of settings
/// that only its type has.
///
/// The form shows the adapter that setCurrentAdapter() names, from updateValues() on. It never changes that adapter:
/// createAdapterFromSettings() makes a new one of what the controls say, and four times a second the form compares such
/// a one with the current adapter, to tell the user of edits that are not taken over yet.
///
/// The system, and not the user, says what a "SocketCAN" adapter's bitrates are. When the form notices that they, or any
/// other value of such an adapter, differ from the current adapter's, it emits sigUpdateAdapter() at once; whoever keeps
/// the adapters answers by taking over what createAdapterFromSettings() gives. The trap: the signal may come in the
/// middle of updateValues(), when the form is only half filled.
///
/// Each time that it is shown, be it that its window is restored, the form selects type and device anew. CAN FD then is
/// as last remembered, and not as the user may just have checked it.
///
/// The form owns neither adapters nor map. It forgets the current adapter when that dies. GUI thread only.
class KESTRUNE_EXPORT CanInterfaceWidget : public QWidget
{
    Q_OBJECT

public:
    explicit CanInterfaceWidget(QWidget *parent = nullptr);
    ~CanInterfaceWidget() override;

    /// The adapter to show. The controls change at the next updateValues().
    /// @param adapter may be null
    void setCurrentAdapter(AbstractCanAdapter *adapter);
    /// The adapters among which one may be linked with the current one.
    /// @param map outlives the form, or its use until the next call; may be null
    void setAdapterMap(QMap<unsigned short, QPointer<AbstractCanAdapter>> *map);
    /// Fills the form from the current adapter, and watches for changes from now on. Without one the watch ends, and
    /// the controls keep what they show.
    void updateValues();
    /// The same, but for the list of adapters that may be linked, and without a stop to painting.
    void updateValuesFromCurrentAdapter();

    /// An adapter of what the controls say, with those values that it has options for.
    /// @return the caller's; null if there is none of that type and device
    QPointer<AbstractCanAdapter> createAdapterFromSettings();
    /// What the controls say; invalid for an option that the form does not have.
    QVariant getCanInterfaceOption(AbstractCanAdapter::AdapterOption option);
    /// Shows a value. What the form does not have, or only reads, is ignored; a choice that the device does not offer is
    /// remembered for one that does.
    void setCanInterfaceOption(AbstractCanAdapter::AdapterOption option, QVariant value);

    /// @param bitrate kBit/s, selected where nothing says another one; 250 at first
    void setDefaultBitrate(unsigned short bitrate);
    /// Offers no CAN FD for devices of which only the name is known. A device whose feature word says CAN FD keeps it.
    void prohibitCanFd();
    void showForcedEcho(bool show);

    /// Devices of a USB vendor came or went.
    void updateDeviceList(unsigned int vendor);
    /// Windows get no notices of devices here: gives false. The form hears of them by CanAdapterFactory::notifier().
    bool registerDeviceChangeNotification();
    bool nativeEvent(const QByteArray &eventType, void *message, long *result) override;

    // The bitrate lists.
    void updateBitrates();
    void updateBitrates(AbstractCanAdapter::CanAdapterType type, bool fd);
    void updateLSBitrates(bool lowSpeed);
    void setBitrateInUi(CAN::CANBitrateDesc bitrate);
    void setFdBitrateInUi(CAN::CANBitrateDesc bitrate);
    void toggleCANUserBitrate(bool on);
    void toggleCANFDUserBitrate(bool on);
    void toggleSystecBtrExt(bool on);

public slots:
    /// Shows what the type has: its devices, bitrates and page.
    void on_cbCanInterfaceType_currentIndexChanged(int index);
    /// Offers what the device is capable of.
    void on_cbCanDevice_currentIndexChanged(int index);
    void on_cbAdvancedConfig_clicked(bool checked);

    void on_cbBitrate_currentIndexChanged(int index);
    void on_cbCanFdDataBitrate_currentIndexChanged(int index);
    void on_btnEdtClassicBitrate_clicked();
    void on_btnEdtFDBitrate_clicked();

    void on_cbCanfdConfig_toggled(bool checked);
    void on_cbCanfdConfig_clicked(bool checked);
    // The user's choices, which are remembered if the device offers their box.
    void on_cbLowSpeed_stateChanged(int state);
    void on_cbListenOnly_stateChanged(int state);
    void on_chLogErrorFrames_stateChanged(int state);
    void on_cbAutoBusOn_stateChanged(int state);

    /// Says beside the field if it does not hold an address. Only while the page with the address is in front.
    void on_le_ipAddress_textChanged(const QString &text);
    /// Says beside the field if it is empty.
    void on_le_port_textChanged(const QString &text);
    /// Shows the fields of the selected filter mode.
    void on_xm3cbFilterMode_currentIndexChanged(int index);

    /// Compares the form with the current adapter: tells the user of edits, or emits sigUpdateAdapter() for those of a
    /// "SocketCAN" adapter.
    void checkForChanges();
    /// Devices of a type came or went. What is selected stays selected, if only as a device that is not connected.
    void refreshDevices(AbstractCanAdapter::CanAdapterType type);

signals:
    /// What the form says of a "SocketCAN" adapter has changed, and not by the user's hands alone.
    void sigUpdateAdapter();

protected:
    bool event(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

    void updateInterfaceList(AbstractCanAdapter::CanAdapterType type);
    /// Selects a device, or an entry that says it is not connected.
    void setDeviceName(QString name);
    /// @param features as in AbstractCanAdapter::DeviceFeature
    void handleDeviceFeatures(unsigned int features, AbstractCanAdapter::CanAdapterType type);
    void enableListenOnlyCheckBox(bool enable);
    void enableLowSpeedCheckBox(bool enable);
    void enableErrorFramesCheckBox(bool enable);
    /// @param value what the box shows while it is disabled
    void enableAutoBusOnCheckBox(bool enable, bool value);
    /// Shows whether CAN FD is used, and lets nobody change it until another device or type is selected.
    void disableFDCheckbox(bool state);
    void updateLinkedAdapterList();
    void fillXm3FilterModeCombobox();

private:
    using Type = AbstractCanAdapter::CanAdapterType;

    void fillTypeList();
    void limitInput();
    void fitToFont();
    void arrangeBoxes();
    QList<QWidget *> capabilityBoxes() const;
    void forgetAdapter();

    Type selectedType() const;
    OptionTargets optionTargets();
    std::unique_ptr<AbstractCanAdapter> buildAdapter();
    std::optional<CAN::CANBitTimingThresholds> timingLimits(bool dataPhase);

    void selectType(const QVariant &type);
    void takeType(Type type);
    void offerCapabilities(Type type, const QString &factoryName);
    void offerByName(Type type, const QString &factoryName);
    void offerLowSpeed(bool selectable, bool nothingElse);
    void offerCanFd(bool offered);
    void showRememberedCanFd();
    void breakFdLock();
    void showDeviceToolTip();
    void showDeviceNumber(AbstractCanAdapter &adapter);
    unsigned int savedFeatures() const;
    void offerTimingEdit();

    void showUserSettings();
    void showSystemSettings(const AbstractCanAdapter::SocketCANProps &props);
    void lockDataBitrate();
    void followSystem();

    void showSettingsPage(Type type);
    void showNeutralPage();
    void applyTreatment(const TypeTreatment &treatment);
    void showRows(const TypeTreatment &treatment);
    void placePortRow(const TypeTreatment &treatment);
    void openSettingsPage();
    void showUserTiming(bool inUse);
    void adjustSizes();

    std::unique_ptr<Ui_CanInterfaceWidget> ui;
    QMap<unsigned int, AbstractCanAdapter::CanAdapterType> vendorTypes; ///< by USB vendor number
    QPointer<QTimer> changeTimer;
    QMap<unsigned short, QPointer<AbstractCanAdapter>> *adapterMap = nullptr;
    AbstractCanAdapter *currentAdapter = nullptr;
    unsigned int currentType = AbstractCanAdapter::CanAdapterNone;
    std::unique_ptr<CapabilityBoxes> capabilities;
    std::unique_ptr<BitrateLists> bitrates;
    QMetaObject::Connection fdLock;
    int boxColumns = 0; ///< of the boxes for the capabilities
    /// The current adapter from an edit of a link on, until there is another one.
    std::unique_ptr<AbstractCanAdapter> appliedAdapter;
};
