#pragma once

#include <QMenu>

class TraceModel;

/// How the trace shows time.
class TimeMenu : public QMenu
{
    Q_OBJECT

public:
    /// @param trace must outlive the menu
    TimeMenu(TraceModel *trace, QWidget *parent);
};
