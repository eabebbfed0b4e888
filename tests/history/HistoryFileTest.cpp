// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryFile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Samples = SampleList;

const Sample one{.t = 1731650000.25, .p = 80, .c = true, .a = true};
const Sample two{.t = 1731650060.5, .p = 81, .c = true, .a = true};
constexpr std::string_view oneText = R"({"t":1731650000.25,"p":80,"c":true,"a":true})";

std::optional<Samples> decode(std::string_view text) {
    return decodeHistory(std::string(text));
}

/// A list of one sample as it is written, with `from` replaced by `to`.
std::string with(std::string_view from, std::string_view to) {
    std::string text(oneText);
    return '[' + text.replace(text.find(from), from.size(), to) + ']';
}

TEST(HistoryFile, IsWrittenWithoutWhiteSpaceAndWithItsKeysInOrder) {
    EXPECT_EQ(encodeHistory({one, two}),
              R"([{"t":1731650000.25,"p":80,"c":true,"a":true},{"t":1731650060.5,"p":81,"c":true,"a":true}])");
    EXPECT_EQ(encodeHistory({{.t = 0, .p = -3, .c = false, .a = false}}), R"([{"t":0,"p":-3,"c":false,"a":false}])");
    EXPECT_EQ(encodeHistory({}), "[]");
}

TEST(HistoryFile, WritesTimesAsShortAsTheyReadBackTheSame) {
    struct Case {
        double t;
        const char* text;
    };
    for (const Case& each : std::vector<Case>{{1700000000, "1700000000"},
                                              {0.1, "0.1"},
                                              {1731650000.1234567, "1731650000.1234567"},
                                              {-62135769600, "-62135769600"},
                                              {1e300, "1e+300"},
                                              {5e-324, "5e-324"},
                                              {9007199254740991, "9007199254740991"}})
        EXPECT_EQ(encodeHistory({{.t = each.t}}),
                  std::string(R"([{"t":)") + each.text + R"(,"p":0,"c":false,"a":false}])");
}

TEST(HistoryFile, CannotSayATimeThatIsNotFinite) {
    EXPECT_EQ(encodeHistory({one, {.t = std::nan("")}}), std::nullopt);
    EXPECT_EQ(encodeHistory({{.t = std::numeric_limits<double>::infinity()}}), std::nullopt);
}

TEST(HistoryFile, ReadsBackWhatItWrote) {
    Samples samples;
    for (int i = 0; i < 1000; ++i)
        samples.push_back({.t = 1.7e9 + i * 60.0 + i / 7.0, .p = i - 500, .c = i % 3 == 0, .a = i % 2 == 0});
    EXPECT_EQ(decodeHistory(*encodeHistory(samples)), samples);
}

TEST(HistoryFile, ReadsTheSameFromAnyWayOfWritingIt) {
    for (const std::string& text : std::vector<std::string>{
             '[' + std::string(oneText) + ']', R"([{"a":true,"c":true,"p":80,"t":1731650000.25}])",
             " \t\r\n[ { \"t\" : 1731650000.25 ,\n\"p\" : 80 , \"c\" : true , \"a\" : true } ] \n", with("80", "80.0"),
             with("80", "8e1"), with("80", "800E-1"), with("1731650000.25", "173165000025e-2"),
             with("\"p\"", R"("\u0070")"), with("80,", R"(80,"note":"x",)"),
             with("80,", R"(80,"":null,"P":[1,[-2.5e3,{"t":[]}],"\u00e9\ud83d\ude00"],"x":{"a":false,"a":{}},)")})
        EXPECT_EQ(decode(text), Samples{one}) << text;
}

TEST(HistoryFile, ReadsWholeNumbersAsTimes) {
    EXPECT_EQ(decode(with("1731650000.25", "1731650000"))->front().t, 1731650000.0);
    EXPECT_EQ(decode(with("1731650000.25", "100000000000000000000"))->front().t, 1e20);
    EXPECT_EQ(decode(with("1731650000.25", "-1"))->front().t, -1.0);
}

TEST(HistoryFile, ReadsTimesOfManyDigits) {
    const std::string zeros(400, '0');
    EXPECT_EQ(decode(with("1731650000.25", "1731650000.25" + zeros))->front().t, 1731650000.25);
    EXPECT_EQ(decode(with("1731650000.25", "0." + zeros + '1'))->front().t, 0.0) << "nearer to it than a double can be";
    EXPECT_EQ(decode(with("1731650000.25", "-1." + zeros + "e-400"))->front().t, 0.0);
    EXPECT_EQ(decode(with("1731650000.25", '1' + zeros)), std::nullopt) << "larger than a double can be";
    EXPECT_EQ(decode(with("1731650000.25", "1." + zeros + "e400")), std::nullopt);
}

