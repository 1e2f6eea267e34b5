// Part of every Windows test program: files are opened as bytes unless "t" asks for text, so that a test of
// what the program writes holds on both systems to the byte. The built program knows nothing of this.
#include <cstdlib>
#include <fcntl.h>

namespace {

[[maybe_unused]] const int all_files_are_bytes = (_fmode = _O_BINARY);

} // namespace
