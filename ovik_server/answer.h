#pragma once

#include "wrapper_ovik/ovik_c.h"

#include <QByteArray>

#include <cstdlib>
#include <memory>

/// The values of answers, one type for each shape of the table.
namespace answer
{
struct Status {
};

struct Number {
    int value = 0;
};
struct Unsigned : Number {
};
struct Signed : Number {
};

struct Size {
    uint64_t value = 0;
};

struct Text {
    int size = 0; ///< of the text's buffer
    const char* value = "";
};

struct SystemInfo {
    const char* moduleName = "";
    unsigned char hwCode = 0;
    unsigned short manufactureCode = 0;
};

struct FreeDeleter {
    void operator()(void* memory) const { free(memory); }
};

struct Bytes {
    std::unique_ptr<unsigned char, FreeDeleter> value;
    int count = 0;
};

struct Outcome {
    int result = 0;
    QByteArray details; ///< ";service;command;result" of a scan
};
} // namespace answer

/// The text of a response with its NUL. Longer texts are cut.
using Response = char[10000];

void writeFailure(Response& resp, status_t status);

// The response to a success.
void write(Response& resp, const answer::Status& status);
void write(Response& resp, const answer::Unsigned& number);
void write(Response& resp, const answer::Signed& number);
void write(Response& resp, const answer::Size& size);
void write(Response& resp, const answer::Text& text);
void write(Response& resp, const answer::SystemInfo& info);
void write(Response& resp, const answer::Bytes& bytes);
void write(Response& resp, const answer::Outcome& outcome);
