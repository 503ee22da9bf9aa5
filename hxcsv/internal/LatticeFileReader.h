#pragma once
// The uniform field importer's file reading: every number of a text file, in
// reading order, converted to the lattice's value type as it is read.
#include <climits>
#include <cstddef>
#include <cstdio>

#include "ImportProgress.h"
#include "McDArray.h"

namespace hxcsv {

struct LatticeFileSettings {
    char delimiter;
    char comment;
    // Lines 1 to firstLine - 1 are not read.
    int firstLine;
};

// fgets reads at most this minus one bytes: a longer line comes in pieces,
// each of which counts as a line of its own.
constexpr int latticeLineBytes = 10000;

// Reports, once per sink, that a file holds more values than an int counts.
void reportTooManyValues(bool& reported);

// Where the values of a file go. Either a host array, appended to through a
// plain pointer (while values come, the array's size is its capacity; at the
// end it is the count of values), which grows as append grows it; or a block
// of fixed room, past which values are counted but not kept.
template <class T>
class ValueSink {
public:
    explicit ValueSink(McDArray<T>& values) : array(&values), count(values.size()) { openArray(); }
    ValueSink(T* block, long long room) : data(block), count(0), room(room < INT_MAX ? static_cast<int>(room) : INT_MAX)
    {
    }
    ~ValueSink()
    {
        if (array)
            array->resize(count);
    }
    ValueSink(const ValueSink&) = delete;
    ValueSink& operator=(const ValueSink&) = delete;

    void add(T value)
    {
        if (count < room)
            data[count++] = value;
        else
            addPastRoom(value);
    }

    // Values taken, kept or not (those in the array before included).
    int size() const { return count; }

private:
    void openArray()
    {
        array->resize(array->capacity());
        data = array->dataPtr();
        room = array->size();
    }

    void addPastRoom(T value)
    {
        if (count == INT_MAX) {
            reportTooManyValues(reported);
            return;
        }
        if (array) {
            array->resize(count);
            array->append(value);
            openArray();
        }
        ++count;
    }

    McDArray<T>* array = nullptr;
    T* data = nullptr;
    int count;
    int room = 0;
    bool reported = false;
};

// Reads every value of the file into the sink: lines as fgets reads them
// into a buffer of latticeLineBytes (each up to its first NUL, without its
// trailing CR and LF); lines before the first line and lines starting with
// the comment character are skipped; the rest is split on the delimiter as
// strtok splits (runs of delimiters, and delimiters at either end, give no
// value); each token is read as QString::toDouble reads it, a token it cannot
// read giving 0 after a note on the console, and converted to T.
// Reports the bytes read to progress, when given; false when the user asked
// to stop there. Instantiated for the six value types.
template <class T>
bool readLatticeFile(FILE* file, const LatticeFileSettings& settings, ValueSink<T>& sink,
                     ImportProgress* progress = nullptr);

} // namespace hxcsv
