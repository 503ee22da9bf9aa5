#pragma once
// The parser's own side of HxCSV: the state that the stages of a parse
// share. HxCSV (HxCSV.h) holds the settings and bindings and owns one Parse.
// A parse runs through these stages, a file each, every one handing on to
// the next:
//
//   HxCSV.cpp         the driver: settings, header names, two passes over
//                     the file (count the records, size the targets, store
//                     the rows); hands the input block (HxCSVInput.h) to
//                     the readers
//   PlainRecords.cpp  runs of the common record straight from the block;
//                     hands fields known to be short decimals to Rows.cpp
//   RecordReader.cpp  any other record, byte by byte, by every rule
//                     (wrapped lines, quotes, comments, breaks, re-joins);
//                     hands the record, and often its fields, to Rows.cpp
//   HxCSVFields.cpp   a record split into fields, where they are not known
//   Rows.cpp          a record's fields converted and stored as one row
//   HxCSVNumbers.cpp  a field's bytes to a number
//
// Bindings.cpp holds the bindings and sizes their targets between the
// passes. Notices.cpp keeps what the storing pass notes where the rules
// change the data (HxCSV::notices) and finds the file's lines for it.
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "HxCSV.h"
#include "HxCSVFields.h"
#include "HxCSVNumbers.h"

class HxCSVInput;

namespace hxcsv {

// Throws the CSVException; the message is formatted as by printf.
[[noreturn]] void fail(CSVException::Error code, const char* format, ...) __attribute__((format(printf, 2, 3)));

// What the record reader looks for; set up from the settings and bindings
// at the start of each reading.
struct RecordSyntax {
    int delimiter = 0;   // first character of the column delimiter, 0 for none
    int breakChar = 0;   // first character of the vertical delimiter
    int commentChar = 0; // first character of the comment marker
    long long lastIndex = 0;
    bool special[256] = {}; // bytes that a run of plain text stops at
    bool counting = false;  // the values of the records are not wanted
    bool fieldsByDelimiter = false; // the delimiter is one character, not the quote
    bool plainRecords = false;      // plain records can be read in one go
    uint64_t testedFields = 0;      // fields whose numbers the record reader tries
    bool testsAll64 = true;         // testedFields names every field tried
    bool strtodReadsShortDecimals = false; // in the locale of this reading
    bool shortDecimalTargets = false;      // every bound column takes a short decimal as it is
    // The reader's runs of delimiters drop empty fields: a one-character
    // delimiter other than the blank (whose runs align columns) and the
    // line ends.
    bool dropsEmptyFields = false;
};

// Where the storing pass first met what HxCSV::Notices reports, as offsets
// in the file (-1: never); they become lines once the pass is over.
struct NoticeOffsets {
    long long shortLine = -1;   // the line end of a line with too few fields
    long long continuedOn = -1; // a byte of the line its record went on in
    long long collapsed = -1;
    long long utf8Text = -1;
    long long cutText = -1;
    long long failedRecord = -1;
};

// A text column's text of a field: only text columns remove the quotes,
// and only when the field starts with one; the last character goes
// whatever it is.
inline HxCSVField textOf(const char* record, HxCSVField field)
{
    if (field.length > 0 && record[field.begin] == '"')
        return {field.begin + 1, field.length > 1 ? field.length - 2 : 0};
    return field;
}

// The buffer a record is read into: at most lineBufferSize - 1 bytes and a
// NUL, then padding for the short-decimal shortcut, which reads known short
// decimals where they lie in it.
using RecordBuffer = char[HxCSV::lineBufferSize + HxCSV::lineBufferPadding];
static_assert(HxCSV::lineBufferPadding >= static_cast<int>(HxCSVNumbers::recordPadding),
              "known short decimals are read from the padded record buffers");

// A number of a field of the record split last, converted once however
// many columns and tests ask for it.
template <class T>
struct Converted {
    uint64_t split = 0; // the split that value belongs to
    T value = 0;
    bool ok = false;
};
using FieldNumbers = std::tuple<Converted<float>, Converted<double>>;

class Parse {
public:
    explicit Parse(HxCSV& csv) : csv(csv) {}
    Parse(const Parse&) = delete;
    Parse& operator=(const Parse&) = delete;

    HxCSV& csv; // the settings and bindings

    // HxCSV.cpp: the two passes.
    int countRecords(HxCSVInput& input);
    void readRows(HxCSVInput& input, int count, bool ignoreColumnCount, bool plainLines);

    // PlainRecords.cpp: stores the plain records that come next, from row
    // on. Returns the row after the last stored.
    int storePlainRows(HxCSVInput& input, char* buffer, int row, int count, bool ignoreColumnCount,
                       long long& lineNumber, int& recordsRead);

