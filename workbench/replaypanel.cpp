#include "replaypanel.h"

#include "adaptercontract.h"
#include "hintlabel.h"
#include "namedwidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>

#include <algorithm>

namespace {
constexpr double minSpeed = 0.01;
constexpr double maxSpeed = 1000.0;
} // namespace

ReplayPanel::ReplayPanel(QWidget *parent)
    : QWidget(parent)
{
    makeRecordingFields();
    makeOptions();
    makeButtons();
    auto *grid = new QGridLayout(this);
    const auto labelled = [grid, this](int row, int column, const QString &text, QWidget *field) {
        auto *label = new QLabel(text, this);
        label->setBuddy(field);
        grid->addWidget(label, row, column);
    };
    const auto inRow = [grid](int row, std::initializer_list<QWidget *> widgets) {
        auto *line = new QHBoxLayout;
        for (QWidget *widget : widgets)
            line->addWidget(widget);
        line->addStretch();
        grid->addLayout(line, row, 1, 1, 3);
    };
    auto *file = new QHBoxLayout;
    file->addWidget(m_file, 1);
    file->addWidget(m_browse);
    labelled(0, 0, tr("F&ile"), m_file);
    grid->addLayout(file, 0, 1);
    labelled(0, 2, tr("Th&rough"), m_interface);
    grid->addWidget(m_interface, 0, 3);
    labelled(1, 0, tr("Lea&ve out"), m_ignored);
    grid->addWidget(m_ignored, 1, 1);
    labelled(1, 2, tr("S&peed"), m_speed);
    grid->addWidget(m_speed, 1, 3);
    inRow(2, {m_loop, m_fastForward, m_ignoreGaps});
    inRow(3, {m_start, m_pause, m_step, m_stop});
    grid->addWidget(m_progress, 4, 1, 1, 3);
    grid->addWidget(m_hint, 5, 1, 1, 3);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(6, 1);
    setFocusProxy(m_file);
    connectControls();
    showRunning();
}

ReplayPanel::~ReplayPanel() = default;

void ReplayPanel::setInterfaces(const QVector<Interface> &interfaces)
{
    const QPointer<AbstractCanAdapter> chosen = chosenAdapter();
    m_interfaces = interfaces;
    m_interface->clear();
    for (const Interface &entry : interfaces)
        m_interface->addItem(entry.name);
    const auto isChosen = [&chosen](const Interface &entry) { return entry.adapter == chosen; };
    const auto place = std::find_if(interfaces.cbegin(), interfaces.cend(), isChosen);
    m_interface->setCurrentIndex(place == interfaces.cend() ? 0 : int(place - interfaces.cbegin()));
    const bool stillThere = std::any_of(interfaces.cbegin(), interfaces.cend(), [this](const Interface &entry) {
        return entry.adapter == m_controller.adapter();
    });
    if (m_controller.isRunning() && !stillThere) {
        m_controller.stop();
        m_hint->showError(tr("The replay has ended: its interface was closed."));
        return;
    }
    if (!m_controller.isRunning())
        validate();
}

void ReplayPanel::setFileName(const QString &fileName)
{
    m_file->setText(QDir::toNativeSeparators(fileName));
}

void ReplayPanel::start()
{
    const IdentifierList ignored = parseIdentifierList(m_ignored->text());
    AbstractCanAdapter *adapter = chosenAdapter();
    if (adapter == nullptr || !ignored.isValid())
        return;
    m_controller.start({QDir::fromNativeSeparators(m_file->text()), adapter, ignored.identifiers});
}

void ReplayPanel::stop()
{
    m_controller.stop();
    m_hint->showHint(tr("Stopped."));
}

void ReplayPanel::makeRecordingFields()
{
    m_file = named(new QLineEdit(this), QStringLiteral("edtReplayFile"),
                   tr("A trace (.qrm) or a text of the file logger"));
    m_file->setPlaceholderText(tr("A trace or a log"));
    m_file->setClearButtonEnabled(true);
    m_browse = named(new QToolButton(this), QStringLiteral("btnBrowseReplay"), tr("Choose the file"));
    m_browse->setText(tr("..."));
    m_browse->setAccessibleName(tr("Choose the file"));
    m_browse->setFocusPolicy(Qt::StrongFocus);
    m_interface = named(new QComboBox(this), QStringLiteral("cbReplayInterface"),
                        tr("The connected interface that sends the recorded frames"));
    m_ignored = named(new QLineEdit(this), QStringLiteral("edtReplayIgnored"),
                      tr("Identifiers in hexadecimal that are not sent, for example 701, 181-18F"));
    m_ignored->setPlaceholderText(tr("Nothing"));
}

void ReplayPanel::makeOptions()
{
    m_speed = named(new QDoubleSpinBox(this), QStringLiteral("sbReplaySpeed"),
                    tr("2 plays twice as fast as it was recorded"));
    m_speed->setRange(minSpeed, maxSpeed);
    m_speed->setStepType(QAbstractSpinBox::AdaptiveDecimalStepType);
    m_speed->setValue(1.0);
    m_speed->setSuffix(tr(" times"));
    m_loop = named(new QCheckBox(tr("L&oop"), this), QStringLiteral("cbReplayLoop"),
                   tr("Start again at the end of the recording"));
    m_fastForward = named(new QCheckBox(tr("Fast for&ward"), this), QStringLiteral("cbReplayFastForward"),
                          tr("Send without the recorded gaps, as fast as the bus takes the frames"));
    m_ignoreGaps = named(new QCheckBox(tr("S&horten long gaps"), this), QStringLiteral("cbReplayIgnoreGaps"),
                         tr("Wait one second in place of every gap above ten"));
}

