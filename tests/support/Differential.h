#pragma once
// What the differential tests share: random files laid out against the ends
// of read blocks and line pieces, number spellings, texts shown escaped,
// and the read-block size of the package's input.
#include <algorithm>
#include <cctype>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "HxCSVInput.h"

// Every byte outside printable ASCII escaped; line feeds kept after "\n".
inline std::string visible(const std::string& s)
{
    std::string out;
    for (unsigned char c : s) {
        char code[8];
        std::snprintf(code, sizeof code, c == '\n' ? "\\n\n" : c >= 32 && c < 127 && c != '\\' ? "%c" : "\\x%02x", c);
        out += code;
    }
    return out;
}

// Two long texts from a little before their first difference.
inline std::string firstDifference(const std::string& got, const std::string& expected)
{
    const size_t i = std::mismatch(got.begin(), got.end(), expected.begin(), expected.end()).first - got.begin();
    const size_t from = i > 300 ? i - 300 : 0;
    return "got:\n" + visible(got.substr(from, 600)) + "\nexpected:\n" + visible(expected.substr(from, 600));
}

// The environment variable when set, else the count that CI runs.
inline long long runCount(const char* variable, long long ciCount)
{
    return std::getenv(variable) ? std::atoll(std::getenv(variable)) : ciCount;
}

// The input reads blocks of this size while it lives.
struct BlockSize {
    explicit BlockSize(size_t bytes) : saved(HxCSVInput::largestBlock) { HxCSVInput::largestBlock = bytes; }
    ~BlockSize() { HxCSVInput::largestBlock = saved; }
    const size_t saved;
};

// How a reader sees the files made for it.
struct Layout {
    std::string delimiter = ","; // "\\s": any white space
    std::string comment, breakText;
    int fields = 3;          // of most records
    size_t block = 1 << 20;  // read block: records end at each of its last 32 offsets in turn
    size_t piece = 2047;     // the longest line piece the reader takes
    bool skipsRest = false;  // the reader skips the rest of a line after the fields it needs
};

class FileMaker {
public:
    explicit FileMaker(uint64_t seed) : rng(seed) {}

    int pick(int n) { return static_cast<int>(rng() % static_cast<uint64_t>(n)); }

    // One file in three is messy; the others hold mostly rows of plain
    // numbers and single delimiters, half of them nothing else.
    std::string file(const Layout& l)
    {
        messy = pick(3) == 0;
        plain = !messy && pick(2) == 0;
        std::string out;
        for (int i = pick(8) == 0 ? pick(200) : pick(25); i > 0; --i) {
            const int kind = pick(messy ? 20 : 60);
            const std::string line = kind == 0   ? l.comment + words()
                                     : kind == 1 ? l.breakText + (pick(2) ? "" : words())
                                     : kind == 2 ? ""
                                     : kind == 3 ? junk(pick(30), nullptr)
                                     : kind == 4 ? pieceSized(l)
                                                 : row(l, pick(messy ? 5 : 30) ? l.fields : pick(9));
            if (l.block <= 4096 && pick(3) == 0)
                alignEnd(out, line.size(), l);
            out += line + (pick(4) ? "\n" : pick(3) == 0 ? "\r\n" : pick(2) ? "\r" : "\n\n");
        }
        if (pick(4) == 0 && !out.empty())
            out.pop_back(); // no line end after the last line
        return out;
    }

    // Filler records before a text of `length` bytes, so that it ends at
    // the next of the last 32 offsets of a block: ones, the last padded with
    // zeros, or followed by a long field that the reader skips.
    void alignEnd(std::string& out, size_t length, const Layout& l)
    {
        std::string filler;
        for (int f = l.skipsRest ? 0 : 1; f < l.fields; ++f)
            filler += "1" + separator(l, false);
        const size_t shortest = filler.size() + 2, at = out.size() + length, before = offset++ % 32;
        size_t gap = (at + before + l.block - 1) / l.block * l.block - before - at;
        while (gap != 0 && gap < shortest)
            gap += l.block;
        for (size_t n; gap > 0; gap -= n) {
            n = std::min<size_t>(gap, l.skipsRest ? 65536 : 1000);
            n = gap - n != 0 && gap - n < shortest ? gap - shortest : n;
            out += filler + std::string(n - shortest, l.skipsRest ? 'x' : '0') + "1\n";
        }
    }

    // A sign or none, 1 to 8 digits, no point or one with 0 to 8 digits.
    std::string shortDecimal() { return sign() + digits(1 + pick(8)) + (pick(4) ? "." + digits(pick(9)) : ""); }

