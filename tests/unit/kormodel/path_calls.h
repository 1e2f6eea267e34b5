// The paths that functions write into a buffer, as strings.
#pragma once

#include "kormodel/paths.h"

#include "korlimits.h"

#include <string>

namespace kor_test {

/// The text that operation(out, size) writes, or "<failed>".
template <class Operation> std::string path_of(Operation operation) {
    char out[kor::KOR_PATH_SIZE] = "untouched";
    return operation(out, sizeof out) ? out : "<failed>";
}

/// Where results lie that a model names without a folder.
inline std::string results_folder() {
    return path_of([](char* out, std::size_t n) { return kor::kor_get_runtime_results_dir(out, n); });
}

} // namespace kor_test
