#include "messagecommands.h"

#include "canopenmessagebuilderdialog.h"
#include "canrawmessageeditor.h"
#include "framemarks.h"
#include "messagetemplate.h"
#include "transmitpanel.h"

MessageCommands::MessageCommands(TransmitPanel *panel, FrameMarks *marks, QWidget *window)
    : QObject(window)
    , m_panel(panel)
    , m_marks(marks)
    , m_window(window)
{
    connect(panel, &TransmitPanel::buildRequested, this, &MessageCommands::buildMessage);
}

void MessageCommands::buildMessage()
{
    const FrameParse parse = parseFrame(m_panel->input());
    // What the fields do not say right, the builder starts without.
    frameDialog()->setMessage(MessageTemplate::fromFrame(parse.isValid() ? parse.message : CAN::CanMessage()));
    frameDialog()->open();
}

void MessageCommands::addMark(const std::optional<CAN::CanMessage> &example)
{
    if (!hasRoom())
        return;
    m_changedMark = -1;
    markDialog()->setMessage(example ? MessageTemplate::forIdentifier(*example) : MessageTemplate::forEveryFrame());
    markDialog()->open();
}

void MessageCommands::changeMark(int index)
{
    m_changedMark = index;
    markDialog()->setMessage(m_marks->at(index));
    markDialog()->open();
}

void MessageCommands::markIdentifier(const CAN::CanMessage &frame)
{
    if (hasRoom())
        m_marks->add(MessageTemplate::forIdentifier(frame));
}

CANopenMessageBuilderDialog *MessageCommands::makeDialog(const QString &name, const QString &title)
{
    auto *dialog = new CANopenMessageBuilderDialog(m_window);
    dialog->setObjectName(name);
    dialog->setWindowTitle(title);
    return dialog;
}

CANopenMessageBuilderDialog *MessageCommands::frameDialog()
{
    if (m_frameDialog.isNull()) {
        m_frameDialog = makeDialog(QStringLiteral("dlgBuildMessage"), tr("Build message"));
        // A frame to send has all its bytes, and its flags are on or off.
        if (auto *editor = m_frameDialog->findChild<CanRawMessageEditor *>()) {
            editor->setConsideration(false);
            editor->setTriState(false);
        }
        connect(m_frameDialog, &QDialog::accepted, this, &MessageCommands::takeFrame);
    }
    return m_frameDialog;
}

CANopenMessageBuilderDialog *MessageCommands::markDialog()
{
    if (m_markDialog.isNull()) {
        m_markDialog = makeDialog(QStringLiteral("dlgMarkFrames"), tr("Mark frames"));
        connect(m_markDialog, &QDialog::accepted, this, &MessageCommands::takeMark);
    }
    return m_markDialog;
}

bool MessageCommands::hasRoom()
{
    if (m_marks->isFull()) {
        emit remark(tr("There are %1 marks already. Remove one below the trace first.").arg(FrameMarks::maxMarks));
        return false;
    }
    return true;
}

void MessageCommands::takeFrame()
{
    CANRAW::CanRawCompareMessage message;
    if (!m_frameDialog->getMessage(message))
        return;
    m_panel->setInput(MessageTemplate::toInput(message));
    m_panel->setFocus(Qt::OtherFocusReason);
}

void MessageCommands::takeMark()
{
    CANRAW::CanRawCompareMessage message;
    if (!m_markDialog->getMessage(message))
        return;
    if (m_changedMark >= 0 && m_changedMark < m_marks->count())
        m_marks->replace(m_changedMark, message);
    else
        m_marks->add(message);
}
