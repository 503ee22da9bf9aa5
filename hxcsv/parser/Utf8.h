#pragma once
// UTF-8 in texts that the parser reads as Latin-1: for telling users that
// such texts come out garbled ("ZÃ¼rich" for "Zürich").
#include <cstddef>

namespace hxcsv {

constexpr char utf8ByteOrderMark[] = "\xEF\xBB\xBF";

// Whether text is wholly valid UTF-8 and holds a character of several
// bytes. Latin-1 text with accents is seldom valid UTF-8, so this tells
// the two apart well.
inline bool holdsMultiByteUtf8(const char* text, size_t length)
{
    const auto* p = reinterpret_cast<const unsigned char*>(text);
    const unsigned char* const end = p + length;
    bool multiByte = false;
    while (p < end) {
        const unsigned c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        // The bytes that follow a lead byte, and the range of the first of
        // them, which rules out overlong forms, surrogates and code points
        // past U+10FFFF.
        const size_t more = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : 1;
        const unsigned low = c == 0xE0 ? 0xA0 : c == 0xF0 ? 0x90 : 0x80;
        const unsigned high = c == 0xED ? 0x9F : c == 0xF4 ? 0x8F : 0xBF;
        if (c < 0xC2 || c > 0xF4 || static_cast<size_t>(end - p) <= more || p[1] < low || p[1] > high)
            return false;
        for (size_t i = 2; i <= more; ++i)
            if (p[i] < 0x80 || p[i] > 0xBF)
                return false;
        p += more + 1;
        multiByte = true;
    }
    return multiByte;
}

} // namespace hxcsv
