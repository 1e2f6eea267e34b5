// A run that is killed, interrupted or loses its output: what stands afterwards, and what the next run gives.
#include "faults/injection.h"
#include "faults/scenarios.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>
#include <set>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace kor_test;
namespace fs = std::filesystem;

constexpr unsigned SEED = 20260117;

long number_of_operations(const Undisturbed& whole) {
    long sum = 0;
    for (const auto& [kind, count] : whole.run.witness.counts)
        sum += count;
    return sum;
}

/// As at a terminal: what a shell starts in the background ignores interrupts, and so would the program.
void take_interrupts() {
    signal(SIGINT, SIG_DFL);
    signal(SIGTERM, SIG_DFL);
}

class SuddenEnd : public testing::Test {
protected:
    SuddenEnd() {
        // The shortest of three: a machine that is busy now and then makes some of them long.
        for (int k = 0; k < 3; ++k) {
            scenario_->reset();
            const auto start = std::chrono::steady_clock::now();
            whole_ = run_undisturbed(*scenario_);
            const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
            seconds_ = k == 0 ? time.count() : std::min(seconds_, time.count());
        }
        states_ = scenario_->scratch_file("dm.bin");
        result_ = whole_.files.at(RESULT);
        before_ = scenario_->files();
    }

    /// "dm.bin" is whole or absent, or the new states stand whole in "store"; the result is whole or absent;
    /// the model is as it was.
    void expect_sound_files(const std::string& moment) {
        const std::string states = scenario_->scratch_file("dm.bin"),
                          store = scenario_->scratch_file("store");
        const bool absent = !scenario_->has_scratch_file("dm.bin");
        EXPECT_TRUE(absent || states.size() == states_.size() || store.size() == states_.size())
            << moment << ": dm.bin has " << states.size() << " bytes, store " << store.size();
        const std::string& standing = states.size() == states_.size() ? states : store;
        if (standing.size() == states_.size())
            seen_.insert(standing);
        const Files after = scenario_->files();
        const auto result = after.find(RESULT);
        EXPECT_TRUE(result == after.end() || result->second == result_) << moment << ": a piece of a result";
        for (const auto& [name, bytes] : before_) {
            if (name.rfind("build/", 0) != 0) {
                EXPECT_TRUE(after.count(name) && after.at(name) == bytes) << moment << ": " << name;
            }
        }
    }

    /// A second run in the same tree gives the bytes of an undisturbed one.
    void expect_the_same_from_a_second_run(const std::string& moment) {
        const ProgramResult second = run_program(scenario_->call());
        EXPECT_EQ(second.status, 0) << moment;
        EXPECT_EQ(second.out, whole_.run.result.out) << moment;
        EXPECT_TRUE(read_file(scenario_->path(RESULT)) == result_) << moment;
    }

    long operations() const { return number_of_operations(whole_); }

    /// Kills the run at its file operation number k.
    void kill_at_operation(long k) {
        const FaultyRun run = run_with_fault(*scenario_, {"any", k, "kill", false});
        const std::string moment = "operation " + std::to_string(k);
        EXPECT_EQ(run.result.status, 128 + SIGKILL) << moment;
        expect_sound_files(moment);
        expect_the_same_from_a_second_run(moment);
    }

    /// Sends the signal a random time after the start, which may be behind the end of the run. 1 when it
    /// struck.
    int send_after(double time_s, int signal) {
        scenario_->reset();
        ProgramCall call;
        call.prepare = take_interrupts;
        call.signal_after_s = time_s;
        call.signal = signal;
        const ProgramResult run = run_program(scenario_->call(call));
        const std::string moment =
            "signal " + std::to_string(signal) + " after " + std::to_string(time_s) + " s";
        EXPECT_TRUE(run.status == 0 || run.status == 128 + signal) << moment << ": status " << run.status;
        expect_sound_files(moment);
        expect_the_same_from_a_second_run(moment);
        return run.status == 0 ? 0 : 1;
    }

    /// Sends the signal at random times of the run until it has struck so often.
    void strike_at_random_times(int signal, int times, std::mt19937& random) {
        std::uniform_real_distribution<double> time(0.0, seconds_);
        int struck = 0;
        for (int sent = 0; struck < times && sent < 10 * times; ++sent)
            struck += send_after(time(random), signal);
        EXPECT_EQ(struck, times) << "most runs had ended before signal " << signal;
        // Those at the start and behind each of the two sectors, never a mixture.
        EXPECT_LE(seen_.size(), 3U);
    }

