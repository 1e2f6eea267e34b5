// Where the paths in model files lead on Windows, and how saved paths become portable there.
#include "kormodel/paths.h"

#include "korlimits.h"
#include "korpaths.h"
#include "korplatform.h"
#include "path_calls.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

std::string join(const char* dir, const char* leaf) {
    return path_of([&](char* out, std::size_t n) { return kor_join_path(out, n, dir, leaf); });
}

std::string root_of(const char* model) {
    return path_of([&](char* out, std::size_t n) { return kor_set_root_folder(model, out, n); });
}

std::string resolve_part(const char* model, const char* value) {
    return path_of(
        [&](char* out, std::size_t n) { return kor_resolve_model_relative_path(model, value, out, n); });
}

std::string resolve_result(const char* value) {
    return path_of([&](char* out, std::size_t n) { return kor_resolve_result_path("m", value, out, n); });
}

std::string resolve_pulse(const std::string& sequence, const std::string& stored) {
    return path_of([&](char* out, std::size_t n) {
        return kor_resolve_sector_pulse_path(sequence.c_str(), stored.c_str(), out, n);
    });
}

std::string not_found_message(const char* sequence, const char* stored) {
    char message[4096] = "";
    kor_set_sector_pulse_resolution_error(sequence, stored, 12, 3, message, sizeof message);
    return message;
}

std::string portable_pulse(const char* sequence, const char* stored) {
    return path_of([&](char* out, std::size_t n) {
        return kor_make_portable_sector_pulse_path(sequence, stored, out, n);
    });
}

std::string portable_result(const std::string& model, const std::string& stored) {
    return path_of([&](char* out, std::size_t n) {
        return kor_make_portable_result_path(model.c_str(), stored.c_str(), out, n);
    });
}

std::string rf_output_folder() {
    return path_of([](char* out, std::size_t n) { return KOR_GetDefaultRFOutputDir(out, n); });
}

} // namespace

TEST(JoinPath, InsertsABackslashUnlessASeparatorIsThere) {
    EXPECT_EQ(join("C:\\data", "x"), "C:\\data\\x");
    EXPECT_EQ(join("C:\\", "x"), "C:\\x");
    EXPECT_EQ(join("C:/data/", "x"), "C:/data/x");
    EXPECT_EQ(join("C:/data", "x"), "C:/data\\x");
    EXPECT_EQ(join("", "x"), "x");
}

TEST(SetRoot, IsTheParentOfTheModelFilesFolder) {
    EXPECT_EQ(root_of("D:\\models\\x.kormodel"), "D:");
    EXPECT_EQ(root_of("D:/root/models/x.kormodel"), "D:/root");
    EXPECT_EQ(root_of("D:root\\models\\x.kormodel"), "D:root");
    EXPECT_EQ(root_of("\\root\\models\\x.kormodel"), "\\root");
    EXPECT_EQ(root_of("..\\models\\x.kormodel"), "..");
    const std::string here = path_of([](char* out, std::size_t n) { return platform_current_dir(out, n); });
    EXPECT_EQ(root_of("models\\x.kormodel"), here);
}

// What is to be written on a drive must not be looked for below the working directory.
TEST(SetRoot, IsNotTheWorkingDirectoryForAFileOnADrive) {
    for (const char* model :
         {"D:\\x.kormodel", "D:/x.kormodel", "\\x.kormodel", "/x.kormodel", "D:x.kormodel",
          "D:models\\x.kormodel", "\\models\\x.kormodel", "/models/x.kormodel"})
        EXPECT_EQ(root_of(model), "<failed>") << model;
}

TEST(PathIsAbsolute, NeedsADriveOrADoubleSeparator) {
    for (const char* path : {"C:\\x", "z:/x", "\\\\server\\x", "//server/x"})
        EXPECT_EQ(kor_path_is_absolute(path), 1) << path;
    for (const char* path : {"", "x", "C:x", "C:", "\\x", "/x", "..\\x"})
        EXPECT_EQ(kor_path_is_absolute(path), 0) << path;
}

TEST(ResolveModelRelative, StartsAtTheModelFilesFolder) {
    EXPECT_EQ(resolve_part("C:\\m\\x.kormodel", "..\\spin\\a.korspin"), "C:\\m\\..\\spin\\a.korspin");
    EXPECT_EQ(resolve_part("C:\\m\\x.kormodel", "../spin/a.korspin"), "C:\\m\\../spin/a.korspin");
    EXPECT_EQ(resolve_part("C:\\m\\x.kormodel", "D:\\a.korspin"), "D:\\a.korspin");
    EXPECT_EQ(resolve_part("C:\\m\\x.kormodel", "/a.korspin"), "C:\\m\\/a.korspin");
    EXPECT_EQ(resolve_part("x.kormodel", "a.korspin"), "a.korspin");
    EXPECT_EQ(resolve_part("C:\\m\\x.kormodel", ""), "");
}

