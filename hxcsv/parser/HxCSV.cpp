// The driver of a parse: HxCSV's settings, the header names and the two
// passes over the file, the first counting the records, the second storing
// them. Hands the input block to the readers (PlainRecords.cpp,
// RecordReader.cpp) and each record they read to Rows.cpp.
#include "HxCSV.h"

#include "HxCSVInput.h"
#include "LineInput.h"
#include "Parse.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>

#include <sys/stat.h>
#include <memory>
#include <string>

namespace {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

// Bytes between two calls of the progress handler.
const long long progressStep = 4 << 20;

// Has the input hand the progress handler the share of the work done, pass
// 0 (counting) or 1 (storing) being half of it each.
void watchProgress(const HxCSV& csv, HxCSVInput& input, FILE* file, int pass)
{
    struct stat status;
    if (!csv.progress || fstat(fileno(file), &status) != 0 || status.st_size <= 0)
        return;
    const double total = static_cast<double>(status.st_size);
    long long next = 0;
    input.onBlockRead = [&csv, total, pass, next](long long read) mutable {
        if (read < next)
            return;
        next = read + progressStep;
        if (!csv.progress(0.5 * (pass + std::min(1.0, static_cast<double>(read) / total))))
            hxcsv::fail(CSVException::Stopped, "Stopped");
    };
}

void skipLines(HxCSVInput& input, long long n)
{
    char line[HxCSV::lineBufferSize];
    for (long long i = 0; i < n; ++i)
        if (hxcsv::readLine(input, line, sizeof line) < 0)
            return;
}

// Case-insensitive prefix test over the whole of a non-empty marker.
bool startsWithNoCase(const char* line, const McString& marker)
{
    return !marker.isEmpty() && strncasecmp(line, marker.getString(), marker.length()) == 0;
}

// Blanks go at both ends; the trailing trim never looks at the first
// character, so a name of blanks only keeps one.
McString trimBlanks(const McString& name)
{
    const char* text = name.getString();
    int end = name.length();
    while (end > 1 && text[end - 1] == ' ')
        --end;
    int begin = 0;
    while (begin < end - 1 && text[begin] == ' ')
        ++begin;
    return McString(text + begin, end - begin);
}

// Angle brackets (units such as "<m>") become blanks and quotes go away.
std::string cleanHeaderLine(const char* line)
{
    std::string text;
    for (const char* p = line; *p; ++p) {
        if (*p == '"')
            continue;
        text += (*p == '<' || *p == '>') ? ' ' : *p;
    }
    return text;
}

FILE* openFile(const char* name)
{
    FILE* file = std::fopen(name, "rb");
    if (!file)
        hxcsv::fail(CSVException::OpenFailed, "Could not open the file (%s)", name);
    return file;
}

// The header is split at the delimiter's first character, empty names
// included, even where data rows are split differently.
void readHeader(HxCSV& csv, HxCSVInput& input)
{
    char line[HxCSV::lineBufferSize];
    csv.columnNames.clear();
    if (hxcsv::readLine(input, line, sizeof line) >= 0) {
        McString(cleanHeaderLine(line).c_str()).explode((*csv.columnDelimiter)[0], csv.columnNames);
        for (McString& name : csv.columnNames)
            name = trimBlanks(name);
    }
    input.rewind();
}

// Blank lines count here; comment and delimiter lines are recognised by the
// whole marker, ignoring case.
int countPlainLines(const HxCSV& csv, HxCSVInput& input)
{
    char line[HxCSV::lineBufferSize];
    int count = 0;
    while (input.getPiece(line, sizeof line))
        if (!startsWithNoCase(line, *csv.commentMarker) && !startsWithNoCase(line, *csv.verticalDelimiter))
            ++count;
    return count;
}

} // namespace

namespace hxcsv {

// The message is sized to fit, so a long field value is shown whole.
void fail(CSVException::Error code, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    std::vsnprintf(&text[0], text.size() + 1, format, again);
    va_end(again);
    throw CSVException(text.c_str(), code);
}

} // namespace hxcsv

CSVException::CSVException(const char* message, Error code)
    : message(message ? message : ""), code(code)
{
}

HxCSV::HxCSV()
    : commentMarker(new McString("")),
      verticalDelimiter(new McString("")),
      columnDelimiter(new McString(" ")),
      d(new hxcsv::Parse(*this))
{
}

HxCSV::~HxCSV()
{
    delete fileName;
    delete commentMarker;
    delete verticalDelimiter;
    delete columnDelimiter;
}

void HxCSV::setFileName(const char* name)
{
    delete fileName;
    fileName = new McString(name ? name : "");
}

