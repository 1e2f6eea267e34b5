#include "questions.h"
#include "rfpulselib/dialogues.h"
#include "rfpulselib/shapes.h"

#include <cstdio>

namespace kor {

bool ampulseproc1(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    std::printf(" Rectangular pulse or hard pulse\n");
    double phase = 0, amplitude = 0;
    if (!ask_numbers(
            {{" pulse-phase (in degrees) : ", &phase}, {" pulse amplitude [Hz]     : ", &amplitude}}))
        return false;
    rectangular_waveform(*ap, phase, amplitude, xb, yb);
    return true;
}

bool ampulseproc2(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    std::printf(" sinc Gauss - AM-pulse shape :\n\n"
                " q*sin(2*pi*f*t)*exp(-(b*b*t*t))/ (pi*t)\n");
    double phase = 0, q = 0, f = 0, b = 0;
    if (!ask_numbers({{" pulse-phase (in degrees) : ", &phase},
                      {" q  (teta = q*180/pi)     : ", &q},
                      {" f (pulse bandwidth)      : ", &f},
                      {" b (damping constant)     : ", &b}}))
        return false;
    sinc_gauss_waveform(*ap, *ti, phase, q, f, b, xb, yb);
    return true;
}

bool ampulseproc3(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    std::printf("bx(t) = (a.A/T)*exp(-(B*(1-t/T))^2)*sqrt(f(t))\n"
                "With : f(t) = ((2*pi*n(1-(t/T))^2)+1\n\n");
    double a = 0, A = 0, B = 0, n = 0;
    if (!ask_numbers({{"a   : ", &a}, {"A   : ", &A}, {"B   : ", &B}, {"n   : ", &n}}))
        return false;
    gauss_2d_waveform(*ap, *ti, a, A, B, n, xb, yb);
    return true;
}

bool ampulseproc4(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    std::printf("bx(t) = (a.A/T)*sinc(kx(t).dx/2)*sinc(ky(t).dy/2).f(t)\n"
                "f(t)  = sqrt((2*pi*n*(1-(t/T)))^2 + 1)\n"
                "kx(t) = B*(1-(t/T))*cos(2*pi*n*t/T)\n"
                "ky(t) = B*(1-(t/T))*sin(2*pi*n*t/T)\n");
    double a = 0, A = 0, B = 0, n = 0, dx = 0, dy = 0;
    if (!ask_numbers({{"a     : ", &a},
                      {"A     : ", &A},
                      {"B     : ", &B},
                      {"n     : ", &n},
                      {"dx    : ", &dx},
                      {"dy    : ", &dy}}))
        return false;
    sinc_2d_waveform(*ap, *ti, a, A, B, n, dx, dy, xb, yb);
    return true;
}

} // namespace kor
