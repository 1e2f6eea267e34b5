// A model composed at the console from nothing, saved, read again by fresh processes and run there.
#include "support/composer_sessions.h"
#include "support/model_fixtures.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor_test;

namespace {

ProgramResult compose(const ProgramTree& program, const std::vector<std::string>& session) {
    ProgramResult composed = program.run({}, answer_lines(session));
    EXPECT_EQ(composed.status, 0) << composed.err;
    EXPECT_EQ(composed.err, "");
    return composed;
}

} // namespace

TEST(ComposedModel, RunsAlikeInTheComposersAndInFreshProcesses) {
    TempTree tree;
    ProgramTree program(tree.root());
    compose(program, lactate_spin_echo_session());
    const std::string composed = tree.read("build/runtime/spinecho.bin");
    // 12 bytes and five 16 x 16 matrices.
    ASSERT_EQ(composed.size(), 12u + 5 * 16 * 16 * 16);
    for (double value : reals_behind_header(composed))
        ASSERT_TRUE(std::isfinite(value));

    // Imported and run from the menus.
    tree.write("build/runtime/spinecho.bin", "");
    const ProgramResult imported = program.run({}, "3\n1\n\n2\n2\n\n7\n6\n");
    EXPECT_EQ(imported.status, 0);
    EXPECT_NE(imported.out.find("[KOR] Import successful."), std::string::npos);
    EXPECT_EQ(read_file(program.result("spinecho")), composed);

    // Run by the command line.
    write_file(program.result("spinecho"), "");
    const ProgramResult run = program.run({"--run-model", program.root() + "/models/lactate.kormodel"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(read_file(program.result("spinecho")), composed);
}

// The waveforms lie in rf-output beside the set's folders, by a path that no line of a sequence file can
// hold.
TEST(ComposedModel, BelowAFolderWithABlankIsSavedAndRunsAlike) {
    const TempTree tree;
    tree.make_folder("my programs");
    const ProgramTree program(tree.root() / "my programs");
    compose(program, lactate_spin_echo_session());
    const std::string composed = tree.read("my programs/build/runtime/spinecho.bin");
    ASSERT_EQ(composed.size(), 12u + 5 * 16 * 16 * 16);
    EXPECT_NE(tree.read("my programs/sequences/lactate/lactate.korseq")
                  .find("sector_pulsefile: 1 ../../rf-output/lactate_s01.bin"),
              std::string::npos);

    // Imported, and exported beside the first set and into a tree of its own.
    tree.make_folder("other/models");
    const std::string moved = tree.path("other/models/moved.kormodel");
    const ProgramResult exported = program.run({}, "3\n1\n\n4\ncopy\n\n4\n" + moved + "\n\n6\n");
    EXPECT_EQ(exported.out.find("Export failed"), std::string::npos) << exported.out;
    EXPECT_NE(tree.read("other/sequences/moved/moved.korseq").find("sector_pulsefile: 5 lactate_s05.bin"),
              std::string::npos);

    for (const std::string& model : {tree.path("my programs/models/lactate.kormodel"),
                                     tree.path("my programs/models/copy.kormodel"), moved}) {
        write_file(program.result("spinecho"), "");
        const ProgramResult run = program.run({"--run-model", model});
        EXPECT_EQ(run.status, 0) << model << run.err;
        EXPECT_EQ(read_file(program.result("spinecho")), composed) << model;
    }
}

TEST(ComposedModel, TheSavedSetHoldsWhatWasTyped) {
    TempTree tree;
    ProgramTree program(tree.root());
    compose(program, lactate_spin_echo_session());
    const ProgramResult imported = program.run({}, "3\n1\n\n6\n");
    const std::string expected = "[KOR] Spin system:\n"
                                 "  nspins = 4\n"
                                 "  spin quantum numbers: 1 1 1 1\n"
                                 "  relative intensities: 1 1 1 1\n"
                                 "  resonance offsets [Hz]: -430.3 -430.3 -430.3 -75.3\n"
                                 "  coupling mode = 1\n"
                                 "[KOR] Sequence:\n"
                                 "  sequence type = 1\n"
                                 "  number of sectors = 5\n";
    EXPECT_NE(imported.out.find(expected), std::string::npos) << imported.out;
    EXPECT_NE(imported.out.find("    sector 1: type=1 timepoints=64 evolpoints=1 duration=0.002 "),
              std::string::npos);
    EXPECT_NE(imported.out.find(" statoff=-430 remark=slice 90\n"), std::string::npos);
    EXPECT_NE(imported.out.find("    sector 5: type=1 timepoints=64 evolpoints=1 duration=0.128 "),
              std::string::npos);
    EXPECT_NE(imported.out.find("[KOR] Grid/run config:\n"
                                "  ndx=5 ndy=1 ndz=1\n"
                                "  origin [cm] = (-1, 0, 0)\n"
                                "  delta  [cm] = (0.5, 0, 0)\n"),
              std::string::npos);
}

TEST(ComposedModel, WaveformsAreNamedAfterTheModelAndItsSectors) {
    TempTree tree;
    ProgramTree program(tree.root());
    compose(program, lactate_spin_echo_session());
    EXPECT_EQ(tree.names("rf-output"),
              (std::vector<std::string>{"lactate_s01.bin", "lactate_s02.bin", "lactate_s03.bin",
                                        "lactate_s04.bin", "lactate_s05.bin"}));
    EXPECT_EQ(tree.read("rf-output/lactate_s01.bin").size(), 5u * 8 * 64);
    EXPECT_EQ(tree.read("rf-output/lactate_s03.bin").size(), 5u * 8);
}

TEST(ComposedModel, WithoutAResultFileA2DRunReachesItsSpectrum) {
    TempTree tree;
    ProgramTree program(tree.root());
    std::vector<std::string> session = cosy_session();
    session.pop_back(); // instead of leaving the program
    for (const char* answer : {"2", "2", "x", "", "7", "6"})
        session.push_back(answer);
    const ProgramResult composed = compose(program, session);
    const std::string run = composed.out.substr(composed.out.find("Running current prepared"));
    EXPECT_NE(run.find("Number of evolution intervals           : 4\n"), std::string::npos);
    EXPECT_NE(run.find("-    Calculation spectra of density matrix / matrices    -\n"), std::string::npos);
    EXPECT_EQ(run.find("Wrote"), std::string::npos);
    EXPECT_EQ(tree.names("rf-output"), (std::vector<std::string>{"cosy_2d_s01.bin", "cosy_2d_s02.bin",
                                                                 "cosy_2d_s03.bin", "cosy_2d_s04.bin"}));
}
