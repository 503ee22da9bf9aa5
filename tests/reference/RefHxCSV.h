// The parser's reading, splitting and conversion as they were before the hot
// paths were rewritten, kept unchanged as the oracle of the differential
// tests: every result of hxcsv's HxCSV must equal this one's, bit for bit.
#pragma once
#include <cstdint>
#include <cstdio>

#include <QRegExp>
#include <QString>
#include <QStringList>

#include "HxCSV.h"
#include "McDArray.h"
#include "McPrimType.h"
#include "McString.h"
#include "McVec3.h"

namespace ref {

// The settings, the bindings and the sizing of their targets did not
// change: they are hxcsv's own. Reading, splitting and converting are the
// old ones below, which hide hxcsv's.
using CSVException = ::CSVException;

class HxCSV : public ::HxCSV {
public:
    int parse(bool ignoreColumnCount, bool plainLines);

    // Reads one logical record into buffer (NUL-terminated, at most size - 1
    // characters) and raises recordCount for a data record. Returns -1 at end
    // of file, else 0.
    int csvGetLine(char* buffer, int size, FILE* file, int& recordCount);

    // Splits one record and stores its bound fields at rowIndex. Returns 1
    // for a data row, -2 for a comment or vertical-delimiter line. Rows
    // outside the storage sized by resizeDataStorage are not written.
    int processLine(QString* record, QString* commentMarker, QString* verticalDelimiter,
                    int rowIndex, bool ignoreColumnCount);

    // hxcsv's sizing, noting the rows that raw buffers hold.
    void resizeDataStorage(int rows);

    // The record split into fields: runs of delimiters count once, a
    // delimiter inside double quotes does not split, no field is empty.
    QStringList splitFields(const QString& record);

private:
    class RecordReader;

    [[noreturn]] static void fail(CSVException::Error code, const char* format, ...)
        __attribute__((format(printf, 2, 3)));

    static FILE* openFile(const char* name);
    long long lastBoundColumnIndex() const;
    void resetRecordState();
    void readHeader(FILE* file);
    int countRecords(FILE* file);
    int countPlainLines(FILE* file);
    bool readOneRecord(FILE* file, char* buffer, bool plainLines, int& recordsRead);
    bool startsComment(const char* record) const;
    void readRows(FILE* file, int count, bool ignoreColumnCount, bool plainLines);
    const QString& pickField(const QStringList& fields, int position, int rowIndex,
                             bool ignoreColumnCount) const;
    void storeField(const CSVDataColumn& column, const QString& field, int rowIndex);
    template <class T>
    T* rawRow(const CSVDataColumn& column, int rowIndex) const;
    const QRegExp& fieldPattern();

    int storageRows = 0;      // rows sized by resizeDataStorage
    QString patternDelimiter; // the delimiter fieldPatternCache was built for
    QRegExp fieldPatternCache;
    bool patternBuilt = false;
};

} // namespace ref
