#include "kordatafileio.h"
#include "korlimits.h"
#include "questions.h"
#include "rfpulselib/dialogues.h"
#include "rfpulselib/shapes.h"

#include <cstdio>

namespace kor {

namespace {

using ShapeDialogue = bool (*)(const int*, const double*, double*, double*);

constexpr double hard_pulse_step = 1e-5; // s

/// Asks for 1..count and runs that dialogue; any other answer defines no pulse.
template <int count>
bool run_chosen_shape(const char* prompt, const ShapeDialogue (&shapes)[count], const int* ap,
                      const double* ti, double* xb, double* yb) {
    int choice = 0;
    return ask_choice(prompt, &choice) && choice >= 1 && choice <= count &&
           shapes[choice - 1](ap, ti, xb, yb);
}

} // namespace

int scan_int_prompt(const char* prompt, int* out) {
    return scan_int(prompt, out);
}

int scan_double_prompt(const char* prompt, double* out) {
    return scan_double(prompt, out);
}

bool ask_numbers(std::initializer_list<Question> questions) {
    for (const Question& question : questions) {
        if (!scan_double_prompt(question.prompt, question.answer))
            return false;
        std::printf("\n");
    }
    return true;
}

bool ask_choice(const char* prompt, int* choice) {
    if (!scan_int_prompt(prompt, choice))
        return false;
    std::printf("\n");
    return true;
}

bool AMHardPulseDefinition(int* ap, double* ti, double* xb, double* yb) {
    if (!ap || !xb || !yb)
        return false;
    if (ti)
        *ti = hard_pulse_step;
    std::printf("\nStandard Hard Pulses:\n\n"
                "   1. (pi/2) (x')            5. (pi) (x')\n"
                "   2. (pi/2) (y')            6. (pi) (y')\n"
                "   3. (pi/2) (-x')           7. (pi) (-x')\n"
                "   4. (pi/2) (-y')           8. (pi) (-y')\n\n");
    int choice = 0;
    if (!ask_choice("Your choice is [1..8] : ", &choice) || choice < 1 || choice > 8)
        return false;
    constexpr double phases[] = {0, KOR_PI / 2, KOR_PI, -KOR_PI / 2};
    const double amp = choice <= 4 ? 1 : 2;
    hardpulseproc(ap, &phases[(choice - 1) % 4], &amp, xb, yb);
    return true;
}

bool AMPulseDefinition(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    std::printf("What Amplitude Modulated Pulse-shape is to be used\n\n"
                "   1. rectangular or hard-pulse\n"
                "   2. sinc-Gauss pulse\n"
                "   3. 2D - GauB pulse\n"
                "   4. 2D - sinc-Pulse (centre (x,y) = (0,0)\n\n");
    return run_chosen_shape(
        "Your Choice is [1..4] : ", {ampulseproc1, ampulseproc2, ampulseproc3, ampulseproc4}, ap, ti, xb, yb);
}

bool FMPulseDefinition(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    std::printf("What Frequency Modulated Pulse-shape is to be used\n\n"
                "      1. 180 sech-tanh (-T,T)\n"
                "      2. 90  sech-tanh (-T,0)\n"
                "      3. 360 sech-tanh 2*(-T,T)\n"
                "      4. 2D - sinc-Pulses off centre\n"
                "      5. Sum of off centre 2D-sinc-Pulses\n"
                "      6. Sum of off centre 2D-sinc-Pulses using file parameters\n\n");
    return run_chosen_shape(
        "Your choice is [1..6] : ",
        {fmpulseproc1, fmpulseproc2, fmpulseproc3, fmpulseproc4, fmpulseproc5, fmpulseproc6}, ap, ti, xb, yb);
}

} // namespace kor
