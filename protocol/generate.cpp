// Generates files from the command table. scripts/generate.sh runs it in two steps:
//
// - "ovik_generate requests" prints the examples' requests, in the order to send them.
// - "ovik_generate files FROM TO" reads lines "request -> response". It writes each product below
//   to the folder TO, from its file in the folder FROM.

#include "protocol/command_table.h"
#include "protocol/products.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace
{
namespace fs = std::filesystem;

const Product products[] = {
    {"docs/protocol.md", writeMarkdown},
    {"packaging/man/ovik_protocol.7.scd", writeManual},
};

/// Each request twice, as some read what others set (the second response counts); "quit" last.
void printRequests()
{
    for (int round = 0; round < 2; ++round) {
        for (const Command& command : commandTable) {
            if (command.effect != Effect::Ends)
                std::cout << exampleOf(command) << "\n";
        }
    }
    std::cout << exampleOf(commandTable[static_cast<size_t>(CommandId::quit)]) << "\n";
}

Examples readExamples()
{
    const std::string separator = " -> ";
    Examples examples;
    std::string line;
    while (std::getline(std::cin, line)) {
        const size_t end = line.find(separator);
        if (end == std::string::npos)
            throw std::runtime_error("no response: " + line);
        examples[line.substr(0, end)] = line.substr(end + separator.size());
    }
    return examples;
}

std::string contentsOf(const fs::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const fs::path& path, const std::string& text)
{
    fs::create_directories(path.parent_path());
    std::ofstream file(path);
    file << text;
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.string());
}

void makeFiles(const fs::path& from, const fs::path& to)
{
    const Examples examples = readExamples();
    for (const Product& product : products)
        write(to / product.path, product.write(contentsOf(from / product.path), examples));
}
} // namespace

std::string exampleOf(const Command& command)
{
    std::string request = command.word;
    for (const Argument& argument : command.arguments)
        request += std::string(";") + argument.example;
    return request;
}

std::string replaced(const std::string& document, const std::string& begin, const std::string& end,
                     const std::string& text)
{
    const size_t first = document.find(begin + "\n");
    const size_t last = document.find(end + "\n");
    if (first == std::string::npos || last == std::string::npos || last < first)
        throw std::runtime_error("no lines " + begin + " and " + end);
    return document.substr(0, first) + begin + "\n\n" + text + document.substr(last);
}

int main(int argc, char* argv[])
try {
    const std::string step = argc > 1 ? argv[1] : "";
    if (step == "requests" && argc == 2) {
        printRequests();
    } else if (step == "files" && argc == 4) {
        makeFiles(argv[2], argv[3]);
    } else {
        std::cerr << "usage: ovik_generate requests | files FROM TO\n";
        return 2;
    }
    return 0;
} catch (const std::exception& error) {
    std::cerr << "ovik_generate: " << error.what() << "\n";
    return 1;
}
