#pragma once

#include "tourreport.h"

#include <QObject>

#include <memory>

class AbstractCanAdapter;
class FrameProbe;
class MainWindow;

/// The tour of the demo, without a user: works through the window as a user would, step by step, and checks what comes
/// of it. Leaves pictures of the window on the way.
class Tour : public QObject
{
    Q_OBJECT

public:
    /// @param window shown, and not connected yet
    /// @param outputDirectory for the pictures; made if it does not exist
    Tour(MainWindow *window, const QString &outputDirectory, QObject *parent = nullptr);
    ~Tour() override;

    /// Runs all steps; takes some seconds, in which the event loop goes on.
    /// @return true if all checks passed. report() says more.
    bool run();
    const TourReport &report() const { return m_report; }
    /// Why the tour could not even begin, in words for the user; empty if it could.
    QString obstacle() const { return m_obstacle; }

private:
    using StepFunction = bool (Tour::*)();

    struct Step
    {
        const char *name;
        StepFunction run;
    };

    static const Step steps[];

    // Each gives false if what follows makes no sense without it.
    bool showEmptyWindow();
    bool connectDemo();
    bool meetAllNodes();
    bool sendBothWays();
    bool readObject();
    bool stopAndStartNode();
    bool seeBitRateSwitch();
    bool sendFromPanel();
    bool sendCyclically();
    bool showTraffic();
    bool connectAgain();
    bool saveAndReopen();
    bool loseNothing();

    bool stop(const QString &obstacle);
    AbstractCanAdapter *interfaceAt(int row) const;
    void probeInterfaces();
    bool allNodesHeard() const;
    void fillPanel(const QString &identifier, const QString &data) const;
    void pressButton(const QString &objectName) const;
    void takePicture(const QString &name, const QString &subject);

    MainWindow *m_window;
    QString m_directory;
    TourReport m_report;
    QString m_obstacle;
    std::unique_ptr<FrameProbe> m_first;
    std::unique_ptr<FrameProbe> m_second;
};
