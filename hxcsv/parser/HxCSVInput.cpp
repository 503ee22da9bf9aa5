// The input block: reading a file a large block at a time.
#include "HxCSVInput.h"

#include <algorithm>
#include <cstring>

#include <sys/stat.h>

size_t HxCSVInput::largestBlock = 1 << 20;

namespace {

// A small file needs no more than its own size; never less than a byte.
size_t blockSizeFor(FILE* file, size_t largest)
{
    struct stat status;
    size_t size = largest;
    if (fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode))
        size = std::min(static_cast<size_t>(status.st_size) + 1, largest); // + 1 to see the end at once
    return std::max<size_t>(size, 1);
}

} // namespace

HxCSVInput::HxCSVInput(FILE* file)
    // Zeroed once, padding included, so no byte past a short read is
    // uninitialised.
    : file(file), blockSize(blockSizeFor(file, largestBlock)), block(new char[blockSize + padding]()),
      next(block.get()), end(next)
{
}

bool HxCSVInput::refill()
{
    blockOffset = offset();
    const size_t n = std::fread(block.get(), 1, blockSize, file);
    next = block.get();
    end = next + n;
    if (n > 0 && onBlockRead)
        onBlockRead(offsetOf(end));
    return n > 0;
}

bool HxCSVInput::getPiece(char* buffer, int size)
{
    int length = 0;
    while (length < size - 1) {
        const char* from = available();
        if (from == end)
            break;
        const size_t room = static_cast<size_t>(size - 1 - length);
        const size_t have = static_cast<size_t>(end - from);
        const size_t n = have < room ? have : room;
        const char* lineEnd = static_cast<const char*>(std::memchr(from, '\n', n));
        const size_t taken = lineEnd ? static_cast<size_t>(lineEnd - from) + 1 : n;
        std::memcpy(buffer + length, from, taken);
        length += static_cast<int>(taken);
        next = from + taken;
        if (lineEnd)
            break;
    }
    if (length == 0)
        return false;
    buffer[length] = '\0';
    return true;
}

void HxCSVInput::rewind()
{
    blockOffset = 0;
    std::rewind(file);
    next = end = block.get();
}
