#pragma once

#include "canrawcomparemessage.h"
#include "kestrune_export.h"

#include <QDialog>
#include <QHash>
#include <QPointer>

#include <memory>

class CanRawMessageEditor;
namespace Ui {
class CANopenMessageBuilderDialog;
}

/// Lets a user compose a message template, by hand or from a CANopen message type, which fills in the identifier, the
/// length, the data and the bytes that count.
///
/// Call setMessage(), run the dialog, and on acceptance getMessage(), which gives what the form says then, changes by
/// hand included. The dialog can be run again and again; the pages keep what the user entered. GUI thread only.
class KESTRUNE_EXPORT CANopenMessageBuilderDialog : public QDialog
{
    Q_OBJECT

public:
    enum BuildMsgType {
        BuildNmt = 0,
        BuildPdo = 1,
        BuildSdo = 2,
        BuildHeartbeat = 3,
        BuildEmcy = 4,
    };

    explicit CANopenMessageBuilderDialog(QWidget *parent = nullptr);
    ~CANopenMessageBuilderDialog() override;

    /// @return false if the editor is gone; then `message` stays as it is
    bool getMessage(CANRAW::CanRawCompareMessage &message);
    /// @return true, whether there was an editor to show it or not
    bool setMessage(CANRAW::CanRawCompareMessage const &message);

    /// Shows the template of a command for a node; both bytes must match. As for all that are built here, the four
    /// flags must be clear, and nothing happens if the editor is gone.
    void buildNmtMessage();
    /// The identifier of the node, and its state, which must match.
    void buildHeartbeatMessage();
    /// Identifier 0, whatever node is chosen, and the error class in the first byte, the only one that must match.
    void buildEmcyMessage();
    /// The identifier of the node's requests or responses; a command byte of 0 and the object must match. Text that is
    /// no hexadecimal number counts as 0.
    void buildSdoMessage();
    /// Identifier and length, all bytes open. A length of -1 keeps the one that the editor shows.
    void buildPdoMessage();

    /// Appends an entry for each error class, in the application's language, with the key as Qt::UserRole.
    /// The constructor has done so: a second call appends all of them again.
    void fillEmcyComboBox();

public slots:
    /// Builds the message of the current page, known by its object name; a page of another name counts as "tab_nmt".
    void on_btnBuild_clicked();

private:
    std::unique_ptr<Ui::CANopenMessageBuilderDialog> ui;
    QPointer<CanRawMessageEditor> messageEditor;

    /// By the object name of the page.
    static const QHash<QString, BuildMsgType> mString2BuildMsgType;
    /// By the high byte of the emergency error code. Made before there is an application, so not translated.
    static const QHash<unsigned char, QString> mEmcyMap;
};
