// The end of a file that was written: whether everything reached the disk.
#pragma once

#include <cstdio>

namespace kor {

/// Closes the file; false, with a message naming it, when any write to it or the close failed.
inline bool close_written(std::FILE* out, const char* name) {
    const bool incomplete = std::ferror(out) != 0;
    if (std::fclose(out) == 0 && !incomplete)
        return true;
    std::perror(name);
    return false;
}

} // namespace kor
