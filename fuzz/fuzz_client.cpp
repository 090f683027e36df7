// Fuzzes the client library with a peer that answers from the input.
//
// All answers are queued before the requests are sent, so timing does not affect the results.

#include "client/ovik_client.h"
#include "fuzz/check.h"
#include "fuzz/draw.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace
{
// --- The peer ------------------------------------------------------------------------------------

/// Listens in a new directory for the lifetime of the program.
struct Listener {
    Listener()
    {
        const char* const place = getenv("TMPDIR");
        std::string directory = std::string(place ? place : "/tmp") + "/fuzz_client_XXXXXX";
        check(mkdtemp(directory.data()) != nullptr, "there is room for a socket");
        path = directory + "/socket";
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        fd = socket(AF_UNIX, SOCK_SEQPACKET, 0);
        check(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                  listen(fd, 1) == 0,
              "the peer listens");
    }
    ~Listener()
    {
        unlink(path.c_str());
        rmdir(path.substr(0, path.rfind('/')).c_str());
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::string path;
    int fd;
};

// --- The peer's messages -------------------------------------------------------------------------

std::string drawText(FuzzedDataProvider& input)
{
    switch (input.ConsumeIntegralInRange(0, 9)) {
    case 0:
        return std::to_string(input.ConsumeIntegral<int64_t>());
    case 1:
        return std::to_string(input.ConsumeIntegral<uint64_t>());
    case 2:
        return std::to_string(input.ConsumeIntegral<int>()) + ";wifi;scan;" +
               input.ConsumeRandomLengthString(20);
    case 3:
        return input.ConsumeBytesAsString(input.ConsumeIntegralInRange<size_t>(0, 7)) + ',' +
               std::to_string(input.ConsumeIntegralInRange(-1, 300)) + ',' +
               std::to_string(input.ConsumeIntegralInRange(-1, 70000));
    case 4: {
        std::string bytes = "0F";
        for (int more = input.ConsumeIntegralInRange(0, 10); more > 0; --more)
            bytes += "," + input.ConsumeBytesAsString(2);
        return bytes;
    }
    case 5:
        return drawBytes(input, 20000, true);
    case 6: { // limits, and what strtol() would accept as a number
        const char* const numbers[] = {"0",
                                       "-0",
                                       "00",
                                       "+1",
                                       "-",
                                       " 1",
                                       "1 ",
                                       "0x1",
                                       "2147483647",
                                       "2147483648",
                                       "-2147483648",
                                       "-2147483649",
                                       "4294967295",
                                       "4294967296",
                                       "18446744073709551615",
                                       "18446744073709551616",
                                       "-9223372036854775808",
                                       "-9223372036854775809",
                                       "99999999999999999999"};
        return input.PickValueInArray(numbers);
    }
    default:
        return input.ConsumeRandomLengthString(40);
    }
}

std::string drawMessage(FuzzedDataProvider& input)
{
    if (input.ConsumeIntegralInRange(0, 3) == 1)
        return input.ConsumeRandomLengthString(100);
    std::string message = input.ConsumeIntegralInRange(0, 7) == 1
                              ? drawText(input)
                              : std::to_string(drawStatus(input));
    if (input.ConsumeBool())
        message += ' ' + drawText(input);
    return input.ConsumeIntegralInRange(0, 15) == 1 ? message : message + '\0';
}

// --- The expected result, computed independently of the library ----------------------------------

/// The number, if @p text is its to_string() form.
template <class Number>
std::optional<Number> exactly(const std::string& text)
{
    Number number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return std::to_string(number) == text ? std::optional(number) : std::nullopt;
}

struct Expected {
    status_t status;
    std::string text;
};

std::optional<Expected> understood(const std::string& message)
{
    constexpr size_t most = 16384;
    if (message.size() > most || message.find('\0') != message.size() - 1)
        return std::nullopt;
    const std::string whole = message.substr(0, message.size() - 1);
    const size_t blank = whole.find(' ');
    const auto status = exactly<int>(whole.substr(0, blank));
    if (!status)
        return std::nullopt;
    return Expected{*status, blank == std::string::npos ? "" : whole.substr(blank + 1)};
}

/// @p valid selects the expected error; outputs may be written on OVIK_CLIENT_OK only.
void checkError(status_t status, ovik_client_error error, bool valid, bool untouched)
{
    const ovik_client_error good = valid ? OVIK_CLIENT_OK : OVIK_CLIENT_WRONG_SHAPE;
    check(error == (status == OVIK_OK ? good : OVIK_CLIENT_REFUSED),
          "an answer is of a shape, or of another, or a failure");
    check(error == OVIK_CLIENT_OK || untouched, "only a good answer is written");
}

void checkNumbers(const ovik_client_answer& answer, const std::string& text)
{
    unsigned int number = 7;
    auto error = ovik_client_unsigned(&answer, &number);
    const auto asUnsigned = exactly<unsigned int>(text);
    checkError(answer.status, error, asUnsigned.has_value(), number == 7);
    check(error != OVIK_CLIENT_OK || number == *asUnsigned, "an unsigned number");

    int signedNumber = 7;
    error = ovik_client_signed(&answer, &signedNumber);
    const auto asSigned = exactly<int>(text);
    checkError(answer.status, error, asSigned.has_value(), signedNumber == 7);
    check(error != OVIK_CLIENT_OK || signedNumber == *asSigned, "a signed number");

    uint64_t size = 7;
    error = ovik_client_size(&answer, &size);
    const auto positive = exactly<uint64_t>(text);
    const auto negative = exactly<int64_t>(text);
    checkError(answer.status, error, positive || negative, size == 7);
    check(error != OVIK_CLIENT_OK || size == (positive ? *positive : uint64_t(*negative)),
          "a size");
}

void checkInformation(const ovik_client_answer& answer, const std::string& text)
{
    ovik_client_system_info info = {"old", 7, 7};
    const auto error = ovik_client_system_information(&answer, &info);
    const size_t last = text.rfind(',');
    const size_t middle = last == 0 || last == text.npos ? text.npos : text.rfind(',', last - 1);
    bool valid = middle != text.npos && middle <= 5;
    if (valid) {
        const auto code = exactly<unsigned int>(text.substr(middle + 1, last - middle - 1));
        const auto manufacture = exactly<unsigned int>(text.substr(last + 1));
        valid = code && *code <= 255 && manufacture && *manufacture <= 65535;
    }
    checkError(answer.status, error, valid,
               info.moduleName == std::string("old") && info.hwCode == 7);
    check(error != OVIK_CLIENT_OK || text == info.moduleName + (',' + std::to_string(info.hwCode)) +
                                                 ',' + std::to_string(info.manufactureCode),
          "system information");
}

void checkBytes(const ovik_client_answer& answer, const std::string& text, size_t size)
{
    std::vector<unsigned char> bytes(size, 0x77); // exact size, so the sanitizer detects overruns
    size_t count = 99999;
    const auto error = ovik_client_bytes(&answer, bytes.data(), size, &count);
    // Print the bytes again with "%02X" for comparison.
    std::string again;
    for (size_t i = 0; i < text.size(); i += 3) {
        unsigned int byte = 0;
        std::from_chars(text.data() + i, text.data() + std::min(i + 2, text.size()), byte, 16);
        char printed[8];
        snprintf(printed, sizeof printed, i == 0 ? "%02X" : ",%02X", byte);
        again += printed;
    }
    const bool valid = again == text && (text.size() + 1) / 3 <= size;
    checkError(answer.status, error, valid,
               count == 99999 &&
                   bytes == std::vector<unsigned char>(size, static_cast<unsigned char>(0x77)));
    check(error != OVIK_CLIENT_OK || count == (text.size() + 1) / 3, "as many bytes");
    for (size_t i = 0; error == OVIK_CLIENT_OK && i < count; ++i) {
        char printed[8];
        snprintf(printed, sizeof printed, "%02X", bytes[i]);
        check(text.compare(3 * i, 2, printed) == 0, "each byte");
    }
}

void checkOutcome(const ovik_client_answer& answer, const std::string& text)
{
    ovik_client_outcome outcome = {7, "old"};
    const auto error = ovik_client_service_outcome(&answer, &outcome);
    const size_t separators = static_cast<size_t>(std::count(text.begin(), text.end(), ';'));
    const bool valid =
        exactly<int>(text.substr(0, text.find(';'))) && (separators == 0 || separators >= 3);
    checkError(answer.status, error, valid,
               outcome.result == 7 && outcome.details == std::string("old"));
    check(error != OVIK_CLIENT_OK || text == std::to_string(outcome.result) +
                                                 (separators > 0 ? ";" : "") + outcome.details,
          "an outcome");
}

void checkAnswer(const ovik_client_answer& got, const Expected& expected, size_t size)
{
    check(got.status == expected.status, "the status");
    check(got.length == expected.text.size() && got.text == expected.text, "the text");
    // Memory of the exact size, so the sanitizer detects overruns.
    const std::vector<char> text(got.text, got.text + got.length + 1);
    const ovik_client_answer answer = {got.status, text.data(), got.length};
    checkNumbers(answer, expected.text);
    checkInformation(answer, expected.text);
    checkBytes(answer, expected.text, size);
    checkOutcome(answer, expected.text);
    const char* all = nullptr;
    checkError(answer.status, ovik_client_text(&answer, &all), true, all == nullptr);
    check(strlen(ovik_client_status_text(got.status)) > 0, "every status has a text");
}

// --- A conversation ------------------------------------------------------------------------------

struct Conversation {
    std::vector<Expected> expected;
    size_t bytesRoom;
    size_t answered = 0;
};

void onAnswer(void* context, size_t index, const ovik_client_answer* answer)
{
    auto* const self = static_cast<Conversation*>(context);
    check(index == self->answered && index < self->expected.size(), "answers come in their order");
    checkAnswer(*answer, self->expected[index], self->bytesRoom);
    ++self->answered;
}

void checkJoin(FuzzedDataProvider& input)
{
    std::vector<std::string> fields;
    for (size_t more = input.ConsumeIntegralInRange<size_t>(0, 3); more > 0; --more)
        fields.push_back(input.ConsumeIntegralInRange(0, 7) == 1
                             ? drawBytes(input, 6000, false)
                             : input.ConsumeRandomLengthString(10));
    std::string joined;
    bool valid = !fields.empty();
    std::vector<const char*> texts;
    for (size_t i = 0; i < fields.size(); ++i) {
        texts.push_back(fields[i].c_str());
        valid = valid && !strchr(texts[i], ';');
        joined += (i > 0 ? ";" : "") + std::string(texts[i]);
    }
    std::vector<char> buffer(input.ConsumeIntegralInRange<size_t>(0, 6000));
    const auto error = ovik_client_join(texts.data(), texts.size(), buffer.data(), buffer.size());
    valid = valid && joined.size() < buffer.size() && joined.size() <= OVIK_CLIENT_REQUEST_MAX;
    check(error == (valid ? OVIK_CLIENT_OK : OVIK_CLIENT_BAD_REQUEST), "what can be joined is");
    check(buffer.empty() || buffer.data() == (valid ? joined : ""), "as it is sent, or nothing");
}

void converse(FuzzedDataProvider& input, const Listener& listener)
{
    ovik_client* client = nullptr;
    check(ovik_client_open(&client, listener.path.c_str(), 0) == OVIK_CLIENT_OK, "it connects");
    const int peer = accept(listener.fd, nullptr, nullptr);
    check(peer != -1, "it is connected");

    const size_t requests = input.ConsumeIntegralInRange<size_t>(1, 8);
    Conversation conversation = {{}, input.ConsumeIntegralInRange<size_t>(0, 12)};
    const bool closes = input.ConsumeBool();
    auto expected = OVIK_CLIENT_TIMED_OUT;
    for (size_t i = 0; i < requests && input.remaining_bytes() > 0; ++i) {
        const std::string message = drawMessage(input);
        // An empty message looks like the end of the connection.
        check(send(peer, message.data(), message.size(), MSG_DONTWAIT) != -1, "there is room");
        const auto answer = message.empty() ? std::nullopt : understood(message);
        if (!answer) {
            expected = message.empty() ? OVIK_CLIENT_CLOSED : OVIK_CLIENT_BAD_ANSWER;
            break;
        }
        conversation.expected.push_back(*answer);
    }
    if (closes)
        close(peer);
    const std::vector<const char*> texts(requests, "getIt");
    ovik_client_progress progress = {99, 99};
    const auto error =
        ovik_client_batch(client, texts.data(), requests, 0, onAnswer, &conversation, &progress);
    check(progress.answered == conversation.answered, "the progress is that of the answers");
    if (closes) {
        // No request can be sent, so there can be no answers.
        check(error == OVIK_CLIENT_CLOSED && progress.sent == 0, "nobody is there");
    } else {
        const bool all = conversation.expected.size() == requests;
        check(error == (all ? OVIK_CLIENT_OK : expected), "the error is that of the first answer "
                                                          "that is none");
        check(progress.answered == conversation.expected.size() && progress.sent == requests,
              "each answer up to that one is told");
        close(peer);
    }
    ovik_client_close(client);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const Listener listener;
    FuzzedDataProvider input(data, size);
    converse(input, listener);
    checkJoin(input);
    return 0;
}
