// hxhost's command-line splitting, which readers see the words of.
#include <gtest/gtest.h>

#include "CommandLine.h"

TEST(SplitCommandLine, SplitsLikeAShell)
{
    const struct {
        const char* what;
        std::string line;
        std::vector<std::string> words; // {"(error)"}: rejected
    } cases[] = {
        {"plain words", "load -x a.csv", {"load", "-x", "a.csv"}},
        {"runs of blanks and tabs", "  load \t -x   a  ", {"load", "-x", "a"}},
        {"double quotes removed", "\"a b\" c", {"a b", "c"}},
        {"escaped quote inside quotes", "\"\\\"\"", {"\""}},
        {"escaped backslash inside quotes", "\"\\\\\"", {"\\"}},
        {"other backslashes kept inside quotes", "\"\\s\"", {"\\s"}},
        {"tab inside quotes kept", "\"\t\"", {"\t"}},
        {"blank inside quotes kept", "\" \"", {" "}},
        {"empty quotes give an empty word", "a \"\" b", {"a", "", "b"}},
        {"adjacent pieces join", "a\"b c\"d", {"ab cd"}},
        {"backslash outside quotes", "a\\ b \\\"", {"a b", "\""}},
        {"single quotes literal", "'a \\\" b'", {"a \\\" b"}},
        {"nothing", "   ", {}},
        {"unterminated double quote", "a \"b", {"(error)"}},
        {"unterminated single quote", "'x", {"(error)"}},
        {"backslash at the end", "ends with \\", {"(error)"}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> words;
        std::string error;
        if (!hxhost::splitCommandLine(c.line, words, error))
            words = {"(error)"};
        EXPECT_EQ(words, c.words) << c.what;
        EXPECT_EQ(error.empty(), words != std::vector<std::string>{"(error)"}) << c.what << ": " << error;
    }
}
