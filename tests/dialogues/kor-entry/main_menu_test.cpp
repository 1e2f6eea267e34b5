// The main menu, as the built program shows it.
#include "support/menu_texts.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

using namespace kor_test;

namespace {

const std::string INVALID = "Invalid choice. Please enter 1, 2, 3, 4, 5 or 6.\n";

/// `count` letters, then `end`.
std::string letters(std::size_t count, const std::string& end) {
    std::string text(count, 'x');
    text += end;
    return text;
}

class MainMenu : public testing::Test {
protected:
    /// What the program prints for these answers; it must end with status 0 and say nothing on standard
    /// error.
    std::string transcript(const std::string& answers) const {
        const ProgramResult result = program_.run({}, answers);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    TempTree tree_;
    ProgramTree program_{tree_.root()};
};

} // namespace

TEST_F(MainMenu, ExitsWithItsLastItem) {
    EXPECT_EQ(transcript("6\n"), main_menu_text() + EXITING);
}

TEST_F(MainMenu, ExitsAtTheEndOfInput) {
    EXPECT_EQ(transcript(""), main_menu_text() + EXITING);
    EXPECT_EQ(transcript("6"), main_menu_text() + EXITING) << "a last line without its end";
}

TEST_F(MainMenu, AsksAgainAfterAnythingElse) {
    for (const char* answer : {"", "abc", "0", "7", "-1", ".", "99999999999999999999", "4294967302", " \t"})
        EXPECT_EQ(transcript(std::string(answer) + "\n6\n"),
                  main_menu_text() + INVALID + main_menu_text() + EXITING)
            << answer;
}

TEST_F(MainMenu, TakesTheNumberThatALineBeginsWith) {
    for (const char* answer : {" 6 ", "6 please", "6x", "+6", "006", "6\r"})
        EXPECT_EQ(transcript(std::string(answer) + "\n"), main_menu_text() + EXITING) << answer;
}

TEST_F(MainMenu, ContinuesALineOfMoreThan64CharactersAsTheNextAnswers) {
    const std::string again = main_menu_text() + INVALID;
    EXPECT_EQ(transcript(letters(64, "\n6\n")), again + main_menu_text() + EXITING);
    EXPECT_EQ(transcript(letters(64, "6\n")), again + main_menu_text() + EXITING);
    EXPECT_EQ(transcript(letters(150, "\n6\n")), again + again + again + main_menu_text() + EXITING);
}

TEST_F(MainMenu, WaitsForEnterAfterTheReferenceChecks) {
    const std::string out = transcript("5\n6 is swallowed by the prompt\n6\n");
    const std::string begin = main_menu_text() + "\n[KOR] Running developer smoke/reference checks...\n\n";
    const std::string end = ENTER_FOR_MENU + main_menu_text() + EXITING;
    ASSERT_GT(out.size(), begin.size() + end.size());
    EXPECT_EQ(out.substr(0, begin.size()), begin);
    EXPECT_EQ(out.substr(out.size() - end.size()), end);
}

TEST_F(MainMenu, LeavesASubMenuAndThenItselfAtTheEndOfInput) {
    EXPECT_EQ(transcript("1\n"), main_menu_text() + OPENING_PREPARATION +
                                     prepare_menu_text("", NOTHING_PREPARED) + main_menu_text() + EXITING);
    EXPECT_EQ(transcript("2\n"), main_menu_text() + OPENING_RUN_MENU + run_menu_text("", NOTHING_TO_RUN) +
                                     main_menu_text() + EXITING);
}

TEST_F(MainMenu, ShowsNoColoursAndClearsNoFile) {
    EXPECT_EQ(transcript("1\nx\n2\nx\n6\n").find('\033'), std::string::npos);
}
