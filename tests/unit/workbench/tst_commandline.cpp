#include "commandline.h"

#include <QTest>

namespace {
CommandLine parse(const QString &arguments, bool hasDisplay = true)
{
    return parseCommandLine(
        QStringLiteral("kestrune-workbench ").append(arguments).split(QLatin1Char(' '), Qt::SkipEmptyParts),
        hasDisplay);
}
} // namespace

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void actionFollowsTheOptions_data();
    void actionFollowsTheOptions();
    void valuesAreTaken();
    void valuesHaveDefaults();
    void wrongUsageIsNamed_data();
    void wrongUsageIsNamed();
    void helpNamesAllOptions();
};

void TestCommandLine::actionFollowsTheOptions_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<bool>("hasDisplay");
    QTest::addColumn<int>("action");
    QTest::addColumn<bool>("demo");
    QTest::addColumn<bool>("headless");
    QTest::newRow("nothing") << "" << true << int(CommandLine::ShowWindow) << false << false;
    QTest::newRow("demo") << "--demo" << true << int(CommandLine::ShowWindow) << true << false;
    QTest::newRow("demo without display") << "--demo" << false << int(CommandLine::RunTour) << true << true;
    QTest::newRow("headless on a display") << "--headless" << true << int(CommandLine::RunTour) << true << true;
    QTest::newRow("headless demo") << "--demo --headless" << true << int(CommandLine::RunTour) << true << true;
    QTest::newRow("load") << "--load 5" << true << int(CommandLine::MeasureLoad) << true << false;
    QTest::newRow("load, headless") << "--load 5 --headless" << true << int(CommandLine::MeasureLoad) << true << true;
    QTest::newRow("load without display") << "--load 5" << false << int(CommandLine::MeasureLoad) << true << true;
    QTest::newRow("help without display") << "--help" << false << int(CommandLine::ShowHelp) << false << false;
    QTest::newRow("version without display") << "--version" << false << int(CommandLine::ShowVersion) << false << false;
}

void TestCommandLine::actionFollowsTheOptions()
{
    QFETCH(QString, arguments);
    QFETCH(bool, hasDisplay);
    const CommandLine line = parse(arguments, hasDisplay);
    QTEST(int(line.action), "action");
    QTEST(line.demo, "demo");
    QTEST(line.headless, "headless");
}

void TestCommandLine::valuesAreTaken()
{
    const CommandLine tour = parse(QStringLiteral("--headless --port 65535 --out pictures"));
    QCOMPARE(tour.port, QStringLiteral("65535"));
    QCOMPARE(tour.outputDirectory, QStringLiteral("pictures"));
    const CommandLine load = parse(QStringLiteral("--load 30000 --seconds 60"));
    QCOMPARE(load.framesPerSecond, 30000);
    QCOMPARE(load.seconds, 60);
}

void TestCommandLine::valuesHaveDefaults()
{
    const CommandLine line = parse(QStringLiteral("--headless --load 1"));
    QCOMPARE(line.port, QString());
    QCOMPARE(line.outputDirectory, QStringLiteral("demo-out"));
    QCOMPARE(line.seconds, 10);
}

void TestCommandLine::wrongUsageIsNamed_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<bool>("hasDisplay");
    QTest::addColumn<QString>("text");
    QTest::newRow("unknown option") << "--nonsense" << true << "Unknown option 'nonsense'.";
    QTest::newRow("stray word") << "demo" << true << "\"demo\" is no option.";
    QTest::newRow("port too small") << "--demo --port 0" << true << "--port takes a number from 1 to 65535, not \"0\".";
    QTest::newRow("port too large") << "--demo --port 65536" << true
                                    << "--port takes a number from 1 to 65535, not \"65536\".";
    QTest::newRow("port no number") << "--demo --port 80a" << true
                                    << "--port takes a number from 1 to 65535, not \"80a\".";
    QTest::newRow("port alone") << "--port 5" << true << "--port needs --demo.";
    QTest::newRow("port without value") << "--demo --port" << true << "Missing value after '--port'.";
    QTest::newRow("out alone") << "--out x" << true << "--out needs --demo.";
    QTest::newRow("seconds alone") << "--demo --seconds 5" << true << "--seconds needs --load.";
    QTest::newRow("no load") << "--load 0" << true << "--load takes a number from 1 to 1000000, not \"0\".";
    QTest::newRow("no seconds") << "--load 1 --seconds -1" << true
                                << "--seconds takes a number from 1 to 86400, not \"-1\".";
    QTest::newRow("pictures of a measurement")
        << "--load 1 --out x" << true << "--load makes no pictures: leave out --out.";
    QTest::newRow("no display") << "" << false
                                << "There is no display to show a window on. --headless runs the demo without one.";
}

void TestCommandLine::wrongUsageIsNamed()
{
    QFETCH(QString, arguments);
    QFETCH(bool, hasDisplay);
    QFETCH(QString, text);
    const CommandLine line = parse(arguments, hasDisplay);
    QCOMPARE(line.action, CommandLine::UsageError);
    QCOMPARE(line.text, text + QStringLiteral("\nTry --help."));
}

void TestCommandLine::helpNamesAllOptions()
{
    const QString help = parse(QStringLiteral("--help")).text;
    for (const char *option : {"--demo", "--port", "--headless", "--out", "--load", "--seconds", "--version"})
        QVERIFY2(help.contains(QLatin1String(option)), option);
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
