#include "transmitpanel.h"

#include "cyclicframes.h"
#include "framedelegate.h"
#include "frametext.h"
#include "hintlabel.h"
#include "interfacename.h"
#include "namedwidget.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

namespace {
/// What the settings of an interface let expect of every write of a frame: a cycle of refusals need not begin.
AbstractCanAdapter::WriteResult foreseenRefusal(const AbstractCanAdapter &adapter, const CAN::CanMessage &message)
{
    if (adapter.listenOnly || adapter.getCanAdapterOption(AbstractCanAdapter::OptionListenOnly).toBool())
        return AbstractCanAdapter::WriteListenOnly;
    const QVariant canFd = adapter.getCanAdapterOption(AbstractCanAdapter::OptionUseCanFd);
    if (message.fd && canFd.isValid() && !canFd.toBool())
        return AbstractCanAdapter::WriteInvalidFrame;
    return AbstractCanAdapter::WriteOk;
}

constexpr double minPeriodMilliseconds = 0.1;
constexpr double maxPeriodMilliseconds = 3'600'000.0;
constexpr double usualPeriodMilliseconds = 100.0;
constexpr double microsecondsPerMillisecond = 1000.0;
constexpr int visibleCyclicRows = 4;
constexpr int visibleCyclicCharacters = 30;
constexpr int rowPadding = 4;
} // namespace

TransmitPanel::TransmitPanel(QWidget *parent)
    : QWidget(parent)
    , m_cyclic(new CyclicFrames(this))
{
    auto *parts = new QSplitter(Qt::Horizontal, this);
    parts->addWidget(makeForm());
    parts->addWidget(makeCyclicList());
    parts->setChildrenCollapsible(false);
    parts->setStretchFactor(0, 1);
    parts->setStretchFactor(1, 1);
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(parts);
    orderTabs();
    takeFont();
    connectControls();
    validate();
    updateCyclicControls();
}

QString TransmitPanel::refusalText(AbstractCanAdapter::WriteResult result)
{
    switch (result) {
    case AbstractCanAdapter::WriteOk:
        return {};
    case AbstractCanAdapter::WriteNotOpen:
        return tr("Not sent: the interface is closed. Connect again (F5).");
    case AbstractCanAdapter::WriteListenOnly:
        return tr("Not sent: the interface only listens. Switch off \"Listen only\" in its settings.");
    case AbstractCanAdapter::WriteInvalidFrame:
        return tr("Not sent: the interface does not take this kind of frame. For CAN FD, switch it on in its "
                  "settings.");
    case AbstractCanAdapter::WriteLost:
        return tr("Not sent: the bus did not take the frame in time. Check the wiring, and that another node is "
                  "switched on.");
    }
    return tr("Not sent: the interface refused the frame (code %1).").arg(static_cast<int>(result));
}

void TransmitPanel::setConnection(AbstractCanAdapter *adapter, CanScheduler *scheduler)
{
    m_adapter = adapter;
    m_cyclic->setScheduler(scheduler);
    validate();
}

void TransmitPanel::sendOnce()
{
    FrameParse parse = parseFrame(input());
    if (!parse.isValid() || !m_adapter) {
        validate();
        return;
    }
    const AbstractCanAdapter::WriteResult result = m_adapter->write(&parse.message);
    if (result != AbstractCanAdapter::WriteOk) {
        m_hint->showError(refusalText(result));
        return;
    }
    ++m_sentInARow;
    m_hint->showHint(
        m_sentInARow == 1
            ? tr("Sent %1.").arg(FrameText::identifier(parse.message))
            : tr("Sent %1, %2 times.").arg(FrameText::identifier(parse.message), FrameText::count(m_sentInARow)));
}

