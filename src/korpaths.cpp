#include "korpaths.h"

#include "korlimits.h"
#include "korplatform.h"

#include <cctype>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace kor {
namespace {

constexpr const char* MODEL_EXTENSION = ".kormodel";
constexpr std::size_t EXECUTABLE_NAME_SIZE = 260;
constexpr std::size_t TEXT_PIECE_SIZE = 1024;

bool is_separator(char c) {
    return c == '\\' || c == '/';
}

int copy_text(std::string_view text, char* out, std::size_t cap) {
    if (!out || text.size() + 1 > cap)
        return 0;
    std::memmove(out, text.data(), text.size());
    out[text.size()] = '\0';
    return 1;
}

/// Position of the last backslash, or of the last slash when there is none; npos without either.
std::size_t last_separator(std::string_view path) {
    const std::size_t backslash = path.rfind('\\');
    return backslash != std::string_view::npos ? backslash : path.rfind('/');
}

int default_dir(char* out, std::size_t cap, const char* name) {
    char dir[KOR_PATH_SIZE];
    return KOR_GetExecutableDir(dir, sizeof dir) && KOR_GetFolder(dir, sizeof dir, dir) &&
           KOR_BuildPath(out, cap, dir, name);
}

const char* last_extension(const char* path) {
    const char* dot = path ? std::strrchr(path, '.') : nullptr;
    return dot ? dot : "";
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

} // namespace

int KOR_BuildPath(char* out, std::size_t cap, const char* dir, const char* name) {
    if (!out || !dir || !name || cap == 0)
        return 0;
    std::string path = dir;
    if (!path.empty() && !is_separator(path.back()))
        path += platform_separator();
    return copy_text(path + name, out, cap);
}

int KOR_GetFolder(char* out, std::size_t cap, const char* path) {
    if (!path)
        return 0;
    const std::string_view name = path;
    const std::size_t cut = last_separator(name);
    if (cut == std::string_view::npos)
        return 0;
    // Without its separator the root would be the working directory.
    return copy_text(name.substr(0, cut == 0 ? 1 : cut), out, cap);
}

int KOR_GetExecutableDir(char* out, std::size_t cap) {
    char file[EXECUTABLE_NAME_SIZE];
    return platform_executable_file(file, sizeof file) && KOR_GetFolder(out, cap, file);
}

int KOR_GetDefaultModelsDir(char* out, std::size_t cap) {
    return default_dir(out, cap, "models");
}
int KOR_GetDefaultDensityMatricesDir(char* out, std::size_t cap) {
    return default_dir(out, cap, "density_matrices");
}
int KOR_GetDefaultRFOutputDir(char* out, std::size_t cap) {
    return default_dir(out, cap, "rf-output");
}
int KOR_GetDefaultRFInputDir(char* out, std::size_t cap) {
    return default_dir(out, cap, "rf-input");
}

int basename_without_extension(const char* path, char* out, std::size_t cap) {
    if (!path)
        return 0;
    std::string_view name = path;
    const std::size_t cut = last_separator(name);
    if (cut != std::string_view::npos)
        name.remove_prefix(cut + 1);
    const std::size_t dot = name.rfind('.');
    if (dot != std::string_view::npos && dot != 0)
        name = name.substr(0, dot);
    return name.empty() ? 0 : copy_text(name, out, cap);
}

int sanitize_model_short_name(const char* text, char* out, std::size_t cap) {
    if (!text || !out || cap == 0)
        return 0;
    std::string name;
    bool after_separator = true;
    for (const char* at = text; *at; ++at) {
        const auto c = static_cast<unsigned char>(*at);
        char written = '\0';
        if (std::isalnum(c))
            written = static_cast<char>(std::tolower(c));
        else if (c == '-' || c == '_')
            written = *at;
        else if (std::isspace(c) || c == '.')
            written = '_';
        const bool separator = !std::isalnum(c);
        if (written == '\0' || (separator && after_separator))
            continue;
        if (name.size() + 1 >= cap)
            return 0;
        name += written;
        after_separator = separator;
    }
    while (!name.empty() && (name.back() == '_' || name.back() == '-'))
        name.pop_back();
    return name.empty() ? 0 : copy_text(name, out, cap);
}

int path_has_separator(const char* text) {
    return text && std::strpbrk(text, "\\/:") ? 1 : 0;
}

int file_exists(const char* path) {
    if (!path || !*path)
        return 0;
    if (platform_is_special(path))
        return 1;
    std::FILE* file = platform_open(path, "rb");
    if (!file)
        return 0;
    std::fclose(file);
    return 1;
}

int text_file_contains_literal(const char* path, const char* literal) {
    if (!path || !literal)
        return 0;
    std::FILE* file = platform_open(path, "r");
    if (!file) {
        if (errno != ENOENT)
            std::perror(path);
        return 0;
    }
    char piece[TEXT_PIECE_SIZE];
    int found = 0;
    while (!found && std::fgets(piece, sizeof piece, file))
        found = std::strstr(piece, literal) ? 1 : 0;
    if (std::ferror(file))
        std::perror(path);
    std::fclose(file);
    return found;
}

int has_kormodel_extension_ci(const char* path) {
    return equal_ignoring_case(last_extension(path), MODEL_EXTENSION) ? 1 : 0;
}

int ensure_kormodel_extension(char* path, std::size_t cap) {
    if (!path || cap == 0)
        return 0;
    if (has_kormodel_extension_ci(path))
        return 1;
    return copy_text(std::string(path) + MODEL_EXTENSION, path, cap);
}

} // namespace kor
