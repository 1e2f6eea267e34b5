// At a real terminal an end of input (Ctrl-D) is not the end: a person goes on.
#include "support/build_paths.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <optional>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace kor_test;
namespace fs = std::filesystem;

namespace {

/// The program on a pseudo-terminal.
class Terminal {
public:
    explicit Terminal(const std::string& program) : side_(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (side_ < 0 || grantpt(side_) != 0 || unlockpt(side_) != 0)
            return;
        const std::string name = ptsname(side_);
        child_ = fork();
        if (child_ == 0)
            become_program(name, program);
    }
    ~Terminal() {
        if (child_ > 0) {
            kill(child_, SIGKILL);
            waitpid(child_, nullptr, 0);
        }
        close(side_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Waits until the screen's new text ends with this; false after ten seconds without any text.
    bool shows(const std::string& ending) {
        while (!seen_.ends_with(ending)) {
            pollfd ready = {side_, POLLIN, 0};
            char text[4096];
            const ssize_t got = poll(&ready, 1, 10000) > 0 ? read(side_, text, sizeof text) : 0;
            if (got <= 0)
                return false;
            seen_.append(text, static_cast<std::size_t>(got));
        }
        return true;
    }
    void type(const std::string& keys) {
        seen_.clear();
        ASSERT_EQ(write(side_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    const std::string& seen() const { return seen_; }
    int exit_status() {
        int state = 0;
        waitpid(child_, &state, 0);
        child_ = -1;
        return WIFEXITED(state) ? WEXITSTATUS(state) : -1;
    }

private:
    [[noreturn]] static void become_program(const std::string& terminal, const std::string& program) {
        setsid();
        const int descriptor = open(terminal.c_str(), O_RDWR);
        ioctl(descriptor, TIOCSCTTY, 0);
        for (int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(descriptor, stream);
        execl(program.c_str(), program.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }

    int side_;
    pid_t child_ = -1;
    std::string seen_;
};

const std::string CTRL_D = "\x04";
const std::string FAMILY = "Your choice [1..3] : ";
const std::string EDITOR = "Your choice is [1..6] : ";
const std::string GRADIENT = "Your choice [1..3] : ";
const std::string STRENGTH = " Constant gradient strength [Hz/cm] : ";
const std::string SHORT_NAME = "\r\n: ";
const std::string FILE_NAME = "File name : ";
const std::string NOTE = "Sector note (optional): ";
const std::string SECTOR = "Sector number to define / edit = ";

class ComposingPerson : public testing::Test {
protected:
    /// The program in a folder of its own, ready for answers at its main menu.
    void SetUp() override {
        tree_.make_folder("build");
        fs::copy_file(kor_program(), tree_.path("build/kor"));
        terminal_.emplace(tree_.path("build/kor"));
        ASSERT_TRUE(terminal_->shows("Select [1-6]: "));
    }
    /// Types, and waits until the screen's new text ends with `next`.
    void answer(const std::string& keys, const std::string& next) {
        terminal_->type(keys);
        EXPECT_TRUE(terminal_->shows(next)) << "after " << keys << ":\n" << terminal_->seen();
    }
    /// From the main menu to the editor of a new spatial sequence.
    void begin_a_spatial_sequence() {
        answer("2\n", "Your choice [1..7] : ");
        answer("1\n", FAMILY);
        answer("1\n", FAMILY);
        answer("2\n", EDITOR);
    }
    /// A delay as this sector, up to the question for its x gradient.
    void begin_a_delay(const std::string& sector) {
        answer("1\n", SECTOR);
        answer(sector + "\n", "Your choice [1..5] : ");
        answer("5\n", "Waiting time [ms] : ");
        answer("2\n", "Static offset frequency [Hz] : ");
        answer("0\n", GRADIENT);
    }
    void answer_a_gradient(const std::string& next) {
        answer("1\n", STRENGTH);
        answer("0\n", next);
    }
    /// A delay as this sector, up to the question after its gradients, which ends with `next`.
    void define_a_delay(const std::string& next, const std::string& sector = "1") {
        begin_a_delay(sector);
        for (const std::string& after : {GRADIENT, GRADIENT, next})
            answer_a_gradient(after);
    }
    /// A delay as sector 1, with a waveform file.
    void define_a_whole_delay() {
        define_a_delay(SHORT_NAME);
        answer("delay\n", FILE_NAME);
        answer("\n", NOTE);
        answer("\n", EDITOR);
    }
    std::uintmax_t bytes_written(const std::string& leaf) {
        std::error_code missing;
        return fs::file_size(tree_.path("rf-output/" + leaf), missing);
    }
    void expect_shown(const std::string& text) {
        EXPECT_NE(terminal_->seen().find(text), std::string::npos) << text << "in\n" << terminal_->seen();
    }
    TempTree tree_;
    std::optional<Terminal> terminal_;
};

} // namespace

TEST_F(ComposingPerson, MayEndTheInputAtTheNoteOfASector) {
    begin_a_spatial_sequence();
    define_a_delay(SHORT_NAME);
    answer("delay\n", FILE_NAME);
    answer("\n", NOTE);
    answer(CTRL_D, EDITOR);
    expect_shown("  sequence sectors      : 1\r\n");
    expect_shown("Defined sectors : 1\r\n");
    expect_shown("delay_s01.bin\r\n");
}

TEST_F(ComposingPerson, KeepsNoFileOfTheOlderWaveformWhereTheFileNameIsLeftOut) {
    begin_a_spatial_sequence();
    define_a_whole_delay();
    expect_shown("delay_s01.bin\r\n");
    define_a_delay(FILE_NAME);
    answer(CTRL_D, NOTE);
    expect_shown("\r\nSector waveform file was not written.\r\n");
    answer("\n", EDITOR);
    expect_shown("Defined sectors : 1\r\n");
    expect_shown("   RF/gradient file : <unset>\r\n");
}

TEST_F(ComposingPerson, CountsASectorWhoseFileNameIsLeftOut) {
    begin_a_spatial_sequence();
    define_a_whole_delay();
    define_a_delay(FILE_NAME, "3");
    answer(CTRL_D, NOTE);
    answer("third\n", EDITOR);
    expect_shown("  sequence sectors      : 3\r\n");
    expect_shown("Defined sectors : 1, 3\r\n");
    expect_shown("Missing sectors : 2\r\n");
    expect_shown("third\r\n");
}

TEST_F(ComposingPerson, GoesOnToTheFileOfASectorAfterAGradientThatIsLeftOut) {
    begin_a_spatial_sequence();
    define_a_whole_delay();
    begin_a_delay("2");
    answer_a_gradient(GRADIENT);
    answer_a_gradient(GRADIENT);
    answer(CTRL_D, FILE_NAME);
    expect_shown("No Z-gradient waveform was defined: this sector has no Z-gradient.\r\n");
    answer("\n", NOTE);
    answer("\n", EDITOR);
    expect_shown("  sequence sectors      : 2\r\n");
    expect_shown("Defined sectors : 1, 2\r\n");
    expect_shown("delay_s02.bin\r\n");
    EXPECT_EQ(bytes_written("delay_s02.bin"), 5 * sizeof(double));
}

TEST_F(ComposingPerson, IsAskedForEveryOtherGradient) {
    begin_a_spatial_sequence();
    begin_a_delay("1");
    answer(CTRL_D, GRADIENT);
    expect_shown("No X-gradient waveform was defined: this sector has no X-gradient.\r\n");
    answer("1\n", STRENGTH);
    answer(CTRL_D, GRADIENT);
    expect_shown("No Y-gradient waveform was defined: this sector has no Y-gradient.\r\n");
    answer_a_gradient(SHORT_NAME);
}

TEST_F(ComposingPerson, NamesTheFileOfASectorWhoseHardPulseIsLeftOut) {
    const std::string editor = "Your choice is [1..5] : ";
    answer("2\n", "Your choice [1..7] : ");
    answer("1\n", FAMILY);
    answer("2\n", FAMILY);
    answer("2\n", editor);
    answer("1\n", SECTOR);
    answer("1\n", "Your choice [1,2] : ");
    answer("1\n", "Your choice [1..5] : ");
    answer("1\n", "Your choice is [1..8] : ");
    answer(CTRL_D, SHORT_NAME);
    expect_shown("No RF pulse was defined: this sector has no RF.\r\n");
    answer("none\n", FILE_NAME);
    answer("\n", "Static offset frequency [Hz] : ");
    answer("0\n", NOTE);
    answer("\n", editor);
    expect_shown("  sequence sectors      : 1\r\n");
    expect_shown("Defined sectors : 1\r\n");
    EXPECT_EQ(bytes_written("none_2d_s01.bin"), 2 * sizeof(double));
}

TEST_F(ComposingPerson, IsToldOfAShapedPulseThatIsLeftOut) {
    begin_a_spatial_sequence();
    answer("1\n", SECTOR);
    answer("1\n", "Your choice [1..5] : ");
    answer("2\n", "Number of time intervals : ");
    answer("4\n", "Total sector duration [ms] : ");
    answer("1\n", "Your Choice is [1..4] : ");
    answer("1\n", " pulse-phase (in degrees) : ");
    answer("0\n", " pulse amplitude [Hz]     : ");
    answer(CTRL_D, "Static offset frequency [Hz] : ");
    expect_shown("No RF pulse was defined: this sector has no RF.\r\n");
}

TEST_F(ComposingPerson, IsAskedForAnotherPulseOfASumAfterOneThatIsLeftOut) {
    begin_a_spatial_sequence();
    answer("1\n", SECTOR);
    answer("1\n", "Your choice [1..5] : ");
    answer("3\n", "Number of time intervals : ");
    answer("4\n", "Total sector duration [ms] : ");
    answer("1\n", "Your choice is [1..6] : ");
    answer("5\n", "Your choice [1,2] : ");
    answer("1\n", "a     : ");
    answer(CTRL_D, "Your choice [1,2] : ");
    answer("1\n", "a     : ");
    answer(CTRL_D, "Your choice [1,2] : ");
    answer("2\n", "Static offset frequency [Hz] : ");
    expect_shown("No RF pulse was defined: this sector has no RF.\r\n");
}

TEST_F(ComposingPerson, IsToldOfAPulseFromDiskThatIsLeftOut) {
    begin_a_spatial_sequence();
    answer("1\n", SECTOR);
    answer("1\n", "Your choice [1..5] : ");
    answer("4\n", "Number of time intervals : ");
    answer("4\n", "Total sector duration [ms] : ");
    answer("1\n", "Your choice [1..3] : ");
    answer(CTRL_D, "Your choice [1..3] : ");
    answer(CTRL_D, "Multiplication factor : ");
    answer("1\n", "Static offset frequency [Hz] : ");
    expect_shown("No RF pulse was defined: this sector has no RF.\r\n");
}

TEST_F(ComposingPerson, NamesTheFileOfASectorWithoutAShortName) {
    begin_a_spatial_sequence();
    define_a_delay(SHORT_NAME);
    answer(CTRL_D, FILE_NAME);
    expect_shown("Press Enter to use the default name: sector-01.bin\r\n");
    answer("own.bin\n", NOTE);
    answer("\n", EDITOR);
    expect_shown("own.bin\r\n");
    EXPECT_EQ(bytes_written("own.bin"), 5 * sizeof(double));
}

TEST_F(ComposingPerson, GoesOnAfterAnEndOfInput) {
    answer("2\n", "Your choice [1..7] : ");
    answer("1\n", FAMILY);
    answer(CTRL_D, "\r\n" + FAMILY);
    answer("1\n", FAMILY);
    answer("2\n", EDITOR);
    answer("1\n", SECTOR);
    answer(CTRL_D, "\r\n" + SECTOR);
    answer(CTRL_D, "\r\n" + SECTOR);
    answer("1\n", "Your choice [1..5] : ");
    answer(CTRL_D, "\r\nYour choice [1..5] : ");
    answer("6\n", EDITOR);
    expect_shown("Unknown sector type.\r\n");
    answer("6\n", FAMILY);
    answer("3\n", "Press Enter to continue...");
    answer("\n", "Your choice [1..7] : ");
    answer("7\n", "Select [1-6]: ");
    answer(CTRL_D, "[KOR] Exiting.\r\n");
    EXPECT_EQ(terminal_->exit_status(), 0);
}
