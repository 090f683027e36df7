#pragma once

#include <QSet>
#include <QStringList>

/// The values of the command line.
struct CommandLine {
    QSet<int> pluginSlots;
    int scanDelay = 0;
    QStringList missing;

    /// Empty when the command line is valid, else the error.
    QString error;
};

/// Reads the application's command line. With --help and --version, prints the text and exits.
CommandLine readCommandLine();
