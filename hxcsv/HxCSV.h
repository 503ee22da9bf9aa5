#pragma once
// The CSV parser's interface: settings, bindings and one parse. What a
// parse does, stage by stage, is in parser/ (parser/Parse.h has the map).
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>

#include <QString>
#include <QStringList>

#include "McDArray.h"
#include "McPrimType.h"
#include "McString.h"
#include "McVec3.h"
#include "api.h"

namespace hxcsv {
class Parse;
}

// The one error the parser reports. Thrown by value; catch it as a constant
// reference and show `message` to the user.
class HXCSV_API CSVException {
public:
    enum Error : int32_t {
        OpenFailed = 0,  // "Could not open the file (%s)"
        ColumnCount = 2, // "Unexpected number of columns (line %d)"
        BadValue = 3,    // a value that is not a number, or an early end of file
        Stopped = 4,     // "Stopped": the progress handler asked to stop
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
class HXCSV_API HxCSV {
public:
    // The texts of a text-number column (addTextNumberColumn) that were not
    // wholly a number, blanks and tabs after it aside: how many, and the
    // first of them.
    struct TextNumberMisses {
        int count = 0;
        int firstRow = -1;
        McString firstText;
    };

    // Float rows in storage that the caller sizes itself once the rows are
    // counted (rowsCounted): row i goes to first[i * stride]. Lets a column
    // land in its final place, such as one component of an array of points.
    struct FloatRows {
        float* first = nullptr;
        int stride = 1;
    };

    // Text rows in storage that the caller sizes in its rowsCounted handler:
    // row i goes to first[i], the text that addColumn(int,
    // McDArray<McString>*) would store, as a Latin-1 QString. Equal texts
    // share one string, so a column of a few classes costs little memory.
    struct TextRows {
        QString* first = nullptr;
    };

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
        TextNumberMisses* textNumberMisses = nullptr; // TextNumber, optional
        FloatRows* floatRows = nullptr; // Float or TextNumber instead of floatData
        TextRows* textRows = nullptr;   // Text instead of stringData
    };

    enum StorageKind {
        RawBuffer = 0,
        FloatVectorComponent = 1,
        DoubleVectorComponent = 2,
        Text = 3,
        Float = 4,
        Double = 5,
        TextNumber = 6, // see addTextNumberColumn
    };

    // Size of the record buffers; a longer physical line is read as several.
    static constexpr int lineBufferSize = 2048;
    // Readable bytes after the record buffers, so that numbers can be read
    // many bytes at a time.
    static constexpr int lineBufferPadding = 16;

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
    // outside the storage sized by resizeDataStorage are not written. The
    // record is Latin-1 text, as read from the file.
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

    // A text column wanted as a number the way the point cloud reads its
    // value columns: std::strtod of the text that addColumn(int,
    // McDArray<McString>*) would store, as a float; 0 for text that is no
    // number. Like a text column it never fails and is never tried by the
    // record reader; unlike one it keeps no string per value. misses, when
    // given, learns of the texts that were not wholly a number.
    void addTextNumberColumn(int columnIndex, McDArray<float>* array, TextNumberMisses* misses = nullptr);

    // The same two bindings into storage that the caller sizes in its
    // rowsCounted handler and describes in rows before the handler returns.
    void addColumn(int columnIndex, FloatRows* rows);
    void addTextNumberColumn(int columnIndex, FloatRows* rows, TextNumberMisses* misses = nullptr);
    void addColumn(int columnIndex, TextRows* rows);

    // Called by parse with the number of rows once they are counted, before
    // any target is sized or any row stored.
    std::function<void(int rows)> rowsCounted;

    // Called now and then while parse reads (about every 4 MiB) with the
    // share of the work done, 0 to 1; the two passes over the file weigh
    // alike, by the bytes they read. Returning false stops the parse, which
    // throws CSVException with the code Stopped.
    std::function<bool(double done)> progress;

    // Sizes every target to rows (negative counts as 0); numbers and raw
    // buffers are cleared to 0, vector elements are left as they are.
    void resizeDataStorage(int rows);

    // The i-th (0-based) header name; empty when there is none.
    McString getColumnName(int i);

    // The record (Latin-1 text) split into fields: runs of delimiters count
    // once, a delimiter inside double quotes does not split, no field is
    // empty.
    QStringList splitFields(const QString& record);

    // One way in which the import rules changed what parse read: how often,
    // the 1-based line of the file where it first did, and a sample (the
    // raw bytes of that line, or of the text concerned).
    struct Notice {
        int count = 0;
        long long line = 0;
        McString text;
    };

    // What the last parse's storing pass saw, each record or text counted
    // once. The parser only notes these; its callers tell the user.
    struct Notices {
        // Data records that went on into the next line(s) because their line
        // had too few fields: on the first one, the fields of the line, the
        // fields a record needed then and the line it went on in.
        Notice continuedRecords;
        int fieldsOnLine = 0;
        int fieldsNeeded = 0;
        long long continuedOnLine = 0;
        // Data records that lost an empty field to a run of delimiters or to
        // a delimiter before their first field. Runs of blanks, and of white
        // space with "\s", align columns and are not counted.
        Notice collapsedFields;
        // Texts of text columns that hold multi-byte UTF-8, read as Latin-1.
        Notice utf8Texts;
        // The data start at the file's start with a UTF-8 byte-order mark,
        // which is read as part of the first value.
        bool byteOrderMark = false;
        // Texts of text columns cut where their record filled its buffer.
        Notice cutTexts;
        // After a parse error that counts data rows: the line where the
        // failed record starts, and that line; for an early end of file
        // (endOfFile), the file's last line.
        Notice failedRecord;
        bool endOfFile = false;
    };
    Notices notices;

private:
    // What a parse keeps besides the settings and bindings above: the record
    // reader's state, the fields of the record read last, the text cache
    // (parser/Parse.h).
    std::unique_ptr<hxcsv::Parse> d;
};
