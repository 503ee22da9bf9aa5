#include "CommandLine.h"

namespace hxhost {

static bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool splitCommandLine(const std::string& line, std::vector<std::string>& words, std::string& error)
{
    words.clear();
    std::string word;
    bool inWord = false;
    size_t i = 0;
    const size_t n = line.size();
    while (i < n) {
        char c = line[i];
        if (isBlank(c)) {
            if (inWord) {
                words.push_back(word);
                word.clear();
                inWord = false;
            }
            ++i;
            continue;
        }
        inWord = true;
        if (c == '\\') {
            if (i + 1 >= n) {
                error = "a backslash ends the command";
                return false;
            }
            if (line[i + 1] != '\n')
                word += line[i + 1];
            i += 2;
        } else if (c == '\'') {
            size_t end = line.find('\'', i + 1);
            if (end == std::string::npos) {
                error = "unterminated single quote";
                return false;
            }
            word.append(line, i + 1, end - i - 1);
            i = end + 1;
        } else if (c == '"') {
            ++i;
            for (;;) {
                if (i >= n) {
                    error = "unterminated double quote";
                    return false;
                }
                char d = line[i];
                if (d == '"') {
                    ++i;
                    break;
                }
                if (d == '\\' && i + 1 < n) {
                    char e = line[i + 1];
                    if (e == '"' || e == '\\' || e == '$' || e == '`') {
                        word += e;
                        i += 2;
                        continue;
                    }
                    if (e == '\n') {
                        i += 2;
                        continue;
                    }
                }
                word += d;
                ++i;
            }
        } else {
            word += c;
            ++i;
        }
    }
    if (inWord)
        words.push_back(word);
    return true;
}

} // namespace hxhost
