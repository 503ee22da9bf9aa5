// printf-style formatting for the SDK's own printf functions, kept in one
// place because the second pass over the arguments needs a va_copy.
#pragma once
#include <cstdarg>
#include <cstdio>
#include <string>

// The text format makes of args; empty for a format vsnprintf rejects.
// args is used up: the caller still va_ends it.
inline std::string formatV(const char* format, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    char small[256];
    const int n = std::vsnprintf(small, sizeof small, format, args);
    std::string text;
    if (n >= static_cast<int>(sizeof small)) {
        text.resize(n);
        std::vsnprintf(&text[0], n + 1, format, copy);
    } else if (n > 0) {
        text.assign(small, n);
    }
    va_end(copy);
    return text;
}
