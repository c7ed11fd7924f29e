#pragma once

#include "kestrune_export.h"

#include <QDialog>
#include <QHash>
#include <QStringList>

#include <memory>

namespace Ui {
class CanMessageBuilder;
}

/// Lets a user compose a CAN message as a row of texts, by hand or from a CANopen message type: the identifier, then
/// the bytes, with "XX" for a byte that is left open.
///
/// Call setCurrentMessage(), run the dialog, and on acceptance getCurrentMessage(). Nothing checks what the user types
/// into the row. GUI thread only.
class KESTRUNE_EXPORT CanMessageBuilder : public QDialog
{
    Q_OBJECT

public:
    /// A message that was built, before it becomes texts.
    struct CMBMessage
    {
        static constexpr int maxLength = 8;
        static constexpr quint16 openByte = 0x100;

        quint32 id = 0;
        quint8 length = 0; ///< data cells to fill, up to 8
        /// A value of up to 255 is that byte, any above leaves the byte open.
        quint16 data[maxLength] = {openByte, openByte, openByte, openByte, openByte, openByte, openByte, openByte};
    };

    explicit CanMessageBuilder(QWidget *parent = nullptr);
    ~CanMessageBuilder() override;

    /// Fills the row from its start; cells beyond the list keep what they hold, and texts beyond the row are dropped.
    void setCurrentMessage(QStringList message);
    /// The texts of the row in order. Empty cells leave no gap.
    QStringList getCurrentMessage();
    /// Clears the row and shows the message in it.
    void setNewMessage(CanMessageBuilder::CMBMessage message);

    /// Command and node. A command that is not chosen leaves its byte open.
    void buildNmtMessage();
    /// The identifier of the node, and the state.
    void buildHeartbeatMessage();
    /// Identifier 0, whatever node is chosen, and the error class in the first byte.
    void buildEmcyMessage();
    /// The identifier of the node's requests or responses, and the object. Text that is no hexadecimal number counts
    /// as 0; a subindex above 0xFF leaves its byte open, as the command byte always is.
    void buildSdoMessage();
    /// Identifier and length, all bytes open.
    void buildPdoMessage();

    /// Gives the map of error classes its entries. The constructor has done so.
    void fillEmcyMap();
    /// Appends an entry for each class of the map, in the application's language, with the key as Qt::UserRole.
    /// The constructor has done so: a second call appends all of them again.
    void fillEmcyComboBox();

public slots:
    /// Accepts the dialog.
    void on_btn_ok_clicked();
    /// Rejects the dialog.
    void on_btn_cancel_clicked();
    /// Builds the message of the current page.
    void on_btn_build_clicked();

private:
    void fitTableToFont();

    std::unique_ptr<Ui::CanMessageBuilder> ui;
    QHash<unsigned char, QString> mEmcyMap; ///< by the high byte of the emergency error code, not translated
};
