#include "appearance.h"

#include "guihelper.h"

#include <QSettings>
#include <QTemporaryDir>

namespace {
QString group()
{
    return QStringLiteral("Window");
}

/// Stands between the helper, which knows QSettings, and the one file that holds all settings of the workbench.
class PassingSettings
{
public:
    QSettings *settings() { return &m_settings; }

private:
    QTemporaryDir m_directory;
    QSettings m_settings{m_directory.filePath(QStringLiteral("window.ini")), QSettings::IniFormat};
};
} // namespace

QVariantMap appearanceOf(QWidget *window)
{
    PassingSettings passing;
    GuiHelper::saveSettings(window, group(), QString(), passing.settings());
    QVariantMap appearance;
    const QStringList keys = passing.settings()->allKeys();
    for (const QString &key : keys)
        appearance.insert(key, passing.settings()->value(key));
    return appearance;
}

void restoreAppearance(QWidget *window, const QVariantMap &appearance)
{
    PassingSettings passing;
    for (auto entry = appearance.cbegin(); entry != appearance.cend(); ++entry)
        passing.settings()->setValue(entry.key(), entry.value());
    GuiHelper::restoreSettings(window, group(), QString(), passing.settings());
}
