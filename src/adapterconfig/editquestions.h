#pragma once

class QWidget;

/// What becomes of edits that were not taken over.
enum class EditChoice { Discard, Apply, AddAsNew, Cancel };

/// Asks on a change of the selection. Gives Discard or Apply.
EditChoice askBeforeSelectionChange(QWidget *parent);

/// Asks before the window closes.
EditChoice askBeforeClosing(QWidget *parent);
