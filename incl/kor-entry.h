// Floor 5.1 - entry: start-up, command-line modes and menus
//
// Rooms in src/kor-entry/: start_up, run_modes (the command-line modes), main_menu, prepare_menu, run_menu,
// menu (what the menus share).
// Menus talk over standard input and output; the command-line modes report failures on standard error and
// by their exit status.
#pragma once

namespace kor {

/// The whole program; argv[0] is the program, argc may be 0 with a null argv. Enters the runtime folder,
/// then runs the mode that the arguments name, or the main menu. A mode's word counts only with exactly
/// its number of arguments. Returns the exit status: 0, or 1 when a mode failed or memory ran out.
int kor_main(int argc, char** argv);

/// Start-up defaults of the runtime state; then the spin system's dialogues, if the defaults define one.
void TotalStartUp();

/// --run-model: loads the model file and runs it in a scratch folder of its own, in which relative paths
/// are looked up as well. Returns 0 once the run was started, whatever became of it, 1 when the model could
/// not be loaded or activated. A null or empty path is an error.
int run_kor_model_file(const char* path);
/// --expectation-profile: loads the model and writes the profile; relative paths count from the runtime
/// folder. Returns 0, or 1 when anything failed.
int write_expectation_profile_file(const char* model_path, const char* density_path,
                                   const char* operator_expression, const char* output_path);
/// --voxel-signal: loads the model and writes the signal of voxel point_text (from 1) in a scratch folder
/// of its own, from which relative paths count. The whole of point_text must be a positive integer; one
/// beyond the range of int counts as the largest int. Returns 0, or 1 when anything failed.
int write_voxel_signal_file(const char* model_path, const char* density_path, const char* point_text,
                            const char* output_path);

/// Draws the main menu until one of its numbers 1..6 is answered; 6 at end of input.
int read_menu_choice();
/// The preparation menu and the run menu. An answer that is no number leaves them, as the end of input does.
void KORPrepareMenu();
void LiouvilleNonInteractive();
/// Asks for the spins, then, when they were defined, for intensities, offsets and couplings.
void RedefineSpinSystem();
/// Clears the screen for mode 3; other modes do nothing.
void ScreenMode(int mode);

} // namespace kor
