// HxCSVNumbers against the conversions it stands in for: Qt's toDouble,
// toFloat and toInt, and the C library's strtod, bit for bit. CI tries
// 200000 generated spellings; HX_NUMBER_SPELLINGS=5000000
// build/bin/parser_tests --gtest_filter='Numbers.*' tries more.
#include <gtest/gtest.h>

#include <QString>
#include <memory>
#include <vector>

#include "Differential.h"
#include "HxCSVNumbers.h"

namespace {

// Every way ours differs from the libraries on s; empty if none.
std::string differences(const std::string& s)
{
    std::string found;
    const auto compare = [&](const char* what, auto ours, bool oursOk, auto theirs, bool theirsOk) {
        uint64_t a = 0, b = 0; // bit for bit
        std::memcpy(&a, &ours, sizeof ours);
        std::memcpy(&b, &theirs, sizeof theirs);
        if (a != b || oursOk != theirsOk)
            found += std::string(what) + " " + std::to_string(a) + "/" + std::to_string(oursOk) + " vs "
                     + std::to_string(b) + "/" + std::to_string(theirsOk) + "; ";
    };
    const QString q = QString::fromLatin1(s.data(), static_cast<int>(s.size()));
    bool ok[6] = {};
    const double d = HxCSVNumbers::toDouble(s.data(), s.size(), ok[0]), qd = q.toDouble(&ok[1]);
    const float f = HxCSVNumbers::toFloat(s.data(), s.size(), ok[2]), qf = q.toFloat(&ok[3]);
    const int i = HxCSVNumbers::toInt(s.data(), s.size(), ok[4]), qi = q.toInt(&ok[5], 10);
    compare("toDouble", d, ok[0], qd, ok[1]);
    compare("toFloat", f, ok[2], qf, ok[3]);
    compare("toInt", i, ok[4], qi, ok[5]);
    // A short decimal is one that Qt always takes.
    if (HxCSVNumbers::isShortDecimal(s.data(), s.size())) {
        const std::string padded = s + std::string(HxCSVNumbers::recordPadding, '7');
        compare("shortDecimalToDouble", HxCSVNumbers::shortDecimalToDouble(s.data(), s.size()), true, qd, ok[1]);
        compare("paddedShortDecimalToDouble", HxCSVNumbers::paddedShortDecimalToDouble(padded.data(), s.size()), true,
                qd, ok[1]);
        compare("shortDecimalToFloat", HxCSVNumbers::shortDecimalToFloat(s.data(), s.size()), true, qf, ok[3]);
    }
    char* end = nullptr;
    char* cEnd = nullptr;
    const double cd = std::strtod(s.c_str(), &cEnd);
    compare("strtod", HxCSVNumbers::strtod(s.c_str(), &end), true, cd, true);
    compare("strtod end", end - s.c_str(), true, cEnd - s.c_str(), true);
    // A field with no NUL after it, in memory that ends there.
    const std::unique_ptr<char[]> field(new char[s.size()]);
    std::memcpy(field.get(), s.data(), s.size());
    size_t used = 0;
    const double fd = HxCSVNumbers::strtod(field.get(), s.size(), &used);
    compare("strtod field", fd, true, cd, true);
    compare("strtod field end", used, true, size_t(cEnd - s.c_str()), true);
    return found;
}

TEST(Numbers, MatchTheLibrariesOnTheRules)
{
    const struct {
        const char* guards; // against
        std::vector<std::string> spellings;
    } rows[] = {
        {"white space: Qt's (Latin-1 too), C's, none", {" 1 ", "\xa0" "5\x85", "\x1c" "5", "\v5\f", "1 2", "- 1"}},
        {"signs taken once", {"+1", "-1", "+-1", "-0", "+8.", "-.5"}},
        {"points and digits that make no number", {"1.", ".5", ".", "", " ", "+", "-", "1.2.3", "1,000", "1_0", "007"}},
        {"exponents cut short or misplaced", {"1e", "1e+", "1E5", "1e+05", "e5", ".e1", "1.e1", "1e5.5", "1f", "1d5"}},
        {"hex and words Qt refuses or takes",
         {"0x10", "0X1p3", "inf", "INF", "+Inf", "-inf", "nan", "NaN", "-nan", "+nan", "infinity", "nan(12)", "in"}},
        {"underflow to zero fails",
         {"1e-400", "-1e-400", "0e-400", "0.0e-999", "1e-40", "1e-46", "1e-310",
          "0.000000000000000000000000000000000000000000001"}},
        {"overflow gives inf and fails",
         {"1e39", "-1e39", "3.4028235e38", "3.40282356e38", "1.7976931348623158e308", "1.7976931348623159e308",
          "1e999999999999"}},
        {"int range ends", {"2147483647", "2147483648", "-2147483648", "-2147483649", "9223372036854775808"}},
        {"float narrowing rounds the rounded double",
         {"2.00000011920928955078125", "1.00000005960464477539062500000000001", "16777217", "1.0000000596046448"}},
        {"one-division shortcut: 2^53 and past it, 19 and 20 bytes",
         {"9007199254740992", "9007199254740993", "-900719925474099.3", "0.9007199254740993", "1234567890123456789",
          "12345678901234567890", "123456789012345678.", "0.000000000000000001", "0.30000000000000004"}},
        {"eight digits a part, and one more",
         {"123456.12345678", "12345678.123456", "-99999999.999999", "0.00000001", "00000000.1", "123456789.5",
          "1.123456789"}},
    };
    for (const auto& row : rows)
        for (const std::string& s : row.spellings) {
            SCOPED_TRACE(row.guards);
            EXPECT_EQ(differences(s), "") << visible(s);
        }
    // What is known good without converting, and what is not.
    for (const char* s : {"27.885360", "-0.5", "+7", "1.", ".5", "0000000000000000000000000000.001"})
        EXPECT_TRUE(HxCSVNumbers::isShortDecimal(s, std::strlen(s))) << s;
    for (const char* s : {"", "-", ".", "1e5", " 1", "1.2.3", "0x1", "00000000000000000000000000000.001"})
        EXPECT_FALSE(HxCSVNumbers::isShortDecimal(s, std::strlen(s))) << s;
}

TEST(Numbers, MatchTheLibrariesOnEveryByteAndOnGeneratedSpellings)
{
    for (int b = 0; b < 256; ++b)
        for (std::string form : {"#", "1#", "#1", "1#5", "1.5e#3", "-#2", "#inf", "nan#"}) {
            form[form.find('#')] = static_cast<char>(b);
            EXPECT_EQ(differences(form), "") << visible(form);
        }
    FileMaker spellings(0x5eed5eedULL);
    long long failures = 0;
    for (long long i = runCount("HX_NUMBER_SPELLINGS", 200000); i > 0 && failures < 20; --i) {
        const std::string s = spellings.number();
        const std::string found = differences(s);
        failures += !found.empty();
        EXPECT_EQ(found, "") << visible(s);
    }
}

} // namespace
