#pragma once
#include <string>

#include "HxSdkApi.h"
#include "McDArray.h"

class QString;

// The host's owned 8-bit string. Text is Latin-1; conversions to and from
// QString go through toQString() and fromQString(). Short texts are kept
// inline, without a heap allocation.
class HXSDK_API McString {
public:
    McString() = default;
    McString(const char* s) : mText(s ? s : "") {}
    McString(const char* s, int len) : mText(s ? std::string(s, len > 0 ? len : 0) : std::string()) {}
    McString(const McString&) = default;
    McString(McString&&) noexcept = default;
    McString& operator=(const McString&) = default;
    McString& operator=(McString&&) noexcept = default;
    McString& operator=(const char* s)
    {
        mText.assign(s ? s : "");
        return *this;
    }

    const char* getString() const { return mText.c_str(); }
    operator const char*() const { return mText.c_str(); }
    int length() const { return static_cast<int>(mText.size()); }
    bool isEmpty() const { return mText.empty(); }
    char operator[](int i) const { return mText[i]; }

    // Replaces the text with printf-style formatted output.
    McString& printf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    // Replaces the text with the decimal form of v.
    McString& setInt64(long long v);

    McString& operator+=(const char* s)
    {
        mText.append(s ? s : "");
        return *this;
    }
    McString& operator+=(const McString& s)
    {
        mText.append(s.mText);
        return *this;
    }
    McString& operator+=(char c)
    {
        mText.push_back(c);
        return *this;
    }

    // Splits at every occurrence of the separator; empty pieces are kept, so
    // "a,,b" gives "a", "", "b" and an empty text gives one empty piece.
    void explode(char separator, McDArray<McString>& parts) const;

    QString toQString() const;
    static McString fromQString(const QString& s);

    friend bool operator==(const McString& a, const McString& b) { return a.mText == b.mText; }
    friend bool operator!=(const McString& a, const McString& b) { return a.mText != b.mText; }
    friend bool operator<(const McString& a, const McString& b) { return a.mText < b.mText; }
    friend bool operator==(const McString& a, const char* b) { return a.mText == (b ? b : ""); }
    friend bool operator!=(const McString& a, const char* b) { return !(a == b); }

private:
    std::string mText;
};

// The host's file-name string.
class HXSDK_API McFilename : public McString {
public:
    McFilename() = default;
    McFilename(const char* s) : McString(s) {}
    McFilename(const McString& s) : McString(s) {}
    McFilename& operator=(const char* s)
    {
        McString::operator=(s);
        return *this;
    }
};
