#pragma once

#include "canrecords.h"

#include <QObject>
#include <QPointer>

#include <optional>

class CANopenMessageBuilderDialog;
class FrameMarks;
class TransmitPanel;

/// What the message builder does in the workbench: it composes the frame of the transmit panel, and the templates by
/// which the trace marks frames.
///
/// The dialogs are made at their first use and keep what stands in their tabs; they block nothing but their window.
class MessageCommands : public QObject
{
    Q_OBJECT

public:
    /// @param panel, marks must outlive the commands
    /// @param window on which the dialogs stand
    MessageCommands(TransmitPanel *panel, FrameMarks *marks, QWidget *window);

public slots:
    /// Opens the builder on the frame of the transmit panel, and puts the result there.
    void buildMessage();
    /// Opens the builder on a template for frames like the one given, or for all if there is none.
    void addMark(const std::optional<CAN::CanMessage> &example);
    void changeMark(int index);
    /// Marks all frames that have the identifier of this one.
    void markIdentifier(const CAN::CanMessage &frame);

signals:
    /// In words for the user.
    void remark(const QString &text);

private:
    CANopenMessageBuilderDialog *makeDialog(const QString &name, const QString &title);
    CANopenMessageBuilderDialog *frameDialog();
    CANopenMessageBuilderDialog *markDialog();
    bool hasRoom();
    void takeFrame();
    void takeMark();

    TransmitPanel *m_panel;
    FrameMarks *m_marks;
    QWidget *m_window;
    QPointer<CANopenMessageBuilderDialog> m_frameDialog;
    QPointer<CANopenMessageBuilderDialog> m_markDialog;
    int m_changedMark = -1; ///< which one the dialog changes; -1 while it makes a new one
};
