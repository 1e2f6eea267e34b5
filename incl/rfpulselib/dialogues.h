// Floor 2.23 - materials: choosing an RF pulse shape and its parameters at the console
//
// Each routine prints its menu or banner, asks for the parameters and has rfpulselib/shapes.h fill samples
// 0..*ap-1 of xb and yb (rad/s; at least *ap doubles each, 0-based, not overlapping). *ap is the number of
// samples (at most KOR_MAX_RF_POINTS: clamp_ap), *ti the time between them in seconds. A missing pointer
// ends a routine at once; an answer that cannot be read ends it with the arrays as they were. A newline
// follows every answer that was read.
//
// The definitions and shapes return whether a pulse was defined, be it of zero amplitude: false after a
// missing pointer, a number that is on no menu, an answer that cannot be read, a sum to which nothing was
// added.
#pragma once

namespace kor {

/// Writes the prompt (when there is one) and reads one integer or real number. 1; 0 when none could be read
/// (the answer is then dropped with its line) or out is null.
int scan_int_prompt(const char* prompt, int* out);
int scan_double_prompt(const char* prompt, double* out);

/// Menu of eight hard pulses: 90 or 180 degrees about x, y, -x, -y. Sets *ti = 1e-5 s (a null ti is
/// tolerated) and, after a valid choice, *ap = 1.
bool AMHardPulseDefinition(int* ap, double* ti, double* xb, double* yb);
/// Menu of the four amplitude-modulated shapes, ampulseproc1..4.
bool AMPulseDefinition(const int* ap, const double* ti, double* xb, double* yb);
/// Menu of the six frequency-modulated and 2D shapes, fmpulseproc1..6.
bool FMPulseDefinition(const int* ap, const double* ti, double* xb, double* yb);

bool ampulseproc1(const int* ap, const double* ti, double* xb, double* yb); // rectangular
bool ampulseproc2(const int* ap, const double* ti, double* xb, double* yb); // sinc-Gauss
bool ampulseproc3(const int* ap, const double* ti, double* xb, double* yb); // 2D Gauss
bool ampulseproc4(const int* ap, const double* ti, double* xb, double* yb); // 2D sinc, centred

bool fmpulseproc1(const int* ap, const double* ti, double* xb, double* yb); // 180 sech-tanh
bool fmpulseproc2(const int* ap, const double* ti, double* xb, double* yb); // 90 sech-tanh
bool fmpulseproc3(const int* ap, const double* ti, double* xb, double* yb); // 360 sech-tanh
bool fmpulseproc4(const int* ap, const double* ti, double* xb, double* yb); // 2D sinc off centre
/// Sum of 2D sinc pulses, asked for one by one: xb and yb are cleared first. The work arrays keep the last
/// pulse, so an addition whose prompts fail part-way adds that pulse again.
bool fmpulseproc5(const int* ap, const double* ti, double* xb, double* yb);
/// Sum of 2D sinc pulses from a text file, one line "a A B n dx dy x0 y0" per pulse: xb and yb are cleared
/// first. Reading stops at the end of the file, at a line without eight numbers or at a pulse with a = 0.
/// An open failure prints perror("fopen(parameter file)").
bool fmpulseproc6(const int* ap, const double* ti, double* xb, double* yb);

} // namespace kor
