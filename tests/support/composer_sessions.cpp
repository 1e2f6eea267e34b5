#include "support/composer_sessions.h"

namespace kor_test {

namespace {

using Answers = std::vector<std::string>;

void append(Answers& session, const Answers& answers) {
    session.insert(session.end(), answers.begin(), answers.end());
}

const Answers no_gradients = {"1", "0", "1", "0", "1", "0"};

/// A waiting time of 5 ms with the default file name.
void append_half_echo(Answers& session, const std::string& sector) {
    append(session, {"1", sector, "5", "5", "-430"});
    append(session, no_gradients);
    append(session, {"", "TE/2"});
}

} // namespace

std::string answer_lines(const std::vector<std::string>& answers) {
    std::string text;
    for (const std::string& answer : answers)
        text += answer + "\n";
    return text;
}

std::vector<std::string> lactate_spin_echo_session() {
    Answers session = {"1"};
    // spins: CH3 at -430.3 Hz, CH at -75.3 Hz, J = 6.93 Hz
    append(session,
           {"1", "4", "1", "1", "1", "1", "1", "1", "1", "1", "-430.3", "-430.3", "-430.3", "-75.3"});
    append(session, {"1", "0", "0", "6.93", "0", "6.93", "6.93", ""});
    // five voxels over 2 cm along x
    append(session, {"2", "1", "0", "0", "0", "5", "1", "1", "2", "0", "0", ""});
    append(session, {"3", "1", "2"});
    // sinc-Gauss pulse of 64 points and 2 ms with 2 kHz/cm along x; asks for the model's short name
    append(session, {"1", "1", "2", "64", "2", "2", "0", "1.5707963", "1000", "600", "-430"});
    append(session, {"1", "2000", "1", "0", "1", "0", "lactate", "", "slice 90"});
    append_half_echo(session, "2");
    append(session, {"1", "3", "1", "5", "-430", "1", "500", "1", "0", "1", "0", "", "180 x"});
    append_half_echo(session, "4");
    append(session, {"1", "5", "2", "64", "128", "1", "0", "0", "-430"});
    append(session, no_gradients);
    append(session, {"", "adc"});
    append(session, {"4", "spinecho.bin", "5", "lactate", "", "6", "3", "", "6"});
    append(session, {"2", "2", "", "7", "6"});
    return session;
}

std::vector<std::string> cosy_session() {
    Answers session = {"1"};
    append(session, {"1", "2", "1", "1", "1", "1", "40", "-25", "1", "7", ""});
    append(session, {"3", "2", "2"});
    append(session, {"1", "1", "1", "1", "1", "cosy", "", "0", "90 x"});
    append(session, {"1", "2", "2", "5", "4", "", "0", "t1"});
    append(session, {"1", "3", "1", "1", "1", "", "0", "90 x"});
    append(session, {"1", "4", "1", "2", "8", "64", "1", "0", "0", "", "0", "adc"});
    append(session, {"3", "", "4", "cosy", "", "5", "3", "", "4", "", "6", "6"});
    return session;
}

} // namespace kor_test
