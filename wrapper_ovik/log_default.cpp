#include "wrapper_ovik/ovik_c.h"

/// For programs that do not define their own; discards the diagnostics.
extern "C" __attribute__((weak)) void logOVIKErrors(char*) {}
