#pragma once
// Physical lines without their line ends, for what reads a file by lines
// rather than by records: the lattice reader through a C stream, and the
// parser's driver (header, skipped lines, plain-lines mode) through its
// input block.
#include <cstdio>
#include <cstring>

#include "HxCSVInput.h"

namespace hxcsv {

// Cuts the line end off a NUL-terminated line. Its length without it.
inline size_t trimLineEnd(char* line)
{
    size_t n = std::strlen(line);
    while (n > 0 && (line[n - 1] == '\r' || line[n - 1] == '\n'))
        line[--n] = '\0';
    return n;
}

// One physical line without its line end; 0 at end of file. A line longer
// than size - 1 bytes comes back in pieces.
inline int fgetline(char* buffer, int size, FILE* file)
{
    if (!std::fgets(buffer, size, file))
        return 0;
    trimLineEnd(buffer);
    return 1;
}

// The same from the input block, as fgets would read it there; NUL ends
// the text. Its length, or -1 at end of file.
inline int readLine(HxCSVInput& input, char* buffer, int size)
{
    if (!input.getPiece(buffer, size))
        return -1;
    return static_cast<int>(trimLineEnd(buffer));
}

} // namespace hxcsv
