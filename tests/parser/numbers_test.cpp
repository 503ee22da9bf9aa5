// HxCSVNumbers against the conversions it stands in for: Qt's own toDouble,
// toFloat and toInt, and the C library's strtod, compared bit for bit.
//
// The generated run is 200000 spellings; set HX_NUMBER_SPELLINGS to run more
// (e.g. HX_NUMBER_SPELLINGS=5000000 build/bin/parser_tests
// --gtest_filter='Numbers.*').
#include <gtest/gtest.h>

#include <QString>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "HxCSVNumbers.h"
#include "NumberSpellings.h"

namespace {

template <class T>
uint64_t bitsOf(T value)
{
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof value);
    return bits;
}

std::string visible(const std::string& s)
{
    std::string out;
    for (unsigned char c : s) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", c);
        out += (c >= 32 && c < 127) ? std::string(1, static_cast<char>(c)) : std::string(hex);
    }
    return "\"" + out + "\"";
}

// Every difference between ours and the library's, as text; empty if none.
std::string differences(const std::string& s)
{
    std::string found;
    auto compare = [&](const char* what, uint64_t ours, bool oursOk, uint64_t theirs, bool theirsOk) {
        if (ours != theirs || oursOk != theirsOk)
            found += std::string(what) + " " + std::to_string(ours) + "/" + std::to_string(oursOk) + " vs "
                     + std::to_string(theirs) + "/" + std::to_string(theirsOk) + "; ";
    };
    const QString q = QString::fromLatin1(s.data(), static_cast<int>(s.size()));
    bool ok = false, qtOk = false;
    const double d = HxCSVNumbers::toDouble(s.data(), s.size(), ok);
    const double qd = q.toDouble(&qtOk);
    compare("toDouble", bitsOf(d), ok, bitsOf(qd), qtOk);
    const float f = HxCSVNumbers::toFloat(s.data(), s.size(), ok);
    const float qf = q.toFloat(&qtOk);
    compare("toFloat", bitsOf(f), ok, bitsOf(qf), qtOk);
    const int i = HxCSVNumbers::toInt(s.data(), s.size(), ok);
    const int qi = q.toInt(&qtOk, 10);
    compare("toInt", static_cast<uint32_t>(i), ok, static_cast<uint32_t>(qi), qtOk);

    // A short decimal is one that both always take.
    if (HxCSVNumbers::isShortDecimal(s.data(), s.size())) {
        q.toDouble(&qtOk);
        compare("shortDecimalToDouble", bitsOf(HxCSVNumbers::shortDecimalToDouble(s.data(), s.size())), true,
                bitsOf(qd), qtOk);
        const std::string padded = s + std::string(HxCSVNumbers::recordPadding, '7');
        compare("paddedShortDecimalToDouble",
                bitsOf(HxCSVNumbers::paddedShortDecimalToDouble(padded.data(), s.size())), true, bitsOf(qd), qtOk);
        q.toFloat(&qtOk);
        compare("shortDecimalToFloat", bitsOf(HxCSVNumbers::shortDecimalToFloat(s.data(), s.size())), true,
                bitsOf(qf), qtOk);
    }

    char* end = nullptr;
    char* cEnd = nullptr;
    const double sd = HxCSVNumbers::strtod(s.c_str(), &end);
    const double cd = std::strtod(s.c_str(), &cEnd);
    compare("strtod", bitsOf(sd), true, bitsOf(cd), true);
    compare("strtod end", static_cast<uint64_t>(end - s.c_str()), true, static_cast<uint64_t>(cEnd - s.c_str()), true);

    // The same on a field with no NUL after it, in memory that ends there.
    const std::unique_ptr<char[]> field(new char[s.size()]);
    std::memcpy(field.get(), s.data(), s.size());
    size_t used = 0;
    const double fd = HxCSVNumbers::strtod(field.get(), s.size(), &used);
    compare("strtod field", bitsOf(fd), true, bitsOf(cd), true);
    compare("strtod field end", used, true, static_cast<uint64_t>(cEnd - s.c_str()), true);
    return found;
}

