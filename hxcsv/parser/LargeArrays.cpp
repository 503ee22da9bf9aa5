// Huge pages for large targets.
#include "LargeArrays.h"

#include <cstdint>
#include <sys/mman.h>

namespace hxcsv {

void adviseHugePages(void* p, size_t bytes)
{
    const uintptr_t hugePage = uintptr_t(2) << 20;
    const uintptr_t first = reinterpret_cast<uintptr_t>(p);
    const uintptr_t begin = (first + hugePage - 1) & ~(hugePage - 1);
    const uintptr_t end = (first + bytes) & ~(hugePage - 1);
    if (p && end > begin)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

} // namespace hxcsv
