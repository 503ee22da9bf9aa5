// Command texts: hxhost's splitting of a command line, and the CSVParams
// block written, split as hxhost splits it and read back. The first byte
// picks one of three checks:
//   0  any line is split; its words, each put in single quotes, split back
//      to the same words;
//   1  a parse parameter record made from the bytes survives the round trip
//      through its block;
//   2  any argument vector (NUL-separated) is read for its first, second or
//      third block (the first byte / 3).
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "HxCSVParseParameters.h"
#include "HxCSVUtils.h"

namespace {

void check(bool holds)
{
    if (!holds)
        __builtin_trap();
}

std::vector<std::string> split(const std::string& line, bool& ok)
{
    std::vector<std::string> words;
    std::string error;
    ok = hxhost::splitCommandLine(line, words, error);
    return words;
}

// A word as a shell would quote it: in single quotes, each quote of its own
// written as '\''.
std::string singleQuoted(const std::string& word)
{
    std::string quoted = "'";
    for (char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

void splitAndRequote(const std::string& line)
{
    bool ok = false;
    const std::vector<std::string> words = split(line, ok);
    if (!ok)
        return;
    std::string again;
    for (const std::string& w : words)
        again += singleQuoted(w) + " ";
    const std::vector<std::string> back = split(again, ok);
    check(ok && back == words);
}

// Texts without NUL, which no C string holds.
std::string text(FuzzedDataProvider& in, size_t most)
{
    std::string s = in.ConsumeRandomLengthString(most);
    s.erase(std::remove(s.begin(), s.end(), '\0'), s.end());
    return s;
}

void roundTrip(FuzzedDataProvider& in)
{
    HxCSVParseParameters written;
    std::string name = text(in, 64);
    // The file name is written unescaped: a quote or backslash in it is not
    // meant to survive.
    name.erase(std::remove_if(name.begin(), name.end(), [](char c) { return c == '"' || c == '\\'; }), name.end());
    written.fileName = name.c_str();
    written.columnIndices->resize(in.ConsumeIntegralInRange(0, 12));
    for (int& index : *written.columnIndices)
        index = in.ConsumeIntegral<int>();
    *written.columnDelimiter = text(in, 8).c_str();
    *written.commentMarker = text(in, 8).c_str();
    written.dataStartLineNum = in.ConsumeIntegral<int>();
    written.firstRowContainsColumnNames = in.ConsumeBool();
    written.noLineBreaks = in.ConsumeBool();

    const std::string command = "load -point_cloud_csv x " + std::string(HxCSVUtils::getLoadCommandString(&written))
                                + " -dataOnly";
    bool ok = false;
    const std::vector<std::string> words = split(command, ok);
    check(ok);
    std::vector<const char*> argv;
    for (size_t i = 2; i < words.size(); ++i)
        argv.push_back(words[i].c_str());
    const std::unique_ptr<HxCSVParseParameters> read(
        HxCSVUtils::getParseParameters(static_cast<int>(argv.size()), argv.data(), 0));
    // The writer shows every field, so equal blocks mean equal records.
    check(read && HxCSVUtils::getLoadCommandString(read.get()) == HxCSVUtils::getLoadCommandString(&written));
}

// Arguments separated by NUL bytes; occurrence picks the block to read.
void readAnyVector(const std::string& bytes, int occurrence)
{
    std::vector<std::string> words;
    for (size_t start = 0; start <= bytes.size();) {
        const size_t nul = std::min(bytes.find('\0', start), bytes.size());
        words.push_back(bytes.substr(start, nul - start));
        start = nul + 1;
    }
    std::vector<const char*> argv;
    for (const std::string& w : words)
        argv.push_back(w.c_str());
    delete HxCSVUtils::getParseParameters(static_cast<int>(argv.size()), argv.data(), occurrence);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    const std::string rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] % 3) {
    case 0:
        splitAndRequote(rest);
        break;
    case 1: {
        FuzzedDataProvider in(data + 1, size - 1);
        roundTrip(in);
        break;
    }
    default:
        readAnyVector(rest, data[0] / 3 % 3);
        break;
    }
    return 0;
}
