#pragma once

#include "adaptercontract.h"

class Ui_CanInterfaceWidget;

// The two option records that have a page of their own, from the page and onto it.

/// @return with useAdvanced as the check box above the pages says
AbstractCanAdapter::PeakAdvValues readTimingPage(const Ui_CanInterfaceWidget &ui);
/// All but useAdvanced.
void writeTimingPage(const Ui_CanInterfaceWidget &ui, const AbstractCanAdapter::PeakAdvValues &values);

/// Text that is no number reads as 0.
AbstractCanAdapter::SystecXM3AdvValues readFilterPage(const Ui_CanInterfaceWidget &ui);
void writeFilterPage(const Ui_CanInterfaceWidget &ui, const AbstractCanAdapter::SystecXM3AdvValues &values);

/// The text of a field for a register, "0x1fffffff" or in another base, as a number; 0 if it is none.
unsigned int readRegister(const QString &text);
QString registerText(unsigned int value);
