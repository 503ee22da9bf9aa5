#pragma once
// The input block: the first stage of a parse, and the lattice reader's.
// Hands the file's bytes, one at a time, in line pieces or in runs, to the
// record readers.
#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>

#include "api.h"

// A file read a large block at a time, with the operations of the C stream
// functions that the parser was written with: a byte at a time with one
// step back (fgetc, ungetc) and line pieces (fgets). A byte costs a pointer
// step instead of a library call. The parser's only reader of the file.
//
// The block keeps `padding` readable bytes past availableEnd(), whatever was
// read, so that code which looks at many bytes at once (a 16-byte compare, a
// number read eight digits at a time) may read that far past any text that
// ends inside the block. What they hold is unspecified but initialised.
class HxCSVInput {
public:
    static constexpr size_t padding = 16;

    explicit HxCSVInput(FILE* file);

    // The next byte, or EOF at the end of the file.
    int get()
    {
        if (next == end && !refill())
            return EOF;
        return static_cast<unsigned char>(*next++);
    }

    // Steps back over the byte that the last get() returned, which is always
    // in the block (get() refills before it takes a byte, never after).
    void unget() { --next; }

    // fgets: up to size - 1 bytes, through a line feed, NUL-terminated.
    // False at the end of the file when nothing was read.
    bool getPiece(char* buffer, int size);

    // Back to the start of the file.
    void rewind();

    // Called after each block read with the bytes read since the start (or
    // the last rewind); it may throw to end the reading, as a stop request
    // does.
    std::function<void(long long bytesRead)> onBlockRead;

    // The bytes read but not yet taken, for scanning many at once; take
    // them with skipTo. Empty only at the end of the file.
    const char* available()
    {
        if (next == end)
            refill();
        return next;
    }
    const char* availableEnd() const { return end; }
    void skipTo(const char* position) { next = position; }

    // The most that one read takes; tests make it small to put the ends of
    // blocks everywhere (exported for the tests of the package's readers).
    HXCSV_API static size_t largestBlock;

    // Where a byte of the block, or the next byte to read, lies in the file.
    long long offsetOf(const char* p) const { return blockOffset + (p - block.get()); }
    long long offset() const { return offsetOf(next); }

private:
    bool refill();

    FILE* file;
    const size_t blockSize;
    long long blockOffset = 0; // where the block's first byte lies in the file
    std::unique_ptr<char[]> block;
    const char* next;
    const char* end;
};
