// What both sequence families do with a sector and with the result.
#pragma once

namespace kor {

/// printf, silent in the quiet mode: for everything that is no failure.
[[gnu::format(printf, 1, 2)]] void inform(const char* format, ...);

/// A run starts at the equilibrium state, with no sector propagated. False, with a message, when the spin
/// system cannot be built.
bool start_sequence_run();
/// Makes sector k the current one: ap, pt, h, ti and statoff_s.
void select_sector(int k);
/// Reports the waveform file of sector k as unreadable.
void report_unreadable_pulse_file(int k);
/// Copies "dm.bin" to the result file and says so; `label` words the result ("density-matrix").
void publish_density_file(const char* label);

} // namespace kor
