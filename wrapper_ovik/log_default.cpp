#include "wrapper_ovik/ovik_c.h"

/// A program that does not care about diagnostics need not define its own.
extern "C" __attribute__((weak)) void logOVIKErrors(char*) {}
