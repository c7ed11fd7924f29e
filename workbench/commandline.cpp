#include "commandline.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace {
constexpr int maxPort = 65535;
constexpr int maxFramesPerSecond = 1'000'000;
constexpr int maxSeconds = 24 * 60 * 60;
constexpr int usualSeconds = 10;

/// Room for the sentences that stand for the user.
struct Usage
{
    Q_DECLARE_TR_FUNCTIONS(Usage)
};

struct Options
{
    QCommandLineOption demo{QStringLiteral("demo"),
                            Usage::tr("Connect two interfaces to a simulated bus with a CANopen network.")};
    QCommandLineOption port{QStringLiteral("port"), Usage::tr("Port of the simulated bus, 45674 unless given."),
                            QStringLiteral("number")};
    QCommandLineOption headless{
        QStringLiteral("headless"),
        Usage::tr("Without a screen: run the tour of the demo, print what it checked, and leave "
                  "pictures. Exit code 0 if all is well.")};
    QCommandLineOption out{QStringLiteral("out"),
                           Usage::tr("Where the tour leaves its pictures, demo-out unless given."),
                           QStringLiteral("directory")};
    QCommandLineOption load{QStringLiteral("load"),
                            Usage::tr("Measure: this many frames a second more on the simulated bus."),
                            QStringLiteral("frames")};
    QCommandLineOption seconds{QStringLiteral("seconds"), Usage::tr("How long to measure, 10 unless given."),
                               QStringLiteral("number")};

    QList<QCommandLineOption> all() const { return {demo, port, headless, out, load, seconds}; }
};

CommandLine failure(const QString &text)
{
    CommandLine line;
    line.action = CommandLine::UsageError;
    line.text = Usage::tr("%1\nTry --help.").arg(text);
    return line;
}

/// The number of an option within 1 to `largest`; 0 and a text in `error` for anything else.
int numberOf(const QCommandLineParser &parser, const QCommandLineOption &option, int largest, QString &error)
{
    bool isNumber = false;
    const int number = parser.value(option).toInt(&isNumber);
    if (isNumber && number >= 1 && number <= largest)
        return number;
    error = Usage::tr("--%1 takes a number from 1 to %2, not \"%3\".")
                .arg(option.names().constFirst())
                .arg(largest)
                .arg(parser.value(option));
    return 0;
}

/// What does not go together; empty if all does.
QString contradiction(const QCommandLineParser &parser, const Options &options)
{
    if (!parser.positionalArguments().isEmpty())
        return Usage::tr("\"%1\" is no option.").arg(parser.positionalArguments().constFirst());
    const bool demo = parser.isSet(options.demo) || parser.isSet(options.headless) || parser.isSet(options.load);
    for (const QCommandLineOption &needy : {options.port, options.out}) {
        if (parser.isSet(needy) && !demo)
            return Usage::tr("--%1 needs --demo.").arg(needy.names().constFirst());
    }
    if (parser.isSet(options.seconds) && !parser.isSet(options.load))
        return Usage::tr("--seconds needs --load.");
    if (parser.isSet(options.out) && parser.isSet(options.load))
        return Usage::tr("--load makes no pictures: leave out --out.");
    return {};
}
} // namespace

CommandLine parseCommandLine(const QStringList &arguments, bool hasDisplay)
{
    const Options options;
    QCommandLineParser parser;
    parser.setApplicationDescription(Usage::tr("See, send and record what is on a CAN bus."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions(options.all());

    CommandLine line;
    if (!parser.parse(arguments))
        return failure(parser.errorText());
    if (parser.isSet(help)) {
        line.action = CommandLine::ShowHelp;
        // Qt asks the application for its name.
        if (QCoreApplication::instance() != nullptr)
            line.text = parser.helpText();
        return line;
    }
    if (parser.isSet(version)) {
        line.action = CommandLine::ShowVersion;
        return line;
    }
    QString error = contradiction(parser, options);
    if (error.isEmpty() && parser.isSet(options.port))
        line.port = QString::number(numberOf(parser, options.port, maxPort, error));
    if (error.isEmpty() && parser.isSet(options.load))
        line.framesPerSecond = numberOf(parser, options.load, maxFramesPerSecond, error);
    if (error.isEmpty() && parser.isSet(options.seconds))
        line.seconds = numberOf(parser, options.seconds, maxSeconds, error);
    else if (line.framesPerSecond > 0)
        line.seconds = usualSeconds;
    if (!error.isEmpty())
        return failure(error);

    line.demo = parser.isSet(options.demo) || parser.isSet(options.headless) || line.framesPerSecond > 0;
    line.headless = parser.isSet(options.headless) || (line.demo && !hasDisplay);
    line.outputDirectory = parser.isSet(options.out) ? parser.value(options.out) : QStringLiteral("demo-out");
    if (line.framesPerSecond > 0)
        line.action = CommandLine::MeasureLoad;
    else if (line.headless)
        line.action = CommandLine::RunTour;
    else if (!hasDisplay)
        return failure(Usage::tr("There is no display to show a window on. --headless runs the demo without one."));
    return line;
}
