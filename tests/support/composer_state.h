// A clean slate for tests of the sequence composer, and what it writes.
#pragma once

#include "support/pulse_formulas.h"
#include "support/temp_tree.h"

#include <string>
#include <vector>

namespace kor_test {

/// As at program start: nothing defined, start-up defaults, no model file and no short name.
void fresh_state();
/// The same with two spins 1/2, weakly coupled by 7.3 Hz.
void fresh_state_with_spins();

/// The same and the model's short name "lac".
void fresh_state_with_short_name();

/// A waveform file: blocks of N doubles, xb, yb (and gx, gy, gz). Fails the test when its size is another.
std::vector<std::vector<double>> waveform_blocks(const TempTree& tree, const std::string& name, int N,
                                                 int blocks);
/// Fails the test unless xb + i yb equal the pulse, to 1e-12 of its largest sample, and what lies behind it
/// is zero.
void expect_waveform(const std::vector<std::vector<double>>& blocks, const Pulse& pulse);

} // namespace kor_test
