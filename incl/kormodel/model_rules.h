// Floor 2.8 - materials: what the records of a model must fulfil together before it may run
//
// Conventions as in records.h.
#pragma once

#include "kormodel/records.h"

namespace kor {

/// What a sequence must fulfil beyond its own record's rules to stand in a model: sequence type 1 or 2, at
/// least one sector, durations > 0 s and a pulse file; in a spatial sequence only pulse sectors without
/// evolution, in a 1D/2D one those and evolution sectors with at least one evolution point. The record itself
/// need not have been checked, but sector_count is at most KOR_MAX_SECTORS. The first rule broken gives
/// status and message.
KORModelStatus check_sequence_in_model(const KORPulseSequenceDef* seq, char* errbuf, std::size_t errbufsz);
/// The checks of the three records in this order, then check_sequence_in_model.
KORModelStatus KORModel_ValidateAll(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                    const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);

} // namespace kor
