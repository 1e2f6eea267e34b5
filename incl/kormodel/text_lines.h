// Floor 2.9 - materials: the line syntax that the three model files share
//
// A line is `key: value`. '#' starts a comment, white space (blank, tab, line feed, vertical tab, form
// feed, carriage return) around it is dropped, empty lines are skipped. Keys are case-sensitive and stand
// in any order, each once unless its file says otherwise. Lines are numbered from 1, empty ones included.
#pragma once

#include "kormodel/records.h"

#include <cstddef>
#include <cstdio>

namespace kor {

/// Characters of a line buffer with its terminator; longer lines are read in pieces.
inline constexpr int KOR_LINE_SIZE = 2048;

/// Opens a model file for reading. nullptr where that fails, and on Linux for a pipe or a device, which
/// may keep the program waiting or have no end.
std::FILE* open_model_text(const char* filename);

/// What read_model_line met.
enum class ModelLine { text, zero_byte, end };
/// Reads the next piece of at most 2047 characters, counts it in *line_number (from 1), drops what
/// follows '#', trims white space at both ends and sets *text to the rest (inside `line`, perhaps empty).
/// `end` at end of file or on a read error; `zero_byte`, with the text before it, for a line with a zero
/// byte: no text file has one, and what stands behind it would be lost.
ModelLine read_model_line(std::FILE* file, char (&line)[KOR_LINE_SIZE], char** text, int* line_number);
/// The value behind `key` white-space ':' white-space (inside `text`), or nullptr when the line has
/// another key.
const char* match_key(const char* text, const char* key);

/// The text behind its leading white space.
const char* skip_white_space(const char* text);
/// Reads one number at *cursor, white space before it skipped, and moves *cursor behind it.
/// Returns 1; 0 when there is no number, an integer leaves 32 bits or a real overflows (it may underflow).
/// Integers are base 10; reals are what strtod reads, "inf" and "nan" included.
/// On 0 *cursor and *out are unchanged.
int scan_int(const char** cursor, int* out);
int scan_double(const char** cursor, double* out);

/// The whole text is one number with white space around it. Returns 1, or 0 with *out unchanged.
int parse_int_strict(const char* text, int* out);
int parse_double_strict(const char* text, double* out);
/// Exactly `count` numbers separated by white space into out[1..count] (1-based); elements above
/// `capacity` are parsed but not stored. A count below 1 expects an empty text. Returns 1, or 0 with the
/// numbers before the fault stored.
int parse_int_list(const char* text, int count, int* out, int capacity);
int parse_double_list(const char* text, int count, double* out, int capacity);
/// White-space separated words (blank, tab, CR, LF).
int count_words(const char* text);
/// Copies at most size - 1 characters and terminates them. size >= 1; out may be text itself.
void copy_truncated(const char* text, char* out, std::size_t size);
/// The same for a value of a line: where the cut leaves white space at the end, it goes too, so that a text
/// that was read, saved and read again stays the same.
void copy_value(const char* text, char* out, std::size_t size);

/// The first character of a value that reading it back would lose, or nullptr: '#' and a line end in a text,
/// whose white space at both ends does not count; white space too at the ends of a path, which would name
/// another file, and anywhere in a word.
const char* find_lost_in_text(const char* value);
const char* find_lost_in_path(const char* value);
const char* find_lost_in_word(const char* value);

/// One model file while it is being read: where it stands, which keys it has given, where errors go.
struct ModelFileReader {
    char* errbuf;
    std::size_t errbufsz;
    int line_number;       // of the line in hand, from 1
    int given_count;       // entries of given
    const char* given[32]; // keys met so far, 0-based; the texts of the loader's key table
};

/// Writes "line %d: " and the printf-formatted rest into the reader's buffer; returns
/// KOR_MODEL_ERR_PARSE.
KORModelStatus line_error(const ModelFileReader& reader, const char* format, ...)
    __attribute__((format(printf, 2, 3)));
/// Whether the file has given the key in this line or an earlier one.
bool is_given(const ModelFileReader& reader, const char* key);
/// The value of format_version: 1, or "line %d: unsupported format_version".
KORModelStatus read_format_version(const ModelFileReader& reader, const char* value);

} // namespace kor
