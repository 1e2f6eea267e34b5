// Floor 4.20 - workshop: rules of the sequence being composed: start values, families, defined sectors
//
// Works on the sequence definition of g_runtime. Sectors are numbered 1..KOR_MAX_SECTORS. Nothing is asked
// or printed here.
#pragma once

#include "sequencetypes.h"

#include <cstddef>

namespace kor {

/// "spatially resolved", "1D or 2D NMR", or "unknown".
const char* sequence_family_label(int family);
/// Whether sector k has time intervals, a duration, a waveform file or a remark (one that does not begin
/// with a space). 0 outside 1..KOR_MAX_SECTORS.
int ps_spatial_sector_is_defined(int k);
/// The lowest sector that is not defined; KOR_MAX_SECTORS when all are.
int first_undefined_sector();
/// Evolution steps of the nearest defined sector before sector k (1..KOR_MAX_SECTORS), which sector k
/// inherits. The start of the sequence has one step.
int inherited_evolution_steps(int k);
/// Whether every axis of the grid has points.
int spatial_grid_has_points();
/// Default waveform file name of sector k: "S_s01.bin", or "S_2d_s01.bin" when is_2d; without a model short
/// name S (null or empty) "sector-01.bin" or "sector2d-01.bin". Cut to fit `size`.
void ps_build_default_waveform_leaf(char* out, std::size_t size, const char* model_short_name, int is_2d,
                                    int k);

/// No spins, no sectors, one grid point per axis, no readiness flags, result file "result.bin".
void Initialize();
/// Whether the prepared sequence may be edited as family f: nothing is prepared, or it is of that family, or
/// it has no sectors.
int sequence_can_continue_as(int family);
/// Makes f the family of the prepared sequence and sets the readiness flags from what is there.
void continue_sequence_as(int family);
/// An empty sequence of family f: no sectors, every sector's fields empty (one evolution step), readiness
/// flags from what is there; the result file becomes "result.bin" when it has no name. Without spins the
/// state is initialised first.
void begin_new_sequence(int family);
/// Sector k was edited: the sequence reaches at least to it.
void count_edited_sector(int k);

} // namespace kor
