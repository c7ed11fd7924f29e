#include "timemenu.h"

#include "tracemodel.h"

#include <QActionGroup>

TimeMenu::TimeMenu(TraceModel *trace, QWidget *parent)
    : QMenu(tr("&Time"), parent)
{
    auto *modes = new QActionGroup(this);
    const QPair<TraceModel::TimeMode, QString> entries[] = {
        {TraceModel::SinceStart, tr("Since the &first frame")},
        {TraceModel::SincePrevious, tr("Since the frame &before")},
        {TraceModel::TimeOfDay, tr("Time of &day")},
    };
    for (const auto &entry : entries) {
        QAction *action = addAction(entry.second);
        action->setCheckable(true);
        action->setChecked(entry.first == trace->timeMode());
        modes->addAction(action);
        connect(action, &QAction::triggered, trace, [trace, mode = entry.first] { trace->setTimeMode(mode); });
    }
}
