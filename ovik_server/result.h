#pragma once

#include "wrapper_ovik/ovik_c.h"

#include <QByteArray>

#include <cstdlib>
#include <memory>

/// How a success is answered. A failure is answered with its status alone.
enum class Shape {
    Status,     ///< "0"
    Unsigned,   ///< "0 75"
    Signed,     ///< "0 -3"; a flag as 0 or 1
    Size,       ///< "0 12345678901"
    Text,       ///< "0 " and a text to the end of the message
    SystemInfo, ///< "0 name,12,513": module name, hardware code, manufacture code
    Bytes,      ///< "0 01,AB,00"
    Outcome,    ///< "0 -3", for a Wi-Fi scan "0 -3;service;command;result"
};

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
};
