// Importing and exporting model files, as the built program does it.
#include "support/build_paths.h"
#include "support/menu_texts.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"
#include "support/two_spin_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using namespace kor_test;

namespace {

class ModelDialogue : public testing::Test {
protected:
    /// What the program prints for these answers at the main menu, with the first menu and the exit cut off.
    /// loaded: the model file that the last menu shows.
    std::string transcript(const std::string& answers, const std::string& loaded = "") const {
        const ProgramResult result = program_.run({}, answers);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        const std::string begin = main_menu_text();
        const std::string end = main_menu_text(loaded) + EXITING;
        EXPECT_EQ(result.out.substr(0, begin.size()), begin);
        if (result.out.size() < begin.size() + end.size())
            return "too short: " + result.out;
        EXPECT_EQ(result.out.substr(result.out.size() - end.size()), end);
        return result.out.substr(begin.size(), result.out.size() - begin.size() - end.size());
    }

    std::string model(const std::string& name) const { return tree_.path("models/" + name); }
    std::string list(const std::string& lines) const {
        return "\n[KOR] Available model files in:\n      " + tree_.path("models") + "\n\n" + lines;
    }
    std::string imported(const std::string& name) const {
        return TWO_SPIN_BUILD_REPORT + two_spin_summary(program_, name) + "\n[KOR] Import successful.\n" +
               ENTER_FOR_MENU;
    }

    TempTree tree_;
    ProgramTree program_{tree_.root()};
    const std::string select_one_ = "\nSelect model file [1-1] (Enter cancels): ";
    const std::string invalid_ = "[KOR] Invalid selection.\n";
};

using Import = ModelDialogue;
using Export = ModelDialogue;

} // namespace

TEST_F(Import, FindsNoModelFiles) {
    const std::string expected =
        "\n[KOR] No .kormodel files found in:\n      " + tree_.path("models") + "\n" + ENTER_FOR_MENU;
    EXPECT_EQ(transcript("3\n\n6\n"), expected) << "no folder";
    tree_.write("models/notes.txt", "spin_system_file: a\nsequence_file: b\n");
    tree_.write("models/old.kormodel", "nspins: 1\n");
    EXPECT_EQ(transcript("3\n\n6\n"), expected) << "none that names both files";
    EXPECT_EQ(transcript("3\n"), expected) << "end of input";
}

TEST_F(Import, MakesTheChosenModelCurrent) {
    program_.write_model(two_spin_model("two"));
    EXPECT_EQ(transcript("3\n1\n\n6\n", model("two.kormodel")),
              list("    1) two.kormodel\n") + select_one_ + imported("two"));
}

TEST_F(Import, ListsByNameIgnoringCaseAndTakesAnyOfThem) {
    program_.write_model(two_spin_model("b"));
    program_.write_model(two_spin_model("A model"));
    program_.write_model(two_spin_model("\xC3\xA4lanine"));
    tree_.write("models/C.KORMODEL", tree_.read("models/b.kormodel"));
    const std::string select = list("    1) A model.kormodel\n"
                                    "    2) b.kormodel\n"
                                    "    3) C.KORMODEL\n"
                                    "    4) \xC3\xA4lanine.kormodel\n") +
                               "\nSelect model file [1-4] (Enter cancels): ";
    EXPECT_EQ(transcript("3\n2\n\n6\n", model("b.kormodel")), select + imported("b"));
    EXPECT_EQ(transcript("3\n4\n\n6\n", model("\xC3\xA4lanine.kormodel")),
              select + imported("\xC3\xA4lanine"));
    EXPECT_EQ(transcript("3\n\n6\n"), select);
}

TEST_F(Import, NumbersTheFilesInThreeColumns) {
    for (int i = 101; i <= 112; ++i)
        tree_.write("models/m" + std::to_string(i) + ".kormodel", "spin_system_file: a\nsequence_file: b\n");
    const std::string out = transcript("3\n\n6\n");
    EXPECT_NE(out.find("    9) m109.kormodel\n   10) m110.kormodel\n"), std::string::npos);
    EXPECT_NE(out.find("\nSelect model file [1-12] (Enter cancels): "), std::string::npos);
}

TEST_F(Import, AsksAgainAfterAnInvalidSelection) {
    program_.write_model(two_spin_model("two"));
    for (const char* answer : {"0", "2", "-1", "x", " ", "99999999999999999999"})
        EXPECT_EQ(transcript("3\n" + std::string(answer) + "\n1\n\n6\n", model("two.kormodel")),
                  list("    1) two.kormodel\n") + select_one_ + invalid_ + select_one_ + imported("two"))
            << answer;
}

