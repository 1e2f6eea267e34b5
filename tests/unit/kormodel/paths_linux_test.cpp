#include "kormodel/paths.h"

#include "korlimits.h"
#include "korpaths.h"
#include "korplatform.h"
#include "model_set.h"
#include "path_calls.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

namespace {

std::string join(const std::string& dir, const std::string& leaf) {
    return path_of(
        [&](char* out, std::size_t n) { return kor_join_path(out, n, dir.c_str(), leaf.c_str()); });
}

std::string folder_of(const char* path) {
    return path_of([&](char* out, std::size_t n) { return kor_dirname_copy(path, out, n); });
}

std::string grandparent_of(const char* path) {
    return path_of([&](char* out, std::size_t n) { return kor_parent_dir_copy(path, out, n); });
}

std::string leaf_of(const char* path) {
    return path_of(
        [&](char* out, std::size_t n) { return kor_copy_basename_without_extension_local(path, out, n); });
}

std::string root_of(const std::string& model) {
    return path_of([&](char* out, std::size_t n) { return kor_set_root_folder(model.c_str(), out, n); });
}

std::string resolve_part(const std::string& model, const std::string& value) {
    return path_of([&](char* out, std::size_t n) {
        return kor_resolve_model_relative_path(model.c_str(), value.c_str(), out, n);
    });
}

std::string resolve_result(const std::string& value) {
    return path_of([&](char* out, std::size_t n) {
        return kor_resolve_result_path("/m/x.kormodel", value.c_str(), out, n);
    });
}

std::string resolve_pulse(const std::string& sequence, const std::string& stored) {
    return path_of([&](char* out, std::size_t n) {
        return kor_resolve_sector_pulse_path(sequence.c_str(), stored.c_str(), out, n);
    });
}

std::string not_found_message(const std::string& sequence, const std::string& stored) {
    char message[4096] = "";
    kor_set_sector_pulse_resolution_error(sequence.c_str(), stored.c_str(), 12, 3, message, sizeof message);
    return message;
}

std::string rf_output_folder() {
    return path_of([](char* out, std::size_t n) { return KOR_GetDefaultRFOutputDir(out, n); });
}

/// A file in the RF output folder under a name of this process; taken away at the end.
struct RfOutputFile {
    std::string name = "kormodel-test-" + std::to_string(platform_process_id()) + ".bin";
    std::string path = rf_output_folder() + platform_separator() + name;
    RfOutputFile() { write_file(path, "x"); }
    ~RfOutputFile() { fs::remove(path); }
};

const std::string separator(1, platform_separator());

} // namespace

TEST(JoinPath, InsertsOneSeparatorWhereNoneStands) {
    EXPECT_EQ(join("a", "b"), "a" + separator + "b");
    EXPECT_EQ(join("", "b"), "b");
    EXPECT_EQ(join("C:\\", "b"), "C:\\b");
    EXPECT_EQ(join("a/", "b"), "a/b");
    EXPECT_EQ(join("a", ""), "a" + separator);
}

TEST(JoinPath, WritesNothingWhatDoesNotFit) {
    char out[5] = "old";
    EXPECT_EQ(kor_join_path(out, sizeof out, "ab", "cd"), 0);
    EXPECT_STREQ(out, "old");
    EXPECT_EQ(kor_join_path(out, sizeof out, "ab", "c"), 1);
    EXPECT_EQ(std::string(out), "ab" + separator + "c");
}

TEST(Dirname, EndsBeforeTheLastSeparatorOfEitherKind) {
    EXPECT_EQ(folder_of("a/b\\c"), "a/b");
    EXPECT_EQ(folder_of("a\\b/c"), "a\\b");
    EXPECT_EQ(folder_of("a/b/"), "a/b");
    EXPECT_EQ(folder_of("C:\\x"), "C:");
    EXPECT_EQ(folder_of("leaf"), "<failed>");
    EXPECT_EQ(folder_of(""), "<failed>");
    EXPECT_EQ(folder_of(nullptr), "<failed>");
}

TEST(Dirname, FailsWhenItDoesNotFit) {
    char out[4] = "old";
    EXPECT_EQ(kor_dirname_copy("abcd/e", out, sizeof out), 0);
    EXPECT_STREQ(out, "old");
    EXPECT_EQ(kor_dirname_copy("abc/e", out, sizeof out), 1);
    EXPECT_STREQ(out, "abc");
}

