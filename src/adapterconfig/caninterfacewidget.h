#pragma once

#include "adaptercontract.h"
#include "capabilityboxes.h"
#include "kestrune_export.h"

#include <QMap>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>

class Ui_CanInterfaceWidget;

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
    /// @param map outlives the form, or the next call; may be null
    void setAdapterMap(QMap<unsigned short, QPointer<AbstractCanAdapter>> *map);

    /// Offers no CAN FD for devices of which only the name is known. A device whose feature word says CAN FD keeps it.
    void prohibitCanFd();
    void showForcedEcho(bool show);

    /// Nothing tells the form of devices by a window's notices here: gives false.
    bool registerDeviceChangeNotification();
    bool nativeEvent(const QByteArray &eventType, void *message, long *result) override;

public slots:
    // The user's choices. Those whose box the device does not offer are not remembered.
    void on_cbListenOnly_stateChanged(int state);
    void on_chLogErrorFrames_stateChanged(int state);
    void on_cbAutoBusOn_stateChanged(int state);

    /// Says beside the field if it does not hold an address. Only while the page with the address is in front.
    void on_le_ipAddress_textChanged(const QString &text);
    /// Says beside the field if it is empty.
    void on_le_port_textChanged(const QString &text);
    /// Shows the fields of the selected filter mode.
    void on_xm3cbFilterMode_currentIndexChanged(int index);

signals:
    /// What the form says of a "SocketCAN" adapter has changed, and not by the user's hands alone.
    void sigUpdateAdapter();

protected:
    void enableListenOnlyCheckBox(bool enable);
    void enableLowSpeedCheckBox(bool enable);
    void enableErrorFramesCheckBox(bool enable);
    void enableAutoBusOnCheckBox(bool enable, bool value);
    void fillXm3FilterModeCombobox();

private:
    void fillTypeList();
    void limitInput();

    std::unique_ptr<Ui_CanInterfaceWidget> ui;
    QMap<unsigned int, AbstractCanAdapter::CanAdapterType> vendorTypes; ///< by USB vendor number
    QPointer<QTimer> changeTimer;
    QMap<unsigned short, QPointer<AbstractCanAdapter>> *adapterMap = nullptr;
    AbstractCanAdapter *currentAdapter = nullptr;
    unsigned int currentType = AbstractCanAdapter::CanAdapterNone;
    CapabilityBoxes capabilities;
};
