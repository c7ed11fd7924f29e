#pragma once

#include "adaptercontract.h"
#include "frameparser.h"

#include <QWidget>

class CanScheduler;
class CyclicFrames;
class HintLabel;
class QCheckBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;

/// Where the user writes frames: sent once, or again and again. What is wrong with an input stands below it while it
/// is typed. Without a connection frames can be written, not sent.
class TransmitPanel : public QWidget
{
    Q_OBJECT

public:
    explicit TransmitPanel(QWidget *parent = nullptr);

    CyclicFrames *cyclicFrames() const { return m_cyclic; }

    /// What to say when an adapter refused a frame; empty for WriteOk. Pure.
    static QString refusalText(AbstractCanAdapter::WriteResult result);

    /// What stands in the fields and counts, right or wrong.
    FrameInput input() const;
    void setInput(const FrameInput &input);

public slots:
    /// The adapter that frames go out through and its scheduler, null while there is none.
    void setConnection(AbstractCanAdapter *adapter, CanScheduler *scheduler);
    void sendOnce();
    void sendCyclically();

signals:
    /// The user wants help with composing the frame.
    void buildRequested();

protected:
    void changeEvent(QEvent *event) override;

private:
    QWidget *makeForm();
    void makeFrameFields(QWidget *form);
    void makeSendControls(QWidget *form);
    QWidget *makeCyclicList();
    void orderTabs();
    void takeFont();
    void connectControls();
    /// Enables what makes sense together, and says what is wrong.
    void validate();
    void updateCyclicControls();
    void editRow(int row);
    int selectedRow() const;

    QPointer<AbstractCanAdapter> m_adapter;
    CyclicFrames *m_cyclic;
    quint64 m_sentInARow = 0; // the same input, for a hint that shows that each click did something

    QLineEdit *m_identifier;
    QLineEdit *m_data;
    QCheckBox *m_extended;
    QCheckBox *m_remote;
    QCheckBox *m_fd;
    QCheckBox *m_bitRateSwitch;
    QDoubleSpinBox *m_period;
    QPushButton *m_build;
    QPushButton *m_send;
    QPushButton *m_sendCyclically;
    HintLabel *m_hint;

    QTableView *m_cyclicView;
    QLabel *m_cyclicHint;
    QPushButton *m_toggle;
    QPushButton *m_remove;
    QPushButton *m_stopAll;
};