TEST(Dirname, OfAFileInTheRootIsTheRoot) {
    EXPECT_EQ(folder_of("/case.kormodel"), platform_path_is_absolute("/case.kormodel") ? "/" : "");
}

TEST(ParentDir, IsTheFolderOfTheFolder) {
    EXPECT_EQ(grandparent_of("root/models/x.kormodel"), "root");
    EXPECT_EQ(grandparent_of("root\\models/x.kormodel"), "root");
    EXPECT_EQ(grandparent_of("./x.kormodel"), "<failed>");
    EXPECT_EQ(grandparent_of("x.kormodel"), "<failed>");
}

TEST(SetRoot, IsTheParentOfTheModelFilesFolder) {
    EXPECT_EQ(root_of("root/models/x.kormodel"), "root");
    EXPECT_EQ(root_of("/data/root/models/x.kormodel"), "/data/root");
    EXPECT_EQ(root_of("../models/x.kormodel"), "..");
}

TEST(SetRoot, ComesFromTheWorkingDirectoryWhenThePathDoesNotNameIt) {
    const ModelSet set;
    const std::string here = plain_name(fs::current_path());
    const std::string above = plain_name(fs::current_path().parent_path());
    EXPECT_EQ(root_of("x.kormodel"), above);
    EXPECT_EQ(root_of("./x.kormodel"), above);
    EXPECT_EQ(root_of("models/x.kormodel"), here);
    EXPECT_EQ(root_of("models/./x.kormodel"), here);
    EXPECT_EQ(root_of("models/../x.kormodel"), above);
    EXPECT_EQ(root_of(here + "/models/deeper/../x.kormodel"), here);
    EXPECT_EQ(root_of(here + "/models/./x.kormodel"), here);
}

TEST(SetRoot, BehindALinkIsTheFolderThatDotDotLeadsTo) {
    const TempTree tree;
    tree.make_folder("far/models");
    tree.make_folder("near");
    fs::create_directory_symlink(tree.path("far/models"), tree.path("models"));
    fs::create_directory_symlink(tree.path("near"), tree.path("beside"));
    EXPECT_EQ(root_of(tree.path("models/x.kormodel")), tree.path("models/.."));
    EXPECT_EQ(root_of("models/x.kormodel"), "models/..");
    EXPECT_EQ(root_of(tree.path("beside/x.kormodel")), tree.path()) << "the same folder";
}

TEST(SetRoot, FailsWithoutAPath) {
    char out[8];
    EXPECT_EQ(kor_set_root_folder(nullptr, out, sizeof out), 0);
}

TEST(SetRoot, NoFolderLiesAboveADrive) {
    EXPECT_EQ(root_of("C:/x/../x.kormodel"), "<failed>");
    EXPECT_EQ(root_of("C:/../x.kormodel"), "<failed>");
    EXPECT_EQ(root_of("C:\\y\\x\\..\\x.kormodel"), "C:");
}

TEST(SetRoot, IsNotTheWorkingDirectoryForWhatLiesInNoOtherFolder) {
    EXPECT_EQ(root_of("/x.kormodel"), "/");
    EXPECT_EQ(root_of("\\x.kormodel"), "<failed>");
    EXPECT_EQ(root_of("\\models\\x.kormodel"), "<failed>");
}

TEST(AbsolutePath, IsADriveWithSeparatorOrTwoLeadingSeparators) {
    for (const char* path : {"C:\\x", "z:/x", "\\\\server\\x", "//server/x"})
        EXPECT_EQ(kor_path_is_absolute(path), 1) << path;
    for (const char* path : {"", "x", "C:x", "C:", "1:/x", "\\x", "./x", "a//b"})
        EXPECT_EQ(kor_path_is_absolute(path), 0) << path;
    EXPECT_EQ(kor_path_is_absolute(nullptr), 0);
}

TEST(PathHasSeparator, KnowsBothKinds) {
    EXPECT_EQ(kor_path_has_separator("a/b"), 1);
    EXPECT_EQ(kor_path_has_separator("a\\b"), 1);
    EXPECT_EQ(kor_path_has_separator("a:b"), 0);
    EXPECT_EQ(kor_path_has_separator(""), 0);
    EXPECT_EQ(kor_path_has_separator(nullptr), 0);
}

TEST(NormalizeSavedPath, TurnsBackslashesIntoSlashes) {
    char path[] = "C:\\a/b\\\\c";
    kor_normalize_saved_path(path);
    EXPECT_STREQ(path, "C:/a/b//c");
}

