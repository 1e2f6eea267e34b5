// Folders of the program that are not what they should be: every failure is told, and nothing is overwritten.
#include "support/build_paths.h"
#include "support/composer_sessions.h"
#include "support/menu_texts.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"
#include "support/two_spin_model.h"

#include <gtest/gtest.h>

using namespace kor_test;
namespace fs = std::filesystem;

TEST(OddFolders, AFileInPlaceOfTheRuntimeFolderMovesTheResult) {
    const TempTree tree;
    const ProgramTree program(tree.root());
    tree.write("build/runtime", "a file in the way");
    const std::string model = program.write_model(two_spin_model("two"));
    const ProgramResult result = program.run({"--run-model", model});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err,
              "[KOR] Warning: there is no folder runtime/results beside the program; the result file "
              "two.bin is taken relative to the working folder.\n");
    EXPECT_EQ(tree.read("build/runtime"), "a file in the way");
    EXPECT_TRUE(tree.exists("two.bin"));
}

namespace {

/// Lets everybody read the tree; `writable` below it is everybody's to write in.
void open_to_everybody(const TempTree& tree, const std::string& writable) {
    constexpr fs::perms readable = fs::perms::others_read | fs::perms::others_exec;
    fs::permissions(tree.root(), readable, fs::perm_options::add);
    for (const auto& entry : fs::recursive_directory_iterator(tree.root()))
        fs::permissions(entry.path(), readable, fs::perm_options::add);
    if (!writable.empty())
        fs::permissions(tree.path(writable), fs::perms::all);
}

ProgramResult run_as_nobody(const TempTree& tree, const std::string& input) {
    return run_program({.executable = tree.path("build/kor"),
                        .input = input,
                        .working_dir = tree.path(),
                        .unprivileged = true});
}

} // namespace

TEST(OddFolders, AReadOnlyTreeLeavesSectorsWithoutAFile) {
    const TempTree tree;
    const ProgramTree program(tree.root());
    tree.make_folder("build/runtime");
    open_to_everybody(tree, "build/runtime");
    fs::permissions(tree.root(), fs::perms::owner_write, fs::perm_options::remove);
    const ProgramResult result = run_as_nobody(tree, answer_lines(cosy_session()));
    fs::permissions(tree.root(), fs::perms::owner_all);
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find(
                  "Could not create default output directories.\nSector waveform file was not written.\n"),
              std::string::npos)
        << result.out;
    EXPECT_FALSE(tree.exists("rf-output"));
}

TEST(OddFolders, AnEarlierRunsStatesThatCannotBeDeletedStopTheRun) {
    const TempTree tree;
    const ProgramTree program(tree.root());
    program.write_model(two_spin_model("two"));
    tree.write("build/runtime/dm.bin", "an earlier run");
    open_to_everybody(tree, "");
    fs::permissions(tree.path("build/runtime"), fs::perms::owner_write, fs::perm_options::remove);
    const ProgramResult result = run_as_nobody(tree, "3\n1\n\n2\n2\n\n7\n6\n");
    fs::permissions(tree.path("build/runtime"), fs::perms::owner_all);
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.err.find("dm.bin: an earlier file cannot be deleted: Permission denied\n"),
              std::string::npos)
        << result.out << result.err;
    EXPECT_EQ(tree.read("build/runtime/dm.bin"), "an earlier run");
}

TEST(OddFolders, AReadOnlyFolderOfTheExecutableIsWarnedOf) {
    const TempTree tree;
    const ProgramTree program(tree.root());
    fs::permissions(tree.root(), fs::perms::owner_all | fs::perms::others_exec);
    fs::permissions(tree.path("build"),
                    fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_exec);
    const ProgramResult result =
        run_program({.executable = program.executable(), .working_dir = tree.path(), .unprivileged = true});
    fs::permissions(tree.path("build"), fs::perms::owner_all);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "[KOR] Warning: could not create runtime directory: Permission denied\n" +
                              main_menu_text() + EXITING);
}

TEST(OddFolders, AnExecutableThatCannotBeNamedWorksInTheStartingFolder) {
    const TempTree tree;
    const ProgramTree program(tree.root());
    const std::string deep = "deep/" + std::string(200, 'd') + "/" + std::string(100, 'e');
    program.write_model(two_spin_model("two"));
    tree.make_folder(deep);
    tree.make_folder("start");
    fs::copy_file(kor_program(), tree.path(deep + "/" + program_file()));
    const ProgramResult result = run_program({.executable = tree.path(deep + "/" + program_file()),
                                              .arguments = {"--run-model", "../models/two.kormodel"},
                                              .working_dir = tree.path("start")});
    EXPECT_EQ(result.status, 0) << result.err;
    const std::string begin = "[KOR] Warning: could not determine executable directory; using current "
                              "directory for scratch files.\n"
                              "[KOR] Warning: could not determine executable directory; using current "
                              "directory for run scratch files.\n";
    EXPECT_EQ(result.out.substr(0, begin.size()), begin);
    EXPECT_TRUE(tree.exists("start/dm.bin"));
    EXPECT_EQ(tree.names(deep), std::vector<std::string>{program_file()});
}

TEST(OddFolders, AnExecutableThatCannotBeNamedKnowsNoModelsFolder) {
    const TempTree tree;
    const std::string deep = "build/" + std::string(200, 'd') + "/" + std::string(100, 'e');
    tree.make_folder(deep);
    fs::copy_file(kor_program(), tree.path(deep + "/" + program_file()));
    const ProgramResult result = run_program({.executable = tree.path(deep + "/" + program_file()),
                                              .input = "3\n\n4\n\n6\n",
                                              .working_dir = tree.path()});
    const std::string unknown = "\n[KOR] Could not determine default models directory.\n" + ENTER_FOR_MENU;
    EXPECT_EQ(result.out, "[KOR] Warning: could not determine executable directory; using current directory "
                          "for scratch files.\n" +
                              main_menu_text() + unknown + main_menu_text() + unknown + main_menu_text() +
                              EXITING);
    EXPECT_EQ(result.status, 0);
}