TEST(ResolveResult, LeadsIntoTheRuntimeResults) {
    EXPECT_EQ(results_folder().substr(1, 2), ":\\");
    EXPECT_TRUE(results_folder().ends_with("\\runtime\\results"));
    EXPECT_EQ(resolve_result("r.bin"), results_folder() + "\\r.bin");
    EXPECT_EQ(resolve_result("sub/r.bin"), results_folder() + "\\sub/r.bin");
    EXPECT_EQ(resolve_result("D:/r.bin"), "D:/r.bin");
    EXPECT_EQ(resolve_result("\\\\server\\r.bin"), "\\\\server\\r.bin");
}

TEST(ResolveSectorPulse, LooksBesideTheSequenceThenInItsWaveforms) {
    const TempTree tree;
    const std::string folder = tree.root().string() + "\\seq";
    const std::string sequence = folder + "\\s.korseq";
    tree.write("seq/waveforms/P.bin", "x");
    EXPECT_EQ(resolve_pulse(sequence, "P.bin"), folder + "\\waveforms\\P.bin");
    EXPECT_EQ(resolve_pulse(sequence, "p.BIN"), folder + "\\waveforms\\p.BIN") << "the system ignores case";
    tree.write("seq/P.bin", "x");
    EXPECT_EQ(resolve_pulse(sequence, "P.bin"), folder + "\\P.bin");
    EXPECT_EQ(resolve_pulse(sequence, "waveforms\\P.bin"), folder + "\\waveforms\\P.bin");
    EXPECT_EQ(resolve_pulse(sequence, "waveforms/none"), folder + "\\waveforms/none");
    EXPECT_EQ(resolve_pulse(sequence, "none"), folder + "\\none");
    EXPECT_EQ(resolve_pulse(sequence, "C:\\none"), "C:\\none");
}

TEST(SectorPulseError, NamesTheCandidatesWithBackslashes) {
    const std::string start = "line 12: sector_pulsefile for sector 3 not found; stored ";
    EXPECT_EQ(not_found_message("s\\x.korseq", "C:\\p"), start + "absolute path 'C:\\p' does not exist");
    EXPECT_EQ(not_found_message("s\\x.korseq", "w\\p"),
              start + "relative path 'w\\p'; tried model-relative 's\\w\\p'");
    EXPECT_EQ(not_found_message("s\\x.korseq", "p"),
              start + "leafname 'p'; tried model-relative 's\\p' and RF-output '" + rf_output_folder() +
                  "\\p'");
}

TEST(PortableSectorPulse, IsRelativeToTheSequenceFilesFolderOrItsParent) {
    EXPECT_EQ(portable_pulse("C:\\Data\\Seq\\s.korseq", "C:\\Data\\Seq\\Waves\\P1.BIN"), "waves/p1.bin");
    EXPECT_EQ(portable_pulse("C:\\Data\\Seq\\s.korseq", "c:/data/seq/P1.BIN"), "p1.bin");
    EXPECT_EQ(portable_pulse("C:\\Data\\Seq\\s.korseq", "C:\\Data\\Other\\P1.BIN"), "../other/p1.bin");
    EXPECT_EQ(portable_pulse("C:\\Data\\Seq\\s.korseq", "E:\\Other\\P1.BIN"), "E:/Other/P1.BIN");
    EXPECT_EQ(portable_pulse("C:\\Data\\Seq\\s.korseq", "Waves\\P1.BIN"), "Waves/P1.BIN");
}

TEST(PortableResult, IsALeafInTheRuntimeResultsElseSeenFromTheModel) {
    EXPECT_EQ(portable_result("C:\\m\\x.kormodel", results_folder() + "\\Result.BIN"), "result.bin");
    EXPECT_EQ(portable_result("C:\\m\\x.kormodel", "C:\\M\\Out\\R.bin"), "out/r.bin");
    EXPECT_EQ(portable_result("C:\\m\\x.kormodel", "C:\\out\\R.bin"), "../out/r.bin");
    EXPECT_EQ(portable_result("C:\\m\\x.kormodel", "D:\\Out\\R.bin"), "D:/Out/R.bin");
}
