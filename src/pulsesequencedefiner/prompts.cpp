#include "pulsesequencedefiner/prompts.h"

#include "consoleutil.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kor {

namespace {

constexpr std::size_t answer_size = 256;

bool is_blank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

void trim(char* text) {
    std::size_t first = 0;
    while (is_blank(text[first]))
        ++first;
    std::size_t end = std::strlen(text);
    while (end > first && is_blank(text[end - 1]))
        --end;
    std::memmove(text, text + first, end - first);
    text[end - first] = '\0';
}

bool parse_int(const char* text, int* out) {
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || errno == ERANGE || value < INT_MIN || value > INT_MAX)
        return false;
    *out = static_cast<int>(value);
    return true;
}

/// Decimal numbers only: a duration of "inf" or an offset of "nan" would poison the whole run.
bool parse_double(const char* text, double* out) {
    if (text[std::strspn(text, "+-.0123456789eE")] != '\0')
        return false;
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    if (end == text || *end != '\0' || !std::isfinite(value))
        return false;
    *out = value;
    return true;
}

template <typename Parse> int ask_until_parsed(const char* prompt, const char* advice, Parse parse) {
    char answer[answer_size];
    bool retried = false;
    for (;;) {
        if (read_trimmed_line_prompt(prompt, answer, sizeof answer)) {
            if (parse(answer))
                return 1;
            std::puts(advice);
            retried = false;
        } else {
            const bool can_come_back = console_resume_after_end();
            std::puts("");
            if (retried && !can_come_back)
                return 0;
            retried = true;
        }
    }
}

} // namespace

int read_int_prompt(const char* prompt, int* out) {
    return ask_until_parsed(prompt, "Please enter a whole number.",
                            [out](const char* text) { return parse_int(text, out); });
}

int read_double_prompt(const char* prompt, double* out) {
    return ask_until_parsed(prompt, "Please enter a numeric value.",
                            [out](const char* text) { return parse_double(text, out); });
}

int read_line_prompt(const char* prompt, char* out, std::size_t cap) {
    console_resume_after_end();
    std::fputs(prompt, stdout);
    if (!console_read_text(out, cap))
        return 0;
    console_discard_line();
    return 1;
}

int read_trimmed_line_prompt(const char* prompt, char* out, std::size_t cap) {
    if (!read_line_prompt(prompt, out, cap))
        return 0;
    trim(out);
    return 1;
}

} // namespace kor