void HxCSV::setColumnDelimiter(McString delimiter)
{
    columnDelimiter->printf("%s", delimiter.getString());
}

void HxCSV::setVerticalDelimiter(McString delimiter)
{
    verticalDelimiter->printf("%s", delimiter.getString());
}

void HxCSV::setCommentMarker(McString marker)
{
    commentMarker->printf("%s", marker.getString());
}

void HxCSV::setFirstRowContainsColumnNames(bool value)
{
    firstRowContainsColumnNames = value;
}

void HxCSV::setNoLineBreaks(bool value)
{
    noLineBreaks = value;
}

bool HxCSV::getNoLineBreaks()
{
    return noLineBreaks;
}

void HxCSV::setDataStartLineNum(int n)
{
    dataStartLineNum = (firstRowContainsColumnNames && n == 1) ? 2 : n;
}

McString HxCSV::getColumnName(int i)
{
    // Callers pass a file column picked by the user; a file whose header is
    // shorter than its data rows simply has no name for it.
    if (i < 0 || i >= columnNames.size())
        return McString();
    return columnNames[i];
}

// Two passes: the first counts the records, so that every array is sized
// once, the second fills them.
int HxCSV::parse(bool ignoreColumnCount, bool plainLines)
{
    verticalDelimiterRows.clear();
    const char* name = fileName ? fileName->getString() : "";
    FilePtr file(openFile(name));
    int count = 0;
    {
        HxCSVInput input(file.get());
        watchProgress(*this, input, file.get(), 0);
        if (firstRowContainsColumnNames)
            readHeader(*this, input);
        skipLines(input, dataStartLineNum - 1LL);
        count = plainLines ? countPlainLines(*this, input) : d->countRecords(input);
    }
    file.reset();
    file.reset(openFile(name));
    HxCSVInput input(file.get());
    watchProgress(*this, input, file.get(), 1);
    skipLines(input, dataStartLineNum - 1LL);
    if (rowsCounted)
        rowsCounted(count);
    resizeDataStorage(count);
    d->readRows(input, count, ignoreColumnCount, plainLines);
    return 1;
}

namespace hxcsv {

// Both passes start from a fresh reader state so that they see the same
// records; a re-join made while counting is made again while reading.
void Parse::resetRecordState(bool counting)
{
    csv.joinedRecordCount = 0;
    csv.recordContinued = false;
    fieldsOfRecordRead = false;
    prepareRecordSyntax(counting);
}

int Parse::countRecords(HxCSVInput& input)
{
    resetRecordState(true);
    RecordBuffer record = {};
    int count = 0;
    while (readRecord(input, record, count) != -1) {
    }
    return count;
}

// The record's length, or -1 at end of file.
int Parse::readOneRecord(HxCSVInput& input, char* buffer, bool plainLines, int& recordsRead)
{
    if (plainLines) {
        recordStart = input.offset();
        return readLine(input, buffer, HxCSV::lineBufferSize);
    }
    return readRecord(input, buffer, recordsRead);
}

// Only the record's first character is compared with the marker's here.
bool Parse::startsComment(const char* record) const
{
    return !csv.commentMarker->isEmpty() && record[0] == (*csv.commentMarker)[0];
}

// The storing pass notes what the rules did to the data, also when it
// fails part way.
void Parse::readRows(HxCSVInput& input, int count, bool ignoreColumnCount, bool plainLines)
{
    resetRecordState(false);
    startNoting(input);
    try {
        storeRows(input, count, ignoreColumnCount, plainLines);
    } catch (const CSVException& e) {
        finishNoting(&e);
        throw;
    }
    finishNoting(nullptr);
}

void Parse::storeRows(HxCSVInput& input, int count, bool ignoreColumnCount, bool plainLines)
{
    RecordBuffer buffer = {};
    int recordsRead = 0;
    long long lineNumber = csv.dataStartLineNum - 1LL;
    for (int row = 0; row < count;) {
        if (!plainLines) {
            row = storePlainRows(input, buffer, row, count, ignoreColumnCount, lineNumber, recordsRead);
            if (row == count)
                break;
        }
        ++lineNumber;
        const int length = readOneRecord(input, buffer, plainLines, recordsRead);
        if (length < 0) {
            csv.notices.endOfFile = true;
            recordStart = input.offset() - 1; // the file's last byte
            fail(CSVException::BadValue, "Unexpected end of file (line %lld)", lineNumber);
        }
        if (startsComment(buffer))
            continue;
        if (processRecord(buffer, length, row, ignoreColumnCount) != -2)
            ++row;
    }
}

} // namespace hxcsv
