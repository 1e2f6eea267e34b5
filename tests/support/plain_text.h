// Names and texts as the tests spell them on every system: UTF-8, '/' between folders, '\n' behind lines.
#pragma once

#include <filesystem>
#include <string>

namespace kor_test {

/// The name of a file, and the file of a name.
std::string plain_name(const std::filesystem::path& file);
std::filesystem::path file_name(const std::string& name);

/// A text in which the system's separator is '/': other than the same on Windows only.
std::string with_slashes(std::string text);
/// A text without the '\r' before a '\n', as Windows writes lines.
std::string with_plain_line_ends(const std::string& text);

} // namespace kor_test
