#pragma once
#include <cstdio>
#include <cstring>

namespace hxcsv {

// One physical line without its line end; 0 at end of file. A line longer
// than size - 1 bytes comes back in pieces.
inline int fgetline(char* buffer, int size, FILE* file)
{
    if (!std::fgets(buffer, size, file))
        return 0;
    size_t n = std::strlen(buffer);
    while (n > 0 && (buffer[n - 1] == '\r' || buffer[n - 1] == '\n'))
        buffer[--n] = '\0';
    return 1;
}

} // namespace hxcsv
