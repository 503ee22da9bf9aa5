// Cuts a command line into the words a command, and so a reader, gets.
#pragma once
#include <string>
#include <vector>

namespace hxhost {

// Splits a command line into words the way a POSIX shell treats quotes and
// backslashes (no expansions): blanks, tabs and line feeds separate words;
// '...' keeps everything literally; inside "..." a backslash escapes only
// " \ $ ` and a line feed and is kept before anything else; outside quotes
// a backslash escapes any character. Returns false with a message in error
// for an unterminated quote or a trailing lone backslash.
bool splitCommandLine(const std::string& line, std::vector<std::string>& words, std::string& error);

} // namespace hxhost
