// Floor 2.4 - materials: pulse tables and plot scripts
#pragma once

namespace kor {

/// Writes the pulse as text: the line "# t[s], B1x[Hz], B1y[Hz], |B1|, phase[rad]", then per sample
/// i = 0..ap-1 "t, xb, yb, |B1|, phase" in %g with t = i h. The values stand as they are stored (rad/s),
/// whatever the titles say. The phase atan2(yb, xb) lies in [0, 2 pi); where |B1| < 1e-12 it repeats the
/// phase of the last larger sample (0 before the first), so that the trace has no jumps there.
/// ap samples, arrays 0-based    h time step, s
/// 1; 0 when the file cannot be opened ("WritePulseCSV: cannot open ...") or written (the system's text),
/// on standard error.
int WritePulseCSV(const char* filename, int ap, double h, const double* xb, const double* yb);
/// Writes the gnuplot script that draws the four columns of `csv_name` over time. 1, or 0 as above
/// ("WriteGnuplotPulseScript: cannot open ...").
int WriteGnuplotPulseScript(const char* gp_name, const char* csv_name);

/// The older pair for start pulses: the same table, but the phase of a sample without amplitude is its own
/// (atan2 of zeros), and a script for an interactive window. 1; 0 when the file cannot be opened
/// ("Cannot open ...", or the system's text behind "gp pulse") or written, on standard error.
int write_start_pulse_csv(const char* filename, int ap, double h, const double* xb, const double* yb);
int write_start_pulse_gnuplot_script(const char* gp_name, const char* data_name);

/// Opens a plot script in gnuplot, in the background; says on standard output when gnuplot is not installed
/// or cannot be started.
void open_plot(const char* script_name);

} // namespace kor