void TransmitPanel::sendCyclically()
{
    const FrameParse parse = parseFrame(input());
    if (!parse.isValid() || !m_adapter) {
        validate();
        return;
    }
    const AbstractCanAdapter::WriteResult refusal = foreseenRefusal(*m_adapter, parse.message);
    if (refusal != AbstractCanAdapter::WriteOk) {
        m_hint->showError(refusalText(refusal));
        return;
    }
    m_cyclicView->selectRow(m_cyclic->start(parse.message, qRound64(m_period->value() * microsecondsPerMillisecond)));
}

void TransmitPanel::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        takeFont();
}

QWidget *TransmitPanel::makeForm()
{
    auto *form = new QWidget(this);
    makeFrameFields(form);
    makeSendControls(form);
    setFocusProxy(m_identifier);

    auto *grid = new QGridLayout(form);
    grid->setContentsMargins(0, 0, 0, 0);
    const auto labelled = [grid, form](int row, const QString &text, QWidget *field) {
        auto *label = new QLabel(text, form);
        label->setBuddy(field);
        grid->addWidget(label, row, 0);
    };
    const auto inRow = [grid](int row, QLineEdit *edit, std::initializer_list<QCheckBox *> boxes) {
        auto *line = new QHBoxLayout;
        line->addWidget(edit, 1);
        for (QCheckBox *box : boxes)
            line->addWidget(box);
        grid->addLayout(line, row, 1);
    };
    labelled(0, tr("&Identifier"), m_identifier);
    inRow(0, m_identifier, {m_extended, m_remote});
    labelled(1, tr("&Data"), m_data);
    inRow(1, m_data, {m_fd, m_bitRateSwitch});
    grid->addWidget(m_hint, 2, 1);
    labelled(3, tr("C&ycle"), m_period);
    auto *last = new QHBoxLayout;
    last->addWidget(m_period);
    last->addWidget(m_sendCyclically);
    last->addStretch();
    last->addWidget(m_build);
    last->addWidget(m_send);
    grid->addLayout(last, 3, 1);
    grid->setRowStretch(4, 1);
    return form;
}

void TransmitPanel::makeFrameFields(QWidget *form)
{
    m_identifier = named(new QLineEdit(QStringLiteral("123"), form), QStringLiteral("edtIdentifier"),
                         tr("Identifier in hexadecimal, for example 123. Enter sends the frame."));
    m_data = named(new QLineEdit(QStringLiteral("01 02 03 04"), form), QStringLiteral("edtData"),
                   tr("Data bytes in hexadecimal, for example 01 A0 FF. Enter sends the frame."));
    m_extended = named(new QCheckBox(tr("E&xtended"), form), QStringLiteral("cbExtended"),
                       tr("Identifier of 29 bits instead of 11"));
    m_remote = named(new QCheckBox(tr("&Remote"), form), QStringLiteral("cbRemote"),
                     tr("Ask another node to send this identifier; carries no data, and does not exist in CAN FD"));
    m_fd = named(new QCheckBox(tr("CA&N FD"), form), QStringLiteral("cbFd"), tr("Up to 64 data bytes"));
    m_bitRateSwitch = named(new QCheckBox(tr("Bit rate s&witch"), form), QStringLiteral("cbBitRateSwitch"),
                            tr("Send the data of the CAN FD frame at the higher bit rate"));
    m_hint = new HintLabel(QStringLiteral("lblTransmitHint"), form);
}

void TransmitPanel::makeSendControls(QWidget *form)
{
    m_period = named(new QDoubleSpinBox(form), QStringLiteral("sbPeriod"),
                     tr("Time from one frame to the next, 0.1 ms to one hour"));
    m_period->setRange(minPeriodMilliseconds, maxPeriodMilliseconds);
    m_period->setDecimals(1);
    m_period->setValue(usualPeriodMilliseconds);
    m_period->setSuffix(tr(" ms"));
    m_build = named(new QPushButton(tr("&Build..."), form), QStringLiteral("btnBuildMessage"),
                    tr("Compose the frame bit by bit, or from a CANopen service"));
    m_send = named(new QPushButton(tr("&Send once"), form), QStringLiteral("btnSend"), tr("Send the frame (Enter)"));
    m_sendCyclically = named(new QPushButton(tr("Send c&yclically"), form), QStringLiteral("btnSendCyclically"),
                             tr("Send the frame again and again. A running one of the same identifier takes over "
                                "these data and this cycle."));
}

