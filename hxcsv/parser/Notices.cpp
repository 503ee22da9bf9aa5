// Notices: what the import rules did to the data, noted while the rows are
// stored (HxCSV::Notices). The readers note byte offsets, which cost
// nothing to keep; once the storing pass is over, the few that were noted
// are looked up in the file as lines and their texts.
#include "HxCSV.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "HxCSVInput.h"
#include "Parse.h"
#include "Utf8.h"

namespace hxcsv {
namespace {

// The bytes a sample keeps.
const int sampleBytes = 80;

McString sample(const char* text, int length)
{
    return McString(text, std::min(length, sampleBytes));
}

// Whether the data start at the file's start with the byte-order mark.
bool dataStartWithMark(HxCSVInput& input)
{
    if (input.offset() != 0)
        return false;
    const char* p = input.available();
    if (input.availableEnd() - p >= 3)
        return std::memcmp(p, utf8ByteOrderMark, 3) == 0;
    // A block of fewer bytes (tests make them so): read them, then start again.
    bool mark = true;
    for (int i = 0; i < 3 && mark; ++i)
        mark = input.get() == static_cast<unsigned char>(utf8ByteOrderMark[i]);
    input.rewind();
    return mark;
}

// A byte of the file whose line is wanted, and where the line (and, when
// text is given, its first bytes) go.
struct Spot {
    long long offset;
    long long* line;
    McString* text;
    long long lineStart;
};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// One pass over the file, counting line feeds up to each spot (sorted by
// offset). Spots past the end keep line 0.
void findLines(std::FILE* file, std::vector<Spot>& spots)
{
    std::vector<char> block(1 << 16);
    long long blockStart = 0;
    long long line = 1;
    long long lineStart = 0;
    size_t next = 0;
    for (size_t n; next < spots.size() && (n = std::fread(block.data(), 1, block.size(), file)) > 0;
         blockStart += static_cast<long long>(n)) {
        const char* p = block.data();
        const char* const end = p + n;
        for (;;) {
            const long long at = next < spots.size() ? spots[next].offset - blockStart : -1;
            const char* stop = at >= 0 && at < static_cast<long long>(n) ? block.data() + at : end;
            for (const char* q; (q = static_cast<const char*>(std::memchr(p, '\n', static_cast<size_t>(stop - p))));
                 p = q + 1) {
                ++line;
                lineStart = blockStart + (q + 1 - block.data());
            }
            p = stop;
            if (stop == end)
                break;
            *spots[next].line = line;
            spots[next++].lineStart = lineStart;
        }
    }
}

// The first bytes of the line that starts at offset, without its line end.
McString lineText(std::FILE* file, long long offset)
{
    char text[sampleBytes];
    if (fseeko(file, static_cast<off_t>(offset), SEEK_SET) != 0)
        return McString();
    const size_t n = std::fread(text, 1, sizeof text, file);
    const void* lineFeed = std::memchr(text, '\n', n);
    return McString(text, lineFeed ? static_cast<int>(static_cast<const char*>(lineFeed) - text) : static_cast<int>(n));
}

} // namespace

void Parse::startNoting(HxCSVInput& input)
{
    csv.notices = HxCSV::Notices();
    noticed = NoticeOffsets();
    recordStart = cutAt = -1;
    cutRecordStart = -2; // matches no record
    noting = true;
    csv.notices.byteOrderMark = dataStartWithMark(input);
}

// Only the errors of storing (ColumnCount, BadValue) name a data row.
void Parse::finishNoting(const CSVException* failure)
{
    noting = false;
    if (failure && (failure->code == CSVException::ColumnCount || failure->code == CSVException::BadValue)) {
        csv.notices.failedRecord.count = 1;
        noticed.failedRecord = recordStart;
    }
    locateNotices();
}

void Parse::noteContinued(long long shortLine, long long continuedOn, long long fieldsOnLine, long long fieldsNeeded)
{
    HxCSV::Notices& n = csv.notices;
    if (n.continuedRecords.count++ > 0)
        return;
    noticed.shortLine = shortLine;
    noticed.continuedOn = continuedOn;
    n.fieldsOnLine = static_cast<int>(fieldsOnLine);
    n.fieldsNeeded = static_cast<int>(fieldsNeeded);
}

void Parse::noteCollapsed(long long offset)
{
    if (csv.notices.collapsedFields.count++ == 0)
        noticed.collapsed = offset;
}

void Parse::noteUtf8Text(const char* text, int length)
{
    HxCSV::Notices& n = csv.notices;
    if (!noting || n.utf8Texts.count++ > 0)
        return;
    noticed.utf8Text = recordStart;
    n.utf8Texts.text = sample(text, length);
}

// A record that filled its buffer was cut there if the reader had more of
// it; its last field is then cut, and counts if a text column took it.
void Parse::noteCutText(const char* record)
{
    if (!noting || recordStart != cutRecordStart || fields.empty())
        return;
    const size_t last = fields.size() - 1;
    if (fields[last].begin + fields[last].length != HxCSV::lineBufferSize - 1)
        return;
    for (const HxCSV::CSVDataColumn& column : csv.columns) {
        if (column.storageKind != HxCSV::Text || column.columnIndex != static_cast<int>(last))
            continue;
        HxCSV::Notices& n = csv.notices;
        if (n.cutTexts.count++ == 0) {
            const HxCSVField text = textOf(record, fields[last]);
            noticed.cutText = cutAt;
            n.cutTexts.text = sample(record + text.begin, text.length);
        }
        return;
    }
}

void Parse::locateNotices()
{
    HxCSV::Notices& n = csv.notices;
    std::vector<Spot> spots;
    const auto want = [&spots](long long offset, long long* line, McString* text) {
        if (offset >= 0)
            spots.push_back({offset, line, text, -1});
    };
    want(noticed.shortLine, &n.continuedRecords.line, &n.continuedRecords.text);
    want(noticed.continuedOn, &n.continuedOnLine, nullptr);
    want(noticed.collapsed, &n.collapsedFields.line, &n.collapsedFields.text);
    want(noticed.utf8Text, &n.utf8Texts.line, nullptr);
    want(noticed.cutText, &n.cutTexts.line, nullptr);
    want(noticed.failedRecord, &n.failedRecord.line, &n.failedRecord.text);
    if (spots.empty() || !csv.fileName)
        return;
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(csv.fileName->getString(), "rb"));
    if (!file)
        return;
    std::sort(spots.begin(), spots.end(), [](const Spot& a, const Spot& b) { return a.offset < b.offset; });
    findLines(file.get(), spots);
    for (const Spot& spot : spots)
        if (spot.text && spot.lineStart >= 0)
            *spot.text = lineText(file.get(), spot.lineStart);
}

} // namespace hxcsv
