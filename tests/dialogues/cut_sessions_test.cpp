// Every question of the program as the last one: the input ends before or within its answer, and the program
// leaves its menus and ends.
#include "support/composer_sessions.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace kor_test;

namespace {

/// Runs the program with the first `answers` answers of the session and `rest` without a line end.
void expect_clean_end(const ProgramTree& program, const std::vector<std::string>& session,
                      std::size_t answers, const std::string& rest) {
    const std::vector<std::string> given(session.begin(),
                                         session.begin() + static_cast<std::ptrdiff_t>(answers));
    const ProgramResult ended = program.run({}, answer_lines(given) + rest);
    const std::string farewell = "\n[KOR] Exiting.\n";
    EXPECT_EQ(ended.status, 0) << "after " << answers << " answers and \"" << rest << "\"";
    ASSERT_GE(ended.out.size(), farewell.size());
    EXPECT_EQ(ended.out.substr(ended.out.size() - farewell.size()), farewell)
        << "after " << answers << " answers and \"" << rest << "\"";
}

void cut_everywhere(const std::vector<std::string>& session) {
    TempTree tree;
    ProgramTree program(tree.root());
    for (std::size_t answers = 0; answers < session.size(); ++answers) {
        expect_clean_end(program, session, answers, "");
        expect_clean_end(program, session, answers, "x");
    }
}

} // namespace

TEST(CutSessions, TheSpatialSessionMayEndAnywhere) {
    cut_everywhere(lactate_spin_echo_session());
}

TEST(CutSessions, TheNmrSessionMayEndAnywhere) {
    cut_everywhere(cosy_session());
}
