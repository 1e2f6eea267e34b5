#include "support/build_paths.h"

#include <filesystem>

namespace kor_test {

const char* kor_program() {
    return KOR_EXECUTABLE;
}
const char* reference_program() {
    return KOR_REFERENCE_EXECUTABLE;
}
std::string program_file() {
    return std::filesystem::path(kor_program()).filename().string();
}
const char* make_waveforms_program() {
    return KOR_MAKE_WAVEFORMS;
}
const char* source_folder() {
    return KOR_SOURCE_DIR;
}

} // namespace kor_test
