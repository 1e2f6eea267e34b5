#include "support/input.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

/// A header may promise more than the memory holds: then an allocation fails, as it does without the
/// sanitizer.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=64";
}

namespace kor_fuzz {
namespace {

// The fuzzer and the replay silence both output streams later.
const int report = dup(STDERR_FILENO);

} // namespace

void require(bool holds, const char* rule) {
    if (holds)
        return;
    const std::string text = std::string("\nbroken: ") + rule + "\n";
    if (write(report, text.data(), text.size()) < 0)
        _exit(2);
    std::abort();
}

unsigned Input::byte() {
    if (bytes_.empty())
        return 0;
    const auto value = static_cast<unsigned char>(bytes_.front());
    bytes_.remove_prefix(1);
    return value;
}

int Input::number(int first, int last) {
    const unsigned value = byte() + 256U * byte();
    return first + static_cast<int>(value % static_cast<unsigned>(last - first + 1));
}

std::string Input::line() {
    const std::size_t end = std::min(bytes_.find('\n'), bytes_.size());
    std::string text(bytes_.substr(0, end));
    bytes_.remove_prefix(std::min(end + 1, bytes_.size()));
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    return text;
}

std::string Input::rest() {
    const std::string text(bytes_);
    bytes_ = {};
    return text;
}

std::string Input::section() {
    constexpr std::string_view separator = "=====\n";
    const std::size_t end = bytes_.find(separator);
    if (end == std::string_view::npos)
        return rest();
    std::string text(bytes_.substr(0, end));
    bytes_.remove_prefix(end + separator.size());
    return text;
}

} // namespace kor_fuzz
