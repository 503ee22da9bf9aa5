#pragma once
// What the differential tests share: bytes shown as text, the number of
// random files to try, and reading files in blocks of a chosen size.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "HxCSVInput.h"

// Bytes as hex digits, for comparing arrays as text.
inline std::string hex(const void* data, size_t size)
{
    static const char digits[] = "0123456789abcdef";
    std::string s;
    for (size_t i = 0; i < size; ++i) {
        const unsigned char c = static_cast<const unsigned char*>(data)[i];
        s += digits[c >> 4];
        s += digits[c & 15];
    }
    return s;
}

// A text with its line feeds kept and every other byte outside printable
// ASCII escaped.
inline std::string visible(const std::string& s)
{
    std::string out;
    for (unsigned char c : s) {
        if (c == '\n') {
            out += "\\n\n";
        } else if (c >= 32 && c < 127 && c != '\\') {
            out += static_cast<char>(c);
        } else {
            char code[8];
            std::snprintf(code, sizeof code, "\\x%02x", c);
            out += code;
        }
    }
    return out;
}

// Two long outputs cut around their first difference.
inline std::string firstDifference(const std::string& ours, const std::string& reference)
{
    size_t i = 0;
    while (i < ours.size() && i < reference.size() && ours[i] == reference[i])
        ++i;
    const size_t from = i > 200 ? i - 200 : 0;
    return "new:\n" + ours.substr(from, 400) + "\nreference:\n" + reference.substr(from, 400);
}

// HX_DIFFERENTIAL_FILES when set, else the count that CI runs.
inline long long differentialFileCount(long long ciCount)
{
    const char* n = std::getenv("HX_DIFFERENTIAL_FILES");
    return n ? std::atoll(n) : ciCount;
}

// Reads files in blocks of the given size for as long as it lives.
class BlockSize {
public:
    explicit BlockSize(size_t bytes) : saved(HxCSVInput::largestBlock) { HxCSVInput::largestBlock = bytes; }
    ~BlockSize() { HxCSVInput::largestBlock = saved; }
    BlockSize(const BlockSize&) = delete;
    BlockSize& operator=(const BlockSize&) = delete;

private:
    const size_t saved;
};