QWidget *TransmitPanel::makeCyclicList()
{
    auto *list = new QWidget(this);
    m_cyclicView = named(new QTableView(list), QStringLiteral("tblCyclic"),
                         tr("Frames that are sent again and again. Enter or a double click takes one to the fields."));
    m_cyclicView->setAccessibleName(tr("Cyclic frames"));
    m_cyclicView->setModel(m_cyclic);
    m_cyclicView->setItemDelegate(new FrameDelegate(m_cyclicView));
    m_cyclicView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_cyclicView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_cyclicView->setAlternatingRowColors(true);
    m_cyclicView->setShowGrid(false);
    m_cyclicView->setTabKeyNavigation(false);
    m_cyclicView->setWordWrap(false);
    m_cyclicView->verticalHeader()->hide();
    // As small as its rows allow; what there is more belongs to the trace.
    m_cyclicView->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    m_cyclicView->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_cyclicView->horizontalHeader()->setStretchLastSection(true);
    m_cyclicView->horizontalHeader()->setHighlightSections(false);
    m_cyclicHint = named(new QLabel(tr("No cyclic frames. \"Send cyclically\" puts the frame on the left here."), list),
                         QStringLiteral("lblCyclicHint"), QString());
    m_cyclicHint->setWordWrap(true);
    m_cyclicHint->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_toggle = named(new QPushButton(tr("St&op"), list), QStringLiteral("btnToggleCyclic"),
                     tr("Stop or resume the selected frame"));
    m_remove = named(new QPushButton(tr("Re&move"), list), QStringLiteral("btnRemoveCyclic"),
                     tr("Stop the selected frame and take it off the list"));
    m_stopAll = named(new QPushButton(tr("Stop &all"), list), QStringLiteral("btnStopAllCyclic"),
                      tr("Stop all cyclic frames"));

    auto *buttons = new QVBoxLayout;
    for (QPushButton *button : {m_toggle, m_remove, m_stopAll})
        buttons->addWidget(button);
    buttons->addStretch();
    auto *table = new QVBoxLayout;
    table->addWidget(m_cyclicHint);
    table->addWidget(m_cyclicView, 1);
    auto *layout = new QHBoxLayout(list);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(table, 1);
    layout->addLayout(buttons);
    return list;
}

void TransmitPanel::orderTabs()
{
    QWidget *const order[] = {m_identifier,    m_extended, m_remote,         m_data,   m_fd,
                              m_bitRateSwitch, m_period,   m_sendCyclically, m_build,  m_send,
                              m_cyclicView,    m_toggle,   m_remove,         m_stopAll};
    for (std::size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);
}

void TransmitPanel::takeFont()
{
    const QFont fixed = FrameDelegate::fixedWidthFont(font());
    for (QLineEdit *edit : {m_identifier, m_data})
        edit->setFont(fixed);
    m_identifier->setMinimumWidth(QFontMetrics(fixed).horizontalAdvance(QStringLiteral("0x12345678901")));
    const int rowHeight = fontMetrics().height() + rowPadding;
    m_cyclicView->verticalHeader()->setMinimumSectionSize(rowHeight);
    m_cyclicView->verticalHeader()->setDefaultSectionSize(rowHeight);
    m_cyclicView->setMinimumHeight(m_cyclicView->horizontalHeader()->sizeHint().height()
                                   + visibleCyclicRows * rowHeight);
    m_cyclicView->setMinimumWidth(visibleCyclicCharacters * fontMetrics().averageCharWidth());
}

