// The client library's functions that need no connection: joining requests, reading answers, words.

#include "client/ovik_client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace
{
constexpr auto ok = OVIK_CLIENT_OK;
constexpr auto bad = OVIK_CLIENT_WRONG_SHAPE;

/// A success answer with its text in memory of the exact size, so that a sanitizer detects reads
/// beyond its end.
class Answer : public ovik_client_answer
{
public:
    explicit Answer(const std::string& value, status_t code = OVIK_OK)
        : m_text(value.c_str(), value.c_str() + value.size() + 1)
    {
        m_text.shrink_to_fit();
        status = code;
        text = m_text.data();
        length = value.size();
    }

private:
    std::vector<char> m_text;
};

// --- Numbers -------------------------------------------------------------------------------------

const std::string noNumbers[] = {"",
                                 " ",
                                 "-",
                                 "--1",
                                 "+1",
                                 " 1",
                                 "1 ",
                                 "1\n",
                                 "01",
                                 "00",
                                 "-0",
                                 "-01",
                                 "0x1",
                                 "1e3",
                                 "1.0",
                                 "1,2",
                                 "1;2",
                                 "1 2",
                                 "x",
                                 "1x",
                                 "\xff",
                                 "99999999999999999999",
                                 "nan",
                                 "-x",
                                 "0-",
                                 "18446744073709551616",
                                 "36893488147419103232",
                                 "-18446744073709551616",
                                 "-9223372036854775809"};

TEST(ClientAnswer, WhatIsNoNumberIsABadAnswerAndWritesNothing)
{
    for (const std::string& text : noNumbers) {
        const Answer answer(text);
        unsigned int number = 7;
        int signedNumber = 7;
        uint64_t size = 7;
        EXPECT_EQ(ovik_client_unsigned(&answer, &number), bad) << text;
        EXPECT_EQ(ovik_client_signed(&answer, &signedNumber), bad) << text;
        EXPECT_EQ(ovik_client_size(&answer, &size), bad) << text;
        EXPECT_TRUE(number == 7 && signedNumber == 7 && size == 7) << text;
    }
}

struct NumberRow {
    const char* text;
    ovik_client_error asUnsigned;
    ovik_client_error asSigned;
    uint64_t value; ///< a negative number as its 64 bits
};

const NumberRow numberRows[] = {
    {"0", ok, ok, 0},
    {"75", ok, ok, 75},
    {"-3", bad, ok, static_cast<uint64_t>(-3)},
    {"2147483647", ok, ok, INT_MAX},
    {"2147483648", ok, bad, 2147483648u},
    {"-2147483648", bad, ok, static_cast<uint64_t>(INT_MIN)},
    {"-2147483649", bad, bad, static_cast<uint64_t>(-2147483649)},
    {"4294967295", ok, bad, UINT_MAX},
    {"4294967296", bad, bad, 4294967296u},
    {"9223372036854775807", bad, bad, INT64_MAX},
    {"9223372036854775808", bad, bad, uint64_t(INT64_MAX) + 1},
    {"18446744073709551615", bad, bad, UINT64_MAX},
    {"-1", bad, ok, UINT64_MAX},
    {"-9223372036854775808", bad, bad, uint64_t(INT64_MAX) + 1},
};

TEST(ClientAnswer, ANumberIsReadWhenItFits)
{
    for (const NumberRow& row : numberRows) {
        const Answer answer(row.text);
        unsigned int number = 7;
        int signedNumber = 7;
        uint64_t size = 7;
        EXPECT_EQ(ovik_client_unsigned(&answer, &number), row.asUnsigned) << row.text;
        EXPECT_EQ(number, row.asUnsigned == ok ? row.value : 7) << row.text;
        EXPECT_EQ(ovik_client_signed(&answer, &signedNumber), row.asSigned) << row.text;
        EXPECT_EQ(signedNumber, row.asSigned == ok ? static_cast<int>(row.value) : 7) << row.text;
        EXPECT_EQ(ovik_client_size(&answer, &size), ok) << row.text;
        EXPECT_EQ(size, row.value) << row.text;
    }
}

// --- Texts, system information, bytes, outcomes --------------------------------------------------

TEST(ClientAnswer, ATextIsTheAnswersOwn)
{
    for (const std::string text : {"", "{\"a\": 1}", "0 0", "\xff;,"}) {
        const Answer answer(text);
        const char* got = nullptr;
        EXPECT_EQ(ovik_client_text(&answer, &got), ok);
        EXPECT_EQ(got, answer.text);
    }
}

struct InfoRow {
    const char* text;
    ovik_client_error error;
    std::string name = "";
    unsigned int code = 0;
    unsigned int manufacture = 0;
};

const InfoRow infoRows[] = {
    {"PANEL,17,513", ok, "PANEL", 17, 513},
    {",0,0", ok, "", 0, 0},
    {"A,B,1,2", ok, "A,B", 1, 2},
    {",,,255,65535", ok, ",,", 255, 65535},
    {"PANELS,1,2", bad},
    {"PANEL,256,2", bad},
    {"PANEL,1,65536", bad},
    {"PANEL,-1,2", bad},
    {"PANEL,1,-2", bad},
    {"PANEL,1,", bad},
    {"PANEL,,2", bad},
    {"PANEL,1", bad},
    {"PANEL", bad},
    {"", bad},
    {",", bad},
    {",,", bad},
    {"PANEL,1,2 ", bad},
    {"PANEL, 1,2", bad},
    {"PANEL,1x,2", bad},
};

TEST(ClientAnswer, SystemInformation)
{
    for (const InfoRow& row : infoRows) {
        const Answer answer(row.text);
        ovik_client_system_info info = {"old", 7, 7};
        EXPECT_EQ(ovik_client_system_information(&answer, &info), row.error) << row.text;
        if (row.error == ok) {
            EXPECT_EQ(info.moduleName, row.name);
            EXPECT_EQ(info.hwCode, row.code) << row.text;
            EXPECT_EQ(info.manufactureCode, row.manufacture) << row.text;
        } else {
            EXPECT_EQ(info.moduleName, std::string("old")) << row.text;
            EXPECT_EQ(info.hwCode + info.manufactureCode, 14u) << row.text;
        }
    }
}

using Bytes = std::vector<unsigned char>;

struct BytesRow {
    const char* text;
    ovik_client_error error;
    Bytes bytes = {};
};

const BytesRow bytesRows[] = {
    {"", ok, {}},
    {"00", ok, {0}},
    {"01,AB,FF", ok, {1, 0xAB, 0xFF}},
    {"9A,A9,0F", ok, {0x9A, 0xA9, 0x0F}},
    {"01,AB,00,10", bad}, // more than the buffer's size
    {"0", bad},
    {"ab", bad},
    {"0G", bad},
    {"G0", bad},
    {"-1", bad},
    {"01,", bad},
    {",01", bad},
    {"01AB", bad},
    {"01;AB", bad},
    {"01,AB,", bad},
    {"01,A", bad},
    {"01 AB", bad},
    {"001", bad},
    {",", bad},
};

TEST(ClientAnswer, Bytes)
{
    for (const BytesRow& row : bytesRows) {
        const Answer answer(row.text);
        Bytes bytes(3, 0x77);
        size_t count = 99;
        EXPECT_EQ(ovik_client_bytes(&answer, bytes.data(), bytes.size(), &count), row.error)
            << row.text;
        EXPECT_EQ(count, row.error == ok ? row.bytes.size() : 99) << row.text;
        Bytes expected = row.bytes;
        expected.resize(3, 0x77);
        EXPECT_EQ(bytes, expected) << row.text;
    }
}

TEST(ClientAnswer, NoBytesNeedNoRoom)
{
    const Answer answer("");
    size_t count = 99;
    EXPECT_EQ(ovik_client_bytes(&answer, nullptr, 0, &count), ok);
    EXPECT_EQ(count, 0u);
}

TEST(ClientAnswer, TheLongestAnswerOfBytesIsRead)
{
    std::string text = "00";
    for (int i = 1; i < 3332; ++i)
        text += ",5A";
    Bytes bytes(3332);
    size_t count = 0;
    EXPECT_EQ(ovik_client_bytes(&static_cast<const ovik_client_answer&>(Answer(text)), bytes.data(),
                                bytes.size(), &count),
              ok);
    EXPECT_EQ(count, 3332u);
    EXPECT_EQ(bytes.front(), 0);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0x5A), 3331);
}

