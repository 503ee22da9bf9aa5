// The SDK's 8-bit string, converted to and from QString as Latin-1.
#include "McString.h"

#include <QString>
#include <cstdarg>

#include "FormatV.h"

McString& McString::printf(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    mText = formatV(format, args);
    va_end(args);
    return *this;
}

McString& McString::setInt64(long long v)
{
    mText = std::to_string(v);
    return *this;
}

void McString::explode(char separator, McDArray<McString>& parts) const
{
    parts.clear();
    size_t start = 0;
    for (;;) {
        size_t pos = mText.find(separator, start);
        if (pos == std::string::npos) {
            parts.append(McString(mText.c_str() + start, static_cast<int>(mText.size() - start)));
            return;
        }
        parts.append(McString(mText.c_str() + start, static_cast<int>(pos - start)));
        start = pos + 1;
    }
}

QString McString::toQString() const
{
    return QString::fromLatin1(mText.data(), static_cast<int>(mText.size()));
}

McString McString::fromQString(const QString& s)
{
    QByteArray latin = s.toLatin1();
    return McString(latin.constData(), latin.size());
}
