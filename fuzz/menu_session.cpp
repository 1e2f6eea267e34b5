// A whole session at the console, from the main menu to the end of the input. Separators of paths become '_',
// so that no answer leads out of the tree, and numbers keep two digits, so that no session computes for
// hours.
#include "kor-entry.h"
#include "kor/runtime_state.h"
#include "support/input.h"
#include "support/tree.h"
#include "support/work_limit.h"

#include <cstring>

namespace {

std::string harmless(const std::string& text) {
    std::string answers;
    int digits = 0;
    for (const char c : text) {
        const bool digit = c >= '0' && c <= '9';
        digits = digit ? digits + 1 : 0;
        if (digits <= 2)
            answers += c == '/' || c == '\\' ? '_' : c;
    }
    return answers;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kor_fuzz::clear_tree();
    kor_fuzz::write_small_models();
    kor_fuzz::write_file("build/runtime/series.txt", "1\n2\n3\n");
    const kor_fuzz::Answers answers(harmless(kor_fuzz::Input(data, size).rest()));
    char name[] = "kor";
    char* argv[] = {name, nullptr};
    std::memset(static_cast<void*>(&kor::g_runtime), 0, sizeof kor::g_runtime);
    const kor_fuzz::WorkLimit limit;
    kor_fuzz::require(kor::kor_main(1, argv) == 0, "a session ends with exit status 0");
    const kor::RuntimeState& rt = kor::g_runtime;
    kor_fuzz::require(rt.nos >= 0 && rt.nos <= kor::KOR_MAX_SECTORS, "the sectors fit their table");
    kor_fuzz::require(rt.Nspins >= 0 && rt.Nspins <= kor::KOR_MAX_SPINS, "the spins fit their table");
    kor_fuzz::require(rt.n >= 0 && rt.n <= kor::KOR_MAX_STATES, "the states fit their matrices");
    return 0;
}