struct OutcomeRow {
    const char* text;
    ovik_client_error error;
    int result = 7;
    std::string details = "old";
};

const OutcomeRow outcomeRows[] = {
    {"0", ok, 0, ""},
    {"-3", ok, -3, ""},
    {"0;wifi;scan;[]", ok, 0, "wifi;scan;[]"},
    {"-2147483648;a;b;{\"c\":\";\"}", ok, INT_MIN, "a;b;{\"c\":\";\"}"},
    {"0;;;", ok, 0, ";;"},
    {"0;wifi;scan", bad},
    {"0;wifi", bad},
    {"0;", bad},
    {"", bad},
    {";a;b;c", bad},
    {"0 ;a;b;c", bad},
    {"2147483648;a;b;c", bad},
};

TEST(ClientAnswer, ServiceOutcomes)
{
    for (const OutcomeRow& row : outcomeRows) {
        const Answer answer(row.text);
        ovik_client_outcome outcome = {7, "old"};
        EXPECT_EQ(ovik_client_service_outcome(&answer, &outcome), row.error) << row.text;
        EXPECT_EQ(outcome.result, row.result) << row.text;
        EXPECT_EQ(outcome.details, row.details) << row.text;
    }
}

TEST(ClientAnswer, AFailureIsRefusedWhateverItsText)
{
    for (const status_t status : {-1, -12, 1, INT_MAX, INT_MIN}) {
        for (const char* text : {"", "1", "A,1,1"}) {
            const Answer answer(text, status);
            unsigned int number = 7;
            int signedNumber = 7;
            uint64_t size = 7;
            const char* got = "old";
            ovik_client_system_info info = {"old", 7, 7};
            unsigned char byte = 7;
            size_t count = 7;
            ovik_client_outcome outcome = {7, "old"};
            EXPECT_EQ(ovik_client_unsigned(&answer, &number), OVIK_CLIENT_REFUSED);
            EXPECT_EQ(ovik_client_signed(&answer, &signedNumber), OVIK_CLIENT_REFUSED);
            EXPECT_EQ(ovik_client_size(&answer, &size), OVIK_CLIENT_REFUSED);
            EXPECT_EQ(ovik_client_text(&answer, &got), OVIK_CLIENT_REFUSED);
            EXPECT_EQ(ovik_client_system_information(&answer, &info), OVIK_CLIENT_REFUSED);
            EXPECT_EQ(ovik_client_bytes(&answer, &byte, 1, &count), OVIK_CLIENT_REFUSED);
            EXPECT_EQ(ovik_client_service_outcome(&answer, &outcome), OVIK_CLIENT_REFUSED);
            EXPECT_EQ(number + size + byte + count + info.hwCode, 35u);
            EXPECT_EQ(signedNumber + outcome.result, 14);
            EXPECT_EQ(got + std::string(outcome.details) + info.moduleName, "oldoldold");
        }
    }
}