TEST(BasenameWithoutExtension, CutsFolderAndLastExtension) {
    EXPECT_EQ(leaf_of("a/b.c.kormodel"), "b.c");
    EXPECT_EQ(leaf_of("a\\b.kormodel"), "b");
    EXPECT_EQ(leaf_of("b"), "b");
    EXPECT_EQ(leaf_of("a/.kormodel"), ".kormodel");
    EXPECT_EQ(leaf_of("a/"), "<failed>");
    EXPECT_EQ(leaf_of(""), "<failed>");
    char out[3] = "";
    EXPECT_EQ(kor_copy_basename_without_extension_local("abc.x", out, sizeof out), 0);
    EXPECT_EQ(kor_copy_basename_without_extension_local("ab.x", out, sizeof out), 1);
}

TEST(EnsureDir, MakesOneFolderOrFindsIt) {
    const ModelSet set;
    EXPECT_EQ(kor_ensure_dir("made"), 1);
    EXPECT_TRUE(fs::is_directory("made"));
    EXPECT_EQ(kor_ensure_dir("made"), 1);
    EXPECT_EQ(kor_ensure_dir("missing/made"), 0);
    EXPECT_EQ(kor_ensure_dir(nullptr), 0);
}

TEST(FileExistsLocal, MeansThatItOpensForReading) {
    const ModelSet set;
    EXPECT_EQ(kor_file_exists_local(set.wave().c_str()), 1);
    EXPECT_EQ(kor_file_exists_local("missing"), 0);
    EXPECT_EQ(kor_file_exists_local(""), 0);
}

TEST(FileExistsLocal, APipeOrADeviceIsNoFile) {
    const ModelSet set;
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    alarm(60); // ends a test that waits
    EXPECT_EQ(kor_file_exists_local("pipe"), 0);
    EXPECT_EQ(kor_file_exists_local("/dev/null"), 0);
    EXPECT_EQ(kor_file_exists_local(nullptr), 0);
    alarm(0);
}

TEST(ResolveSectorPulse, APipeIsPassedOverForTheFileBehindIt) {
    const ModelSet set;
    const fs::path folder = set.root() / "sequences/test-gradient";
    ASSERT_EQ(mkfifo((folder / "p.bin").c_str(), 0600), 0);
    const std::string waves = plain_name(folder / "waveforms") + separator + "p.bin";
    write_file(waves, "x");
    alarm(60); // ends a test that waits
    EXPECT_EQ(resolve_pulse(set.sequence(), "p.bin"), waves);
    alarm(0);
}

TEST(SequenceFile, APipeIsNoSectorFile) {
    const ModelSet set;
    fs::remove(set.wave());
    ASSERT_EQ(mkfifo(set.wave().c_str(), 0600), 0);
    alarm(60); // ends a test that waits
    Model model;
    EXPECT_EQ(load_model(set.model(), model),
              parse_error("line 10: sector_pulsefile for sector 1 not found; stored relative path "
                          "'waveforms/wave1-excitation'; tried model-relative '" +
                          plain_name(set.root()) +
                          "/models/../sequences/test-gradient/waveforms/wave1-excitation'"));
    alarm(0);
}

TEST(RuntimeResults, LieBesideTheExecutableAndAreMade) {
    const std::string executable =
        path_of([](char* out, std::size_t n) { return KOR_GetExecutableDir(out, n); });
    EXPECT_EQ(results_folder(), executable + separator + "runtime" + separator + "results");
    EXPECT_TRUE(fs::is_directory(results_folder()));
    char small[8] = "";
    EXPECT_EQ(kor_get_runtime_results_dir(small, sizeof small), 0);
}

TEST(ResolveModelRelative, StartsAtTheModelFilesFolder) {
    EXPECT_EQ(resolve_part("m/x.kormodel", "../s/a.korspin"), "m" + separator + "../s/a.korspin");
    EXPECT_EQ(resolve_part("m/x.kormodel", "/abs/a.korspin"), "/abs/a.korspin");
    EXPECT_EQ(resolve_part("m/x.kormodel", "C:\\abs\\a.korspin"), "C:\\abs\\a.korspin");
    EXPECT_EQ(resolve_part("x.kormodel", "a.korspin"), "a.korspin");
    EXPECT_EQ(resolve_part("m/x.kormodel", ""), "");
}

