// Floor 4.1 - workshop: the runtime folder and the scratch folder of a run
//
// A run leaves intermediate files ("dm.bin", "store", signals, spectra). They belong beside the executable
// and not into the folder the user happened to start from: E/runtime for the menus, a folder of its own
// below E/runtime/runs for every run from the command line, so that two runs at once do not meet.
// A folder that cannot be had is a warning on standard output and nothing worse: the process then works in
// the folder it is in.
#pragma once

namespace kor {

/// Makes E/runtime and makes it the working directory.
void enter_runtime_work_dir();
/// Makes E/runtime/runs/NAME_PID and makes it the working directory. NAME: the short name of the model
/// file's base name, cut to 96 characters, or "model" when the name has no usable character; PID: the
/// process id in decimal. model_path may be null or empty.
void enter_private_model_run_work_dir(const char* model_path);

} // namespace kor