void ReplayPanel::makeButtons()
{
    m_start = named(new QPushButton(tr("&Start"), this), QStringLiteral("btnReplayStart"),
                    tr("Play the recording from its beginning (Enter in a field)"));
    m_pause = named(new QPushButton(tr("P&ause"), this), QStringLiteral("btnReplayPause"),
                    tr("Hold the replay. Before the start: begin with a pause, to send frame by frame."));
    m_pause->setCheckable(true);
    m_step = named(new QPushButton(tr("St&ep"), this), QStringLiteral("btnReplayStep"),
                   tr("Send the next frame of the paused replay"));
    m_stop = named(new QPushButton(tr("Sto&p"), this), QStringLiteral("btnReplayStop"), tr("End the replay"));
    m_progress = named(new QProgressBar(this), QStringLiteral("barReplay"), tr("How far the replay is"));
    m_hint = new HintLabel(QStringLiteral("lblReplayStatus"), this);
}

void ReplayPanel::connectControls()
{
    for (QLineEdit *edit : {m_file, m_ignored}) {
        connect(edit, &QLineEdit::textChanged, this, &ReplayPanel::validate);
        connect(edit, &QLineEdit::returnPressed, m_start, &QPushButton::click);
    }
    connect(m_browse, &QToolButton::clicked, this, &ReplayPanel::browse);
    connect(m_start, &QPushButton::clicked, this, &ReplayPanel::start);
    connect(m_stop, &QPushButton::clicked, this, &ReplayPanel::stop);
    connect(m_step, &QPushButton::clicked, &m_controller, &ReplayController::step);
    connect(m_pause, &QPushButton::toggled, this, [this](bool paused) {
        m_controller.setPaused(paused);
        showRunning();
    });
    connect(m_speed, qOverload<double>(&QDoubleSpinBox::valueChanged), &m_controller, &ReplayController::setSpeed);
    connect(m_loop, &QCheckBox::toggled, &m_controller, &ReplayController::setLoop);
    connect(m_fastForward, &QCheckBox::toggled, &m_controller, &ReplayController::setFastForward);
    connect(m_ignoreGaps, &QCheckBox::toggled, &m_controller, &ReplayController::setIgnoreGaps);
    connect(&m_controller, &ReplayController::runningChanged, this, &ReplayPanel::showRunning);
    connect(&m_controller, &ReplayController::ended, this, &ReplayPanel::showEnd);
    connect(&m_controller, &ReplayController::statusChanged, this, &ReplayPanel::showStatus);
}

void ReplayPanel::browse()
{
    const QString fileName = QFileDialog::getOpenFileName(this, tr("Recording"), QFileInfo(m_file->text()).path(),
                                                          tr("Traces and logs (*.qrm *.txt *.log);;All files (*)"));
    if (!fileName.isEmpty())
        setFileName(fileName);
}

void ReplayPanel::validate()
{
    const IdentifierList ignored = parseIdentifierList(m_ignored->text());
    const bool running = m_controller.isRunning();
    m_start->setEnabled(!running && !m_file->text().isEmpty() && ignored.isValid() && chosenAdapter() != nullptr);
    if (running)
        return;
    if (!ignored.isValid())
        m_hint->showError(ignored.error);
    else if (chosenAdapter() == nullptr)
        m_hint->showHint(tr("Connect first to replay: press F5."));
    else if (m_file->text().isEmpty())
        m_hint->showHint(tr("Choose a trace or a log to play it onto the bus."));
    else
        m_hint->showHint(tr("Ready. The frames go out through %1.").arg(m_interface->currentText()));
}

void ReplayPanel::showRunning()
{
    const bool running = m_controller.isRunning();
    // What only counts from the next start on stands still meanwhile.
    for (QWidget *field : {static_cast<QWidget *>(m_file), static_cast<QWidget *>(m_browse),
                           static_cast<QWidget *>(m_interface), static_cast<QWidget *>(m_ignored)})
        field->setEnabled(!running);
    m_stop->setEnabled(running);
    m_step->setEnabled(running && m_pause->isChecked());
    m_progress->setVisible(running);
    if (running) {
        // Until it tells how far it is.
        m_progress->setRange(0, 0);
        m_start->setEnabled(false);
    } else {
        validate();
    }
}

void ReplayPanel::showStatus(const QString &text)
{
    constexpr int steps = 1000;
    if (const std::optional<double> percent = ReplayController::percentIn(text)) {
        m_progress->setRange(0, steps);
        m_progress->setValue(qRound(*percent * steps / 100));
    }
    m_status = text.trimmed();
    m_hint->showHint(m_status);
}

void ReplayPanel::showEnd()
{
    // The words of a replay that failed are all that tells it from one that is over.
    if (m_status.startsWith(QLatin1String("Cannot ")))
        m_hint->showError(m_status);
    else
        m_hint->showHint(tr("Played to the end."));
}

AbstractCanAdapter *ReplayPanel::chosenAdapter() const
{
    const int index = m_interface->currentIndex();
    return index >= 0 && index < m_interfaces.size() ? m_interfaces[index].adapter.data() : nullptr;
}
