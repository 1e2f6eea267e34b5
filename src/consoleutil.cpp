#include "consoleutil.h"

#include "korplatform.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace kor {
namespace {

// The last read consumed a line end, so that nothing of the current line is left to drop.
bool line_finished = false;
bool met_end = false;

void begin_read() {
    std::fflush(stdout);
    line_finished = false;
    met_end = false;
}

int peek() {
    const int c = std::getc(stdin);
    if (c != EOF)
        std::ungetc(c, stdin);
    return c;
}

bool is_digit(int c) {
    return c >= '0' && c <= '9';
}

/// Gives characters back. More than one is beyond what C promises, but the C libraries take back what lies
/// in their buffer, and a few characters of a mistyped number are all that is ever returned.
void give_back(const std::string& text) {
    for (auto c = text.rbegin(); c != text.rend(); ++c)
        std::ungetc(static_cast<unsigned char>(*c), stdin);
}

/// Skips white space, line ends included; false at end of input.
bool skip_white_space() {
    int c = std::getc(stdin);
    while (c != EOF && std::isspace(c))
        c = std::getc(stdin);
    if (c == EOF) {
        met_end = true;
        return false;
    }
    std::ungetc(c, stdin);
    return true;
}

/// Blanks behind an answer and one line end.
void finish_answer() {
    int c = std::getc(stdin);
    while (c != EOF && c != '\n' && std::isspace(c))
        c = std::getc(stdin);
    if (c == '\n')
        line_finished = true;
    else if (c != EOF)
        std::ungetc(c, stdin);
}

void take_one_of(const char* choices, std::string& text) {
    const int c = peek();
    if (c != EOF && c != '\0' && std::strchr(choices, c))
        text += static_cast<char>(std::getc(stdin));
}

/// Appends the digits that follow; the number of them.
std::size_t take_digits(std::string& text) {
    const std::size_t before = text.size();
    while (is_digit(peek()))
        text += static_cast<char>(std::getc(stdin));
    return text.size() - before;
}

/// An exponent with at least one digit; anything else is given back.
void take_exponent(std::string& text) {
    std::string exponent;
    take_one_of("eE", exponent);
    if (exponent.empty())
        return;
    take_one_of("+-", exponent);
    if (take_digits(exponent) > 0)
        text += exponent;
    else
        give_back(exponent);
}

bool take_integer_text(std::string& text) {
    take_one_of("+-", text);
    if (take_digits(text) > 0)
        return true;
    give_back(text);
    return false;
}

bool take_real_text(std::string& text) {
    take_one_of("+-", text);
    std::size_t digits = take_digits(text);
    take_one_of(".", text);
    digits += take_digits(text);
    if (digits == 0) {
        give_back(text);
        return false;
    }
    take_exponent(text);
    return true;
}

/// Characters up to a line end, at most `most` of them; the line end stays.
std::string take_line_text(std::size_t most) {
    std::string text;
    while (text.size() < most) {
        const int c = std::getc(stdin);
        if (c == EOF)
            break;
        if (c == '\n') {
            std::ungetc(c, stdin);
            break;
        }
        text += static_cast<char>(c);
    }
    return text;
}

/// Consumes a line end (`\n` or `\r\n`) that comes next, if one does.
bool take_line_end() {
    const int c = std::getc(stdin);
    if (c == '\n')
        return true;
    if (c == '\r') {
        if (peek() == '\n') {
            std::getc(stdin);
            return true;
        }
    }
    if (c != EOF)
        std::ungetc(c, stdin);
    return false;
}

void copy_out(const std::string& text, char* out) {
    std::memcpy(out, text.c_str(), text.size() + 1);
}

void drop_through_line_end() {
    int c = std::getc(stdin);
    while (c != EOF && c != '\n')
        c = std::getc(stdin);
    line_finished = c == '\n';
    met_end = c == EOF;
}

} // namespace

int console_read_line(char* out, std::size_t cap) {
    begin_read();
    std::string text = take_line_text(cap - 1);
    if (text.size() < cap - 1 && peek() == '\n') {
        text += static_cast<char>(std::getc(stdin));
        line_finished = true;
    }
    copy_out(text, out);
    met_end = text.empty();
    return met_end ? 0 : 1;
}

int console_read_text(char* out, std::size_t cap) {
    begin_read();
    std::string text = take_line_text(cap - 1);
    line_finished = take_line_end();
    met_end = text.empty() && !line_finished;
    const bool whole_line = line_finished || peek() == EOF;
    if (whole_line && !text.empty() && text.back() == '\r')
        text.pop_back();
    copy_out(text, out);
    return met_end ? 0 : 1;
}

int console_read_int(int* out) {
    begin_read();
    std::string text;
    if (!skip_white_space() || !take_integer_text(text))
        return 0;
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    *out = static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
    finish_answer();
    return 1;
}

int console_read_double(double* out) {
    begin_read();
    std::string text;
    if (!skip_white_space() || !take_real_text(text))
        return 0;
    const double value = std::strtod(text.c_str(), nullptr);
    finish_answer();
    if (!std::isfinite(value))
        return 0;
    *out = value;
    return 1;
}

int console_read_word(char* out, std::size_t cap) {
    begin_read();
    std::string text;
    if (skip_white_space())
        while (text.size() < cap - 1 && peek() != EOF && !std::isspace(peek()))
            text += static_cast<char>(std::getc(stdin));
    copy_out(text, out);
    if (met_end)
        return 0;
    finish_answer();
    return 1;
}

void console_discard_line() {
    if (!line_finished)
        drop_through_line_end();
}

void console_wait_for_enter() {
    begin_read();
    drop_through_line_end();
}

bool console_at_end() {
    return met_end;
}

bool console_resume_after_end() {
    std::clearerr(stdin);
    met_end = false;
    return platform_input_is_terminal();
}

} // namespace kor
