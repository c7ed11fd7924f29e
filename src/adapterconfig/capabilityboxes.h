#pragma once

#include <QCoreApplication>

class QCheckBox;

/// The check boxes of the interface form that some devices do not offer, and what the user chose in them: a choice is
/// remembered while its box is disabled, so that trying another device does not cost the user what was set.
///
/// A part of CanInterfaceWidget, which holds it; nothing that an application uses.
class CapabilityBoxes
{
    // Its texts are the form's.
    Q_DECLARE_TR_FUNCTIONS(CanInterfaceWidget)

public:
    // The choices. The form writes them too, when an adapter says what they are.
    bool useCanFd = false;
    bool lowSpeed = false;
    bool canFdAllowed = true; ///< of devices that are known by their names only
    bool errorFrames = false;
    bool listenOnly = true;
    bool autoBusOn = true;

    struct Controls
    {
        QCheckBox *errorFrames = nullptr;
        QCheckBox *listenOnly = nullptr;
        QCheckBox *lowSpeed = nullptr;
        QCheckBox *autoBusOn = nullptr;
    };

    /// All boxes must be there, and outlive their use here.
    explicit CapabilityBoxes(const Controls &boxes);

    void enableErrorFrames(bool enable);
    void enableListenOnly(bool enable);
    void enableLowSpeed(bool enable);
    /// @param value what the box shows while it is disabled. Disabling remembers what it showed before, each time.
    void enableAutoBusOn(bool enable, bool value);

    // The user, or the form, set a box: remembers it unless the box is disabled.
    void errorFramesChanged(int checkState);
    void listenOnlyChanged(int checkState);
    void lowSpeedChanged(int checkState);
    void autoBusOnChanged(int checkState);

private:
    static void enable(QCheckBox &box, bool enable, bool &choice, const QString &toolTip);
    static void changed(const QCheckBox &box, int checkState, bool &choice);

    const Controls controls;
};
