#include "ConsoleText.h"

#include <QChar>
#include <algorithm>
#include <cstdio>

namespace hxhost {

namespace {

// The length of the valid UTF-8 sequence at bytes[i] and its code point in
// cp; 0 for an invalid one (overlong forms and surrogates included).
size_t decodeUtf8(const std::string& bytes, size_t i, char32_t& cp)
{
    const auto byte = [&](size_t k) { return static_cast<unsigned char>(bytes[k]); };
    const unsigned char lead = byte(i);
    size_t length = 0;
    char32_t min = 0;
    if (lead < 0x80) {
        cp = lead;
        return 1;
    } else if ((lead & 0xe0) == 0xc0) {
        length = 2, min = 0x80, cp = lead & 0x1f;
    } else if ((lead & 0xf0) == 0xe0) {
        length = 3, min = 0x800, cp = lead & 0x0f;
    } else if ((lead & 0xf8) == 0xf0) {
        length = 4, min = 0x10000, cp = lead & 0x07;
    } else {
        return 0;
    }
    if (i + length > bytes.size())
        return 0;
    for (size_t k = 1; k < length; ++k) {
        if ((byte(i + k) & 0xc0) != 0x80)
            return 0;
        cp = (cp << 6) | (byte(i + k) & 0x3f);
    }
    if (cp < min || cp > 0x10ffff || (cp >= 0xd800 && cp <= 0xdfff))
        return 0;
    return length;
}

bool printable(char32_t cp)
{
    if (cp < 0x80)
        return cp >= 0x20 && cp != 0x7f;
    const QChar::Category category = QChar::category(static_cast<uint>(cp));
    return QChar::isPrint(static_cast<uint>(cp)) && category != QChar::Separator_Line &&
           category != QChar::Separator_Paragraph;
}

void appendEscape(std::string& out, char32_t cp)
{
    char text[16];
    if (cp == '\t' || cp == '\n' || cp == '\r') {
        out += '\\';
        out += cp == '\t' ? 't' : cp == '\n' ? 'n' : 'r';
        return;
    }
    if (cp < 0x80)
        std::snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned>(cp));
    else if (cp <= 0xffff)
        std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(cp));
    else
        std::snprintf(text, sizeof text, "\\U%08x", static_cast<unsigned>(cp));
    out += text;
}

} // namespace

std::string escapeForConsole(const std::string& bytes)
{
    std::string out;
    out.reserve(bytes.size());
    for (size_t i = 0; i < bytes.size();) {
        char32_t cp = 0;
        const size_t length = decodeUtf8(bytes, i, cp);
        if (length == 0) {
            char text[8];
            std::snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned char>(bytes[i]));
            out += text;
            ++i;
            continue;
        }
        if (printable(cp))
            out.append(bytes, i, length);
        else
            appendEscape(out, cp);
        i += length;
    }
    return out;
}

std::string escapeForConsole(const QString& text)
{
    return escapeForConsole(text.toStdString());
}

QString messageKind(const QString& text)
{
    QString kind;
    kind.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isDigit())
            continue;
        if (c == QLatin1Char('\'') || c == QLatin1Char('"')) {
            const int close = text.indexOf(c, i + 1);
            if (close > 0) {
                i = close;
                continue;
            }
        }
        kind += c;
    }
    return kind;
}

QString shortened(const QString& text, int maxChars)
{
    if (text.size() <= maxChars)
        return text;
    int keep = std::max(0, maxChars - 3);
    // A surrogate pair is one character: never keep half of it.
    if (keep > 0 && text[keep - 1].isHighSurrogate())
        --keep;
    return text.left(keep) + QStringLiteral("...");
}

} // namespace hxhost
