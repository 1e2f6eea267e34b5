// Floor 5.1 - entry: start-up, command-line modes and menus
#pragma once

namespace kor {

/// The whole program; argv[0] is the program. Returns the exit status.
int kor_main(int argc, char** argv);

void TotalStartUp();
int run_kor_model_file(const char* path);
int write_expectation_profile_file(const char* model_path, const char* density_path,
                                   const char* operator_expression, const char* output_path);
int write_voxel_signal_file(const char* model_path, const char* density_path, const char* point_text,
                            const char* output_path);
int read_menu_choice();
void KORPrepareMenu();
void LiouvilleNonInteractive();
void ScreenMode(int mode);

} // namespace kor
