// Conversions from bytes that give what QString and strtod give. fast_float
// does the arithmetic (correctly rounded, like the double-conversion code
// inside Qt and like glibc); the rules around it are the libraries' own.
#include "HxCSVNumbers.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include <emmintrin.h>
#include <fast_float/fast_float.h>
#include <langinfo.h>

#include "Latin1.h"

namespace {

bool isDigit(char c)
{
    return static_cast<unsigned char>(c - '0') < 10;
}

// What a byte is to the conversions, looked up rather than compared.
enum ByteClass : unsigned char { Other, Digit, Point, Sign, QtSpace };

struct ByteClasses {
    constexpr ByteClasses() : of()
    {
        for (int c = '0'; c <= '9'; ++c)
            of[c] = Digit;
        of[int('.')] = Point;
        of[int('+')] = of[int('-')] = Sign;
        for (int c = 0; c < 256; ++c)
            if (hxcsv::isLatin1Space(c))
                of[c] = QtSpace;
    }
    ByteClass operator[](char c) const { return of[static_cast<unsigned char>(c)]; }
    ByteClass of[256];
};

constexpr ByteClasses byteClass;

struct ShortDecimalWeights {
    constexpr ShortDecimalWeights() : of()
    {
        for (int c = 0; c < 256; ++c)
            of[c] = byteClass.of[c] == Digit ? 0 : byteClass.of[c] == Point ? 1 : 64;
    }
    unsigned char operator[](unsigned char c) const { return of[c]; }
    unsigned char of[256];
};

constexpr ShortDecimalWeights shortDecimalWeight;

// A text as Qt sees it: trimmed of its white space at both ends, then an
// optional sign and what follows it.
struct QtNumberText {
    QtNumberText(const char* text, size_t length) : begin(text), end(text + length)
    {
        while (begin < end && byteClass[*begin] == QtSpace)
            ++begin;
        while (end > begin && byteClass[end[-1]] == QtSpace)
            --end;
        negative = begin < end && *begin == '-';
        afterSign = (begin < end && byteClass[*begin] == Sign) ? begin + 1 : begin;
    }

    const char* begin;
    const char* end;
    bool negative;
    const char* afterSign;
};

// Qt lowercases A-Z before it compares the special words.
bool equalsIgnoringCase(const char* begin, const char* end, const char* word)
{
    for (; begin < end; ++begin, ++word) {
        char c = *begin;
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        if (*word == '\0' || c != *word)
            return false;
    }
    return *word == '\0';
}

// The only words Qt's toDouble takes; "-nan", "infinity" and the like fail.
double qtSpecialWord(const char* begin, const char* end, bool& ok)
{
    ok = true;
    if (equalsIgnoringCase(begin, end, "nan"))
        return std::numeric_limits<double>::quiet_NaN();
    if (equalsIgnoringCase(begin, end, "inf") || equalsIgnoringCase(begin, end, "+inf"))
        return std::numeric_limits<double>::infinity();
    if (equalsIgnoringCase(begin, end, "-inf"))
        return -std::numeric_limits<double>::infinity();
    ok = false;
    return 0.0;
}

// Qt calls a zero result an underflow when a digit 1-9 comes before the
// exponent: the text meant a number that is not zero.
bool meantNonZero(const char* begin, const char* end)
{
    for (const char* p = begin; p < end && *p != 'e' && *p != 'E'; ++p)
        if (*p >= '1' && *p <= '9')
            return true;
    return false;
}

// The unsigned [digits][.digits] filling [begin, end), at most 19 bytes,
// whose digits make an integer m of at most 2^53: m and 10^k are exact
// doubles, so the one division m / 10^k is correctly rounded and equals
// fast_float's result for the text. False for anything else; most numbers
// in files take this way, and it is several times cheaper.
bool exactShortDecimal(const char* begin, const char* end, double& value)
{
    static constexpr double powersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                             1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};
    if (end - begin > 19)
        return false;
    uint64_t m = 0;
    const char* p = begin;
    for (; p < end && isDigit(*p); ++p)
        m = m * 10 + static_cast<uint64_t>(*p - '0');
    const bool point = p < end && *p == '.';
    const char* fraction = point ? ++p : end;
    for (; p < end && isDigit(*p); ++p)
        m = m * 10 + static_cast<uint64_t>(*p - '0');
    const bool anyDigit = end - begin > (point ? 1 : 0);
    if (p != end || !anyDigit || m > (uint64_t(1) << 53))
        return false;
    value = static_cast<double>(m) / powersOfTen[end - fraction];
    return true;
}

