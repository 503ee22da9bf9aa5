// The parser as it was before its hot paths were rewritten, kept unchanged
// as the oracle of the differential tests: every result of hxcsv's HxCSV
// must equal this one's, bit for bit.
#pragma once
#include <cstdint>
#include <cstdio>

#include <QRegExp>
#include <QString>
#include <QStringList>

#include "McDArray.h"
#include "McPrimType.h"
#include "McString.h"
#include "McVec3.h"

namespace ref {

// The one error the parser reports. Thrown by value; catch it as a constant
// reference and show `message` to the user.
class CSVException {
public:
    enum Error : int32_t {
        OpenFailed = 0,  // "Could not open the file (%s)"
        ColumnCount = 2, // "Unexpected number of columns (line %d)"
        BadValue = 3,    // a value that is not a number, or an early end of file
    };

    // A null message gives an empty text.
    CSVException(const char* message, Error code);

    McString message;
    Error code;
};

// Reads a CSV file into typed arrays that the caller owns.
//
// Use: construct; setFileName, setCommentMarker, setFirstRowContainsColumnNames,
// setDataStartLineNum (after the header flag), setColumnDelimiter,
// setVerticalDelimiter, setNoLineBreaks; addColumn for every wanted file
// column; parse; then read the bound arrays, verticalDelimiterRows and
// getColumnName. One object serves one file.
class HxCSV {
public:
    // One binding of a file column to a target array.
    struct CSVDataColumn {
        int columnIndex = 0;  // 0-based field of a record; negative: not read
        int storageKind = 0;  // see StorageKind
        McPrimType primType = McPrimType(3);
        int component = 0;    // 0, 1, 2 for the vector kinds
        void** rawData = nullptr;
        McDArray<McString>* stringData = nullptr;
        McDArray<McVec3<float>>* vec3fData = nullptr;
        McDArray<McVec3<double>>* vec3dData = nullptr;
        McDArray<float>* floatData = nullptr;
        McDArray<double>* doubleData = nullptr;
    };

    enum StorageKind {
        RawBuffer = 0,
        FloatVectorComponent = 1,
        DoubleVectorComponent = 2,
        Text = 3,
        Float = 4,
        Double = 5,
    };

    // Size of the record buffers; a longer physical line is read as several.
    static constexpr int lineBufferSize = 2048;

    HxCSV();
    ~HxCSV();
    HxCSV(const HxCSV&) = delete;
    HxCSV& operator=(const HxCSV&) = delete;

    // Data-row indices before which a vertical-delimiter line was met.
    McDArray<int> verticalDelimiterRows;
    McDArray<CSVDataColumn> columns;
    // The setting strings belong to the parser and are freed with it.
    McString* fileName = nullptr;
    int dataStartLineNum = 1; // 1-based physical line where data starts
    McString* commentMarker;
    McString* verticalDelimiter;
    McString* columnDelimiter; // "\s" splits at any white space
    bool firstRowContainsColumnNames = false;
    McDArray<McString> columnNames;
    bool noLineBreaks = false; // true: one physical line may hold many records
    // Raised each time the record reader re-joins a record whose values did
    // not convert; every later record then needs one more field.
    int joinedRecordCount = 0;
    bool recordContinued = false;

    void setFileName(const char* name);
    void setColumnDelimiter(McString delimiter);
    void setVerticalDelimiter(McString delimiter);
    void setCommentMarker(McString marker);
    void setFirstRowContainsColumnNames(bool value);
    void setNoLineBreaks(bool value);
    bool getNoLineBreaks();
    // Moves a start line of 1 to 2 when the header flag is already set; the
    // flag is looked at only here, so set it first.
    void setDataStartLineNum(int n);

    // Reads the whole file into the bound arrays. Returns 1; throws
    // CSVException. plainLines reads one physical line per record instead of
    // records made of the needed number of fields.
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

    // Bindings, converted in call order. A raw buffer (void**) is allocated
    // with malloc/realloc by the parser and released by the caller with free;
    // only float and int32 buffers are written. The first form binds no
    // buffer: its column is counted and checked but stored nowhere.
    void addColumn(int columnIndex, McPrimType type);
    void addColumn(int columnIndex, McPrimType type, void** buffer);
    void addColumn(int columnIndex, McDArray<double>* array);
    void addColumn(int columnIndex, McDArray<float>* array);
    void addColumn(int columnIndex, McDArray<McString>* array);
    void addColumn(int columnIndex, McDArray<McVec3<double>>* array, int component);
    void addColumn(int columnIndex, McDArray<McVec3<float>>* array, int component);

    // Sizes every target to rows (negative counts as 0); numbers and raw
    // buffers are cleared to 0, vector elements are left as they are.
    void resizeDataStorage(int rows);

    // The i-th (0-based) header name; empty when there is none.
    McString getColumnName(int i);

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
