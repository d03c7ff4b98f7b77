// A benchmark program's own words on its command line, which its framework does not know.
#pragma once

#include <algorithm>
#include <cstring>

namespace bench {

// Takes the flag out of the arguments; whether it was there.
inline bool TakeFlag(int& count, char** arguments, const char* flag) {
    char** const end = arguments + count;
    char** const found =
        std::find_if(arguments, end, [flag](const char* each) { return std::strcmp(each, flag) == 0; });
    if (found == end)
        return false;
    std::copy(found + 1, end, found);
    --count;
    return true;
}

} // namespace bench