TEST_F(Import, CancelsSilentlyForEnterOrTheEndOfInput) {
    program_.write_model(two_spin_model("two"));
    const std::string asked = list("    1) two.kormodel\n") + select_one_;
    EXPECT_EQ(transcript("3\n\n6\n"), asked);
    EXPECT_EQ(transcript("3\n\r\n6\n"), asked);
    EXPECT_EQ(transcript("3\n"), asked);
    EXPECT_EQ(transcript("3\nx\n"), asked + invalid_ + select_one_);
}

TEST_F(Import, ContinuesALineOfMoreThan63CharactersAsTheNextAnswer) {
    program_.write_model(two_spin_model("two"));
    EXPECT_EQ(transcript("3\n" + std::string(63, 'x') + "1\n\n6\n", model("two.kormodel")),
              list("    1) two.kormodel\n") + select_one_ + invalid_ + select_one_ + imported("two"));
}

TEST_F(Import, ReportsAModelThatCannotBeLoadedAndKeepsTheLoadedOne) {
    program_.write_model(two_spin_model("two"));
    tree_.write("models/wrong.kormodel", "spin_system_file: gone.korspin\nsequence_file: gone.korseq\n");
    const std::string asked =
        list("    1) two.kormodel\n    2) wrong.kormodel\n") + "\nSelect model file [1-2] (Enter cancels): ";
    const std::string failed = "\n[KOR] Import failed: i/o error (could not open spin system '" +
                               tree_.path("models/gone.korspin") +
                               "')\n[KOR] Path used: " + model("wrong.kormodel") + "\n" + ENTER_FOR_MENU;
    EXPECT_EQ(transcript("3\n2\n\n6\n"), asked + failed);
    EXPECT_EQ(transcript("3\n1\n\n3\n2\n\n6\n", model("two.kormodel")),
              asked + imported("two") + main_menu_text(model("two.kormodel")) + asked + failed);
}

TEST_F(Export, HasNothingToWriteBeforeAModelIsDefined) {
    tree_.make_folder("models");
    EXPECT_EQ(transcript("4\nmine\n\n6\n"),
              export_question(tree_.path("models")) +
                  "\n[KOR] No current model is available to export yet.\n"
                  "[KOR] Load, import, or define a spin system first, then export "
                  "it.\n" +
                  ENTER_FOR_MENU);
    EXPECT_EQ(tree_.names("models"), std::vector<std::string>{});
}

TEST_F(Export, CancelsSilentlyForEnterOrTheEndOfInput) {
    EXPECT_EQ(transcript("4\n\n6\n"), export_question(tree_.path("models")));
    EXPECT_EQ(transcript("4\n"), export_question(tree_.path("models")));
}

TEST_F(Export, WritesASetThatLoadsAgain) {
    program_.write_model(two_spin_model("two"));
    const std::string first = list("    1) two.kormodel\n") + select_one_ + imported("two");
    const std::string exported = export_question(tree_.path("models")) +
                                 "\n[KOR] Exported current state to " + model("My Copy.kormodel") + "\n" +
                                 ENTER_FOR_MENU;
    EXPECT_EQ(transcript("3\n1\n\n4\nMy Copy\n\n6\n", model("My Copy.kormodel")),
              first + main_menu_text(model("two.kormodel")) + exported);
    EXPECT_TRUE(tree_.exists("spin-systems/My Copy.korspin"));
    EXPECT_TRUE(tree_.exists("sequences/My Copy/My Copy.korseq"));
    const std::string out = transcript("3\n1\n\n6\n", model("My Copy.kormodel"));
    EXPECT_NE(out.find("    1) My Copy.kormodel\n    2) two.kormodel\n"), std::string::npos);
    EXPECT_NE(out.find("\n[KOR] Import successful.\n"), std::string::npos) << out;
    EXPECT_NE(out.find("  resonance offsets [Hz]: 100 -40.5\n"), std::string::npos);
}

TEST_F(Export, WritesATextWithASeparatorRelativeToTheRuntimeFolder) {
    program_.write_model(two_spin_model("two"));
    const std::string copy = with_slashes(".\\my_model.kormodel");
    const std::string out = transcript("3\n1\n\n4\n.\\my_model\n\n6\n", copy);
    EXPECT_NE(out.find("\n[KOR] Exported current state to " + copy + "\n"), std::string::npos);
    EXPECT_TRUE(tree_.exists("build/runtime/my_model.kormodel"));
    EXPECT_FALSE(tree_.exists("models/my_model.kormodel"));
}