TEST(HistoryFile, ReadsPercentagesThatNobodyMeant) {
    EXPECT_EQ(decode(with("80", "-5"))->front().p, -5);
    EXPECT_EQ(decode(with("80", "-0.0"))->front().p, 0);
    EXPECT_EQ(decode(with("80", "9223372036854775807"))->front().p, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(decode(with("80", "-9223372036854775808"))->front().p, std::numeric_limits<std::int64_t>::min());
}

TEST(HistoryFile, TakesTheLastOfARepeatedKey) {
    EXPECT_EQ(decode(with("80,", "7,\"p\":80,")), Samples{one});
    EXPECT_EQ(decode(with("80,", "80.5,\"p\":80,")), Samples{one});
    EXPECT_EQ(decode(with("80,", "\"x\",\"p\":80,")), Samples{one});
    EXPECT_EQ(decode(with("80,", "80,\"p\":80.5,")), std::nullopt);
    for (const char* key : {"t", "p", "c", "a"})
        EXPECT_EQ(decode(with("true}", std::string("true,\"") + key + "\":null}")), std::nullopt) << key;
    EXPECT_EQ(decode(with("true}", "false,\"a\":true}")), Samples{one});
}

TEST(HistoryFile, ReadsAnEmptyList) {
    EXPECT_EQ(decode("[]"), Samples{});
    EXPECT_EQ(decode(" [ ] "), Samples{});
}

TEST(HistoryFile, DiscardsTheWholeListForOneBadElement) {
    const std::string good(oneText);
    for (const std::string& bad : std::vector<std::string>{
             "", "null", "1", "true", "\"x\"", "[]", "{}", R"({"p":80,"c":true,"a":true})",
             R"({"t":1731650000.25,"c":true,"a":true})", R"({"t":1731650000.25,"p":80,"a":true})",
             R"({"t":1731650000.25,"p":80,"c":true})", R"({"T":1731650000.25,"P":80,"C":true,"A":true})"}) {
        EXPECT_EQ(decode('[' + bad + ',' + good + ']'), std::nullopt) << bad;
        EXPECT_EQ(decode('[' + good + ',' + bad + ']'), std::nullopt) << bad;
    }
    for (const char* t : {"null",   "\"1\"", "true", "[1]", "{}", "NaN", "Infinity", "-Infinity", "nan", "1e400",
                          "-1e400", "01",    "+1",   "1.",  ".5", "1e",  "-",        "0x10",      "1_0", "1 2"})
        EXPECT_EQ(decode(with("1731650000.25", t)), std::nullopt) << t;
    for (const char* p : {"null", "\"80\"", "true", "80.5", "1e300", "9223372036854775808", "-9223372036854775809",
                          "[80]", "1e999", "8.0.0", "080", "-"})
        EXPECT_EQ(decode(with("80", p)), std::nullopt) << p;
    for (const char* c : {"1", "0", "null", "\"true\"", "True", "truex", "tru", "[]"})
        EXPECT_EQ(decode(with("true", c)), std::nullopt) << c;
}

TEST(HistoryFile, DiscardsWhatIsBrokenWhereNobodyLooks) {
    for (const char* value :
         {"nul",       "nulll", "tru",       "truE",     "1.2.3",      "-",     "[1,2",    "[1,]",
          "[,1]",      "[1 2]", "{\"x\"}",   "{\"x\":}", "{\"x\":1,}", "{x:1}", "\"\\x\"", "\"\\ud800\"",
          "\"\\u12\"", "[1}",   "{\"x\":1]", "'x'",      "01",         "1e999", "\"a\nb\""})
        EXPECT_EQ(decode(with("80,", std::string("80,\"x\":") + value + ',')), std::nullopt) << value;
}

TEST(HistoryFile, DiscardsWhatIsNoListOfObjects) {
    const std::string good = '[' + std::string(oneText) + ']';
    for (const std::string& text :
         std::vector<std::string>{"",
                                  " ",
                                  "{}",
                                  std::string(oneText),
                                  "null",
                                  "80",
                                  "\"[]\"",
                                  "[",
                                  "]",
                                  "[,]",
                                  good + "x",
                                  good + ']',
                                  good + good,
                                  good + ",",
                                  good + " {}",
                                  '[' + std::string(oneText) + ",]",
                                  '[' + std::string(oneText) + ' ' + std::string(oneText) + ']',
                                  "\xEF\xBB\xBF" + good,
                                  "\xFF\xFE" + good,
                                  good + std::string(1, '\0'),
                                  std::string(4096, '\0'),
                                  "// x\n" + good})
        EXPECT_EQ(decode(text), std::nullopt) << text;
}

TEST(HistoryFile, DiscardsTextThatIsNotUtf8) {
    for (const char* bytes : {"\x80", "\xC0\x80", "\xC3", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xFF"})
        EXPECT_EQ(decode(with("80,", std::string("80,\"x\":\"") + bytes + "\",")), std::nullopt);
    EXPECT_EQ(decode(with("80,", "80,\"x\":\"\xC3\xA9\",")), Samples{one});
}

TEST(HistoryFile, DiscardsAFileThatWasCutOffAnywhere) {
    const std::string whole = *encodeHistory({one, two});
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(decode(std::string_view(whole).substr(0, length)), std::nullopt) << length;
}

TEST(HistoryFile, SurvivesNestingThatWouldFillTheStack) {
    for (const char* bracket : {"[", "{\"x\":"}) {
        std::string nested;
        for (int i = 0; i < 1'000'000; ++i)
            nested += bracket;
        EXPECT_EQ(decode(nested), std::nullopt);
        EXPECT_EQ(decode(with("80,", "80,\"x\":" + nested)), std::nullopt);
    }
    EXPECT_EQ(decode(with("80,", "80,\"x\":" + std::string(100, '[') + std::string(100, ']') + ',')), Samples{one});
}

} // namespace
