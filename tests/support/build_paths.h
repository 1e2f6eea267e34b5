// Where the build put the programs under test, and where the project's files are.
#pragma once

#include <string>

namespace kor_test {

const char* kor_program();            // the built kor
const char* reference_program();      // the same with the reference engine
std::string program_file();           // its name in its folder: "kor", on Windows "kor.exe"
const char* make_waveforms_program(); // the generator of the examples' waveforms
const char* source_folder();          // the project's root

} // namespace kor_test
