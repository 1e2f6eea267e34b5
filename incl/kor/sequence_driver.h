// Floor 3.12 - simulator: running the current model, sector by sector
#pragma once

namespace kor {

void RunCurrentPreparedModel();
void KORRunCurrentPreparedModel();
void KOR_RunCurrentPreparedModel();
void SimulateLoadedPulseSequence();
void SimulateLoaded2DPulseSequence();
int LoadSpatialSectorPulseFile(const char* path, int N);
int Load2DSectorPulseFile(const char* path, int N);
int kor_text_contains_ci(const char* text, const char* needle);
/// Whether the remark marks an acquisition sector.
int kor_is_acquisition_remark(const char* remark);
int kor_is_power_of_two_int(int v);
int kor_current_sequence_is_pulse_acquire_fid();

} // namespace kor
