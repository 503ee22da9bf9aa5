#pragma once
// Number spellings for the differential tests: the forms a CSV field takes,
// weighted towards the ones where two conversions are most likely to part:
// ties between two floats or doubles, the ends of the ranges, long
// mantissas, special words, junk and white space of every kind.
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

class NumberSpellings {
public:
    explicit NumberSpellings(uint64_t seed) : rng(seed) {}

    std::string next()
    {
        std::string s;
        switch (pick(12)) {
        case 0: case 1: case 2: s = decimal(); break;
        case 3: s = shortestOfRandomBits(); break;
        case 4: s = floatTie(); break;
        case 5: s = doubleTie(); break;
        case 6: s = nearLimit(); break;
        case 7: s = integer(); break;
        case 8: s = word(); break;
        case 9: s = junk(); break;
        default: s = printedDouble(); break;
        }
        return decorate(s);
    }

    int pick(int n) { return static_cast<int>(rng() % static_cast<uint64_t>(n)); }

    // A short run of characters that may or may not make a number.
    std::string junk()
    {
        static const char alphabet[] = "0123456789+-.eE,_xXiInNaAfF d\t\x85\xa0\xb2\xb9";
        std::string s;
        for (int i = pick(7); i > 0; --i)
            s += pick(12) == 0 ? static_cast<char>(pick(256)) : alphabet[pick(sizeof alphabet - 1)];
        return s;
    }

private:
    std::string digits(int n)
    {
        std::string s;
        const int zeros = pick(4); // runs of zeros are common in real files
        for (int i = 0; i < n; ++i)
            s += static_cast<char>('0' + (zeros == 0 && pick(3) == 0 ? 0 : pick(10)));
        return s;
    }

    int length()
    {
        switch (pick(10)) {
        case 0: return 0;
        case 1: return 20 + pick(60);
        case 2: return pick(4) == 0 ? 700 + pick(200) : pick(25);
        default: return 1 + pick(9);
        }
    }

    std::string sign() { return pick(3) == 0 ? (pick(2) ? "-" : "+") : ""; }

    std::string decimal()
    {
        std::string s = sign() + digits(length());
        if (pick(2))
            s += "." + digits(length());
        if (pick(3) == 0) {
            s += pick(2) ? "e" : "E";
            s += sign();
            s += pick(3) == 0 ? digits(length()) : std::to_string(pick(pick(2) ? 50 : 400));
        }
        return s;
    }

    std::string printf(const char* format, int precision, double value)
    {
        char text[1100];
        std::snprintf(text, sizeof text, format, precision, value);
        return text;
    }

    double randomBits()
    {
        const uint64_t bits = rng();
        double d;
        std::memcpy(&d, &bits, sizeof d);
        return std::isfinite(d) ? d : 1.0;
    }

    std::string shortestOfRandomBits() { return printf("%.*g", 1 + pick(17), randomBits()); }

    std::string printedDouble()
    {
        double value = randomBits();
        if (pick(2)) // also the ordinary range of coordinates
            value = std::ldexp(static_cast<double>(rng() % 100000000), pick(40) - 30);
        switch (pick(3)) {
        case 0: return printf("%.*e", pick(25), value);
        case 1: return std::fabs(value) < 1e30 ? printf("%.*f", pick(20), value) : printf("%.*g", 9, value);
        default: return printf("%.*g", 1 + pick(25), value);
        }
    }

    // The exact decimal form of a value half way between two neighbours,
    // nudged by a last digit or trailing zeros: the cases that show whether a
    // conversion rounds once or twice, and where it cuts long mantissas.
    std::string tie(long double midpoint)
    {
        char text[1100];
        std::snprintf(text, sizeof text, "%.*Le", pick(4) == 0 ? 700 + pick(100) : 20 + pick(60), midpoint);
        std::string s = text;
        const size_t e = s.find('e');
        std::string mantissa = s.substr(0, e);
        const std::string exponent = s.substr(e);
        while (mantissa.size() > 3 && mantissa.back() == '0' && pick(2))
            mantissa.pop_back();
        switch (pick(4)) {
        case 0: mantissa += "0000000001"; break;
        case 1: mantissa += std::string(pick(30), '0'); break;
        case 2:
            if (mantissa.back() > '0')
                --mantissa.back();
            break;
        default: break;
        }
        return mantissa + exponent;
    }

