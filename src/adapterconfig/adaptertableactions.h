#pragma once

class QTableView;

/// What the mouse does in the check columns of the adapter table, for the keyboard, and in a menu that says so. Each
/// action works on the current row.
void addAdapterTableActions(QTableView *table);

/// After columns were hidden or shown: an action whose column is hidden has no place in the menu and no key.
void offerActionsOfShownColumns(const QTableView &table);
