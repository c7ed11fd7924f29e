#pragma once

#include "tourcontext.h"

/// The tour of the demo, without a user: works through the window as a user would, step by step, and checks what comes
/// of it. Leaves pictures of the window on the way.
class Tour
{
public:
    /// @param window shown, and not connected yet
    /// @param outputDirectory for the pictures; made if it does not exist
    Tour(MainWindow *window, const QString &outputDirectory);

    /// Runs all steps; takes some seconds, in which the event loop goes on.
    /// @return true if all checks passed. report() says more.
    bool run();
    const TourReport &report() const { return m_context.report(); }
    /// Why the tour could not even begin, in words for the user; empty if it could.
    QString obstacle() const { return m_context.obstacle(); }

private:
    TourContext m_context;
};
