// Floor 0.7 - ground: the files of the loaded model, which no output may replace
//
// A model is a model file, the spin-system and sequence files that it names, and the waveform files of its
// sectors. Whoever asks the user for the name of an output asks here before it writes. Saving a model and
// writing an optimised waveform back are no outputs: they are to replace these files.
#pragma once

#include "korlimits.h"

namespace kor {

/// The waveform files of the current sequence, as the caller's state holds them: names[k] for the sectors
/// k = 1..*sectors.
struct WaveformNames {
    const char (*names)[KOR_FILE_NAME_SIZE];
    const int* sectors;
};
/// The questions below look these up from now on, as they stand at the time; they must stay until the process
/// ends. Before the first call there are none. The simulator's state hands over its own before main begins.
void follow_waveform_names(const WaveformNames& waveforms);

/// The model that was loaded or saved last, by the names of its three files. They are cut to
/// KOR_PATH_SIZE - 1 characters; none may be null.
void remember_model_files(const char* model, const char* spin_system, const char* sequence);
/// No model is loaded.
void forget_model_files();

/// The sector (from 1) of the current sequence whose waveform file the path names; 0 when there is none.
int sector_of_waveform_file(const char* path);
/// Says on standard output which other sectors of the current sequence read the waveform file of sector k
/// (from 1), which was just written: they have changed with it.
void tell_who_shares_the_waveform_file(int k);
/// Whether writing `output` would replace the model file of the loaded model or one of the two that it names;
/// said on standard error.
bool replaces_definition_file(const char* output);
/// The same with the waveform files of the current sequence.
bool replaces_model_files(const char* output);

} // namespace kor
