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

// The words of a line; none when it does not split.
std::vector<std::string> split(const std::string& line, bool& ok)
{
    std::vector<std::string> words;
    std::string error;
    ok = hxhost::splitCommandLine(line, words, error);
    return words;
}

// The block reader on the words from the first on.
HxCSVParseParameters* read(const std::vector<std::string>& words, size_t first, int occurrence)
{
    std::vector<const char*> argv;
    for (size_t i = first; i < words.size(); ++i)
        argv.push_back(words[i].c_str());
    return HxCSVUtils::getParseParameters(static_cast<int>(argv.size()), argv.data(), occurrence);
}

// Texts without NUL, which no C string holds.
std::string text(FuzzedDataProvider& in, size_t most)
{
    std::string s = in.ConsumeRandomLengthString(most);
    s.erase(std::remove(s.begin(), s.end(), '\0'), s.end());
    return s;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    const std::string rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    bool ok = false;
    if (data[0] % 3 == 0) {
        const std::vector<std::string> words = split(rest, ok);
        std::string again; // each word as a shell quotes it, a quote of its own as '\''
        for (const std::string& w : words) {
            again += "'";
            for (char c : w)
                again += c == '\'' ? std::string("'\\''") : std::string(1, c);
            again += "' ";
        }
        check(!ok || (split(again, ok) == words && ok));
    } else if (data[0] % 3 == 1) {
        FuzzedDataProvider in(data + 1, size - 1);
        HxCSVParseParameters written;
        // The file name is written unescaped: a quote or backslash in it is
        // not meant to survive.
        std::string name = text(in, 64);
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
        const std::string block(HxCSVUtils::getLoadCommandString(&written));
        const std::vector<std::string> words = split("load -point_cloud_csv x " + block + " -dataOnly", ok);
        check(ok);
        const std::unique_ptr<HxCSVParseParameters> back(read(words, 2, 0));
        // The writer shows every field, so equal blocks mean equal records.
        check(back && HxCSVUtils::getLoadCommandString(back.get()) == block.c_str());
    } else {
        std::vector<std::string> words; // separated by NUL bytes
        for (size_t start = 0, nul; start <= rest.size(); start = nul + 1) {
            nul = std::min(rest.find('\0', start), rest.size());
            words.push_back(rest.substr(start, nul - start));
        }
        delete read(words, 0, data[0] / 3 % 3);
    }
    return 0;
}
