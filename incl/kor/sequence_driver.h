// Floor 3.12 - simulator: running the current model, sector by sector
//
// Rooms in src/kor/sequence_driver/: dispatch (readiness, choice of family), spatial_family, nmr_family,
// sectors (what both families do with a sector), acquisition (the acquisition marker).
//
// A run starts from the equilibrium state and fresh scratch files, so two runs of a model give the same
// bytes. All files lie in the working directory, the result under `resultflnm`. Messages go to standard
// output, the system's error texts to standard error; the quiet mode silences everything that is no
// failure. The first failure ends the run, without a result; nothing is returned.
#pragma once

#include "matrixmathlib.h"

namespace kor {

/// Whether one of the scratch files of runs and spectra in the working directory ("dm.bin", "store",
/// "korsign.bin", "spectra.bin", "sort.bin") is a file of the loaded model; said on standard error.
bool scratch_replaces_model_files();
/// Runs the model in the runtime state: says what is missing or that a scratch file is one of the model's,
/// or deletes "dm.bin", "store", "korsign.bin" and "spectra.bin" and runs the family of `sequencetype`.
void RunCurrentPreparedModel();
/// The same, by the name that the entry calls.
void KORRunCurrentPreparedModel();
/// The same, by the name that the reference checks call.
void KOR_RunCurrentPreparedModel();

/// Spatially resolved family: every sector before the first acquisition sector, for every voxel; the
/// result is a copy of "dm.bin", the states at acquisition start.
void SimulateLoadedPulseSequence();
/// 1D/2D NMR family. An acquisition sector of type 1 is not propagated but says how the receiver samples.
/// Result: the receiver signal (with an acquisition sector), else a copy of "dm.bin"; with an evolution
/// sector and no result file the 2D spectrum is calculated.
void SimulateLoaded2DPulseSequence();

/// Read N samples (0..8192) per block of a waveform file into the runtime state: xb, yb, gx, gy, gz, or
/// xb, yb. 1; 0 for a missing or empty path, a short file, or an open failure (with perror(path)).
int LoadSpatialSectorPulseFile(const char* path, int N);
int Load2DSectorPulseFile(const char* path, int N);

/// Whether `text` contains `needle`, the letters A-Z and a-z being the same: 1 or 0. An empty needle is
/// contained in every text; a missing text or needle never matches.
int kor_text_contains_ci(const char* text, const char* needle);
/// Whether the remark marks an acquisition sector: it contains "adc" or "acquisition", in any case.
int kor_is_acquisition_remark(const char* remark);
/// 1 for 1, 2, 4, 8, ..., else 0.
int kor_is_power_of_two_int(int v);
/// 1 when the sequence is a pulse and an acquisition: two sectors of type 1, the second alone marked as
/// acquisition.
int kor_current_sequence_is_pulse_acquire_fid();

/// acc = acc + add over the leading n x n block.
void AccumulateCMat(int n, CMatrix& acc, const CMatrix& add);

} // namespace kor
