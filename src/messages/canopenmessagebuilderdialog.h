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

    // Each builds the message of one page and shows it. All four flags of a built message must be clear.

    void buildNmtMessage();
    void buildHeartbeatMessage();
    void buildEmcyMessage();
    void buildSdoMessage();
    void buildPdoMessage();

    void fillEmcyComboBox();

public slots:
    void on_btnBuild_clicked();

private:
    std::unique_ptr<Ui::CANopenMessageBuilderDialog> ui;
    QPointer<CanRawMessageEditor> messageEditor;

    static const QHash<QString, BuildMsgType> mString2BuildMsgType; ///< by the object name of the page
    static const QHash<unsigned char, QString> mEmcyMap;            ///< by the high byte of the emergency error code
};
