// The built program as Windows users meet it: typed paths with backslashes, files with Windows' line ends,
// and the entry of a program without a console.
#include "support/build_paths.h"
#include "support/menu_texts.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"
#include "support/two_spin_model.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace kor_test;

namespace {

std::string with_backslashes(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

/// Whether there are lines and all of them end in CR and LF.
bool has_windows_line_ends(const std::string& text) {
    const auto line_feeds = std::count(text.begin(), text.end(), '\n');
    std::ptrdiff_t pairs = 0;
    for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at + 2))
        ++pairs;
    return pairs > 0 && pairs == line_feeds && std::count(text.begin(), text.end(), '\r') == pairs;
}

} // namespace

TEST(WindowsExport, TakesATypedPathAndTheSetRunsAgain) {
    TempTree tree;
    const ProgramTree program(tree.root());
    const std::string original = with_backslashes(program.write_model(two_spin_model("two")));
    ASSERT_EQ(program.run({"--run-model", original}).status, 0);
    const std::string expected = read_file(program.result("two"));
    tree.make_folder("saved sets/models");
    const std::string copy = with_backslashes(tree.path("saved sets/models/copy.kormodel"));
    const ProgramResult session = program.run({}, "3\n1\n\n4\n" + copy + "\n\n6\n");
    EXPECT_NE(session.out.find("\n[KOR] Exported current state to " + with_slashes(copy) + "\n"),
              std::string::npos)
        << session.out;
    const std::string model = tree.read("saved sets/models/copy.kormodel");
    EXPECT_NE(model.find("spin_system_file: ../spin-systems/copy.korspin\r\n"), std::string::npos) << model;
    EXPECT_NE(model.find("result_file: two.bin\r\n"), std::string::npos) << model;
    const std::string sequence = tree.read("saved sets/sequences/copy/copy.korseq");
    for (const std::string& text : {model, sequence, tree.read("saved sets/spin-systems/copy.korspin")})
        EXPECT_TRUE(has_windows_line_ends(text)) << text;
    std::filesystem::remove(program.result("two"));
    ASSERT_EQ(program.run({"--run-model", copy}).status, 0);
    EXPECT_EQ(read_file(program.result("two")), expected);
}

TEST(WindowsPaths, TakesBackslashesInEveryPath) {
    TempTree tree;
    const ProgramTree program(tree.root());
    const std::string model = with_backslashes(program.write_model(two_spin_model("two")));
    ASSERT_EQ(program.run({"--run-model", model}).status, 0);
    const std::string states = with_backslashes(plain_name(program.scratch_folders()[0] / "dm.bin"));
    const std::string profile = with_backslashes(tree.path("profile.csv"));
    const std::string signal = with_backslashes(tree.path("signal.bin"));
    ASSERT_EQ(program.run({"--expectation-profile", model, states, "I1y", profile}).status, 0);
    ASSERT_EQ(program.run({"--voxel-signal", model, states, "1", signal}).status, 0);
    EXPECT_TRUE(has_windows_line_ends(tree.read("profile.csv")));
    EXPECT_EQ(tree.read("signal.bin"), read_file(program.result("two")));
}

TEST(WindowEntry, OpensTheMenuWhateverTheArguments) {
    TempTree tree;
    tree.make_folder("build");
    const auto built = std::filesystem::path(kor_program()).parent_path() / "tests" / "kor-window-entry.exe";
    std::filesystem::copy_file(built, tree.root() / "build" / "kor.exe");
    const ProgramResult result =
        run_program({.executable = tree.path("build/kor.exe"), .arguments = {"--run-model", "x.kormodel"}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, main_menu_text() + EXITING);
    EXPECT_FALSE(tree.exists("build/runtime/runs"));
}
