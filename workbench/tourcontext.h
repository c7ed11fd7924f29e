#pragma once

#include "tourreport.h"

#include <QCoreApplication>

#include <functional>
#include <memory>

class AbstractCanAdapter;
class FrameProbe;
class MainWindow;
class QWidget;

/// What the steps of a tour work with: the window as a user would, its interfaces, the report, the pictures.
class TourContext
{
    Q_DECLARE_TR_FUNCTIONS(Tour)

public:
    /// @param window shown, and not connected yet
    TourContext(MainWindow *window, const QString &directory);
    ~TourContext();

    MainWindow *window() const { return m_window; }
    /// Where the pictures go.
    QString directory() const { return m_directory; }
    TourReport &report() { return m_report; }
    const TourReport &report() const { return m_report; }
    QString obstacle() const { return m_obstacle; }
    /// Nothing that follows makes sense. Gives false, as the step then does.
    bool stop(const QString &obstacle);

    AbstractCanAdapter *interfaceAt(int row) const;
    /// Begins to count what the two interfaces receive.
    void probeInterfaces();
    FrameProbe *first() const { return m_first.get(); }
    FrameProbe *second() const { return m_second.get(); }
    bool allNodesHeard() const;

    /// Runs the event loop until the condition holds, but not for ever.
    static bool await(const std::function<bool()> &condition);
    static QString yesOrNo(bool yes);

    void fillPanel(const QString &identifier, const QString &data) const;
    /// A button of the transmit panel.
    void pressButton(const QString &objectName) const;
    /// A command of the menus.
    void trigger(const QString &objectName) const;
    /// Plays the file from the replay panel through the first interface, as the user would, and waits for its end.
    void replay(const QString &fileName) const;
    void takePicture(const QString &name, const QString &subject);
    void takePicture(QWidget *widget, const QString &name, const QString &subject);
    /// Pictures of the widget on dark ground and in a font of 200 %; names get "-dark" and "-large-font" behind them.
    void takeOtherLooks(QWidget *widget, const QString &name, const QString &subject);

private:
    MainWindow *m_window;
    QString m_directory;
    TourReport m_report;
    QString m_obstacle;
    std::unique_ptr<FrameProbe> m_first;
    std::unique_ptr<FrameProbe> m_second;
};
