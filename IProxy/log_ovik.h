#pragma once

#include <QByteArray>

/**
 * The sink of the diagnostics that the application and the backends' start-up produce. The program
 * defines it; the library has a default that discards the text.
 */
extern "C" void logOVIKErrors(char* err);

inline void logOVIK(QByteArray text) { logOVIKErrors(text.data()); }