TEST(ResolveModelRelative, FailsWhenItDoesNotFit) {
    char out[8];
    EXPECT_EQ(kor_resolve_model_relative_path("m/x", "12345", out, sizeof out), 1);
    EXPECT_EQ(kor_resolve_model_relative_path("m/x", "123456", out, sizeof out), 0);
    EXPECT_EQ(kor_resolve_model_relative_path("x", "12345678", out, sizeof out), 0);
    EXPECT_EQ(kor_resolve_model_relative_path(nullptr, "a", out, sizeof out), 0);
    EXPECT_EQ(kor_resolve_model_relative_path("m/x", nullptr, out, sizeof out), 0);
}

TEST(ResolveModelRelative, TakesTheSpellingOfAnExistingFile) {
    const ModelSet set;
    const std::string exact = resolve_part(set.model(), "../spin-systems/test-two-spin.korspin");
    EXPECT_EQ(exact, plain_name(set.root() / "models/../spin-systems/test-two-spin.korspin"));
    EXPECT_EQ(resolve_part(set.model(), "..\\Spin-Systems\\TEST-two-spin.KORSPIN"), exact);
    EXPECT_EQ(resolve_part(set.model(), "../Spin-Systems/other.korspin"),
              plain_name(set.root() / "models/../Spin-Systems/other.korspin"));
}

TEST(ResolveResult, LeadsIntoTheRuntimeResultsWhateverTheModel) {
    EXPECT_EQ(resolve_result("r.bin"), results_folder() + separator + "r.bin");
    EXPECT_EQ(resolve_result("sub/r.bin"), results_folder() + separator + "sub/r.bin");
    EXPECT_EQ(resolve_result("/abs/r.bin"), "/abs/r.bin");
    EXPECT_EQ(resolve_result("D:/r.bin"), "D:/r.bin");
    EXPECT_EQ(resolve_result(""), "");
}

TEST(ResolveResult, FailsWhenItDoesNotFit) {
    const std::string folder = results_folder() + separator;
    char out[KOR_FILE_NAME_SIZE];
    const std::string fits(sizeof out - 1 - folder.size(), 'r');
    EXPECT_EQ(kor_resolve_result_path("m", fits.c_str(), out, sizeof out), 1);
    EXPECT_EQ(folder + fits, out);
    EXPECT_EQ(kor_resolve_result_path("m", (fits + "r").c_str(), out, sizeof out), 0);
    EXPECT_EQ(kor_resolve_result_path("m", ("/" + std::string(255, 'r')).c_str(), out, sizeof out), 0);
    EXPECT_EQ(kor_resolve_result_path(nullptr, "r", out, sizeof out), 0);
    EXPECT_EQ(kor_resolve_result_path("m", nullptr, out, sizeof out), 0);
}

TEST(ResolveSectorPulse, EmptyAndAbsolutePathsStay) {
    const ModelSet set;
    EXPECT_EQ(resolve_pulse(set.sequence(), ""), "");
    EXPECT_EQ(resolve_pulse(set.sequence(), "/missing/p.bin"), "/missing/p.bin");
    EXPECT_EQ(resolve_pulse(set.sequence(), "C:\\missing\\p.bin"), "C:\\missing\\p.bin");
    EXPECT_EQ(resolve_pulse(set.sequence(), set.wave()), set.wave());
}

TEST(ResolveSectorPulse, RelativeToTheSequenceFilesFolderFoundOrNot) {
    const ModelSet set;
    const std::string folder = plain_name(set.root() / "sequences/test-gradient");
    EXPECT_EQ(resolve_pulse(set.sequence(), "waveforms/wave1-excitation"), set.wave());
    EXPECT_EQ(resolve_pulse(set.sequence(), "waveforms/missing"), folder + separator + "waveforms/missing");
    EXPECT_EQ(resolve_pulse("test.korseq", "waveforms/missing"), "waveforms/missing");
}

TEST(ResolveSectorPulse, ALeafIsLookedForInThreeFolders) {
    const ModelSet set;
    const RfOutputFile rf;
    const fs::path folder = set.root() / "sequences/test-gradient";
    const std::string beside = folder.string() + separator + rf.name;
    const std::string waves = plain_name(folder / "waveforms") + separator + rf.name;
    EXPECT_EQ(resolve_pulse(set.sequence(), rf.name), rf.path);
    write_file(waves, "x");
    EXPECT_EQ(resolve_pulse(set.sequence(), rf.name), waves);
    write_file(beside, "x");
    EXPECT_EQ(resolve_pulse(set.sequence(), rf.name), beside);
    EXPECT_EQ(resolve_pulse(set.sequence(), "nowhere.bin"), folder.string() + separator + "nowhere.bin");
}

