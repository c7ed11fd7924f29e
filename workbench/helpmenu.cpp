#include "helpmenu.h"

#include "command.h"
#include "kestrune.h"

#include <QCoreApplication>
#include <QMap>
#include <QMessageBox>

HelpMenu::HelpMenu(QWidget *window)
    : QMenu(tr("&Help"), window)
    , m_window(window)
{
    QAction *keys = addCommand(this, QStringLiteral("actionKeys"), tr("&Keyboard"), QKeySequence(Qt::Key_F1),
                               tr("Show all keys"));
    connect(keys, &QAction::triggered, this, &HelpMenu::showKeys);
    QAction *about = addCommand(this, QStringLiteral("actionAbout"), tr("&About Kestrune Workbench"), {},
                                tr("Show the version"));
    about->setMenuRole(QAction::AboutRole);
    connect(about, &QAction::triggered, this, &HelpMenu::showAbout);
}

void HelpMenu::showAbout()
{
    QMessageBox::about(
        m_window, tr("About Kestrune Workbench"),
        tr("<h3>Kestrune Workbench %1</h3><p>See, send and record what is on a CAN bus.</p>"
           "<p>Built on libKestrune %2 and Qt %3.</p>")
            .arg(QCoreApplication::applicationVersion(), Kestrune::version, QString::fromLatin1(qVersion())));
}

void HelpMenu::showKeys()
{
    QMap<QString, QString> keys;
    const QList<QAction *> actions = m_window->findChildren<QAction *>();
    for (const QAction *action : actions) {
        if (!action->shortcut().isEmpty()) {
            keys.insert(action->shortcut().toString(QKeySequence::NativeText),
                        QString(action->text()).remove(QLatin1Char('&')));
        }
    }
    keys.insert(tr("End", "key"), tr("Go to the newest frame and follow"));
    keys.insert(tr("Enter", "key"), tr("In the transmit panel: send the frame"));
    QString rows;
    for (auto key = keys.cbegin(); key != keys.cend(); ++key) {
        rows += QStringLiteral("<tr><td><b>%1</b>&nbsp;&nbsp;</td><td>%2</td></tr>")
                    .arg(key.key().toHtmlEscaped(), key.value().toHtmlEscaped());
    }
    QMessageBox box(QMessageBox::NoIcon, tr("Keyboard"), QStringLiteral("<table>%1</table>").arg(rows),
                    QMessageBox::Close, m_window);
    box.exec();
}
