// The sessions of docs/console.md, typed into the built program: what the page shows must appear.
#include "support/build_paths.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>

using namespace kor_test;
namespace fs = std::filesystem;

namespace {

struct Session {
    std::string title; // the section's
    std::string answers;
    std::vector<std::string> shown; // lines, in this order
};

/// The answer of one line: without its comment; "<Enter>" is an empty line.
std::string answer_of(std::string line) {
    const std::size_t comment = line.find("  #");
    if (comment != std::string::npos)
        line.erase(line.find_last_not_of(' ', comment) + 1);
    return (line == "<Enter>" ? "" : line) + "\n";
}

std::vector<Session> sessions_of_the_guide() {
    std::vector<Session> sessions;
    std::istringstream page(read_file(fs::path(source_folder()) / "docs/console.md"));
    std::string line, title, block;
    while (std::getline(page, line)) {
        if (line.rfind("```", 0) == 0) {
            block = block.empty() ? line.substr(3) : "";
            if (block == "answers")
                sessions.push_back({title, "", {}});
        } else if (block == "answers") {
            sessions.back().answers += answer_of(line);
        } else if (block == "shown") {
            sessions.back().shown.push_back(line);
        } else if (line.rfind("## ", 0) == 0) {
            title = line.substr(3);
        }
    }
    return sessions;
}

/// A tree with the shipped examples.
void copy_examples(const TempTree& tree) {
    for (const char* folder : {"models", "spin-systems", "sequences"})
        fs::copy(fs::path(source_folder()) / folder, tree.root() / folder, fs::copy_options::recursive);
}

ProgramResult type_session(const TempTree& tree, const Session& session) {
    copy_examples(tree);
    const ProgramTree program(tree.root());
    // Words that nobody reads when the session leaves the program where it should.
    return program.run({}, session.answers + "unread\nunread\nunread\n");
}

const Session& session_titled(const std::vector<Session>& sessions, const std::string& title) {
    for (const Session& session : sessions)
        if (session.title == title)
            return session;
    throw std::runtime_error("the guide has no session " + title);
}

} // namespace

TEST(ConsoleGuide, ShowsWhatTheProgramPrints) {
    const std::vector<Session> sessions = sessions_of_the_guide();
    ASSERT_EQ(sessions.size(), 5u);
    for (const Session& session : sessions) {
        SCOPED_TRACE(session.title);
        TempTree tree;
        const ProgramResult typed = type_session(tree, session);
        EXPECT_EQ(typed.status, 0);
        std::size_t at = 0;
        for (const std::string& line : session.shown) {
            const std::size_t found = typed.out.find(line, at);
            ASSERT_NE(found, std::string::npos) << line << "\nin what was printed:\n" << typed.out;
            at = found + line.size();
        }
        // Every answer met its question: nothing was refused.
        EXPECT_EQ(typed.out.find("Please enter"), std::string::npos);
        EXPECT_EQ(typed.out.find("Unknown choice"), std::string::npos);
        EXPECT_EQ(typed.out.find("Invalid choice"), std::string::npos);
    }
}

// Every question of the sessions meets the end of the input once: optimiser, expectation values and spectra
// included.
TEST(ConsoleGuide, EndsInGoodOrderWhereverTheAnswersEnd) {
    for (const Session& session : sessions_of_the_guide()) {
        SCOPED_TRACE(session.title);
        TempTree tree;
        copy_examples(tree);
        const ProgramTree program(tree.root());
        for (std::size_t end = 0;; end = session.answers.find('\n', end) + 1) {
            const ProgramResult cut = program.run({}, session.answers.substr(0, end));
            ASSERT_FALSE(cut.timed_out) << "after\n" << session.answers.substr(0, end);
            EXPECT_EQ(cut.status, 0) << "after\n" << session.answers.substr(0, end);
            const std::string farewell = "[KOR] Exiting.\n";
            ASSERT_GE(cut.out.size(), farewell.size());
            EXPECT_EQ(cut.out.substr(cut.out.size() - farewell.size()), farewell);
            if (end == session.answers.size())
                break;
        }
    }
}

TEST(ConsoleGuide, TheSliceIsTwoCentimetresWide) {
    TempTree tree;
    type_session(tree, session_titled(sessions_of_the_guide(), "A slice profile"));
    std::istringstream table(tree.read("build/runtime/slice_iy.txt"));
    std::string heading;
    std::getline(table, heading);
    int index = 0, voxels = 0;
    double value = 0, imaginary = 0;
    while (table >> index >> value >> imaginary) {
        const double x_cm = -2 + 0.1 * voxels++;
        EXPECT_EQ(index, voxels);
        if (std::fabs(x_cm) < 0.65) {
            EXPECT_GT(value, 0.98) << x_cm;
        }
        if (std::fabs(std::fabs(x_cm) - 1) < 0.01) {
            EXPECT_NEAR(value, 0.4864, 1e-4) << x_cm;
        }
        if (std::fabs(x_cm) > 1.15) {
            EXPECT_LT(std::fabs(value), 0.1) << x_cm;
        }
    }
    EXPECT_EQ(voxels, 41);
}

TEST(ConsoleGuide, TheLargestLinesOfLactateAreItsDoublet) {
    TempTree tree;
    type_session(tree, session_titled(sessions_of_the_guide(), "The spectrum of lactate"));
    std::istringstream table(tree.read("build/runtime/lactate_fd.csv"));
    std::string line;
    std::getline(table, line);
    double largest = 0, largest_hz = 0;
    while (std::getline(table, line)) {
        const double hz = std::stod(line), magnitude = std::stod(line.substr(line.rfind(',') + 1));
        if (magnitude > largest) {
            largest = magnitude;
            largest_hz = hz;
        }
    }
    EXPECT_NEAR(largest_hz, -146.535, 1.0 / 1.024);
}

TEST(ConsoleGuide, The2DSessionLeavesATwoDimensionalSpectrum) {
    TempTree tree;
    type_session(tree, session_titled(sessions_of_the_guide(), "A 2D experiment"));
    EXPECT_TRUE(tree.exists("build/runtime/cosy_fd.csv"));
    EXPECT_EQ(tree.read("build/runtime/korsign.bin").size(), 12u + 64 * 256 * 16);
}
