#pragma once

#include "canrawcomparemessage.h"
#include "kestrune_export.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <memory>

class QHexEdit;
namespace Ui {
class CanRawMessageEditor;
}

/// A form in which a user enters one message template: identifier, length, data bytes with the mark which of them
/// count, and the four frame flags.
///
/// A new editor asks for nothing: any identifier, length and flags, no byte considered, 64 bytes in view. Wrong text
/// leaves its part of the template open. GUI thread only.
///
/// The traps: setMessage() does not change how many bytes are in view; the user's choice of a length does, and a change
/// of the FD flag. And a new editor has 16777215 consideration bits, which a comparison counts as -1: a template that a
/// user composes in it compares no byte, whichever are marked. Call setMessage() first, with 64 bits, as a
/// CanRawCompareMessage has when it is new.
class KESTRUNE_EXPORT CanRawMessageEditor : public QWidget
{
    Q_OBJECT

public:
    explicit CanRawMessageEditor(QWidget *parent = nullptr);
    ~CanRawMessageEditor() override;

    /// What the form says now: a valid template, with all bytes of the byte editor, also those beyond the length.
    CANRAW::CanRawCompareMessage getMessage();
    /// A length that the list for the frame type does not have leaves the choice of the length as it is.
    void setMessage(CANRAW::CanRawCompareMessage const &message);

    /// Whether the user marks which bytes count.
    void setConsideration(bool on);
    /// Whether the flags offer "does not matter". While they do not, a box in that state counts as checked; it has the
    /// state again when they do, unless it was clicked. A message with that state of a flag makes its box offer it.
    void setTriState(bool on);
    /// Offers the lengths of CAN FD frames, or those of classic ones only. A chosen length that is not among them
    /// leaves the length open, and its bytes in view.
    void changeLengthCombobox(bool fd);

public slots:
    /// Offers the lengths that frames of this type have; those of CAN FD where the type does not matter.
    /// @param state a Qt::CheckState
    void on_chFd_stateChanged(int state);
    /// Marks no byte.
    void on_btnConsiderNone_clicked();
    /// Marks every byte, also those that are not in view.
    void on_btnConsiderAll_clicked();
    /// Shows as many bytes; for a text that is no number, as many as the longest frame of the type has.
    void on_cbLength_textActivated(QString const &text);

private:
    void createHexEdit();

    std::unique_ptr<Ui::CanRawMessageEditor> ui;
    QPointer<QHexEdit> hexEdit;

    static const QStringList nonFdLengthList;
    static const QStringList fdLengthList;
};
