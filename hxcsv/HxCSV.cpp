// HxCSV settings, the header line and the two-pass parse driver.
#include "HxCSV.h"

#include <cstring>
#include <memory>
#include <string>

#include "LineInput.h"

namespace {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

using hxcsv::fgetline;

void skipLines(FILE* file, long long n)
{
    char line[HxCSV::lineBufferSize];
    for (long long i = 0; i < n; ++i)
        if (!fgetline(line, sizeof line, file))
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

} // namespace

CSVException::CSVException(const char* message, Error code)
    : message(message ? message : ""), code(code)
{
}

HxCSV::HxCSV()
    : commentMarker(new McString("")),
      verticalDelimiter(new McString("")),
      columnDelimiter(new McString(" "))
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

FILE* HxCSV::openFile(const char* name)
{
    FILE* file = std::fopen(name, "rb");
    if (!file)
        fail(CSVException::OpenFailed, "Could not open the file (%s)", name);
    return file;
}

int HxCSV::parse(bool ignoreColumnCount, bool plainLines)
{
    verticalDelimiterRows.clear();
    const char* name = fileName ? fileName->getString() : "";
    FilePtr file(openFile(name));
    if (firstRowContainsColumnNames)
        readHeader(file.get());
    skipLines(file.get(), dataStartLineNum - 1LL);
    const int count = plainLines ? countPlainLines(file.get()) : countRecords(file.get());

    file.reset();
    file.reset(openFile(name));
    skipLines(file.get(), dataStartLineNum - 1LL);
    resizeDataStorage(count);
    readRows(file.get(), count, ignoreColumnCount, plainLines);
    return 1;
}

// The header is split at the delimiter's first character, empty names
// included, even where data rows are split differently.
void HxCSV::readHeader(FILE* file)
{
    char line[lineBufferSize];
    columnNames.clear();
    if (fgetline(line, sizeof line, file)) {
        McString(cleanHeaderLine(line).c_str()).explode((*columnDelimiter)[0], columnNames);
        for (McString& name : columnNames)
            name = trimBlanks(name);
    }
    std::rewind(file);
}

// Both passes start from a fresh reader state so that they see the same
// records; a re-join made while counting is made again while reading.
void HxCSV::resetRecordState()
{
    joinedRecordCount = 0;
    recordContinued = false;
}

int HxCSV::countRecords(FILE* file)
{
    resetRecordState();
    char record[lineBufferSize];
    int count = 0;
    while (csvGetLine(record, sizeof record, file, count) != -1) {
    }
    return count;
}

// Blank lines count here; comment and delimiter lines are recognised by the
// whole marker, ignoring case.
int HxCSV::countPlainLines(FILE* file)
{
    char line[lineBufferSize];
    int count = 0;
    while (std::fgets(line, sizeof line, file))
        if (!startsWithNoCase(line, *commentMarker) && !startsWithNoCase(line, *verticalDelimiter))
            ++count;
    return count;
}

bool HxCSV::readOneRecord(FILE* file, char* buffer, bool plainLines, int& recordsRead)
{
    if (plainLines)
        return fgetline(buffer, lineBufferSize, file) != 0;
    return csvGetLine(buffer, lineBufferSize, file, recordsRead) != -1;
}

// Only the record's first character is compared with the marker's here.
bool HxCSV::startsComment(const char* record) const
{
    return !commentMarker->isEmpty() && record[0] == (*commentMarker)[0];
}

void HxCSV::readRows(FILE* file, int count, bool ignoreColumnCount, bool plainLines)
{
    resetRecordState();
    QString marker = commentMarker->toQString();
    QString breakText = verticalDelimiter->toQString();
    char buffer[lineBufferSize];
    int recordsRead = 0;
    long long lineNumber = dataStartLineNum - 1LL;
    for (int row = 0; row < count;) {
        ++lineNumber;
        std::memset(buffer, 0, sizeof buffer);
        if (!readOneRecord(file, buffer, plainLines, recordsRead))
            HxCSV::fail(CSVException::BadValue, "Unexpected end of file (line %lld)", lineNumber);
        if (startsComment(buffer))
            continue;
        QString record = QString::fromLatin1(buffer);
        if (processLine(&record, &marker, &breakText, row, ignoreColumnCount) != -2)
            ++row;
    }
}
