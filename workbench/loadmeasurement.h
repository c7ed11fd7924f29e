#pragma once

#include "tourreport.h"

#include <QCoreApplication>

class MainWindow;

/// Puts more load on the demo bus for some time, and tells what became of the frames and how the window bore it.
class LoadMeasurement
{
    Q_DECLARE_TR_FUNCTIONS(LoadMeasurement)

public:
    LoadMeasurement(MainWindow *window, int framesPerSecond, int seconds);

    /// Takes as long as asked for, in which the event loop goes on. Starts the demo if it does not run yet.
    /// @return true if every frame that was sent is in the trace
    bool run();
    const TourReport &report() const { return m_report; }
    /// Why the measurement could not begin, in words for the user; empty if it could.
    QString obstacle() const { return m_obstacle; }

private:
    MainWindow *m_window;
    int m_framesPerSecond;
    int m_seconds;
    TourReport m_report;
    QString m_obstacle;
};
