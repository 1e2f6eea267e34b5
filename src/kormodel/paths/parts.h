// Taking paths apart, for the rooms of kormodel/paths.h: elements, the root of a set, paths as they are
// stored and as they are made portable. Operations that return int return 1, or 0 when the result does not
// fit.
#pragma once

#include "korlimits.h"

#include <cstddef>

namespace kor {

/// The text as it is, or with '/' for `\`; 0 for a missing one too. `out` may be `text`.
int copy_whole(const char* text, char* out, std::size_t size);
int copy_normalized(const char* text, char* out, std::size_t size);
/// The last `\` or '/' of a path, nullptr where it has none; the part behind it, the whole path without one.
const char* last_separator(const char* path);
const char* behind_last_separator(const char* path);
/// The path without its "." and ".." folders; a relative one begins at the working directory. 0 also where a
/// ".." has no folder before it.
int whole_path(const char* path, char (&out)[KOR_PATH_SIZE]);

} // namespace kor
