// How hxhost turns texts into console lines: escaped, grouped, shortened.
#pragma once
#include <QString>
#include <string>

namespace hxhost {

// bytes (UTF-8) with every byte that is not printable shown escaped, so a
// text cannot move the cursor, switch the terminal's modes or hide itself:
// \t, \n and \r by name, other control characters and DEL as \xNN, bytes
// that are not valid UTF-8 as \xNN, and code points that do not print
// (C1 controls, format characters, line and paragraph separators,
// unassigned ones) as \uXXXX or \UXXXXXXXX.
std::string escapeForConsole(const std::string& bytes);
std::string escapeForConsole(const QString& text);

// The kind of a message: its text without what varies between messages of
// one kind, digits and quoted stretches ('...' or "...").
QString messageKind(const QString& text);

// text cut to at most maxChars characters, "..." marking the cut.
QString shortened(const QString& text, int maxChars);

} // namespace hxhost
