// hxhost's command-line splitting, which readers see the words of. It
// follows a POSIX shell; each row pins one of its rules.
#include <gtest/gtest.h>

#include "CommandLine.h"

TEST(SplitCommandLine, SplitsLikeAShell)
{
    const std::vector<std::string> rejected = {"(error)"};
    const struct {
        const char* rule;
        std::string line;
        std::vector<std::string> words;
    } cases[] = {
        {"blanks, tabs and line ends separate", " load\t-x \r\n a.csv ", {"load", "-x", "a.csv"}},
        {"nothing gives no words", " \t ", {}},
        {"double quotes keep blanks and tabs", "\"a b\t\" c", {"a b\t", "c"}},
        {"empty quotes give an empty word", "a \"\" b", {"a", "", "b"}},
        {"quoted and unquoted pieces join", "a\"b c\"'d e'f", {"ab cd ef"}},
        {"in double quotes \\\" is a quote", "\"x\\\"y\"", {"x\"y"}},
        {"in double quotes \\\\ is a backslash", "\"x\\\\y\"", {"x\\y"}},
        {"in double quotes \\$ is a dollar", "\"a\\$b.csv\"", {"a$b.csv"}},
        {"in double quotes \\` is a backquote", "\"a\\`b\"", {"a`b"}},
        {"in double quotes a backslash-newline vanishes", "\"a\\\nb\"", {"ab"}},
        {"in double quotes other backslashes stay", "\"\\s\\'\\ \"", {"\\s\\'\\ "}},
        {"outside quotes a backslash takes the next character", "a\\ b \\\"\\$\\\\\\'x", {"a b", "\"$\\'x"}},
        {"outside quotes a backslash-newline vanishes", "a\\\nb", {"ab"}},
        {"single quotes take everything literally", "'a \\\" \\\\ $'", {"a \\\" \\\\ $"}},
        {"unterminated double quote", "a \"b", rejected},
        {"a backslash cannot escape the closing quote's absence", "\"a\\", rejected},
        {"unterminated single quote", "'x", rejected},
        {"a backslash at the end", "ends with \\", rejected},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rule);
        std::vector<std::string> words;
        std::string error;
        const bool ok = hxhost::splitCommandLine(c.line, words, error);
        EXPECT_EQ(ok ? words : rejected, c.words);
        EXPECT_EQ(error.empty(), ok) << error;
    }
}
