#pragma once

#include "canrawcomparemessage.h"
#include "kestrune_export.h"

#include <QDialog>
#include <QPointer>

#include <memory>

class CanRawMessageEditor;
namespace Ui {
class CanRawMessageEditorDialog;
}

/// A dialog around one CanRawMessageEditor, with Ok and Cancel. GUI thread only.
class KESTRUNE_EXPORT CanRawMessageEditorDialog : public QDialog
{
    Q_OBJECT

public:
    explicit CanRawMessageEditorDialog(QWidget *parent = nullptr);
    ~CanRawMessageEditorDialog() override;

    /// What the form says now.
    /// @return false if the editor is gone; then `message` stays as it is
    bool getMessage(CANRAW::CanRawCompareMessage &message);
    /// @return true, whether there was an editor to show it or not
    bool setMessage(CANRAW::CanRawCompareMessage const &message);

    /// See CanRawMessageEditor::setConsideration().
    void setConsideration(bool on);
    /// See CanRawMessageEditor::setTriState().
    void setTriState(bool on);

private:
    std::unique_ptr<Ui::CanRawMessageEditorDialog> ui;
    QPointer<CanRawMessageEditor> messageEditor;
};