    void kill_at_random_moments(int operations_killed, int times_killed) {
        std::printf("seed %u\n", SEED);
        std::mt19937 random(SEED);
        std::uniform_int_distribution<long> operation(1, operations());
        for (int k = 0; k < operations_killed; ++k)
            kill_at_operation(operation(random));
        strike_at_random_times(SIGKILL, times_killed, random);
        std::printf("killed at %d random operations of %ld and at %d random times\n", operations_killed,
                    operations(), times_killed);
    }

    static constexpr const char* RESULT = "build/runtime/results/grid.bin";
    std::unique_ptr<Scenario> scenario_ = make_scenario("spatial");
    Undisturbed whole_;
    Files before_;
    std::string states_, result_;
    std::set<std::string> seen_; // every state of the right size that stood in "dm.bin" or in "store"
    double seconds_ = 0.0;
};
using DeepSuddenEnd = SuddenEnd;

TEST_F(SuddenEnd, KilledAtAnyMomentLeavesWholeFilesOrNone) {
    kill_at_random_moments(20, 10);
}

TEST_F(DeepSuddenEnd, KilledAtAnyMomentLeavesWholeFilesOrNone) {
    for (long k = 1; k <= operations(); ++k)
        kill_at_operation(k);
    kill_at_random_moments(100, 200);
}

TEST_F(SuddenEnd, InterruptAndTerminationEndItLikeAKill) {
    std::mt19937 random(SEED);
    for (const int signal : {SIGINT, SIGTERM})
        strike_at_random_times(signal, 5, random);
}

/// Kills the session at every `stride`-th of its file operations; the number of kills.
int kill_while_writing_back(const std::string& name, long stride) {
    const auto scenario = make_scenario(name);
    const Files before = scenario->files();
    const Undisturbed whole = run_undisturbed(*scenario);
    const long operations = number_of_operations(whole);
    int kills = 0;
    for (long k = 1; k <= operations; k += stride, ++kills) {
        EXPECT_EQ(run_with_fault(*scenario, {"any", k, "kill", false}).result.status, 128 + SIGKILL) << k;
        const Files after = scenario->files();
        for (const auto& [file, bytes] : before) {
            const auto found = after.find(file), renewed = whole.files.find(file);
            EXPECT_TRUE(found != after.end() && (found->second == bytes || found->second == renewed->second))
                << name << " at " << k << ": " << file;
        }
    }
    return kills;
}

TEST(SuddenEndOfASession, KilledWhileItWritesBackLeavesTheOldOrTheNewModel) {
    kill_while_writing_back("optimiser", 5);
    kill_while_writing_back("analysis", 11);
}

TEST(DeepSuddenEndOfASession, KilledWhileItWritesBackLeavesTheOldOrTheNewModel) {
    for (const char* name : {"optimiser", "analysis"})
        std::printf("%s: %d kills\n", name, kill_while_writing_back(name, 1));
}

/// The files without those that only a killed process leaves.
Files without_remains(Files files) {
    std::erase_if(files, [](const auto& file) { return file.first.ends_with(".new"); });
    return files;
}

/// Kills the session at every `stride`-th of its file operations and plays it again in the same folders,
/// among what the killed one left; the number of kills.
int kill_and_play_again(const std::string& name, long stride) {
    const auto scenario = make_scenario(name);
    const Undisturbed whole = run_undisturbed(*scenario);
    const Files wanted = without_remains(whole.files);
    const long operations = number_of_operations(whole);
    int kills = 0;
    for (long k = 1; k <= operations; k += stride, ++kills) {
        EXPECT_EQ(run_with_fault(*scenario, {"any", k, "kill", false}).result.status, 128 + SIGKILL) << k;
        const ProgramResult again = run_program(scenario->call());
        EXPECT_EQ(again.status, 0) << name << " at " << k;
        EXPECT_EQ(again.out, whole.run.result.out) << name << " at " << k;
        EXPECT_TRUE(without_remains(scenario->files()) == wanted) << name << " at " << k;
    }
    return kills;
}

TEST(SuddenEndOfASession, PlayedAgainGivesTheSame) {
    kill_and_play_again("analysis", 11);
    kill_and_play_again("spectrum-2d", 11);
}

TEST(DeepSuddenEndOfASession, PlayedAgainGivesTheSame) {
    for (const char* name : {"analysis", "spectrum-2d"})
        std::printf("%s again: %d kills\n", name, kill_and_play_again(name, 1));
}

/// Makes file descriptor 1 what `descriptor` is.
void use_as_output(int descriptor) {
    dup2(descriptor, STDOUT_FILENO);
    close(descriptor);
}

