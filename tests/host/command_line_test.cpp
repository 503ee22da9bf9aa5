#include <gtest/gtest.h>

#include "CommandLine.h"

using hxhost::splitCommandLine;

struct SplitCase {
    const char* what;
    std::string line;
    std::vector<std::string> words;
};

TEST(SplitCommandLine, SplitsLikeAShell)
{
    const SplitCase cases[] = {
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
        {"a LoadCmd", "load -point_cloud_csv \"/d/w.csv\" CSVParams \"/d/w.csv\" \"4 0 1 2 -1\" \",\" \"#\" 2 1 0 \"0 0\" -dataOnly",
         {"load", "-point_cloud_csv", "/d/w.csv", "CSVParams", "/d/w.csv", "4 0 1 2 -1", ",", "#", "2", "1", "0", "0 0", "-dataOnly"}},
    };
    for (const SplitCase& c : cases) {
        std::vector<std::string> words;
        std::string error;
        EXPECT_TRUE(splitCommandLine(c.line, words, error)) << c.what << ": " << error;
        EXPECT_EQ(words, c.words) << c.what;
    }
}

TEST(SplitCommandLine, RejectsUnterminatedQuotes)
{
    for (const char* line : {"a \"b", "'x", "ends with \\"}) {
        std::vector<std::string> words;
        std::string error;
        EXPECT_FALSE(splitCommandLine(line, words, error)) << line;
        EXPECT_FALSE(error.empty()) << line;
    }
}
