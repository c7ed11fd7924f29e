#pragma once

#include <QString>
#include <QStringList>

/// What the command line asks for.
struct CommandLine
{
    enum Action { ShowWindow, ShowHelp, ShowVersion, RunTour, MeasureLoad, UsageError };

    Action action = ShowWindow;
    bool demo = false;
    bool headless = false;   ///< without a screen
    QString port;            ///< of the demo bus; empty for the usual one
    QString outputDirectory; ///< for the tour's pictures
    int framesPerSecond = 0; ///< extra load on the demo bus
    int seconds = 0;         ///< how long it is measured
    QString text;            ///< help text, version or what is wrong
};

/// Pure.
/// @param arguments with the program's name in front
/// @param hasDisplay a window could be shown
CommandLine parseCommandLine(const QStringList &arguments, bool hasDisplay);
