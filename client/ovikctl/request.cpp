#include "client/ovikctl/request.h"

#include "client/ovikctl/failure.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <histedit.h>
#include <iostream>
#include <memory>

namespace
{
Failure usage(const std::string& text) { return {wrongUsage, text}; }

/// Throws unless the text is a number: the service reads any other text as 0.
void requireNumber(const std::string& name, const std::string& text)
{
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc::result_out_of_range)
        throw usage(name + ": " + text +
                    " does not fit: give a number from -2147483648 to "
                    "2147483647");
    if (error != std::errc() || stop != end)
        throw usage(name + ": \"" + text + "\" is not a whole number: give one, such as 1 or -1");
}

void requireNoSeparator(const std::string& name, const std::string& text)
{
    if (text.find(';') != std::string::npos)
        throw usage(name + ": the protocol separates its fields by \";\" and cannot carry one in "
                           "an argument: leave it out");
}
} // namespace

std::string formOf(const Command& command)
{
    std::string form = command.word;
    for (const Argument& argument : command.arguments)
        form += std::string(" ") + argument.name;
    return form;
}

std::string withoutSecrets(const Request& request)
{
    const std::string& text = request.text;
    size_t separator = text.find(';');
    for (size_t i = 0; separator != std::string::npos; ++i) {
        // An unknown word may be a mistyped command with a secret.
        const bool isSecret = !request.command || (i < request.command->arguments.size() &&
                                                   request.command->arguments[i].isSecret);
        if (isSecret)
            return text.substr(0, separator + 1) + "...";
        separator = text.find(';', separator + 1);
    }
    return text;
}

bool mayHaveSecret(const Request& request) { return withoutSecrets(request) != request.text; }

std::string commandWordOf(const std::string& request)
{
    return request.substr(0, request.find(';'));
}

Milliseconds Request::bound() const
{
    return command && command->shape == Shape::Outcome ? 70s : 30s;
}

Request rawRequest(const std::string& text)
{
    if (text.size() > OVIK_CLIENT_REQUEST_MAX)
        throw failureOf(OVIK_CLIENT_BAD_REQUEST, "");
    return {text, findCommand(commandWordOf(text))};
}

Request requestOf(const Command& command, const std::vector<std::string>& arguments)
{
    if (arguments.size() != static_cast<size_t>(command.argumentCount()))
        throw usage(std::string(command.word) + " takes " +
                    std::to_string(command.argumentCount()) + " argument(s), not " +
                    std::to_string(arguments.size()) + ": " + formOf(command));
    std::string text = command.word;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const Argument& argument = command.arguments[i];
        requireNoSeparator(argument.name, arguments[i]);
        if (argument.kind == ArgumentKind::Number)
            requireNumber(argument.name, arguments[i]);
        text += ';' + arguments[i];
    }
    return rawRequest(text);
}

bool isRaw(const std::string& line)
{
    return line.substr(0, line.find_first_of(" \t")).find(';') != std::string::npos;
}

std::vector<std::string> wordsOf(const std::string& line)
{
    const std::unique_ptr<Tokenizer, decltype(&tok_end)> tokenizer(tok_init(nullptr), tok_end);
    int count = 0;
    const char** words = nullptr;
    if (tok_str(tokenizer.get(), line.c_str(), &count, &words) != 0)
        throw usage("a quote or a backslash at the end is left open: close it");
    return {words, words + count};
}

Request requestOfLine(const std::string& line)
{
    if (isRaw(line))
        return rawRequest(line);
    std::vector<std::string> words = wordsOf(line);
    const std::string word = words.empty() ? "" : words.front();
    const Command* const command = findCommand(word);
    if (!command)
        throw usage("there is no command \"" + word + "\": ovikctl list tells the commands");
    words.erase(words.begin());
    return requestOf(*command, words);
}

void forEachLine(const std::string& name, const std::function<void(const std::string&)>& take)
{
    const auto cannotRead = [&] {
        return usage("cannot read " + name + " (" + strerror(errno) +
                     "): name a file of requests, or - for standard input");
    };
    std::ifstream file;
    if (name != "-") {
        file.open(name);
        if (!file)
            throw cannotRead();
    }
    std::istream& in = name == "-" ? std::cin : file;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        try {
            if (line.find('\0') != std::string::npos)
                throw usage("a NUL, which ends a request, is within the line: remove it");
            if (!line.empty())
                take(line);
        } catch (const Failure& failure) {
            if (failure.code != wrongUsage)
                throw;
            throw Failure(failure.code,
                          name + ":" + std::to_string(number) + ": " + failure.what());
        }
    }
    if (in.bad() || ferror(stdin))
        throw cannotRead();
}

std::vector<Request> requestsOfFile(const std::string& name)
{
    std::vector<Request> requests;
    try {
        forEachLine(name, [&](const std::string& line) {
            if (line.front() != '#')
                requests.push_back(requestOfLine(line));
        });
    } catch (const Failure& failure) {
        throw Failure(failure.code, failure.what() + std::string("; nothing was sent"));
    }
    return requests;
}