void TransmitPanel::connectControls()
{
    for (QLineEdit *edit : {m_identifier, m_data}) {
        connect(edit, &QLineEdit::textChanged, this, &TransmitPanel::validate);
        connect(edit, &QLineEdit::returnPressed, this, &TransmitPanel::sendOnce);
    }
    for (QCheckBox *box : {m_extended, m_remote, m_fd, m_bitRateSwitch})
        connect(box, &QCheckBox::toggled, this, &TransmitPanel::validate);
    connect(m_build, &QPushButton::clicked, this, &TransmitPanel::buildRequested);
    connect(m_send, &QPushButton::clicked, this, &TransmitPanel::sendOnce);
    connect(m_sendCyclically, &QPushButton::clicked, this, &TransmitPanel::sendCyclically);

    connect(m_toggle, &QPushButton::clicked, this, [this] {
        const int row = selectedRow();
        if (row >= 0)
            m_cyclic->setSending(row, !m_cyclic->isSending(row));
    });
    connect(m_remove, &QPushButton::clicked, this, [this] {
        if (selectedRow() >= 0)
            m_cyclic->remove(selectedRow());
    });
    connect(m_stopAll, &QPushButton::clicked, m_cyclic, &CyclicFrames::stopAll);
    connect(m_cyclic, &CyclicFrames::sendingChanged, this, &TransmitPanel::updateCyclicControls);
    connect(m_cyclicView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &TransmitPanel::updateCyclicControls);
    connect(m_cyclicView, &QTableView::activated, this, [this](const QModelIndex &index) { editRow(index.row()); });
}

FrameInput TransmitPanel::input() const
{
    FrameInput input;
    input.identifier = m_identifier->text();
    input.extended = m_extended->isChecked();
    input.fd = m_fd->isChecked();
    // What is disabled keeps its state for later and does not count now.
    input.bitRateSwitch = input.fd && m_bitRateSwitch->isChecked();
    input.remote = !input.fd && m_remote->isChecked();
    if (!input.remote)
        input.data = m_data->text();
    return input;
}

void TransmitPanel::validate()
{
    m_sentInARow = 0;
    m_remote->setEnabled(!m_fd->isChecked());
    m_bitRateSwitch->setEnabled(m_fd->isChecked());
    m_data->setEnabled(!input().remote);

    const FrameParse parse = parseFrame(input());
    const bool canSend = parse.isValid() && m_adapter;
    m_send->setEnabled(canSend);
    m_sendCyclically->setEnabled(canSend);
    if (!parse.isValid())
        m_hint->showError(parse.error);
    else if (!m_adapter)
        m_hint->showHint(tr("Connect first to send frames: press F5."));
    else
        m_hint->showHint(tr("Enter sends the frame through %1.").arg(interfaceName(*m_adapter)));
}

void TransmitPanel::updateCyclicControls()
{
    const int row = selectedRow();
    const bool anyRows = m_cyclic->rowCount() > 0;
    m_cyclicHint->setVisible(!anyRows);
    m_cyclicView->setVisible(anyRows);
    m_toggle->setEnabled(row >= 0);
    m_remove->setEnabled(row >= 0);
    m_stopAll->setEnabled(m_cyclic->sendingCount() > 0);
    m_toggle->setText(row >= 0 && !m_cyclic->isSending(row) ? tr("Res&ume") : tr("St&op"));
}

void TransmitPanel::setInput(const FrameInput &input)
{
    m_identifier->setText(input.identifier);
    m_extended->setChecked(input.extended);
    m_remote->setChecked(input.remote);
    m_fd->setChecked(input.fd);
    m_bitRateSwitch->setChecked(input.bitRateSwitch);
    m_data->setText(input.data);
}

void TransmitPanel::editRow(int row)
{
    setInput(inputFor(m_cyclic->message(row)));
    m_period->setValue(static_cast<double>(m_cyclic->periodMicroseconds(row)) / microsecondsPerMillisecond);
    m_identifier->setFocus();
}

int TransmitPanel::selectedRow() const
{
    const QModelIndexList selected = m_cyclicView->selectionModel()->selectedRows();
    return selected.isEmpty() ? -1 : selected.first().row();
}
