#pragma once
// Storage for large targets, sized once: used where Bindings.cpp sizes the
// parser's targets and where the importers size their own.
#include <algorithm>
#include <cstddef>

#include "McDArray.h"

namespace hxcsv {

// Asks the kernel to back the whole 2 MB pages inside [p, p + bytes) with
// huge pages. Worth it only before the memory is first touched: a page
// fault costs about as much as reading a hundred numbers, and a 100 MB
// array takes 25000 of them with small pages, 50 with huge ones. A hint:
// where huge pages are off, nothing changes.
void adviseHugePages(void* p, size_t bytes);

// Room for n elements in one allocation, before anything is stored, for an
// array that is then filled to that size.
template <class T>
void reserveFinalSize(McDArray<T>& array, int n)
{
    array.remax(n);
    adviseHugePages(array.dataPtr(), sizeof(T) * static_cast<size_t>(std::max(n, 0)));
}

} // namespace hxcsv
