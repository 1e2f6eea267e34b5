#include "kormodel/text_lines.h"

#include "korplatform.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>

namespace kor {

namespace {

constexpr const char* white_space = " \t\n\v\f\r";

bool is_white_space(char c) {
    return c != '\0' && std::strchr(white_space, c) != nullptr;
}

char* trim(char* text) {
    text += std::strspn(text, white_space);
    std::size_t length = std::strlen(text);
    while (length > 0 && is_white_space(text[length - 1]))
        --length;
    text[length] = '\0';
    return text;
}

template <class Number> int parse_strict(int (*scan)(const char**, Number*), const char* text, Number* out) {
    Number value;
    if (!scan(&text, &value) || *skip_white_space(text) != '\0')
        return 0;
    *out = value;
    return 1;
}

template <class Number>
int parse_list(int (*scan)(const char**, Number*), const char* text, int count, Number* out, int capacity) {
    for (int i = 1; i <= count; ++i) {
        Number value;
        if (i > 1 && !is_white_space(*text))
            return 0;
        if (!scan(&text, &value))
            return 0;
        if (i <= capacity)
            out[i] = value;
    }
    return *skip_white_space(text) == '\0';
}

} // namespace

std::FILE* open_model_text(const char* filename) {
    return platform_is_special(filename) ? nullptr : platform_open(filename, "r");
}

ModelLine read_model_line(std::FILE* file, char (&line)[KOR_LINE_SIZE], char** text, int* line_number) {
    // What fgets leaves alone is no zero: the last zero is its terminator, an earlier one is of the file.
    std::memset(line, '\n', sizeof line);
    if (!std::fgets(line, KOR_LINE_SIZE, file))
        return ModelLine::end;
    ++*line_number;
    const bool cut_by_zero =
        std::find(std::rbegin(line), std::rend(line), '\0').base() - 1 != line + std::strlen(line);
    if (char* comment = std::strchr(line, '#'))
        *comment = '\0';
    *text = trim(line);
    return cut_by_zero ? ModelLine::zero_byte : ModelLine::text;
}

const char* match_key(const char* text, const char* key) {
    const std::size_t length = std::strlen(key);
    if (std::strncmp(text, key, length) != 0)
        return nullptr;
    text = skip_white_space(text + length);
    return *text == ':' ? skip_white_space(text + 1) : nullptr;
}

const char* skip_white_space(const char* text) {
    return text + std::strspn(text, white_space);
}

int scan_int(const char** cursor, int* out) {
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(*cursor, &end, 10);
    if (end == *cursor || errno == ERANGE || value < std::numeric_limits<int>::min() ||
        value > std::numeric_limits<int>::max())
        return 0;
    *cursor = end;
    *out = static_cast<int>(value);
    return 1;
}

int scan_double(const char** cursor, double* out) {
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(*cursor, &end);
    if (end == *cursor || (errno == ERANGE && std::fabs(value) == HUGE_VAL))
        return 0;
    *cursor = end;
    *out = value;
    return 1;
}

int parse_int_strict(const char* text, int* out) {
    return parse_strict(scan_int, text, out);
}

int parse_double_strict(const char* text, double* out) {
    return parse_strict(scan_double, text, out);
}

int parse_int_list(const char* text, int count, int* out, int capacity) {
    return parse_list(scan_int, text, count, out, capacity);
}

int parse_double_list(const char* text, int count, double* out, int capacity) {
    return parse_list(scan_double, text, count, out, capacity);
}

int count_words(const char* text) {
    constexpr const char* separators = " \t\r\n";
    int words = 0;
    for (text += std::strspn(text, separators); *text != '\0'; text += std::strspn(text, separators)) {
        ++words;
        text += std::strcspn(text, separators);
    }
    return words;
}

void copy_truncated(const char* text, char* out, std::size_t size) {
    std::size_t length = std::strlen(text);
    if (length >= size)
        length = size - 1;
    std::memmove(out, text, length);
    out[length] = '\0';
}

void copy_value(const char* text, char* out, std::size_t size) {
    copy_truncated(text, out, size);
    trim(out);
}

const char* find_lost_in_text(const char* value) {
    return std::strpbrk(value, "#\n");
}

const char* find_lost_in_path(const char* value) {
    const std::size_t length = std::strlen(value);
    if (is_white_space(value[0]))
        return value;
    if (length > 0 && is_white_space(value[length - 1]))
        return value + length - 1;
    return find_lost_in_text(value);
}

const char* find_lost_in_word(const char* value) {
    const char* found = std::strpbrk(value, white_space);
    return found ? found : find_lost_in_text(value);
}

KORModelStatus line_error(const ModelFileReader& reader, const char* format, ...) {
    char reason[2 * KOR_LINE_SIZE];
    va_list values;
    va_start(values, format);
    std::vsnprintf(reason, sizeof reason, format, values);
    va_end(values);
    set_error(reader.errbuf, reader.errbufsz, "line %d: %s", reader.line_number, reason);
    return KOR_MODEL_ERR_PARSE;
}

bool is_given(const ModelFileReader& reader, const char* key) {
    for (int i = 0; i < reader.given_count; ++i)
        if (std::strcmp(reader.given[i], key) == 0)
            return true;
    return false;
}

KORModelStatus read_format_version(const ModelFileReader& reader, const char* value) {
    int version = 0;
    if (!parse_int_strict(value, &version) || version != 1)
        return line_error(reader, "unsupported format_version");
    return KOR_MODEL_OK;
}

} // namespace kor
