#include "commandline.h"
#include "demosession.h"
#include "loadmeasurement.h"
#include "mainwindow.h"
#include "tour.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <cstdio>

namespace {
enum ExitCode { AllWell = 0, Failed = 1, WrongUsage = 2 };

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

QStringList argumentList(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

/// Qt's platform without a screen complains of every window's smallest size, which says nothing to anybody.
void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (!text.contains(QLatin1String("propagateSizeHints")))
        fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
}

void print(FILE *file, const QString &text)
{
    QTextStream(file) << text << '\n';
}

/// What desktops use, in place of the large one of the platform without a screen.
QFont pictureFont()
{
    QFont font = QApplication::font();
    font.setPointSizeF(10);
    return font;
}

void nameApplication()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Kestrune"));
    QCoreApplication::setApplicationName(QStringLiteral("Kestrune Workbench"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KESTRUNE_WORKBENCH_VERSION));
    // One settings file for each version; the next version finds it by the name without blanks.
    qApp->setProperty("AppNameWithVersion",
                      QStringLiteral("KestruneWorkbench %1").arg(QCoreApplication::applicationVersion()));
}

/// Tour and measurement: what they found out goes to standard output, what kept them from it to standard error.
template <typename Task>
int finish(Task &task)
{
    const bool passed = task.run();
    if (!task.obstacle().isEmpty())
        print(stderr, task.obstacle());
    QTextStream(stdout) << task.report().table();
    return passed ? AllWell : Failed;
}

int runWorkbench(const CommandLine &line)
{
    // A run without a screen is a check of the program: it neither needs nor touches what the user has set up.
    const QTemporaryDir ownSettings;
    if (line.headless) {
        for (const char *home : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"})
            qputenv(home, QFile::encodeName(ownSettings.path()));
    }
    MainWindow window;
    window.demo()->setPort(line.port);
    window.useSettings();
    window.show();
    QTimer::singleShot(0, &window, [&window, &line] {
        if (line.action == CommandLine::RunTour) {
            Tour tour(&window, line.outputDirectory);
            QCoreApplication::exit(finish(tour));
        } else if (line.action == CommandLine::MeasureLoad) {
            LoadMeasurement measurement(&window, line.framesPerSecond, line.seconds);
            const int result = finish(measurement);
            if (line.headless)
                QCoreApplication::exit(result);
        } else if (line.demo) {
            window.startDemo();
        }
    });
    return QApplication::exec();
}
} // namespace

int main(int argc, char *argv[])
{
    // Which platform Qt starts on has to be known before it starts; its own options are known only afterwards.
    const CommandLine forecast = parseCommandLine(argumentList(argc, argv), hasDisplay());
    if (forecast.headless || (!hasDisplay() && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    if (forecast.headless) {
        qInstallMessageHandler(handleMessage);
        QApplication::setStyle(QStringLiteral("Fusion"));
    }
    const QApplication application(argc, argv);
    nameApplication();
    if (forecast.headless)
        QApplication::setFont(pictureFont());

    const CommandLine line = parseCommandLine(QCoreApplication::arguments(), hasDisplay());
    switch (line.action) {
    case CommandLine::ShowHelp:
        print(stdout, line.text);
        return AllWell;
    case CommandLine::ShowVersion:
        print(stdout, QStringLiteral("Kestrune Workbench %1").arg(QCoreApplication::applicationVersion()));
        return AllWell;
    case CommandLine::UsageError:
        print(stderr, line.text);
        return WrongUsage;
    default:
        return runWorkbench(line);
    }
}
