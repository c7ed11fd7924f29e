#pragma once

class QTableView;

/// What the mouse does in the check columns of the adapter table, for the keyboard, and in a menu that says so. Each
/// action works on the current row; one whose column is hidden is not offered.
void addAdapterTableActions(QTableView *table);
