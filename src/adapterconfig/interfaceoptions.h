#pragma once

#include "adaptercontract.h"

#include <functional>

class BitrateLists;
class CapabilityBoxes;
class QString;
class Ui_CanInterfaceWidget;

/// What the options are read from and written into: the form's controls, and those steps of the form that a value sets
/// off beyond its control.
struct OptionTargets
{
    Ui_CanInterfaceWidget &ui;
    CapabilityBoxes &capabilities;
    BitrateLists &bitrates;
    std::function<void(const QVariant &type)> selectType;
    std::function<void(const QString &name)> selectDevice;
    std::function<void(bool inUse)> showUserTiming;
    std::function<void()> openSettingsPage;
};

/// The value of the option as the form says it; invalid for an option that the form does not have.
QVariant readOption(const OptionTargets &form, AbstractCanAdapter::AdapterOption option);
/// Ignores an option that the form does not have, or only reads.
void writeOption(const OptionTargets &form, AbstractCanAdapter::AdapterOption option, const QVariant &value);
