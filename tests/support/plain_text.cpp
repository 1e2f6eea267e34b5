#include "support/plain_text.h"

#include "korplatform.h"

#include <algorithm>

namespace kor_test {

std::string plain_name(const std::filesystem::path& file) {
    const std::u8string name = file.generic_u8string();
    return {name.begin(), name.end()};
}

std::filesystem::path file_name(const std::string& name) {
    return std::u8string(name.begin(), name.end());
}

std::string with_slashes(std::string text) {
    std::replace(text.begin(), text.end(), kor::platform_separator(), '/');
    return text;
}

std::string with_plain_line_ends(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || text.compare(i, 2, "\r\n") != 0)
            plain += text[i];
    return plain;
}

} // namespace kor_test
