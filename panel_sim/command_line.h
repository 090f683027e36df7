#pragma once

#include <QSet>
#include <QStringList>

/// What the command line asks for.
struct CommandLine {
    QSet<int> pluginSlots;
    int scanDelay = 0;
    QStringList missing;

    /// Empty when the command line was understood, else what is wrong with it.
    QString error;
};

/// Reads the command line of the application; answers --help and --version itself, without return.
CommandLine readCommandLine();