void expectSameAsLibraries(const std::string& s)
{
    const std::string found = differences(s);
    EXPECT_TRUE(found.empty()) << visible(s) << ": " << found;
}

long long spellingCount()
{
    const char* n = std::getenv("HX_NUMBER_SPELLINGS");
    return n ? std::atoll(n) : 200000;
}

TEST(Numbers, MatchTheLibrariesOnTheRules)
{
    // White space, signs, words and their case, what is refused, the ends of
    // the ranges, and a tie that rounds differently twice than once.
    const char* cases[] = {
        "1", " 1 ", "\xa0" "5\x85", "\x1c" "5", "\v5\f", "+1", "-1", "+-1", "- 1", "1.", ".5", "-.5", ".", "",
        " ", "+", "-", "1e", "1e+", "1E5", "1e+05", "e5", ".e1", "1.e1", "1.2.3", "1e5.5", "1f", "1d5", "1_0",
        "1,000", "1 2", "0x10", "0X1p3", "007", "-0", "inf", "INF", "+Inf", "-inf", "nan", "NaN", "-nan", "+nan",
        "infinity", "nan(12)", "in", "1e-400", "-1e-400", "0e-400", "0.0e-999", "1e-40", "1e-46", "1e-310",
        "1e39", "-1e39", "3.4028235e38", "3.40282356e38", "1.7976931348623158e308", "1.7976931348623159e308",
        "2147483647", "2147483648", "-2147483648", "-2147483649", "9223372036854775808", "1e999999999999",
        "0.000000000000000000000000000000000000000000001", "2.00000011920928955078125",
        "1.00000005960464477539062500000000001",
        // Either side of the one-division shortcut: 2^53 and 2^53 + 1
        // digits, 19 and 20 bytes, and a tie that a second rounding breaks.
        "9007199254740992", "9007199254740993", "-900719925474099.3", "0.9007199254740993",
        "1234567890123456789", "12345678901234567890", "123456789012345678.", "0.000000000000000001",
        "0.30000000000000004", "16777217", "1.0000000596046448", "123456.12345678", "12345678.123456",
        "-99999999.999999", "0.00000001", "00000000.1", "123456789.5", "1.123456789", "+8.",
    };
    for (const char* s : cases)
        expectSameAsLibraries(s);
    // Two roundings: the double nearest to this text is a tie between two
    // floats and goes to the even one, while the float nearest to the text
    // is the other one.
    bool ok = false;
    const char* tie = "1.00000005960464477539062500000000001";
    EXPECT_EQ(HxCSVNumbers::toFloat(tie, std::strlen(tie), ok), 1.0f);

    // The common spellings of a file are known good without a conversion.
    for (const char* s : {"27.885360", "-0.5", "+7", "1.", ".5", "0000000000000000000000000000.001"})
        EXPECT_TRUE(HxCSVNumbers::isShortDecimal(s, std::strlen(s))) << s;
    for (const char* s : {"", "-", ".", "1e5", " 1", "1.2.3", "0x1", "00000000000000000000000000000.001"})
        EXPECT_FALSE(HxCSVNumbers::isShortDecimal(s, std::strlen(s))) << s;
}

TEST(Numbers, MatchTheLibrariesOnEveryByte)
{
    const std::string forms[] = {"#", "1#", "#1", "1#5", "1.5e#3", "-#2", "#inf", "nan#"};
    for (int b = 0; b < 256; ++b)
        for (std::string form : forms) {
            form[form.find('#')] = static_cast<char>(b);
            expectSameAsLibraries(form);
        }
}

TEST(Numbers, MatchTheLibrariesOnGeneratedSpellings)
{
    NumberSpellings spellings(0x5eed5eedULL);
    const long long n = spellingCount();
    long long failures = 0;
    for (long long i = 0; i < n; ++i) {
        const std::string s = spellings.next();
        const std::string found = differences(s);
        if (found.empty())
            continue;
        if (++failures <= 20)
            ADD_FAILURE() << visible(s) << ": " << found;
    }
    EXPECT_EQ(failures, 0) << "of " << n;
}

} // namespace
