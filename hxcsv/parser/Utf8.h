#pragma once
// UTF-8 in texts that the parser reads as Latin-1: for telling users that
// such texts come out garbled ("ZÃ¼rich" for "Zürich").
#include <QTextCodec>
#include <algorithm>
#include <cstddef>

namespace hxcsv {

constexpr char utf8ByteOrderMark[] = "\xEF\xBB\xBF";

// Whether text is wholly valid UTF-8 (as Qt's decoder judges it) and holds
// a character of several bytes. Latin-1 text with accents is seldom valid
// UTF-8, so this tells the two apart well. Plain ASCII, the common case,
// never reaches the decoder.
inline bool holdsMultiByteUtf8(const char* text, size_t length)
{
    if (std::all_of(text, text + length, [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return false;
    static QTextCodec* const utf8 = QTextCodec::codecForMib(106);
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    utf8->toUnicode(text, static_cast<int>(length), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

} // namespace hxcsv
