#include "HxCSVArguments.h"

#include <climits>
#include <cstdlib>

namespace hxcsv {

const char* argumentOrEmpty(int argc, const char** argv, int i)
{
    if (!argv || i < 0 || i >= argc || !argv[i])
        return "";
    return argv[i];
}

int readInt(const char* text)
{
    const long value = std::strtol(text, nullptr, 10);
    return value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : static_cast<int>(value);
}

bool readFlag(const char* text)
{
    return readInt(text) == 1;
}

} // namespace hxcsv