    // The forms of a number, weighted to where conversions part: ties
    // between two floats or doubles, range ends, long mantissas, words,
    // junk and white space of every kind.
    std::string number()
    {
        static const char* words[] = {"inf", "nan", "infinity", "in", "na", "infx", "nan(123)", "nan()", "nana", "i"};
        static const int64_t edges[] = {0, 1, INT32_MAX, INT32_MIN, 1LL << 32, INT64_MAX, INT64_MIN};
        std::string s;
        switch (pick(10)) {
        case 0: case 1: s = sign() + digits(length()) + (pick(2) ? "." + digits(length()) : "") + exponent(); break;
        case 2: s = printed(); break;
        case 3: // subnormal floats too
            s = pick(2) ? tie(randomBits<float, uint32_t>(pick(4) ? ~0u : 0x807fffffu))
                        : tie(randomBits<double, uint64_t>(~0ull));
            break;
        case 4: s = nearLimit(); break;
        case 5: { // around the ends of int32 and int64, with zeros before or digits past any range
            const uint64_t v = static_cast<uint64_t>(pick(2) ? edges[pick(7)] : int64_t(rng()) >> pick(63));
            s = std::to_string(static_cast<int64_t>(v + pick(5) - 2)); // past the edges, wrapping at int64's
            s.insert(s[0] == '-' ? 1 : 0, pick(4) ? "" : std::string(1 + pick(20), '0'));
            s = (pick(5) ? "" : "+") + s + (pick(6) ? "" : "99999999999999999999");
            break;
        }
        case 6:
            s = sign() + words[pick(10)];
            for (char& c : s)
                c = pick(2) ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
            break;
        case 7: s = junk(pick(7), "0123456789+-.eE,_xXiInNaAfF d\t\x85\xa0\xb2\xb9"); break;
        default: s = shortDecimal(); break;
        }
        // White space around (Qt's, C's, neither), now and then a character
        // put in, doubled or dropped.
        static const char spaces[] = {' ', '\t', '\n', '\v', '\f', '\r', '\x85', '\xa0', '\x1c', '\0'};
        for (int i = pick(4) ? 0 : 1 + pick(3); i > 0; --i)
            s.insert(s.begin(), spaces[pick(pick(3) ? 6 : 10)]);
        for (int i = pick(4) ? 0 : 1 + pick(3); i > 0; --i)
            s += spaces[pick(pick(3) ? 6 : 10)];
        const size_t at = s.empty() ? 0 : static_cast<size_t>(pick(static_cast<int>(s.size())));
        switch (s.empty() ? 3 : pick(36)) {
        case 0: return s.insert(at, junk(1, "0123456789+-.eE"));
        case 1: return s.insert(at, 1, s[at]);
        case 2: return s.erase(at, 1);
        default: return s;
        }
    }

private:
    std::string row(const Layout& l, int fields)
    {
        const std::string end = pick(plain ? 40 : 8) == 0 ? separator(l, true) : ""; // delimiters at the line's ends
        std::string out = end;
        for (int i = 0; i < fields; ++i)
            out += (i > 0 ? separator(l, true) : "") + field(l);
        return end.empty() ? out : out + separator(l, true);
    }

    std::string field(const Layout& l)
    {
        if (plain)
            return pick(40) ? shortDecimal() : number();
        if (!messy && pick(20))
            return pick(8) ? (pick(15) ? shortDecimal() : number()) : words();
        switch (pick(12)) {
        case 0: return "\"" + words() + separator(l, true) + words() + "\"";
        case 1: return words();
        case 2: return "\"" + number() + (pick(2) ? "\"" : "");
        case 3: return junk(pick(7), "0123456789+-.eE,;\"/:"); // the bytes beside the digits too
        case 4: return std::string(1, "\"\r\0\x85\n"[pick(5)]);
        default: return pick(3) ? shortDecimal() : number();
        }
    }

    // The delimiter, now and then doubled or another one.
    std::string separator(const Layout& l, bool vary)
    {
        if (vary && pick(messy ? 15 : plain ? 400 : 100) == 0)
            return std::string(1, " ,;\t.\"-"[pick(7)]);
        const std::string d = l.delimiter == "\\s" ? std::string(1, " \t\v\f\xa0\x85"[pick(pick(4) ? 2 : 6)])
                              : l.delimiter.empty() ? " " : l.delimiter;
        return vary && pick(messy ? 6 : plain ? 100 : 30) == 0 ? d + d : d;
    }

    // Rows a few bytes either side of the reader's line piece, and lines
    // of several pieces.
    std::string pieceSized(const Layout& l)
    {
        std::string out = row(l, l.fields);
        while (pick(2) && out.size() < l.piece * 3)
            out += (pick(10) ? field(l) : std::string(pick(300), 'x')) + separator(l, true);
        const size_t wanted = l.piece - 4 + static_cast<size_t>(pick(8));
        return out.size() < wanted ? std::string(wanted - out.size(), '0') + out : out;
    }