    // RecordReader.cpp
    void prepareRecordSyntax(bool counting);
    // Reads the next record into buffer. Its length, or -1 at end of file.
    int readRecord(HxCSVInput& input, char* buffer, int& recordCount);

    // Rows.cpp
    const std::vector<HxCSVField>& splitRecord(const char* record, int length);
    // fields holds a new record's: numbers converted so far are not theirs.
    void takeNewFields();
    // Whether the numbers that the record reader tries before it takes a
    // record convert: those of the float and double columns.
    bool numbersConvert(const char* record);
    // processLine for the parser's own records and markers.
    int processRecord(const char* record, int length, int rowIndex, bool ignoreColumnCount);
    // split: fields already holds the fields of this record. lastIndex: the
    // largest bound column index.
    int storeRow(const char* record, int length, int rowIndex, bool ignoreColumnCount, bool split,
                 long long lastIndex);
    // storeRow for a plain record of count fields, given by recordFields and
    // the bits of those that are known short decimals (which are followed by
    // enough readable bytes), when every bound field is one and is bound to
    // a float or double target: the same values, without the general
    // conversions. False, storing nothing, for any other row.
    bool storeShortDecimalRow(const char* record, const HxCSVField* recordFields, size_t count, uint64_t shortDecimals,
                              int rowIndex, bool ignoreColumnCount);

    // Bindings.cpp: at least 0, so a record always needs one field even
    // with nothing bound.
    long long lastBoundColumnIndex() const;

    // Notices.cpp: what the storing pass tells the caller (HxCSV::notices),
    // noted only between startNoting and finishNoting.
    void startNoting(HxCSVInput& input);
    // failure: the parse error that ends the pass, if any.
    void finishNoting(const CSVException* failure);
    void noteContinued(long long shortLine, long long continuedOn, long long fieldsOnLine, long long fieldsNeeded);
    void noteCollapsed(long long offset);
    // A text stored from the record read last that holds multi-byte UTF-8.
    void noteUtf8Text(const char* text, int length);
    // A record stored that fills a record buffer, fields its fields.
    void noteCutText(const char* record);

    // Set up by prepareRecordSyntax for each reading.
    RecordSyntax syntax;

    // The record read or split last.
    std::unique_ptr<HxCSVFieldSplitter> splitter; // for the delimiter it names
    std::vector<HxCSVField> fields;
    // The record reader leaves the fields of the record that it returned:
    // it split the record to try its numbers and did not change it after.
    bool fieldsOfRecordRead = false;
    std::vector<FieldNumbers> fieldNumbers;
    uint64_t splitNumber = 0;        // splits made so far
    uint64_t shortDecimalFields = 0; // of the first 64 fields, those seen to be short decimals
    bool fieldsDroppedEmpty = false; // the split that made fields dropped an empty one

    // What the notices need to know of the records (offsets in the file).
    bool noting = false;
    NoticeOffsets noticed;
    long long recordStart = -1;     // of the record read last
    long long cutAt = -1;           // the byte that did not fit into the last record cut short
    long long cutRecordStart = -1;  // and where that record starts

    // The targets.
    int storageRows = 0; // rows sized by resizeDataStorage
    // The distinct texts met in each TextRows column (by column), up to a
    // bound; a text seen before is stored as a copy sharing its data.
    struct SharedText {
        QString text;
        bool utf8; // holds multi-byte UTF-8
    };
    std::unordered_map<const HxCSV::TextRows*, std::unordered_map<std::string, SharedText>> sharedTexts;
    std::string textKey;

private:
    // HxCSV.cpp
    void resetRecordState(bool counting);
    void storeRows(HxCSVInput& input, int count, bool ignoreColumnCount, bool plainLines);
    int readOneRecord(HxCSVInput& input, char* buffer, bool plainLines, int& recordsRead);
    bool startsComment(const char* record) const;

    // Notices.cpp: lines and samples for the offsets noticed.
    void locateNotices();

    // Rows.cpp
    // The field that the binding at position, reading columnIndex, stores.
    size_t pickField(int position, int columnIndex, int rowIndex, bool ignoreColumnCount) const;
    void storeField(const HxCSV::CSVDataColumn& column, const char* record, size_t fieldIndex, int rowIndex);
    void storeTextNumber(const HxCSV::CSVDataColumn& column, const char* record, size_t fieldIndex, int rowIndex);
    void storeText(const HxCSV::CSVDataColumn& column, const char* record, HxCSVField text, int rowIndex);
    // float or double, as HxCSVNumbers::toFloat and toDouble give it.
    template <class T>
    T fieldValue(const char* record, size_t fieldIndex, bool& ok);
    template <class T>
    T storedValue(const char* record, size_t fieldIndex, bool& ok);
    template <class T>
    T* rawRow(const HxCSV::CSVDataColumn& column, int rowIndex) const;
};

} // namespace hxcsv
