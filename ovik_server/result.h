#pragma once

#include "wrapper_ovik/ovik_c.h"

#include <QByteArray>

#include <cstdlib>
#include <memory>

struct FreeDeleter {
    void operator()(void* memory) const { free(memory); }
};

/// What a call brought back; the command's shape says which of it counts.
struct Result {
    int value = 0;
    uint64_t size = 0;
    const char* text = "";
    unsigned char hwCode = 0;
    unsigned short manufactureCode = 0;
    std::unique_ptr<unsigned char, FreeDeleter> bytes;
    int byteCount = 0;
    QByteArray outcome;
    bool isLast = false; ///< no request is read after this one
};
