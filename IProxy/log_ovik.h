#pragma once

#include <QByteArray>

/**
 * Receives the diagnostics of the application and of the backends' start-up. A program may define
 * this function; the library's default discards the text.
 */
extern "C" void logOVIKErrors(char* err);

inline void logOVIK(QByteArray text) { logOVIKErrors(text.data()); }