TEST_F(SuddenEnd, AReaderThatGoesAwayEndsTheRun) {
    scenario_->reset();
    ProgramCall call;
    call.prepare = [] {
        int ends[2];
        if (pipe(ends) == 0) {
            close(ends[0]);
            use_as_output(ends[1]);
        }
        signal(SIGPIPE, SIG_DFL);
    };
    EXPECT_EQ(run_program(scenario_->call(call)).status, 128 + SIGPIPE);
    expect_sound_files("closed pipe");
    expect_the_same_from_a_second_run("closed pipe");
}

/// Makes standard input a stream that holds `text` and does not end behind it.
void wait_behind(const std::string& text) {
    int ends[2];
    if (pipe(ends) == 0 && write(ends[1], text.data(), text.size()) >= 0)
        dup2(ends[0], STDIN_FILENO); // the session holds the other end itself
}

TEST(SuddenEndOfASession, InterruptAndTerminationEndItAtAPrompt) {
    const auto scenario = make_scenario("analysis");
    const Files before = scenario->files();
    const struct {
        std::string typed, prompt;
        int signal;
    } sessions[] = {{"", "Select [1-6]: ", SIGINT},
                    {"", "Select [1-6]: ", SIGTERM},
                    {"3\n1\n\n2\n", "Your choice [1..7] : ", SIGINT},
                    {"3\n1\n\n2\n", "Your choice [1..7] : ", SIGTERM}};
    std::vector<ProgramCall> calls;
    for (const auto& session : sessions) {
        ProgramCall call;
        call.prepare = [&session] {
            take_interrupts();
            wait_behind(session.typed);
        };
        call.signal_after_s = 1.0;
        call.signal = session.signal;
        calls.push_back(scenario->call(call));
    }
    const std::vector<ProgramResult> results = run_programs_together(calls);
    for (std::size_t k = 0; k < results.size(); ++k) {
        EXPECT_EQ(results[k].status, 128 + sessions[k].signal) << k;
        EXPECT_TRUE(results[k].out.ends_with(sessions[k].prompt)) << results[k].out;
        EXPECT_EQ(results[k].err, "") << k;
    }
    EXPECT_TRUE(scenario->files() == before);
}

const std::string LOST_OUTPUT = "[KOR] Warning: not all of the program's output could be written.\n";

TEST_F(SuddenEnd, WhereAClosedPipeIsIgnoredTheRunGoesOn) {
    scenario_->reset();
    ProgramCall call;
    call.prepare = [] {
        int ends[2];
        if (pipe(ends) == 0) {
            close(ends[0]);
            use_as_output(ends[1]);
        }
        signal(SIGPIPE, SIG_IGN);
    };
    const ProgramResult run = run_program(scenario_->call(call));
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, LOST_OUTPUT);
    EXPECT_TRUE(read_file(scenario_->path(RESULT)) == result_);
}

TEST_F(SuddenEnd, LostOutputCostsNoResult) {
    const std::function<void()> outputs[] = {[] { use_as_output(open("/dev/full", O_WRONLY)); },
                                             [] { close(STDOUT_FILENO); }};
    for (const auto& output : outputs) {
        scenario_->reset();
        ProgramCall call;
        call.prepare = output;
        const ProgramResult run = run_program(scenario_->call(call));
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, LOST_OUTPUT);
        EXPECT_TRUE(read_file(scenario_->path(RESULT)) == result_);
        expect_sound_files("lost output");
    }
}

TEST(SuddenEndOfASession, LostOutputAndClosedInputEndIt) {
    for (const char* name : {"optimiser", "analysis", "spectrum-2d"}) {
        const auto scenario = make_scenario(name);
        const Files before = scenario->files();
        const Undisturbed whole = run_undisturbed(*scenario);
        for (const bool closed : {false, true}) {
            scenario->reset();
            ProgramCall call;
            call.prepare = [closed] {
                use_as_output(open("/dev/full", O_WRONLY));
                if (closed)
                    close(STDIN_FILENO);
            };
            const ProgramResult run = run_program(scenario->call(call));
            EXPECT_EQ(run.status, 0) << name;
            EXPECT_NE(run.err.find(LOST_OUTPUT), std::string::npos) << name;
            const Files after = scenario->files();
            for (const ResultFile& result : scenario->results) {
                const Files& wanted = closed ? before : whole.files;
                EXPECT_EQ(after.count(result.path), wanted.count(result.path)) << name << ": " << result.path;
                if (after.count(result.path) && wanted.count(result.path)) {
                    EXPECT_TRUE(after.at(result.path) == wanted.at(result.path))
                        << name << ": " << result.path;
                }
            }
        }
    }
}

} // namespace
