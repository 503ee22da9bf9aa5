// Splits hxhost command lines into words, with a shell's quoting rules.
#include "CommandLine.h"

namespace hxhost {
namespace {

// Each reader below starts at the first character of its piece of a word,
// appends what that piece means to word and returns the index just past it,
// or kFailed with error set. '$' and '`' are plain characters in every
// state: hxhost expands nothing, it only has to agree with a shell on quotes.
constexpr size_t kFailed = std::string::npos;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Unquoted text up to a blank or a quote. A backslash takes the next
// character as it is; before a line feed it joins the lines instead.
size_t readUnquoted(const std::string& line, size_t i, std::string& word, std::string& error)
{
    for (; i < line.size(); ++i) {
        const char c = line[i];
        if (isBlank(c) || c == '\'' || c == '"')
            break;
        if (c != '\\') {
            word += c;
            continue;
        }
        if (++i >= line.size()) {
            error = "a backslash ends the command";
            return kFailed;
        }
        if (line[i] != '\n')
            word += line[i];
    }
    return i;
}

// '...': everything up to the next single quote, backslashes included.
size_t readSingleQuoted(const std::string& line, size_t i, std::string& word, std::string& error)
{
    const size_t end = line.find('\'', i + 1);
    if (end == std::string::npos) {
        error = "unterminated single quote";
        return kFailed;
    }
    word.append(line, i + 1, end - i - 1);
    return end + 1;
}

// The characters a backslash escapes inside double quotes: the ones a shell
// would otherwise give a meaning there.
bool escapedInDoubleQuotes(char c)
{
    return c == '"' || c == '\\' || c == '$' || c == '`';
}

// "...": a backslash escapes " \ $ ` and joins lines before a line feed;
// before anything else it stays in the word.
size_t readDoubleQuoted(const std::string& line, size_t i, std::string& word, std::string& error)
{
    for (++i; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"')
            return i + 1;
        if (c == '\\' && i + 1 < line.size()) {
            const char next = line[i + 1];
            if (escapedInDoubleQuotes(next) || next == '\n') {
                if (next != '\n')
                    word += next;
                ++i;
                continue;
            }
        }
        word += c;
    }
    error = "unterminated double quote";
    return kFailed;
}

} // namespace

bool splitCommandLine(const std::string& line, std::vector<std::string>& words, std::string& error)
{
    words.clear();
    std::string word;
    bool inWord = false;
    size_t i = 0;
    while (i < line.size()) {
        const char c = line[i];
        if (isBlank(c)) {
            if (inWord)
                words.push_back(word);
            word.clear();
            inWord = false;
            ++i;
            continue;
        }
        // Even a piece that adds nothing ("" or an escaped line feed) makes a word.
        inWord = true;
        if (c == '\'')
            i = readSingleQuoted(line, i, word, error);
        else if (c == '"')
            i = readDoubleQuoted(line, i, word, error);
        else
            i = readUnquoted(line, i, word, error);
        if (i == kFailed)
            return false;
    }
    if (inWord)
        words.push_back(word);
    return true;
}

} // namespace hxhost
