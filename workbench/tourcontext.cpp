#include "tourcontext.h"

#include "canopen.h"
#include "demonodeprofiles.h"
#include "frameprobe.h"
#include "mainwindow.h"
#include "replaypanel.h"
#include "transmitpanel.h"
#include "waiting.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

namespace {
constexpr int patience = 10'000; // ms; much longer than anything here takes on an idle machine
constexpr double largeFont = 2.0;

QPalette darkPalette()
{
    QPalette palette(QColor(0x3A, 0x3D, 0x41), QColor(0x2B, 0x2D, 0x30));
    const QColor text(0xE6, 0xE6, 0xE6);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, text);
    palette.setColor(QPalette::Base, QColor(0x1E, 0x1F, 0x22));
    palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x28, 0x2B));
    palette.setColor(QPalette::ToolTipBase, QColor(0x3A, 0x3D, 0x41));
    palette.setColor(QPalette::Highlight, QColor(0x2F, 0x65, 0xCA));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x82, 0x85));
    return palette;
}
} // namespace

TourContext::TourContext(MainWindow *window, const QString &directory)
    : m_window(window)
    , m_directory(directory)
{
}

TourContext::~TourContext() = default;

bool TourContext::stop(const QString &obstacle)
{
    m_obstacle = obstacle.isEmpty() ? tr("The interfaces did not connect.") : obstacle;
    return false;
}

AbstractCanAdapter *TourContext::interfaceAt(int row) const
{
    return m_window->session()->adapters()->adapterAt(static_cast<quint16>(row));
}

void TourContext::probeInterfaces()
{
    m_first = std::make_unique<FrameProbe>(interfaceAt(0));
    m_second = std::make_unique<FrameProbe>(interfaceAt(1));
}

bool TourContext::allNodesHeard() const
{
    const std::vector<DemoNodeProfile> &nodes = demoNodeProfiles();
    return std::all_of(nodes.cbegin(), nodes.cend(), [this](const DemoNodeProfile &node) {
        const quint32 identifier = CanOpen::cobHeartbeat + node.nodeId;
        return m_first->count(identifier) > 0 && m_second->count(identifier) > 0;
    });
}

bool TourContext::await(const std::function<bool()> &condition)
{
    return waitUntil(condition, patience);
}

QString TourContext::yesOrNo(bool yes)
{
    return yes ? tr("yes") : tr("no");
}

void TourContext::fillPanel(const QString &identifier, const QString &data) const
{
    m_window->transmitPanel()->findChild<QLineEdit *>(QStringLiteral("edtIdentifier"))->setText(identifier);
    m_window->transmitPanel()->findChild<QLineEdit *>(QStringLiteral("edtData"))->setText(data);
}

void TourContext::pressButton(const QString &objectName) const
{
    m_window->transmitPanel()->findChild<QPushButton *>(objectName)->click();
}

void TourContext::trigger(const QString &objectName) const
{
    m_window->findChild<QAction *>(objectName)->trigger();
}

void TourContext::replay(const QString &fileName) const
{
    trigger(QStringLiteral("actionReplay"));
    ReplayPanel *panel = m_window->replayPanel();
    panel->setFileName(fileName);
    panel->findChild<QComboBox *>(QStringLiteral("cbReplayInterface"))->setCurrentIndex(0);
    panel->findChild<QPushButton *>(QStringLiteral("btnReplayStart"))->click();
    await([panel] { return !panel->controller()->isRunning(); });
}

void TourContext::takePicture(const QString &name, const QString &subject)
{
    takePicture(m_window, name, subject);
}

void TourContext::takePicture(QWidget *widget, const QString &name, const QString &subject)
{
    constexpr int settleMilliseconds = 300; // the counters of the status bar show what the picture shows
    waitFor(settleMilliseconds);
    const QString path = QDir(m_directory).filePath(name + QLatin1String(".png"));
    const bool saved = widget->grab().save(path, "PNG");
    m_report.add(tr("Picture of %1").arg(subject), path, saved ? path : tr("not written"), saved);
}

void TourContext::takeOtherLooks(QWidget *widget, const QString &name, const QString &subject)
{
    const QPalette palette = QApplication::palette();
    QApplication::setPalette(darkPalette());
    takePicture(widget, name + QLatin1String("-dark"), tr("%1 on dark ground").arg(subject));
    QApplication::setPalette(palette);

    const QSize size = widget->size();
    const QFont font = QApplication::font();
    QFont large = font;
    large.setPointSizeF(large.pointSizeF() * largeFont);
    QApplication::setFont(large);
    takePicture(widget, name + QLatin1String("-large-font"), tr("%1 in a font of 200 %").arg(subject));
    QApplication::setFont(font);
    // Its smallest size is that of the large font until the layouts have heard of the change.
    QCoreApplication::processEvents();
    widget->resize(size);
}
