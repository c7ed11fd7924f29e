#include "tracefilecommands.h"

#include "tracearchive.h"

#include <QAction>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QStatusBar>
#include <QToolButton>

namespace {
QAction *makeAction(QObject *parent, const QString &name, const QString &text, const QKeySequence &shortcut)
{
    auto *action = new QAction(text, parent);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    return action;
}

void explain(QAction *action, const QString &text)
{
    action->setStatusTip(text);
    action->setToolTip(QStringLiteral("%1 (%2)").arg(text, action->shortcut().toString(QKeySequence::NativeText)));
}

QString traceFilter()
{
    return TraceFileCommands::tr("Traces (*.qrm);;Captures (*.pcapng *.pcap);;All files (*)");
}
} // namespace

TraceFileCommands::TraceFileCommands(TraceArchive *files, QStatusBar *statusBar, QWidget *window)
    : QObject(window)
    , m_files(files)
    , m_window(window)
    , m_open(makeAction(window, QStringLiteral("actionOpenTrace"), tr("&Open trace..."), QKeySequence::Open))
    , m_save(makeAction(window, QStringLiteral("actionSaveTrace"), tr("&Save trace as..."), QKeySequence::Save))
    , m_record(makeAction(window, QStringLiteral("actionRecordTrace"), tr("&Record to file..."),
                          QKeySequence(Qt::CTRL + Qt::Key_R)))
    , m_progress(new QProgressBar(statusBar))
    , m_cancel(new QToolButton(statusBar))
    , m_recording(new QLabel(statusBar))
{
    m_record->setCheckable(true);
    explain(m_record, tr("Write all frames from now on to a file, while they come"));
    m_progress->setObjectName(QStringLiteral("barTraceFile"));
    m_progress->setMaximumWidth(m_progress->fontMetrics().averageCharWidth() * 30);
    m_cancel->setObjectName(QStringLiteral("btnCancelTraceFile"));
    m_cancel->setText(tr("Cancel"));
    m_cancel->setToolTip(tr("Stop reading the file; what was read stays in the trace"));
    m_cancel->setFocusPolicy(Qt::StrongFocus);
    statusBar->insertPermanentWidget(0, m_progress);
    m_recording->setObjectName(QStringLiteral("lblRecording"));
    statusBar->insertPermanentWidget(1, m_cancel);
    statusBar->insertPermanentWidget(2, m_recording);
    showBusy(false);
    showRecording();

    connect(m_open, &QAction::triggered, this, &TraceFileCommands::openTrace);
    connect(m_save, &QAction::triggered, this, &TraceFileCommands::saveTrace);
    connect(m_record, &QAction::triggered, this, &TraceFileCommands::record);
    connect(m_cancel, &QToolButton::clicked, files, &TraceArchive::cancel);
    connect(files, &TraceArchive::busyChanged, this, &TraceFileCommands::showBusy);
    connect(files, &TraceArchive::recordingChanged, this, &TraceFileCommands::showRecording);
    connect(files, &TraceArchive::progressed, this, [this](double percent) {
        m_progress->setRange(0, 100);
        m_progress->setValue(qRound(percent));
        m_cancel->show();
    });
}

void TraceFileCommands::setSituation(bool connected, bool hasFrames)
{
    m_connected = connected;
    m_hasFrames = hasFrames;
    updateActions();
}

void TraceFileCommands::openTrace()
{
    const QString fileName = QFileDialog::getOpenFileName(m_window, tr("Open trace"), TraceArchive::usualDirectory(),
                                                          traceFilter());
    if (!fileName.isEmpty())
        m_files->open(fileName);
}

void TraceFileCommands::saveTrace()
{
    const QString fileName = askForNewFile(tr("Save trace as"));
    if (!fileName.isEmpty())
        m_files->save(fileName);
}

void TraceFileCommands::record(bool on)
{
    if (!on) {
        m_files->stopRecording();
        return;
    }
    const QString fileName = askForNewFile(tr("Record to file"));
    if (fileName.isEmpty())
        m_record->setChecked(false);
    else
        m_files->startRecording(fileName);
}

QString TraceFileCommands::askForNewFile(const QString &title)
{
    const QString proposal = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HHmmss"));
    QFileDialog dialog(m_window, title, TraceArchive::usualDirectory(), traceFilter());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("qrm"));
    dialog.selectFile(proposal + QLatin1String(".qrm"));
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

void TraceFileCommands::showBusy(bool busy)
{
    m_progress->setRange(0, 0);
    m_progress->setVisible(busy);
    m_cancel->hide();
    updateActions();
}

void TraceFileCommands::showRecording()
{
    const bool recording = m_files->isRecording();
    m_record->setChecked(recording);
    m_recording->setVisible(recording);
    m_recording->setText(tr("Recording to %1").arg(QFileInfo(m_files->recordedFile()).fileName()));
    m_recording->setToolTip(QDir::toNativeSeparators(m_files->recordedFile()));
}

void TraceFileCommands::updateActions()
{
    const bool busy = m_files->isBusy();
    m_open->setEnabled(!busy && !m_connected);
    explain(m_open,
            m_connected ? tr("Disconnect first: an opened trace takes the place of this one")
                        : tr("Put a trace or a capture from a file in the place of this one"));
    m_save->setEnabled(!busy && m_hasFrames);
    explain(m_save, tr("Write the trace to a file that network analysers open"));
}
