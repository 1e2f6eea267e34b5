// Whole sessions at the console: the answers that a person types from the main menu on.
#pragma once

#include <string>
#include <vector>

namespace kor_test {

/// One line per answer.
std::string answer_lines(const std::vector<std::string>& answers);

/// Lactate (four spins 1/2) on five voxels: slice-selective 90, wait, 180, wait, acquisition, composed from
/// nothing with the default waveform names, saved as "lactate" and run; leaves the program. The run writes
/// "spinecho.bin".
std::vector<std::string> lactate_spin_echo_session();
/// Two coupled spins: 90, evolution of four steps, 90, acquisition of 8 samples; without a result file, so
/// that the run ends in a 2D spectrum. Saved as "cosy"; leaves the program before the run.
std::vector<std::string> cosy_session();

} // namespace kor_test
