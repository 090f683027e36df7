#pragma once

#include <fuzzer/FuzzedDataProvider.h>

/// What the platform library's objects answer is drawn from this; null for none.
extern FuzzedDataProvider* libraryInput;
