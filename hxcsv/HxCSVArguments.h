#pragma once
// How every reader takes numbers and switches from a replayed command's
// argument vector: at fixed positions, forgiving a command that is short or
// holds text where a number belongs, since stored commands may be edited
// by hand.

namespace hxcsv {

// Argument i, or "" when it is null or past the end: a shorter command gives
// empty options instead of a read outside the vector.
const char* argumentOrEmpty(int argc, const char** argv, int i);

// The leading decimal integer as strtol reads it (text after the digits is
// ignored, no digits give 0), bounded to int instead of overflowing.
int readInt(const char* text);

// Only the value 1 switches an option on.
bool readFlag(const char* text);

} // namespace hxcsv
