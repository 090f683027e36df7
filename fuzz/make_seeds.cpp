// make_seeds DIRECTORY: writes the fuzzers' seeds and dictionary, made from the command table, to
// DIRECTORY/seeds/ and DIRECTORY/requests.dict.

#include "protocol/command_table.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{
namespace fs = std::filesystem;

const char* const numbers[] = {
    "0",     "1",     "2",          "3",          "255", "256", "-1",          "3332",      "3333",
    "65535", "65536", "2147483647", "2147483648", "1e3", " 7",  "-2147483648", "4294967295"};
const char* const texts[] = {"wifi", "scan", "{\"a\": \"\xC3\xA9\"}", "", "%s%n", "\xFF\xC3"};

std::string argument(const Argument& argument, size_t choice)
{
    return argument.kind == ArgumentKind::Number ? numbers[choice % std::size(numbers)]
                                                 : texts[choice % std::size(texts)];
}

/// A request with @p extra more fields than the row has; takes consecutive values of the lists.
std::string request(const Command& row, size_t choice, int extra = 0)
{
    std::string text = row.word;
    for (int i = 0; i < row.argumentCount() + extra; ++i) {
        const auto& which = row.arguments[static_cast<size_t>(std::min(i, 3))];
        text += ';' + argument(which, choice + static_cast<size_t>(i));
    }
    return text;
}

/// Encodes @p text for ConsumeRandomLengthString().
std::string message(const std::string& text)
{
    std::string bytes;
    for (const char byte : text + '\0')
        bytes += byte == '\\' ? std::string("\\\\") : std::string(1, byte);
    return bytes + "\\.";
}

/// The rest of a seed: data for the answers.
const std::vector<std::string>& drawn()
{
    static const std::vector<std::string> tails = {
        "", std::string(64, '\1'), std::string(64, '\x5A'), std::string(64, '\xFF')};
    return tails;
}

void write(const fs::path& file, const std::string& text)
{
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    if (!stream.flush())
        throw std::runtime_error("cannot write " + file.string());
}

void writeSeeds(const fs::path& directory)
{
    fs::create_directories(directory);
    for (const Command& row : commandTable) {
        const std::string name = row.word;
        for (size_t i = 0; i < drawn().size(); ++i)
            write(directory / (name + std::to_string(i)), message(request(row, i)) + drawn()[i]);
        write(directory / (name + "-few"), message(request(row, 0, -1)));
        write(directory / (name + "-many"), message(request(row, 0, 1)));
        // A long request, then a short one without NUL: the rest of the buffer completes it.
        write(directory / (name + "-rest"),
              message(request(row, 1) + std::string(40, ';')) + std::string(row.word, 3) + "\\.");
    }
    for (size_t i = 0; i < std::size(numbers); ++i) {
        std::string all;
        for (const Command& row : commandTable) {
            if (row.argumentCount() > 0)
                all += message(request(row, i));
        }
        write(directory / ("all" + std::to_string(i)), all);
    }
    for (const unsigned length : {4998u, 4999u, 5000u, 5001u})
        write(directory / ("long" + std::to_string(length)),
              message("setSystemParameter;a;" + std::string(length, 'b')));
}

std::string entry(const std::string& text)
{
    std::string quoted;
    for (const char byte : text) {
        char escaped[8];
        snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned char>(byte));
        quoted += isalnum(static_cast<unsigned char>(byte)) ? std::string(1, byte) : escaped;
    }
    return '"' + quoted + "\"\n";
}

void writeDictionary(const fs::path& file)
{
    std::string entries = entry(";") + entry(std::string("\0\\.", 3)) + entry("\xEF\xBB\xBF");
    for (const Command& row : commandTable) {
        entries += entry(row.word);
        if (row.argumentCount() > 0)
            entries += entry(request(row, 0));
    }
    for (const char* const number : numbers)
        entries += entry(std::string(";") + number);
    for (const char* const text : texts)
        entries += entry(std::string(";") + text);
    write(file, entries);
}
} // namespace

int main(int argc, char* argv[])
{
    if (argc != 2) {
        fputs("usage: make_seeds DIRECTORY\n", stderr);
        return 2;
    }
    const fs::path directory = argv[1];
    writeSeeds(directory / "seeds");
    writeDictionary(directory / "requests.dict");
    return 0;
}
