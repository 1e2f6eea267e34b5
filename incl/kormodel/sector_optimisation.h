// Floor 4.8 - workshop: optimising one sector of the current 1D/2D sequence from the console
#pragma once

#include <cstddef>

namespace kor {

/// The whole dialogue: sector, objective, target, parameters, start pulse, search, write-back.
void KORModel_OptimizePreparedSequenceSectorInteractive();

/// The value of `name` in the remark's group "group[name=value, ...]"; 1, or 0 with an empty `out` (also when the
/// value does not fit outsz).
int kormodel_metadata_value(const char* remark, const char* group, const char* name, char* out, std::size_t outsz);
/// 0 for null, empty or blank text and for "not defined" in any case; else 1.
int kormodel_operator_is_defined(const char* text);
/// Istat = the target that sector k (1..20) names in its remark; 1, or 0 (a message when it cannot be parsed).
int kormodel_try_define_optimizer_operator_from_sector_remark(int k);

/// The steps of the dialogue. Each returns 1, or 0 when it ended the dialogue.
void kormodel_print_sequence_sector_optimization_summary();
int kormodel_prepare_sequence_sector_parameterization();
int kormodel_prepare_sequence_sector_start_pulse(int k);
void kormodel_offer_writeback_of_optimized_sector(int k);

} // namespace kor
