// Floor 4.21 - workshop: the questions of the sequence composer, one line per answer
#pragma once

#include <cstddef>

namespace kor {

/// Print the prompt, read a line (at most 255 characters; what is longer is dropped) and ask again until the
/// whole line is a number. An end of input is cleared and the question asked again: a person at a terminal
/// may go on. 1; 0 when the input has ended for good (*out is then unchanged): the caller leaves its
/// dialogue.
int read_int_prompt(const char* prompt, int* out);
int read_double_prompt(const char* prompt, double* out);
/// Prints the prompt and reads one line of at most cap - 1 characters (what is longer is dropped), without
/// its line end. An end of input that came before the question is forgotten: a person at a terminal is let
/// answer. 1; 0 at end of input (out is then empty).
int read_line_prompt(const char* prompt, char* out, std::size_t cap);
/// The same without blanks at either end.
int read_trimmed_line_prompt(const char* prompt, char* out, std::size_t cap);

} // namespace kor
