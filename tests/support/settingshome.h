#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

/// A data folder of its own for the application's settings, while it lives; the application is called "Falcon" in it.
class SettingsHome
{
public:
    SettingsHome()
        : m_previous(qgetenv("XDG_DATA_HOME"))
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.path()));
        QCoreApplication::setApplicationName(QStringLiteral("Falcon"));
        QCoreApplication::setApplicationVersion(QStringLiteral("2.4.1"));
        QCoreApplication::instance()->setProperty(nameProperty, QStringLiteral("Falcon 2.4.1"));
    }

    ~SettingsHome()
    {
        QCoreApplication::instance()->setProperty(nameProperty, QVariant());
        if (m_previous.isNull())
            qunsetenv("XDG_DATA_HOME");
        else
            qputenv("XDG_DATA_HOME", m_previous);
    }

    static constexpr const char *nameProperty = "AppNameWithVersion";

    /// Where the settings file and its working copies lie; exists once a store was opened.
    QString folder() const { return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation); }
    QString path(const QString &fileName) const { return folder() + QLatin1Char('/') + fileName; }
    QString standardFile() const { return path(QStringLiteral("Falcon 2.4.1")); }
    QStringList workingCopies() const
    {
        return QDir(folder()).entryList({QStringLiteral("tempsettings_*")}, QDir::Files, QDir::Name);
    }
    void makeFolder() const { QDir().mkpath(folder()); }

private:
    Q_DISABLE_COPY(SettingsHome)
    QTemporaryDir m_home;
    QByteArray m_previous;
};