// value, negated when negative, without a branch: a mispredicted one here
// costs more than the whole conversion.
double withSign(double value, bool negative)
{
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    bits ^= static_cast<uint64_t>(negative) << 63;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// The value of the n (1 to 8) digits at s, all eight bytes read at once.
// The bytes after the digits are shifted out, so they need only be readable.
uint64_t digitsValue(const char* s, size_t n)
{
    uint64_t x = 0;
    std::memcpy(&x, s, sizeof x);
    // Digits are at least '0': no borrow reaches the digits' bytes.
    x = (x - 0x3030303030303030u) << (8 * (8 - n));
    x = x * 10 + (x >> 8);
    x = ((x & 0x000000FF000000FFu) * 0x000F424000000064u + ((x >> 16) & 0x000000FF000000FFu) * 0x0000271000000001u) >> 32;
    return static_cast<uint32_t>(x);
}

// The unsigned decimal [digits][.digits][e[sign]digits] filling all of
// [begin, end), as fast_float reads it; false for anything else.
bool parseUnsignedDecimal(const char* begin, const char* end, double& value)
{
    if (begin == end || !(isDigit(*begin) || *begin == '.'))
        return false; // no sign again, and no words
    if (exactShortDecimal(begin, end, value))
        return true;
    const fast_float::from_chars_result result = fast_float::from_chars(begin, end, value);
    return result.ec == std::errc() && result.ptr == end;
}

bool decimalPointIsDot()
{
    const char* point = nl_langinfo(RADIXCHAR); // cheaper than localeconv()
    return point[0] == '.' && point[1] == '\0';
}

bool isCSpace(char c)
{
    return c == ' ' || static_cast<unsigned char>(c - '\t') < 5;
}

// The bytes of [begin, end) with NUL at and past end, as a C string has.
struct BoundedText {
    char operator[](const char* p) const { return p < end ? *p : '\0'; }
    const char* end;
};

// The end of the longest decimal number that strtod takes at p (after the
// sign), or p when there is none.
const char* decimalPrefixEnd(const char* p, BoundedText at)
{
    const char* q = p;
    while (isDigit(at[q]))
        ++q;
    bool anyDigit = q != p;
    if (at[q] == '.') {
        const char* fraction = ++q;
        while (isDigit(at[q]))
            ++q;
        anyDigit = anyDigit || q != fraction;
    }
    if (!anyDigit)
        return p;
    if (at[q] == 'e' || at[q] == 'E') {
        const char* exponent = q + 1;
        if (at[exponent] == '+' || at[exponent] == '-')
            ++exponent;
        if (isDigit(at[exponent])) {
            while (isDigit(at[exponent]))
                ++exponent;
            q = exponent; // an exponent without digits is not part of the number
        }
    }
    return q;
}

// std::strtod itself on [text, end), through a NUL-terminated copy unless
// the text already ends in NUL there.
double libraryStrtod(const char* text, const char* end, bool terminated, const char** stop)
{
    char* last = nullptr;
    if (terminated) {
        const double value = std::strtod(text, &last);
        *stop = last;
        return value;
    }
    const std::string copy(text, end);
    const double value = std::strtod(copy.c_str(), &last);
    *stop = text + (last - copy.c_str());
    return value;
}

// strtod on [text, end); terminated: a NUL follows the text. The end of the
// number goes to *stop, text itself when there is none.
double strtodWithin(const char* text, const char* end, bool terminated, const char** stop)
{
    const BoundedText at{end};
    const char* p = text;
    while (isCSpace(at[p]))
        ++p;
    // Locale white space and decimal points are the C library's business.
    if (static_cast<unsigned char>(at[p]) >= 0x80 || !decimalPointIsDot())
        return libraryStrtod(text, end, terminated, stop);
    const bool negative = at[p] == '-';
    const char* digits = (at[p] == '+' || negative) ? p + 1 : p;
    // So are hexadecimal numbers, "inf" and "nan(...)": rare in files.
    const char c = at[digits];
    if ((c == '0' && (at[digits + 1] == 'x' || at[digits + 1] == 'X')) || c == 'i' || c == 'I' || c == 'n'
        || c == 'N')
        return libraryStrtod(text, end, terminated, stop);
    const char* numberEnd = decimalPrefixEnd(digits, at);
    if (numberEnd == digits) { // no number at all: nothing is read
        *stop = text;
        return 0.0;
    }
    double value = 0.0;
    if (!exactShortDecimal(digits, numberEnd, value))
        fast_float::from_chars(digits, numberEnd, value);
    *stop = numberEnd;
    return withSign(value, negative);
}

} // namespace

