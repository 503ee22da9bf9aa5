// The bindings of file columns to targets, and the sizing of the targets
// once the rows are counted. Row storage (Rows.cpp) fills what is sized here.
#include "HxCSV.h"

#include "LargeArrays.h"
#include "Parse.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// Every target is sized once, before it is filled: room for all rows in one
// allocation, on huge pages where the kernel has them.
template <class T>
void resizeOnce(McDArray<T>* array, int rows)
{
    if (!array)
        return;
    hxcsv::reserveFinalSize(*array, rows);
    array->resize(rows);
}

template <class T>
void resizeZeroed(McDArray<T>* array, int rows)
{
    if (!array)
        return;
    const int oldSize = array->size();
    resizeOnce(array, rows);
    for (int i = oldSize; i < rows; ++i)
        (*array)[i] = 0;
}

void resizeRaw(const HxCSV::CSVDataColumn& column, int rows)
{
    if (!column.rawData)
        return; // a binding without a buffer only checks its column
    const size_t bytes = static_cast<size_t>(column.primType.size()) * static_cast<size_t>(rows);
    // Never ask for zero bytes: realloc(p, 0) would free the caller's buffer.
    const size_t asked = std::max<size_t>(bytes, 1);
    void* buffer = *column.rawData ? std::realloc(*column.rawData, asked) : std::malloc(asked);
    if (!buffer)
        throw std::bad_alloc();
    *column.rawData = buffer;
    std::memset(buffer, 0, bytes);
}

} // namespace

void HxCSV::addColumn(int columnIndex, McPrimType type)
{
    CSVDataColumn column;
    column.columnIndex = columnIndex;
    column.storageKind = RawBuffer;
    column.primType = type;
    columns.append(column);
}

void HxCSV::addColumn(int columnIndex, McPrimType type, void** buffer)
{
    addColumn(columnIndex, type);
    columns.last().rawData = buffer;
}

void HxCSV::addColumn(int columnIndex, McDArray<double>* array)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = Double;
    columns.last().doubleData = array;
}

void HxCSV::addColumn(int columnIndex, McDArray<float>* array)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = Float;
    columns.last().floatData = array;
}

void HxCSV::addColumn(int columnIndex, McDArray<McString>* array)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = Text;
    columns.last().stringData = array;
}

void HxCSV::addColumn(int columnIndex, McDArray<McVec3<double>>* array, int component)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = DoubleVectorComponent;
    columns.last().vec3dData = array;
    columns.last().component = component;
}

void HxCSV::addColumn(int columnIndex, McDArray<McVec3<float>>* array, int component)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = FloatVectorComponent;
    columns.last().vec3fData = array;
    columns.last().component = component;
}

void HxCSV::addTextNumberColumn(int columnIndex, McDArray<float>* array, TextNumberMisses* misses)
{
    addColumn(columnIndex, McPrimType(0));
    columns.last().storageKind = TextNumber;
    columns.last().floatData = array;
    columns.last().textNumberMisses = misses;
}

void HxCSV::addColumn(int columnIndex, FloatRows* rows)
{
    addColumn(columnIndex, static_cast<McDArray<float>*>(nullptr));
    columns.last().floatRows = rows;
}

void HxCSV::addTextNumberColumn(int columnIndex, FloatRows* rows, TextNumberMisses* misses)
{
    addTextNumberColumn(columnIndex, static_cast<McDArray<float>*>(nullptr), misses);
    columns.last().floatRows = rows;
}

void HxCSV::addColumn(int columnIndex, TextRows* rows)
{
    addColumn(columnIndex, static_cast<McDArray<McString>*>(nullptr));
    columns.last().textRows = rows;
}

void HxCSV::resizeDataStorage(int rows)
{
    rows = std::max(rows, 0);
    d->storageRows = rows;
    d->sharedTexts.clear();
    // addColumn gives a binding one target; the others are null and skip.
    for (const CSVDataColumn& column : columns) {
        resizeOnce(column.vec3fData, rows);
        resizeOnce(column.vec3dData, rows);
        resizeOnce(column.stringData, rows);
        resizeZeroed(column.floatData, rows);
        resizeZeroed(column.doubleData, rows);
        resizeRaw(column, rows);
    }
}

namespace hxcsv {

long long Parse::lastBoundColumnIndex() const
{
    long long last = 0;
    for (const HxCSV::CSVDataColumn& column : csv.columns)
        last = std::max<long long>(last, column.columnIndex);
    return last;
}

} // namespace hxcsv
