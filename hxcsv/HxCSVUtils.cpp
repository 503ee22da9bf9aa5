#include "HxCSVUtils.h"

#include <cstring>
#include <memory>

#include "HxCSVArguments.h"
#include "HxCSVParseParameters.h"

using hxcsv::readFlag;
using hxcsv::readInt;

namespace {

const char blockMarker[] = "CSVParams";

// Positions of the block's arguments after the marker; the writer emits them
// in this order and the reader takes them from here.
enum BlockArgument {
    FileNameArg = 1,
    ColumnListArg,
    DelimiterArg,
    CommentMarkerArg,
    StartLineArg,
    HeaderFlagArg,
    LineBreakFlagArg,
};

// Protects backslashes and double quotes inside a quoted token; the host's
// command-line splitting gives the text back as it stood.
McString escaped(const McString& text)
{
    McString out;
    for (int i = 0; i < text.length(); ++i) {
        if (text[i] == '\\' || text[i] == '"')
            out += '\\';
        out += text[i];
    }
    return out;
}

void appendQuoted(McString& text, const McString& token)
{
    text += " \"";
    text += token;
    text += '"';
}

void appendInt(McString& text, int value)
{
    McString number;
    number.printf(" %d", value);
    text += number;
}

McString columnList(const McDArray<int>& indices)
{
    McString list;
    list.printf("%d", indices.size());
    for (int index : indices)
        appendInt(list, index);
    return list;
}

// "N C1 ... CN", split at single blanks so that two blanks in a row give an
// entry 0. False when fewer than N entries follow the count.
bool readColumnList(const McString& text, McDArray<int>& indices)
{
    McDArray<McString> pieces;
    text.explode(' ', pieces);
    const int count = readInt(pieces[0]);
    if (count > pieces.size() - 1)
        return false;
    indices.resize(count);
    for (int k = 1; k <= count; ++k)
        indices[k - 1] = readInt(pieces[k]);
    return true;
}

// Index of the occurrence-th marker, or -1.
int findBlock(int argc, const char** argv, int occurrence)
{
    int passed = 0;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(hxcsv::argumentOrEmpty(argc, argv, i), blockMarker) != 0)
            continue;
        if (passed == occurrence)
            return i;
        ++passed;
    }
    return -1;
}

} // namespace

HxCSVParseParameters* HxCSVUtils::getParseParameters(int argc, const char** argv, int occurrence)
{
    if (argc < 1 || !argv)
        return nullptr;
    const int m = findBlock(argc, argv, occurrence);
    if (m < 0)
        return nullptr;
    // A truncated block (missing arguments, or a column list shorter than its
    // count) is never written by getLoadCommandString; reading it would go
    // past the end, so it gives no record, as a missing block does.
    if (m + HeaderFlagArg >= argc)
        return nullptr;
    std::unique_ptr<HxCSVParseParameters> params(new HxCSVParseParameters);
    params->fileName = hxcsv::argumentOrEmpty(argc, argv, m + FileNameArg);
    if (!readColumnList(hxcsv::argumentOrEmpty(argc, argv, m + ColumnListArg), *params->columnIndices))
        return nullptr;
    *params->columnDelimiter = hxcsv::argumentOrEmpty(argc, argv, m + DelimiterArg);
    *params->commentMarker = hxcsv::argumentOrEmpty(argc, argv, m + CommentMarkerArg);
    params->dataStartLineNum = readInt(hxcsv::argumentOrEmpty(argc, argv, m + StartLineArg));
    params->firstRowContainsColumnNames = readFlag(hxcsv::argumentOrEmpty(argc, argv, m + HeaderFlagArg));
    if (m + LineBreakFlagArg < argc)
        params->noLineBreaks = readFlag(hxcsv::argumentOrEmpty(argc, argv, m + LineBreakFlagArg));
    return params.release();
}

McString HxCSVUtils::getLoadCommandString(HxCSVParseParameters* params)
{
    if (!params)
        return McString();
    McString text(blockMarker);
    appendQuoted(text, params->fileName);
    appendQuoted(text, columnList(*params->columnIndices));
    appendQuoted(text, escaped(*params->columnDelimiter));
    appendQuoted(text, escaped(*params->commentMarker));
    appendInt(text, params->dataStartLineNum);
    appendInt(text, params->firstRowContainsColumnNames ? 1 : 0);
    appendInt(text, params->noLineBreaks ? 1 : 0);
    return text;
}
