#pragma once

#include <fuzzer/FuzzedDataProvider.h>

/// Source of the platform library's answers; may be null.
extern FuzzedDataProvider* libraryInput;
