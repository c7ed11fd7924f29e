#include "settingsdatabase.h"

#include "helper.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QRegularExpression>

#include <array>
#include <optional>

namespace {
/// Major, minor and patch, which compare in that order.
using Version = std::array<quint8, 3>;

/// The first version number in a file name, if it has three parts at least. Each part is cut to 8 bits.
std::optional<Version> versionInName(const QString &fileName)
{
    static const QRegularExpression numbers(QStringLiteral("(\\d+(\\.\\d+)*)"));
    const QRegularExpressionMatch match = numbers.match(fileName);
    if (!match.hasMatch())
        return {};
    const QStringList parts = match.captured(1).split(QLatin1Char('.'));
    if (parts.size() < 3)
        return {};
    Version version = {};
    for (int i = 0; i < 3; ++i) {
        bool isNumber = false;
        version[i] = static_cast<quint8>(parts[i].toUShort(&isNumber));
        if (!isNumber)
            return {};
    }
    return version;
}

/// The newest settings among all files of the application in the folder. A development version, one with a fourth
/// byte, keeps to strictly older ones, so that it never starts from the settings of the release that it leads up to.
QString newestSettings(const QString &folder, const QString &applicationName, const std::array<quint8, 4> &running)
{
    const Version runningVersion = {running[0], running[1], running[2]};
    const bool takesNewer = running[3] == 0;
    QString choice;
    Version best = {};
    const QFileInfoList entries = QDir(folder).entryInfoList(QDir::NoFilter, QDir::Unsorted);
    for (const QFileInfo &entry : entries) {
        if (!entry.fileName().contains(applicationName))
            continue;
        const std::optional<Version> version = versionInName(entry.fileName());
        if (!version || *version <= best)
            continue;
        if (*version < runningVersion || takesNewer) {
            choice = entry.absoluteFilePath();
            best = *version;
        }
    }
    return choice;
}
} // namespace

QString SettingsDatabase::getOldSettingsFileBaseName()
{
    return settingsFolder() + QStringLiteral("/zrnsettings");
}

bool SettingsDatabase::oldDatabaseExists()
{
    return QFile::exists(getOldSettingsFileBaseName());
}

bool SettingsDatabase::copyOldVersionSettings()
{
    const QString applicationName = QCoreApplication::applicationName().remove(QLatin1Char(' '));
    const QString source = newestSettings(settingsFolder(), applicationName, Helper::getCurrentAppVersion());
    if (!QFile::exists(source))
        return false;
    const QString target = getSettingsFileBaseName();
    const bool copied = QFile::copy(source, target);
    if (!copied)
        qDebug() << Q_FUNC_INFO << "Failed to copy old version settings from" << source << target;
    return copied;
}
