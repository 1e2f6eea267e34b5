// Floor 2.2 - materials: text files of real series (an RF or gradient waveform, one value per line)
//
// Two layouts, one text line per element 0..N-1:
//   plain ASCII  "%1.12E\n"                    the value
//   SG-plot      "%d   %1.12E   %1.12E\n"      1, the index (0, 1, 2, ...), the value
// The SG-plot XY writer puts the value in the second column and x in the third, the reverse of the SG-plot
// writer: read back as SG-plot, such a file yields the x values.
// Every failure is reported once on standard error ("%s: %s\n", context and system error text) and returned
// or stored as a status; nothing is retried, and a partly written file stays.
#pragma once

#include <cstddef>

namespace kor {

enum dataio_status {
    DATAIO_OK = 0,          // done, or the user chose "Cancel"
    DATAIO_ERR_NULLPTR = 1, // a required pointer is missing
    DATAIO_ERR_BADARG = 2,  // a negative count
    DATAIO_ERR_IO = 3       // an open, read or write failed, or the user's input could not be read
};
/// Status of the last interactive operation.
extern dataio_status dataio_last_status;

// ---- files; values is 0-based and holds at least N doubles, path is opened by the system's rules

/// Creates or truncates `path` and writes N lines. Reports "fopen(write)" or "fprintf".
dataio_status AsciiOut_status(unsigned N, const double* values, const char* path);
dataio_status SGFileOut_status(unsigned N, const double* values, const char* path);
/// SG-plot XY: 1, x[i], xmin + i xinc. `x` holds the values of the series.
dataio_status SGXYFileOut_status(unsigned ap, const double* x, const char* filename, double xmin,
                                 double xinc);
/// Reads N items and ignores what follows. Reports "fopen(read)" or "fscanf"; the elements read before an
/// unreadable item stay in the array. The SG-plot reader takes the third number of each line.
dataio_status AsciiIn_status(unsigned N, double* values, const char* path);
dataio_status SGFileIn_status(unsigned N, double* values, const char* path);

// ---- prompts; the prompt may be null, a rejected answer is dropped with its line

/// Writes the prompt and reads one integer, real number or blank-free word of at most 255 (and cap - 1)
/// characters. 1 when it was read, else 0 (also for a null out).
int scan_int(const char* prompt, int* out);
int scan_double(const char* prompt, double* out);
int scan_string(const char* prompt, char* out, std::size_t cap);

// ---- dialogues; count points to N, the result is left in dataio_last_status

/// Ask for a file name, then write or read *count values.
void AsciiOut(const int* count, const double* values);
void AsciiIn(const int* count, double* values);
void SGFileOut(const int* count, const double* values);
void SGFileIn(const int* count, double* values);
void SGXYFileOut(const int* ap, const double* x, double xmin, double xinc);
/// Lets the user choose layout and file, or cancel.
void RealArrayOut(const int* count, const double* values);
/// The same; cancelling sets elements 0..*count-1 to 0. Whether all of them were read from a file.
bool RealArrayIn(const int* count, double* values);

} // namespace kor