TEST_F(Export, AsksBeforeItReplacesAFile) {
    program_.write_model(two_spin_model("two"));
    tree_.write("models/old.kormodel", "old");
    const std::string loaded = main_menu_text(model("two.kormodel"));
    const std::string asked = list("    1) two.kormodel\n") + select_one_ + imported("two") + loaded +
                              export_question(tree_.path("models")) + "\n[KOR] File already exists:\n      " +
                              model("old.kormodel") + "\nOverwrite? [1=yes, 0=no]: ";
    const std::string cancelled = "\n[KOR] Export cancelled.\n" + ENTER_FOR_MENU;
    EXPECT_EQ(transcript("3\n1\n\n4\nold\n0\n\n6\n", model("two.kormodel")), asked + cancelled);
    EXPECT_EQ(transcript("3\n1\n\n4\nold.kormodel\nyes\n\n6\n", model("two.kormodel")), asked + cancelled);
    EXPECT_EQ(transcript("3\n1\n\n4\nold\n", model("two.kormodel")), asked) << "end of input";
    EXPECT_EQ(tree_.read("models/old.kormodel"), "old");

    EXPECT_EQ(transcript("3\n1\n\n4\nold\n1\n\n6\n", model("old.kormodel")),
              asked + "\n[KOR] Exported current state to " + model("old.kormodel") + "\n" + ENTER_FOR_MENU);
    EXPECT_EQ(with_plain_line_ends(tree_.read("models/old.kormodel")).substr(0, 18), "format_version: 1\n");
}

TEST_F(Export, ReportsAFolderThatIsNotThere) {
    program_.write_model(two_spin_model("two"));
    const std::string out = transcript("3\n1\n\n4\n./missing/dir/a\n\n6\n", model("two.kormodel"));
    EXPECT_NE(out.find("\n[KOR] Export failed: i/o error (could not create split output directories)\n"
                       "[KOR] Path used: ./missing/dir/a.kormodel\n" +
                       ENTER_FOR_MENU),
              std::string::npos)
        << out;
}

TEST_F(Export, KeepsAnExtensionInCapitals) {
    program_.write_model(two_spin_model("two"));
    transcript("3\n1\n\n4\nother.KORMODEL\n\n6\n", model("other.KORMODEL"));
    EXPECT_EQ(tree_.names("models"), (std::vector<std::string>{"other.KORMODEL", "two.kormodel"}));
}

TEST_F(Export, RefusesANameThatCannotBeReadBack) {
    program_.write_model(two_spin_model("two"));
    const std::string out = transcript("3\n1\n\n4\na#b\n\n6\n", model("two.kormodel"));
    EXPECT_NE(out.find("\n[KOR] Export failed: range error (model_name cannot be saved with '#' in it: a#b)\n"
                       "[KOR] Path used: " +
                       model("a#b.kormodel") + "\n" + ENTER_FOR_MENU),
              std::string::npos)
        << out;
    EXPECT_EQ(tree_.names("models"), std::vector<std::string>{"two.kormodel"});
    EXPECT_EQ(tree_.names("sequences"), std::vector<std::string>{"two"});
}

// Sector files are words: a folder with a blank must not get into what is saved.
TEST(ExportBelowAFolderWithABlank, GivesTheResultsOfTheModelThatWasImported) {
    const TempTree tree;
    tree.make_folder("my examples");
    const ProgramTree program(tree.root() / "my examples");
    for (const char* folder : {"models", "spin-systems", "sequences"})
        std::filesystem::copy(std::filesystem::path(source_folder()) / folder,
                              tree.root() / "my examples" / folder, std::filesystem::copy_options::recursive);
    const std::vector<std::string> shipped = tree.names("my examples/models");
    const auto wanted = std::find(shipped.begin(), shipped.end(), "chloroform-d-fid.kormodel");
    ASSERT_NE(wanted, shipped.end());
    const std::string number = std::to_string(wanted - shipped.begin() + 1);
    ASSERT_EQ(program.run({"--run-model", program.root() + "/models/chloroform-d-fid.kormodel"}).status, 0);
    const std::string expected = read_file(program.result("chloroform-d-fid"));

    const ProgramResult exported = program.run({}, "3\n" + number + "\n\n4\na copy\n\n6\n");
    EXPECT_NE(exported.out.find("[KOR] Exported current state to "), std::string::npos) << exported.out;
    EXPECT_EQ(read_file(tree.path("my examples/sequences/a copy/a copy.korseq")).find("my examples"),
              std::string::npos);
    std::filesystem::remove(program.result("chloroform-d-fid"));
    const ProgramResult run = program.run({"--run-model", program.root() + "/models/a copy.kormodel"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(read_file(program.result("chloroform-d-fid")), expected);
}
