// Resolution of stored paths, portable paths and short names. Lines: the file that names the path, the path;
// the first byte is the capacity of the result's buffer.
#include "kormodel/paths.h"
#include "korlimits.h"
#include "korpaths.h"
#include "support/input.h"
#include "support/tree.h"

#include <cctype>
#include <cstring>
#include <memory>

using namespace kor;

namespace {

/// Calls operation(out, capacity) with a buffer of exactly that capacity; the text, empty after a failure.
template <class Operation> std::string result(std::size_t capacity, Operation operation) {
    const std::unique_ptr<char[]> out(new char[capacity]);
    std::memset(out.get(), '\0', capacity);
    if (!operation(out.get(), capacity))
        return {};
    kor_fuzz::require(std::memchr(out.get(), '\0', capacity) != nullptr,
                      "a path that fits ends within its buffer");
    return out.get();
}

void check_short_name(const std::string& text, std::size_t capacity) {
    const auto name_of = [capacity](const std::string& from) {
        return result(capacity, [&](char* out, std::size_t cap) {
            return sanitize_model_short_name(from.c_str(), out, cap);
        });
    };
    const std::string name = name_of(text);
    for (const char c : name)
        kor_fuzz::require(std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-',
                          "a short name has letters, digits, '-' and '_'");
    kor_fuzz::require(name_of(name) == name, "the short name of a short name is itself");
}

void check_elements(const std::string& file, const std::string& path, std::size_t capacity) {
    const char* value = path.c_str();
    result(capacity, [&](char* out, std::size_t cap) { return kor_dirname_copy(value, out, cap); });
    result(capacity, [&](char* out, std::size_t cap) { return kor_parent_dir_copy(value, out, cap); });
    result(capacity, [&](char* out, std::size_t cap) { return kor_set_root_folder(value, out, cap); });
    result(capacity, [&](char* out, std::size_t cap) {
        return kor_copy_basename_without_extension_local(value, out, cap);
    });
    const std::string joined = result(
        capacity, [&](char* out, std::size_t cap) { return kor_join_path(out, cap, file.c_str(), value); });
    kor_fuzz::require(joined.size() >= path.size() || joined.empty(), "a joined path holds its leaf");
    const std::string tail = result(capacity, [&](char* out, std::size_t cap) {
        return kor_tail_after_prefix(value, file.c_str(), out, cap);
    });
    kor_fuzz::require(tail.empty() || tail[0] != '/', "a tail does not begin with a separator");
    kor_path_has_separator(value);
    has_kormodel_extension_ci(value);
    const std::string named = result(capacity, [&](char* out, std::size_t cap) {
        return path.size() < cap && std::strcpy(out, value) && ensure_kormodel_extension(out, cap);
    });
    kor_fuzz::require(named.empty() || has_kormodel_extension_ci(named.c_str()), "the extension is there");
}

void check_stored_paths(const std::string& file, const std::string& path, std::size_t capacity) {
    const char* value = path.c_str();
    result(capacity, [&](char* out, std::size_t cap) {
        return kor_resolve_model_relative_path(file.c_str(), value, out, cap);
    });
    result(capacity, [&](char* out, std::size_t cap) {
        return kor_resolve_result_path(file.c_str(), value, out, cap);
    });
    result(capacity, [&](char* out, std::size_t cap) {
        return kor_resolve_sector_pulse_path(file.c_str(), value, out, cap);
    });
    for (const auto make_portable : {kor_make_portable_sector_pulse_path, kor_make_portable_result_path}) {
        const auto portable = [&](const std::string& from) {
            return result(KOR_PATH_SIZE, [&](char* out, std::size_t cap) {
                return make_portable(file.c_str(), from.c_str(), out, cap);
            });
        };
        const std::string once = portable(path);
        kor_fuzz::require(once.find('\\') == std::string::npos, "a portable path has '/' alone");
        if (!kor_path_is_absolute(once.c_str()))
            kor_fuzz::require(portable(once) == once, "a portable path stays as it is");
        result(capacity,
               [&](char* out, std::size_t cap) { return make_portable(file.c_str(), value, out, cap); });
    }
    char message[KOR_MESSAGE_SIZE] = "";
    kor_set_sector_pulse_resolution_error(file.c_str(), value, 7, 3, message, sizeof message);
    kor_fuzz::require(std::strncmp(message, "line 7: sector_pulsefile for sector 3 ", 38) == 0,
                      "the message names line and sector");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kor_fuzz::Input input(data, size);
    const unsigned code = input.byte();
    const std::size_t capacity = code < 192 ? 1 + code : std::size_t{KOR_PATH_SIZE};
    const std::string file = input.line();
    // "@" is the root of the tree, so that absolute paths meet each other there.
    const auto with_root = [](const std::string& text) {
        return text.substr(0, 1) == "@" ? kor_fuzz::tree() + text.substr(1) : text;
    };
    const std::string path = with_root(input.line());
    check_short_name(path, capacity);
    check_elements(with_root(file), path, capacity);
    check_stored_paths(with_root(file), path, capacity);
    return 0;
}
