// The uniform field importer's reading and lattice filling as first written,
// kept as the oracle of its differential test: fgets into a 10000-byte
// buffer, strtok on the delimiter, QString::toDouble, one append per value,
// then the copy into the lattice in either index order with its size
// warnings.
#pragma once
#include <QString>

#include "McDArray.h"

namespace ref {

struct LatticeSettings {
    QString delimiter;
    QString comment;
    int firstLine = 1;
    int type = 5; // byte, short, ushort, int32, float, double
    int nDataVar = 1;
    int dims[3] = {1, 1, 1};
    bool xFastest = true;
    bool quiet = false;
};

class LatticeReader {
public:
    // Appends the values of the file to the array of the type and, when that
    // array holds any, copies them into lattice (dims x nDataVar elements of
    // the type).
    void parse(const char* path, const LatticeSettings& s, void* lattice);

    int arraySize(int type) const;
    const void* arrayData(int type) const;

private:
    void append(int type, double value);
    void fill(const char* path, const LatticeSettings& s, char* lattice);

    McDArray<unsigned char> byteValues;
    McDArray<short> shortValues;
    McDArray<unsigned short> ushortValues;
    McDArray<int> int32Values;
    McDArray<float> floatValues;
    McDArray<double> doubleValues;
};

} // namespace ref
