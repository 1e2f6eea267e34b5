#include "fieldgradient_dialogues.h"

#include "fieldgradientlib.h"
#include "kordatafileio.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace kor {

namespace {

/// The three pointers are there; otherwise the status says so.
bool pointers_present(const int* count, const double* step, const double* out) {
    if (count && step && out)
        return true;
    fieldgrad_last_status = FIELDGRAD_ERR_NULLPTR;
    return false;
}

std::uint64_t samples(const int* count) {
    return static_cast<std::uint64_t>(std::max(*count, 0));
}

bool answered(int read) {
    if (!read)
        fieldgrad_last_status = FIELDGRAD_ERR_IO;
    return read != 0;
}

bool ask(const char* prompt, double* answer) {
    return answered(scan_double(prompt, answer));
}

bool ask_then_empty_line(const char* prompt, double* answer) {
    if (!ask(prompt, answer))
        return false;
    std::printf("\n");
    return true;
}

} // namespace

void CalcGrad(const int* count, const double* step, double* out) {
    if (!pointers_present(count, step, out))
        return;
    std::printf("Possible gradient modulation types:\n"
                "   1.  Constant gradient \n"
                "   2.  cosine spiral (2D excitation)\n"
                "   3.  sine spiral   (2D excitation)\n");
    int choice = 0;
    if (!answered(scan_int("Your choice [1..3] : ", &choice)))
        return;
    if (choice == 1)
        gradproc1(count, step, out);
    else if (choice == 2)
        gradproc2(count, step, out);
    else if (choice == 3)
        gradproc3(count, step, out);
    else
        fieldgrad_last_status = FIELDGRAD_ERR_BADARG;
}

void gradproc1(const int* count, const double* step, double* out) {
    if (!pointers_present(count, step, out))
        return;
    double G = 0;
    if (ask_then_empty_line(" Constant gradient strength [Hz/cm] : ", &G))
        fieldgrad_last_status = gradproc1_compute(samples(count), *step, out, G);
}

void gradproc2(const int* count, const double* step, double* out) {
    if (!pointers_present(count, step, out))
        return;
    std::printf("g(t) = -(A/T)*(2*pi*n*(1-(t/T))*((sin(2*pi*n*t/T)+f(t))\n"
                "f(t) = cos(2*pi*n*t/T)\n");
    double A = 0, n = 0;
    if (ask_then_empty_line("A    : ", &A) && ask_then_empty_line("n    : ", &n))
        fieldgrad_last_status = gradproc2_compute(samples(count), *step, out, A, n);
}

void gradproc3(const int* count, const double* step, double* out) {
    if (!pointers_present(count, step, out))
        return;
    std::printf("g(t) = (A/T)*(2*pi*n*(1-(t/T))*((cos(2*pi*n*t/T)+f(t))\n"
                "f(t) = -sin(2*pi*n*t/T)\n");
    double A = 0, n = 0;
    if (ask("A : ", &A) && ask("n : ", &n))
        fieldgrad_last_status = gradproc3_compute(samples(count), *step, out, A, n);
}

} // namespace kor
