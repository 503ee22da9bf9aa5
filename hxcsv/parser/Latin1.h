#pragma once
// Latin-1 white space, which the field splitter ("\s") and the number
// conversion (Qt trims it around a number) must agree on.

namespace hxcsv {

// QChar::isSpace over Latin-1: \t to \r, the blank, NEL and the no-break
// space.
constexpr bool isLatin1Space(int c)
{
    return (c >= '\t' && c <= '\r') || c == ' ' || c == 0x85 || c == 0xA0;
}

} // namespace hxcsv
