#pragma once

#include "identifierlist.h"
#include "replaycontroller.h"

#include <QPointer>
#include <QWidget>

class HintLabel;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QToolButton;

/// Where the user plays a recording onto a bus: which file, through which interface, how fast. What is wrong with an
/// input stands below it while it is typed.
class ReplayPanel : public QWidget
{
    Q_OBJECT

public:
    explicit ReplayPanel(QWidget *parent = nullptr);
    ~ReplayPanel() override;

    struct Interface
    {
        QString name;
        QPointer<AbstractCanAdapter> adapter;
    };
    /// The connected ones. A replay through one that is no longer there ends.
    void setInterfaces(const QVector<Interface> &interfaces);
    void setFileName(const QString &fileName);
    ReplayController *controller() { return &m_controller; }

public slots:
    void start();
    void stop();

private:
    void makeRecordingFields();
    void makeOptions();
    void makeButtons();
    void connectControls();
    void browse();
    /// Enables what makes sense together, and says what is wrong.
    void validate();
    void showRunning();
    void showStatus(const QString &text);
    void showEnd();
    AbstractCanAdapter *chosenAdapter() const;

    ReplayController m_controller;
    QVector<Interface> m_interfaces;
    QString m_status; ///< the last words of the replay

    QLineEdit *m_file;
    QToolButton *m_browse;
    QComboBox *m_interface;
    QDoubleSpinBox *m_speed;
    QLineEdit *m_ignored;
    QCheckBox *m_loop;
    QCheckBox *m_fastForward;
    QCheckBox *m_ignoreGaps;
    QPushButton *m_start;
    QPushButton *m_pause;
    QPushButton *m_step;
    QPushButton *m_stop;
    QProgressBar *m_progress;
    HintLabel *m_hint;
};
