// People who type anything: random sessions in the preparation menu and everything that it opens. They run in
// a child, a copy of this test program in a throwaway tree, since the default folders lie beside the program.
#include "kor-entry.h"
#include "kor/runtime_state.h"
#include "korplatform.h"
#include "support/case_count.h"
#include "support/composer_sessions.h"
#include "support/composer_state.h"
#include "support/console_script.h"
#include "support/environment.h"
#include "support/run_program.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>

using namespace kor_test;
namespace fs = std::filesystem;

namespace {

constexpr unsigned FIRST_SEED = 20260;
constexpr unsigned SESSIONS = 2500;
constexpr char CHILD[] = "KOR_PLAY_RANDOM_SESSIONS";
constexpr char PROGRESS_FILE[] = "last-seed";

class Typist {
public:
    explicit Typist(unsigned seed) : random_(seed) {}

    std::vector<std::string> session() {
        std::vector<std::string> answers = opening();
        const int more = below(60);
        for (int i = 0; i < more; ++i)
            answers.push_back(answer());
        return answers;
    }

private:
    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }
    template <std::size_t n> std::string one_of(const char* const (&texts)[n]) {
        return texts[below(int(n))];
    }

    /// Often far enough into the menus that the rest meets an editor or a sector.
    std::vector<std::string> opening() {
        std::vector<std::string> answers;
        const auto add = [&](std::initializer_list<const char*> texts) {
            answers.insert(answers.end(), texts.begin(), texts.end());
        };
        if (below(8) == 0)
            return answers;
        add({"1", "2", "1", "1", "1", "1", "100", "-50", "1", "7", ""});
        if (below(8) == 0)
            return answers;
        const bool spatial = below(2) == 0;
        add({"3", spatial ? "1" : "2", "2"});
        if (below(4) != 0)
            add({"1", one_of_sectors()});
        if (!spatial && below(2) == 0)
            add({"1"});
        return answers;
    }
    const char* one_of_sectors() {
        static const char* const sectors[] = {"1", "2", "3", "20"};
        return sectors[below(4)];
    }

    std::string answer() {
        const int kind = below(100);
        if (kind < 58)
            return std::to_string(1 + below(6));
        if (kind < 70)
            return one_of({"0", "0.5", "-3", "1e3", "2.5e-3", "7", "8", "16", "65", "-0"});
        if (kind < 76)
            return one_of({"21", "-1", "300", "9000", "-2147483648", "99999999999999999999", "1e400"});
        if (kind < 82)
            return one_of({"x", "yes please", "nan", "1 2 3", "2x", "- 1", "\t4\t"});
        if (kind < 90)
            return "";
        if (kind < 95)
            return one_of({"./a.bin", "lac 90", "series.txt", "no such name", "result.bin"});
        return kind < 97 ? std::string(300 + below(5000), char('0' + below(80))) : raw_bytes();
    }

    /// Anything but the separators of paths, which would lead out of the tree.
    std::string raw_bytes() {
        std::string bytes(1 + below(40), ' ');
        for (char& byte : bytes) {
            do
                byte = char(below(256));
            while (byte == '/' || byte == '\\' || byte == ':');
        }
        return bytes;
    }

    std::mt19937 random_;
};

unsigned last_seed() {
    return FIRST_SEED + static_cast<unsigned>(kor_test::cases_here(SESSIONS)) - 1;
}

void expect_sound_state() {
    const kor::RuntimeState& rt = kor::g_runtime;
    EXPECT_GE(rt.nos, 0);
    EXPECT_LE(rt.nos, 20);
    EXPECT_LE(rt.Nspins, 8);
    EXPECT_LE(rt.n, 256);
    EXPECT_TRUE(rt.sequencetype >= 0 && rt.sequencetype <= 2);
    EXPECT_GE(rt.ndx, 1);
    EXPECT_LE(rt.ap, 8192);
}

void play_sessions() {
    for (unsigned seed = FIRST_SEED; seed <= last_seed(); ++seed) {
        std::ofstream(PROGRESS_FILE) << seed;
        fresh_state();
        std::string answers = answer_lines(Typist(seed).session());
        // Every third session breaks off within its last line.
        if (seed % 3 == 0 && !answers.empty())
            answers.pop_back();
        play_console(answers, kor::KORPrepareMenu);
        SCOPED_TRACE("seed " + std::to_string(seed));
        expect_sound_state();
        if (seed % 100 == 0)
            for (const char* folder : {"../rf-output", "../models", "../sequences", "../spin-systems"})
                fs::remove_all(folder);
    }
}

} // namespace

TEST(RandomSessions, EndInGoodOrder) {
    if (std::getenv(CHILD)) {
        play_sessions();
        return;
    }
    TempTree tree;
    tree.make_folder("build");
    tree.write("work/series.txt", "1\n2\n3\n");
    char program[300];
    ASSERT_EQ(kor::platform_executable_file(program, sizeof program), 1);
    fs::copy_file(program, tree.path("build/player"));
    set_variable(CHILD, "1");
    remove_variable("GTEST_TOTAL_SHARDS"); // the player plays whichever share of the tests this one is in
    remove_variable("GTEST_SHARD_INDEX");
    const ProgramResult player = run_program({.executable = tree.path("build/player"),
                                              .arguments = {"--gtest_filter=RandomSessions.EndInGoodOrder"},
                                              .working_dir = tree.path("work"),
                                              .timeout_s = 600.0});
    remove_variable(CHILD);
    EXPECT_EQ(player.status, 0) << player.out << player.err;
    EXPECT_FALSE(player.timed_out);
    EXPECT_EQ(tree.read(std::string("work/") + PROGRESS_FILE), std::to_string(last_seed()))
        << "the session of this seed did not end";
}
