// Floor 4.8 - workshop: optimising one sector of the current 1D/2D sequence from the console
#pragma once

#include <cstddef>

namespace kor {

/// The whole dialogue: sector, objective, target, parameters, start pulse, search, write-back.
void KORModel_OptimizePreparedSequenceSectorInteractive();

/// The value of `name` in the remark's group "group[name=value, ...]", white space around it dropped. Returns
/// 1, or 0 with an empty `out`: no such group or name, or a value that does not fit outsz.
int kormodel_metadata_value(const char* remark, const char* group, const char* name, char* out,
                            std::size_t outsz);
/// 0 for null, empty or blank text and for "not defined" in any case; else 1.
int kormodel_operator_is_defined(const char* text);
/// Istat = the target that sector k (1..20) names in its remark; 1, or 0 (with a message on standard error
/// when it cannot be parsed).
int kormodel_try_define_optimizer_operator_from_sector_remark(int k);

// The steps of the dialogue, in order; k is the sector, from 1.

/// Prints the table of the sectors.
void kormodel_print_sequence_sector_optimization_summary();
/// Asks for the number of mode pairs and sets npar to four times that. Returns 1, or 0 with a message for an
/// answer that ends the dialogue.
int kormodel_prepare_sequence_sector_parameterization();
/// Asks for the start pulse, makes it unless it is the stored one in xb and yb, and sets par. Returns as
/// above.
int kormodel_prepare_sequence_sector_start_pulse(int k);
/// Asks whether the pulse in xb and yb (ap samples) shall replace the sector's waveform file. A pulse with a
/// sample that is not finite, or a file that cannot be written, leaves the old file as it is, with a message
/// on standard error.
void kormodel_offer_writeback_of_optimized_sector(int k);

} // namespace kor