    std::string words()
    {
        static const char* words[] = {"a", "x y", "Name", "<m>", "END", "e", "#", "--", "nan", "\"q\""};
        std::string out = words[pick(10)];
        for (int i = pick(3); i > 0; --i)
            out += words[pick(10)];
        return out;
    }

    // Characters of the alphabet, now and then any byte.
    std::string junk(int n, const char* alphabet)
    {
        std::string s;
        for (int i = 0; i < n; ++i)
            s += !alphabet || pick(12) == 0 ? char(pick(256)) : alphabet[pick(static_cast<int>(std::strlen(alphabet)))];
        return s;
    }

    std::string sign() { return pick(3) ? "" : pick(2) ? "-" : "+"; }
    int length() // of a run of digits
    {
        return pick(10) == 0 ? 0 : pick(10) == 0 ? 20 + pick(60) : pick(20) ? 1 + pick(9) : 700 + pick(200);
    }

    std::string exponent()
    {
        const std::string e = (pick(2) ? "e" : "E") + sign();
        return pick(3) ? "" : e + (pick(3) ? std::to_string(pick(pick(2) ? 50 : 400)) : digits(length()));
    }

    std::string digits(int n)
    {
        std::string s;
        const bool zeros = pick(4) == 0; // runs of zeros are common
        for (int i = 0; i < n; ++i)
            s += static_cast<char>('0' + (zeros && pick(3) == 0 ? 0 : pick(10)));
        return s;
    }

    std::string format(const char* f, int precision, long double v)
    {
        char s[1200];
        std::snprintf(s, sizeof s, f, precision, v);
        return s;
    }

    template <class T, class Bits>
    T randomBits(Bits mask)
    {
        const Bits bits = static_cast<Bits>(rng()) & mask;
        T v;
        std::memcpy(&v, &bits, sizeof v);
        return std::isfinite(v) ? v : std::numeric_limits<T>::max();
    }

    std::string printed()
    {
        const double v = pick(2) ? randomBits<double, uint64_t>(~0ull)
                                 : std::ldexp(static_cast<double>(rng() % 100000000), pick(40) - 30); // coordinates
        const int form = std::fabs(v) < 1e30 ? pick(3) : 0;
        return format(form == 0 ? "%.*Le" : form == 1 ? "%.*Lf" : "%.*Lg", pick(25) + (form == 2), v);
    }

    // The exact decimal of the value half way from x to its neighbour away
    // from zero, cut or nudged: shows whether a conversion rounds once or
    // twice, and where it cuts long mantissas.
    template <class T>
    std::string tie(T x)
    {
        const T next = std::nextafter(x, std::copysign(std::numeric_limits<T>::infinity(), x));
        const long double mid = (x + (std::isfinite(next) ? next : 2.0L * x - std::nextafter(x, T(0)))) / 2;
        const std::string s = format("%.*Le", pick(4) ? 20 + pick(60) : 700 + pick(100), mid);
        std::string mantissa = s.substr(0, s.find('e'));
        while (mantissa.size() > 3 && mantissa.back() == '0' && pick(2))
            mantissa.pop_back();
        switch (pick(4)) {
        case 0: mantissa += "0000000001"; break;
        case 1: mantissa += std::string(pick(30), '0'); break;
        case 2: mantissa.back() = mantissa.back() > '0' ? char(mantissa.back() - 1) : '0'; break;
        }
        return mantissa + s.substr(s.find('e'));
    }

    // Around overflow and underflow of both types.
    std::string nearLimit()
    {
        const long double limits[] = {FLT_MAX, FLT_MAX + std::ldexp(1.0L, 104), FLT_MIN, std::ldexp(1.0L, -149),
                                      std::ldexp(1.0L, -150), std::ldexp(3.0L, -151), DBL_MAX,
                                      DBL_MAX + std::ldexp(1.0L, 970), DBL_MIN, std::ldexp(1.0L, -1074),
                                      std::ldexp(1.0L, -1075), std::ldexp(3.0L, -1076)};
        const long double v = limits[pick(12)] * (1 + (pick(3) - 1) * std::ldexp(1.0L, -pick(60)));
        return (pick(2) ? "" : "-") + format("%.*Le", pick(3) ? pick(30) : 760, v);
    }

    std::mt19937_64 rng;
    bool messy = false, plain = false;
    unsigned offset = 0; // the next of the last 32 offsets of a block to end a record at
};