// --- Joining -------------------------------------------------------------------------------------

struct JoinRow {
    std::vector<std::string> fields;
    size_t size;
    ovik_client_error error;
    std::string request = "";
};

constexpr auto badRequest = OVIK_CLIENT_BAD_REQUEST;
constexpr size_t most = OVIK_CLIENT_REQUEST_MAX;

const JoinRow joinRows[] = {
    {{"getBrightness"}, most + 1, ok, "getBrightness"},
    {{"setBuzzerMode", "1"}, most + 1, ok, "setBuzzerMode;1"},
    {{"a", "", "b", ""}, 100, ok, "a;;b;"},
    {{""}, 1, ok, ""},
    {{"", ""}, 2, ok, ";"},
    {{"a", "bc"}, 5, ok, "a;bc"},
    {{"a", "bc"}, 4, badRequest},
    {{"a", "bc"}, 2, badRequest},
    {{"a", "bc"}, 1, badRequest},
    {{"a", "bc"}, 0, badRequest},
    {{""}, 0, badRequest},
    {{}, 100, badRequest},
    {{"a;b"}, 100, badRequest},
    {{"a", "b", ";"}, 100, badRequest},
    {{"a", "b;", "c"}, 100, badRequest},
    {{std::string(most, 'x')}, most + 1, ok, std::string(most, 'x')},
    {{std::string(most - 2, 'x'), "y"}, most + 100, ok, std::string(most - 2, 'x') + ";y"},
    {{std::string(most + 1, 'x')}, most + 100, badRequest},
    {{std::string(most - 1, 'x'), "y"}, most + 100, badRequest},
};

TEST(ClientJoin, FieldsBecomeARequestOfAtMostTheLongestThatTheServiceTakes)
{
    for (const JoinRow& row : joinRows) {
        std::vector<const char*> fields;
        for (const std::string& field : row.fields)
            fields.push_back(field.c_str());
        std::vector<char> buffer(row.size, 'o'); // exact size, so that a sanitizer detects overruns
        EXPECT_EQ(ovik_client_join(fields.data(), fields.size(), buffer.data(), row.size),
                  row.error)
            << row.request;
        if (row.size > 0) {
            EXPECT_EQ(buffer.data(), row.request);
        }
    }
}

// --- Words ---------------------------------------------------------------------------------------

TEST(ClientWords, EveryErrorHasATextOfItsOwn)
{
    std::set<std::string> texts;
    for (int error = OVIK_CLIENT_OK; error <= OVIK_CLIENT_SYSTEM; ++error)
        texts.insert(ovik_client_error_text(static_cast<ovik_client_error>(error)));
    EXPECT_EQ(texts.size(), OVIK_CLIENT_SYSTEM + 1u);
    texts.insert(ovik_client_error_text(static_cast<ovik_client_error>(OVIK_CLIENT_SYSTEM + 1)));
    EXPECT_EQ(texts.size(), OVIK_CLIENT_SYSTEM + 2u);
    EXPECT_EQ(texts.count(""), 0u);
}

TEST(ClientWords, EveryStatusHasATextOfItsOwnAndEveryOtherNumberOne)
{
    std::set<std::string> texts;
    for (const status_t status : {0, -1, -2, -3, -4, -5, -6, -7, -8, -9, -10, -12})
        texts.insert(ovik_client_status_text(status));
    EXPECT_EQ(texts.size(), 12u);
    EXPECT_EQ(texts.count(""), 0u);
    for (const status_t status : {-11, -13, 1, INT_MAX, INT_MIN})
        EXPECT_STREQ(ovik_client_status_text(status), "no status of the service");
    EXPECT_STREQ(ovik_client_status_text(-12), "the point's mode is not 2, so it may not be set");
}
} // namespace