    std::string floatTie()
    {
        uint32_t bits = static_cast<uint32_t>(rng());
        if (pick(4) == 0)
            bits &= 0x807fffffu; // subnormal floats
        float f;
        std::memcpy(&f, &bits, sizeof f);
        if (!std::isfinite(f))
            f = FLT_MAX;
        return tie(midpointAway(f));
    }

    std::string doubleTie()
    {
        const double d = pick(4) == 0 ? std::ldexp(randomBits(), -1000) : randomBits();
        return tie(midpointAway(d));
    }

    // Half way from x to its neighbour away from zero; past the largest
    // value, where the neighbour would be, as the rounding sees it.
    template <class T>
    static long double midpointAway(T x)
    {
        const long double below = std::nextafter(x, T(0));
        const T above = std::nextafter(x, x < 0 ? -std::numeric_limits<T>::infinity() : std::numeric_limits<T>::infinity());
        const long double next = std::isfinite(above) ? static_cast<long double>(above) : 2.0L * x - below;
        return (static_cast<long double>(x) + next) / 2;
    }

    // Around overflow and underflow of both types.
    std::string nearLimit()
    {
        static const long double limits[] = {
            FLT_MAX, (static_cast<long double>(FLT_MAX) + std::ldexp(1.0L, 104)), FLT_MIN,
            std::ldexp(1.0L, -149), std::ldexp(1.0L, -150), std::ldexp(3.0L, -151),
            DBL_MAX, static_cast<long double>(DBL_MAX) + std::ldexp(1.0L, 970), DBL_MIN,
            std::ldexp(1.0L, -1074), std::ldexp(1.0L, -1075), std::ldexp(3.0L, -1076),
        };
        const long double v = limits[pick(sizeof limits / sizeof limits[0])] * (1 + (pick(3) - 1) * std::ldexp(1.0L, -pick(60)));
        char text[1100];
        std::snprintf(text, sizeof text, "%s%.*Le", pick(2) ? "" : "-", pick(3) == 0 ? 760 : pick(30), v);
        return text;
    }

    std::string integer()
    {
        static const int64_t edges[] = {0, 1, 2147483647LL, 2147483648LL, -2147483648LL, -2147483649LL,
                                        4294967296LL, std::numeric_limits<int64_t>::max(),
                                        std::numeric_limits<int64_t>::min()};
        int64_t v = pick(2) ? edges[pick(9)] : static_cast<int64_t>(rng()) >> pick(63);
        if (pick(2)) // past the edges too: wraps around at the ends of int64
            v = static_cast<int64_t>(static_cast<uint64_t>(v) + static_cast<uint64_t>(pick(5) - 2));
        std::string s = std::to_string(v);
        if (pick(4) == 0)
            s.insert(s[0] == '-' ? 1 : 0, std::string(1 + pick(20), '0'));
        if (pick(6) == 0)
            s += "99999999999999999999";
        return (pick(5) == 0 && s[0] != '-' ? "+" : "") + s;
    }

    std::string word()
    {
        static const char* words[] = {"inf", "nan", "infinity", "in", "na", "infx", "nan(123)", "nan()",
                                      "nan(0x7)", "nana", "i", "n"};
        std::string s = words[pick(12)];
        for (char& c : s)
            if (pick(2))
                c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return sign() + s;
    }

    // White space on both sides (Qt's, C's and neither), and now and then a
    // character put in, doubled or dropped.
    std::string decorate(std::string s)
    {
        static const char spaces[] = {' ', '\t', '\n', '\v', '\f', '\r', '\x85', '\xa0', '\x1c', '\0'};
        for (int i = pick(4) == 0 ? pick(3) + 1 : 0; i > 0; --i)
            s.insert(s.begin(), spaces[pick(pick(3) ? 6 : 10)]);
        for (int i = pick(4) == 0 ? pick(3) + 1 : 0; i > 0; --i)
            s += spaces[pick(pick(3) ? 6 : 10)];
        if (!s.empty() && pick(12) == 0) {
            const size_t at = static_cast<size_t>(pick(static_cast<int>(s.size())));
            switch (pick(3)) {
            case 0: s.insert(at, junk().substr(0, 1)); break;
            case 1: s.insert(at, 1, s[at]); break;
            default: s.erase(at, 1); break;
            }
        }
        return s;
    }

    std::mt19937_64 rng;
};