TEST(ResolveSectorPulse, ALeafOfASequenceWithoutFolderComesFromTheRfOutput) {
    const ModelSet set;
    const RfOutputFile rf;
    EXPECT_EQ(resolve_pulse("test.korseq", rf.name), rf.path);
    EXPECT_EQ(resolve_pulse("test.korseq", "nowhere.bin"), "nowhere.bin");
}

TEST(ResolveSectorPulse, TakesTheSpellingOfAnExistingFile) {
    const ModelSet set;
    const fs::path folder = set.root() / "sequences/test-gradient";
    write_file(folder / "Beside.BIN", "x");
    write_file(folder / "waveforms/Inside.Bin", "x");
    EXPECT_EQ(resolve_pulse(set.sequence(), "WAVEFORMS\\Wave1-Excitation"), set.wave());
    EXPECT_EQ(resolve_pulse(set.sequence(), "beside.bin"), plain_name(folder / "Beside.BIN"));
    EXPECT_EQ(resolve_pulse(set.sequence(), "inside.bin"), plain_name(folder / "waveforms/Inside.Bin"));
    EXPECT_EQ(resolve_pulse("x.korseq", plain_name(set.root() / "SEQUENCES/test-gradient/BESIDE.bin")),
              plain_name(folder / "Beside.BIN"));
}

TEST(ResolveSectorPulse, ALeafFolderIsNoFile) {
    const ModelSet set;
    EXPECT_EQ(kor_file_exists_local(resolve_pulse(set.sequence(), "waveforms").c_str()), 0);
}

TEST(ResolveSectorPulse, FailsWhenItDoesNotFit) {
    char out[8];
    EXPECT_EQ(kor_resolve_sector_pulse_path("s/x", "a/123", out, sizeof out), 1);
    EXPECT_EQ(kor_resolve_sector_pulse_path("s/x", "a/1234", out, sizeof out), 0);
    EXPECT_EQ(kor_resolve_sector_pulse_path("s/x", "/1234567", out, sizeof out), 0);
    EXPECT_EQ(kor_resolve_sector_pulse_path(nullptr, "a", out, sizeof out), 0);
    EXPECT_EQ(kor_resolve_sector_pulse_path("s/x", nullptr, out, sizeof out), 0);
}

TEST(SectorPulseError, SaysWhatWasStoredAndTried) {
    const std::string start = "line 12: sector_pulsefile for sector 3 ";
    const std::string rf = rf_output_folder() + separator;
    EXPECT_EQ(not_found_message("s/x.korseq", ""), start + "is empty");
    EXPECT_EQ(not_found_message("s/x.korseq", "/a/p"),
              start + "not found; stored absolute path '/a/p' does not exist");
    EXPECT_EQ(not_found_message("s/x.korseq", "w/p"), start +
                                                          "not found; stored relative path 'w/p'; tried "
                                                          "model-relative 's" +
                                                          separator + "w/p'");
    EXPECT_EQ(not_found_message("x.korseq", "w/p"), start + "not found; stored relative path 'w/p'");
    EXPECT_EQ(not_found_message("s/x.korseq", "p"),
              start + "not found; stored leafname 'p'; tried model-relative 's" + separator +
                  "p' and RF-output '" + rf + "p'");
    EXPECT_EQ(not_found_message("x.korseq", "p"),
              start + "not found; stored leafname 'p'; tried RF-output '" + rf + "p'");
}

TEST(SectorPulseError, AMissingPathIsAnEmptyOne) {
    char message[128] = "";
    kor_set_sector_pulse_resolution_error("s/x.korseq", nullptr, 12, 3, message, sizeof message);
    EXPECT_STREQ(message, "line 12: sector_pulsefile for sector 3 is empty");
}

TEST(SectorPulseError, NamesNoCandidateThatCannotBeFormed) {
    const std::string start = "line 12: sector_pulsefile for sector 3 not found; stored ";
    const std::string long_leaf(1023, 'p');
    EXPECT_EQ(not_found_message("s/x.korseq", long_leaf), start + "leafname '" + long_leaf + "'");
    const std::string long_path = "w/" + std::string(1020, 'p');
    EXPECT_EQ(not_found_message("s/x.korseq", long_path), start + "relative path '" + long_path + "'");
}
