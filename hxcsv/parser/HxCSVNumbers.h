#pragma once
// Number conversion: the last stage of a parse, and the lattice reader's.
// Turns the bytes of one field into the value that the row stores.
#include <cstddef>

#include <emmintrin.h>

#include "api.h"

// Number conversion straight from Latin-1 bytes, with exactly the results of
// the library calls that the importers were written against, so that no file
// reads differently when a QString or a C library call per value is too slow.
//
// Every function takes the text as [text, text + length); embedded NUL bytes
// are ordinary (non-number) characters, as in a QString made with
// QString::fromLatin1(text, length).
namespace HxCSVNumbers {

// QString::toDouble(&ok) on QString::fromLatin1(text, length): white space
// (Qt's, Latin-1 included) around the number, a sign, decimal digits with an
// optional point and exponent; "nan", "inf", "+inf", "-inf" in any case.
// Fails on anything else, giving 0; on overflow gives ±inf with ok false; a
// non-zero number that rounds to 0 fails with 0.
HXCSV_API double toDouble(const char* text, size_t length, bool& ok);

// QString::toFloat(&ok): the double above, narrowed. A finite double beyond
// the float range gives ±inf with ok false; a non-zero one that narrows to 0
// gives 0 with ok false. The narrowing rounds the already rounded double, as
// Qt does, which is not always the float nearest to the decimal text.
HXCSV_API float toFloat(const char* text, size_t length, bool& ok);

// QString::toInt(&ok, 10): white space around an optional sign and decimal
// digits; 0 and ok false for anything else or a value outside int.
HXCSV_API int toInt(const char* text, size_t length, bool& ok);

// The short-decimal shortcut. Most numbers in files are short plain
// decimals, which always convert: they are recognised without converting
// them and converted without the checks that other texts need.

// True when the text is a short plain decimal (an optional sign, digits with
// at most one point, nothing else, at most 32 bytes), which toDouble and
// toFloat always take: it is too short to overflow or underflow either.
// Tells that a number converts without converting it; false tells nothing.
HXCSV_API bool isShortDecimal(const char* text, size_t length);

// What the padded forms below may read past the end of a text. The parser's
// record buffers and its input block keep that padding, so a field anywhere
// in either may be given to them.
constexpr size_t recordPadding = 16;

// isShortDecimal for a text of fewer than 16 bytes, seen in one 16-byte load
// without a branch on its bytes. Precondition: length < 16 and the 16 bytes
// at text are readable, which recordPadding bytes past its end cover.
inline bool paddedIsShortDecimal(const char* text, size_t length)
{
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    const __m128i digitValue = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));
    const unsigned digits = static_cast<unsigned>(
        _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_min_epu8(digitValue, _mm_set1_epi8(9)), digitValue)));
    const unsigned points = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('.'))));
    const unsigned sign = (*text == '-' || *text == '+') ? 1u : 0u;
    const unsigned body = ((1u << length) - 1) & ~sign;
    const unsigned bodyPoints = points & body;
    return ((digits | points) & body) == body && (bodyPoints & (bodyPoints - 1)) == 0 && (digits & body) != 0;
}

// toDouble and toFloat for a text that isShortDecimal takes, without the
// checks that such a text never needs: it always converts.
HXCSV_API double shortDecimalToDouble(const char* text, size_t length);
HXCSV_API float shortDecimalToFloat(const char* text, size_t length);

// shortDecimalToDouble, faster. Precondition: the recordPadding bytes after
// the text are readable (their values do not matter). It loads 16 bytes from
// the first digit and 8 from the first digit of each part; with at most 8
// digits a part, no load reaches further than 16 bytes past the text's end.
HXCSV_API double paddedShortDecimalToDouble(const char* text, size_t length);

// Whether std::strtod reads a short decimal as toDouble does: only when the
// locale's decimal point is '.'.
HXCSV_API bool strtodReadsShortDecimals();

// std::strtod on a NUL-terminated text: the longest prefix that is a number,
// its end in *end (text itself when there is none, then 0). Spellings other
// than plain decimal ones, and locales whose decimal point is not '.', go to
// the C library itself; errno is set only then.
HXCSV_API double strtod(const char* text, char** end);

// std::strtod on the text [text, text + length) as if a NUL followed it, as
// for a field of a record; the bytes of the number in *used. A NUL inside
// ends the text, as it would a C string.
HXCSV_API double strtod(const char* text, size_t length, size_t* used = nullptr);

} // namespace HxCSVNumbers
