// Floor 2.8 - materials: the line syntax that the three model files share
#pragma once

#include <cstddef>
#include <cstdio>

namespace kor {

/// Characters of a line buffer with its terminator; longer lines are read in pieces.
inline constexpr int KOR_LINE_SIZE = 2048;

/// Reads the next piece of at most 2047 characters, counts it in *line_number (from 1), drops what
/// follows '#', trims white space at both ends and sets *text to the rest (inside `line`).
/// Returns 1, or 0 at end of file.
int read_model_line(std::FILE* file, char (&line)[KOR_LINE_SIZE], char** text, int* line_number);
/// The value behind `key` white-space ':' white-space, or nullptr when the line has another key.
const char* match_key(const char* text, const char* key);
int parse_int_strict(const char* text, int* out);
int parse_double_strict(const char* text, double* out);
/// Exactly `count` numbers into out[1..count]; elements above `capacity` are parsed but not stored.
int parse_int_list(const char* text, int count, int* out, int capacity);
int parse_double_list(const char* text, int count, double* out, int capacity);
/// White-space separated words (blank, tab, CR, LF).
int count_words(const char* text);

} // namespace kor