namespace HxCSVNumbers {

// toDouble without the call through the library's exported entry, which
// toFloat and the exported toDouble share.
static inline double qtToDouble(const char* text, size_t length, bool& ok)
{
    const QtNumberText t(text, length);
    ok = false;
    if (t.begin == t.end)
        return 0.0;
    if (t.afterSign == t.end || !(isDigit(*t.afterSign) || *t.afterSign == '.'))
        return qtSpecialWord(t.begin, t.end, ok);
    double value = 0.0;
    if (!parseUnsignedDecimal(t.afterSign, t.end, value))
        return 0.0;
    if (std::isinf(value)) // overflow: Qt keeps the infinity but fails
        return t.negative ? -value : value;
    if (value == 0.0 && meantNonZero(t.afterSign, t.end))
        return 0.0;
    ok = true;
    return withSign(value, t.negative);
}

double toDouble(const char* text, size_t length, bool& ok)
{
    return qtToDouble(text, length, ok);
}

float toFloat(const char* text, size_t length, bool& ok)
{
    const double value = qtToDouble(text, length, ok);
    if (std::isinf(value))
        return static_cast<float>(value);
    if (std::fabs(value) > std::numeric_limits<float>::max()) {
        ok = false;
        return value < 0 ? -std::numeric_limits<float>::infinity() : std::numeric_limits<float>::infinity();
    }
    if (value != 0.0 && static_cast<float>(value) == 0.0f) {
        ok = false;
        return 0.0f;
    }
    return static_cast<float>(value);
}

int toInt(const char* text, size_t length, bool& ok)
{
    const QtNumberText t(text, length);
    ok = false;
    if (t.afterSign == t.end)
        return 0;
    const uint64_t limit = t.negative ? 2147483648u : 2147483647u;
    uint64_t magnitude = 0;
    for (const char* p = t.afterSign; p < t.end; ++p) {
        if (!isDigit(*p))
            return 0;
        magnitude = magnitude * 10 + static_cast<uint64_t>(*p - '0');
        if (magnitude > limit)
            return 0; // also stops the sum long before it could wrap
    }
    ok = true;
    return t.negative ? static_cast<int>(-static_cast<int64_t>(magnitude)) : static_cast<int>(magnitude);
}

bool isShortDecimal(const char* text, size_t length)
{
    // 32 bytes hold less than 10^32 and no non-zero value below 10^-31,
    // far inside the float range at both ends.
    if (length - 1 >= 32) // also 0
        return false;
    const char* p = byteClass[*text] == Sign ? text + 1 : text;
    const char* end = text + length;
    // A sum rather than a test per byte: digits add 0, a point 1, anything
    // else more than 32 points could. Branches on the bytes, whose points
    // sit anywhere, would be mispredicted.
    unsigned weight = 0;
    for (const char* q = p; q < end; ++q)
        weight += shortDecimalWeight[static_cast<unsigned char>(*q)];
    return weight <= 1 && static_cast<unsigned>(end - p) > weight; // a digit besides the point
}

double shortDecimalToDouble(const char* text, size_t length)
{
    const bool negative = *text == '-';
    const char* digits = (negative || *text == '+') ? text + 1 : text;
    double value = 0.0;
    if (exactShortDecimal(digits, text + length, value))
        return withSign(value, negative);
    // fast_float takes a minus but no plus.
    const char* begin = *text == '+' ? text + 1 : text;
    fast_float::from_chars(begin, text + length, value);
    return value;
}

double paddedShortDecimalToDouble(const char* text, size_t length)
{
    static constexpr uint64_t powersOfTen[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
    static constexpr double doublePowersOfTen[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};
    const bool negative = *text == '-';
    const char* digits = (negative || *text == '+') ? text + 1 : text;
    const size_t n = static_cast<size_t>(text + length - digits);
    if (n >= 16)
        return shortDecimalToDouble(text, length);
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(digits));
    const unsigned points =
        static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('.')))) & ((1u << n) - 1);
    const size_t whole = points ? static_cast<size_t>(__builtin_ctz(points)) : n;
    const size_t fraction = points ? n - whole - 1 : 0;
    if (whole > 8 || fraction > 8)
        return shortDecimalToDouble(text, length);
    const uint64_t m = (whole ? digitsValue(digits, whole) : 0) * powersOfTen[fraction]
                       + (fraction ? digitsValue(digits + whole + 1, fraction) : 0);
    if (m > (uint64_t(1) << 53))
        return shortDecimalToDouble(text, length);
    // Exact over exact: one correctly rounded division, as in exactShortDecimal.
    return withSign(static_cast<double>(m) / doublePowersOfTen[fraction], negative);
}

bool strtodReadsShortDecimals()
{
    return decimalPointIsDot();
}

float shortDecimalToFloat(const char* text, size_t length)
{
    return static_cast<float>(shortDecimalToDouble(text, length));
}

double strtod(const char* text, char** end)
{
    const char* stop = nullptr;
    const double value = strtodWithin(text, text + std::strlen(text), true, &stop);
    if (end)
        *end = const_cast<char*>(stop);
    return value;
}

double strtod(const char* text, size_t length, size_t* used)
{
    const char* stop = nullptr;
    const double value = strtodWithin(text, text + length, false, &stop);
    if (used)
        *used = static_cast<size_t>(stop - text);
    return value;
}

} // namespace HxCSVNumbers
