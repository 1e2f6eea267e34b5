// Floor 0.3 - ground: reading answers from standard input
//
// The one place that reads numbers, words and lines, and the one that waits for Enter. Console
// interaction is line based: a number read leaves the line end behind it consumed, so that the next
// question or wait meets a fresh line, for a person and for a script alike.
#pragma once

#include <cstddef>

namespace kor {

/// One line of at most cap - 1 characters, as fgets reads it (the line end included when it fits; a
/// longer line is continued by the next read). Returns 1, or 0 at end of input (out is then empty).
int console_read_line(char* out, std::size_t cap);
/// The same without its line end (`\n`, `\r\n`), the rest of a longer line kept for the next read.
int console_read_text(char* out, std::size_t cap);
/// Skips white space (line ends too) and reads a base-10 integer. Blanks behind it and one line end are
/// consumed; other characters stay for the next read. Returns 1; 0 when what stands there is no number
/// (it stays unread) or at end of input.
int console_read_int(int* out);
/// The same for a decimal floating-point number. One beyond the range of double is consumed, and 0 returned,
/// for an infinite length or time would poison a whole run; one below it is read as 0 or as subnormal.
int console_read_double(double* out);
/// The same for a blank-free word of at most cap - 1 characters.
int console_read_word(char* out, std::size_t cap);
/// Drops the rest of the current line, its end included. Does nothing at the start of a line that
/// console_read_int, _double or _word has already finished.
void console_discard_line();
/// Flushes standard output and waits for Enter: reads through the next line end (or end of input).
void console_wait_for_enter();
/// Whether the last read met the end of input.
bool console_at_end();
/// Forgets an end of input, so that a person who typed it can go on. Returns whether more input can come:
/// standard input is a terminal.
bool console_resume_after_end();

} // namespace kor
