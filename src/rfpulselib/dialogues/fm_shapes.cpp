#include "consoleutil.h"
#include "kordatafileio.h"
#include "korlimits.h"
#include "korplatform.h"
#include "questions.h"
#include "rfpulselib/dialogues.h"
#include "rfpulselib/shapes.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <new>

namespace kor {

namespace {

constexpr char star_rule[] = "*************************************************************\n";

struct SechTanhParameters {
    double phase, w, b, u;
};

bool ask_sech_tanh(SechTanhParameters* p) {
    return ask_numbers({{" pulse-phase (in degrees) : ", &p->phase},
                        {" w  [Hz]                  : ", &p->w},
                        {" b (damping constant)     : ", &p->b},
                        {" u (selectivity constant) : ", &p->u}});
}

/// One waveform that is being added to a sum. Zero at first.
struct WorkPulse {
    explicit WorkPulse(int ap)
        : xb(new (std::nothrow) double[static_cast<std::size_t>(std::max(ap, 0))]()),
          yb(new (std::nothrow) double[static_cast<std::size_t>(std::max(ap, 0))]()) {}
    bool allocated() const { return xb && yb; }
    std::unique_ptr<double[]> xb, yb;
};

void add_pulse(int ap, const WorkPulse& pulse, double* xb, double* yb) {
    for (int j = 0; j < ap; ++j) {
        xb[j] += pulse.xb[static_cast<std::size_t>(j)];
        yb[j] += pulse.yb[static_cast<std::size_t>(j)];
    }
}

void clear_waveform(int ap, double* xb, double* yb) {
    std::fill_n(xb, std::max(ap, 0), 0.0);
    std::fill_n(yb, std::max(ap, 0), 0.0);
}

void print_sum_banner(const char* extra_line) {
    std::printf("%s"
                "** A sum of 2D sinc pulses which excite rectangular areas   **\n"
                "** with shifted centres from (0,0) to (x0,y0)               **\n"
                "%s%s\n",
                star_rule, extra_line, star_rule);
}

bool wants_another_pulse() {
    console_resume_after_end(); // of the pulse before, that is not an answer to this question
    std::printf("    1. Add new 2D pulse\n"
                "    2. Exit\n");
    int choice = 0;
    return ask_choice("Your choice [1,2] : ", &choice) && choice == 1;
}

/// Whether the file held a pulse.
bool add_pulses_of_file(std::FILE* file, int ap, double ti, double* xb, double* yb) {
    WorkPulse pulse(ap);
    if (!pulse.allocated())
        return false;
    bool added = false;
    char line[KOR_PATH_SIZE];
    while (std::fgets(line, sizeof line, file)) {
        double a, A, B, n, dx, dy, x0, y0;
        const int numbers =
            std::sscanf(line, "%lf %lf %lf %lf %lf %lf %lf %lf", &a, &A, &B, &n, &dx, &dy, &x0, &y0);
        if (numbers != 8 || a == 0)
            return added;
        compute_2d_sinc_offcentre(ap, ti, a, A, B, n, dx, dy, x0, y0, pulse.xb.get(), pulse.yb.get());
        add_pulse(ap, pulse, xb, yb);
        added = true;
    }
    return added;
}

} // namespace

bool fmpulseproc1(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    std::printf(" 180 degree FM sech-tanh pulse (-T,T) :\n\n"
                " x  : w*sech(b*t)*cos(2*pi*u*ln(sech(bt)))\n"
                " y  : w*sech(b*t)*sin(2*pi*u*ln(sech(bt)))\n");
    SechTanhParameters p;
    if (!ask_sech_tanh(&p))
        return false;
    sech_tanh_180_waveform(*ap, *ti, p.phase, p.w, p.b, p.u, xb, yb);
    return true;
}

bool fmpulseproc2(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    std::printf(" 90 degree FM sech-tanh pulse (-T,0) :\n\n"
                " x : w*sech(b*t)*cos(2*pi*u*ln(sech(bt)))\n"
                " y : w*sech(b*t)*sin(2*pi*u*ln(sech(bt)))\n");
    SechTanhParameters p;
    if (!ask_sech_tanh(&p))
        return false;
    sech_tanh_90_waveform(*ap, *ti, p.phase, p.w, p.b, p.u, xb, yb);
    return true;
}

bool fmpulseproc3(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    std::printf(" 360 degree FM sech-tanh pulse 2*(-T,T) :\n\n"
                " x  : w*sech(b*t)*cos(2*pi*u*ln(sech(bt)))\n"
                " y  : w*sech(b*t)*sin(2*pi*u*ln(sech(bt)))\n\n");
    double phase = 0, w = 0, b = 0, u = 0;
    if (!ask_numbers({{" pulse-phase (in degrees)  : ", &phase},
                      {" w                    [Hz] : ", &w},
                      {" b (damping constant)      : ", &b},
                      {" u (selectivity constant)  : ", &u}}))
        return false;
    sech_tanh_360_waveform(*ap, *ti, phase, w, b, u, xb, yb);
    return true;
}

bool fmpulseproc4(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    std::printf("A 2D sinc pulse which excites a rectangular area\n"
                "with a shifted centre from (0,0) to (x0,y0)\n\n"
                "b1(t) = (a.A/T)*sinc(kx(t).dx/2)*sinc(ky(t).dy/2)\n"
                "        * exp(i kx(t).x0) * exp(i ky(t).y0) * f(t)\n"
                "f(t)  = sqrt((2*pi*n*(1-(t/T)))^2 + 1)\n"
                "kx(t) = B*(1-(t/T))*cos(2*pi*n*t/T)\n"
                "ky(t) = B*(1-(t/T))*sin(2*pi*n*t/T)\n\n");
    double a = 0, A = 0, B = 0, n = 0, dx = 0, dy = 0, x0 = 0, y0 = 0;
    if (!ask_numbers({{"a     : ", &a},
                      {"A     : ", &A},
                      {"B     : ", &B},
                      {"n     : ", &n},
                      {"dx    : ", &dx},
                      {"dy    : ", &dy},
                      {"x0    : ", &x0},
                      {"y0    : ", &y0}}))
        return false;
    compute_2d_sinc_offcentre(*ap, *ti, a, A, B, n, dx, dy, x0, y0, xb, yb);
    return true;
}

bool fmpulseproc5(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    print_sum_banner("");
    clear_waveform(*ap, xb, yb);
    WorkPulse pulse(*ap);
    if (!pulse.allocated())
        return false;
    bool defined = false;
    while (wants_another_pulse()) {
        defined = fmpulseproc4(ap, ti, pulse.xb.get(), pulse.yb.get()) || defined;
        add_pulse(*ap, pulse, xb, yb);
    }
    return defined;
}

bool fmpulseproc6(const int* ap, const double* ti, double* xb, double* yb) {
    if (!ap || !ti || !xb || !yb)
        return false;
    print_sum_banner("** using pulse parameters read from a text file             **\n");
    clear_waveform(*ap, xb, yb);
    char name[KOR_FILE_NAME_SIZE];
    if (!scan_string("Pulse parameter file name: ", name, sizeof name))
        return false;
    std::printf("\n");
    std::FILE* file = platform_open(name, "r");
    if (!file) {
        std::perror("fopen(parameter file)");
        return false;
    }
    const bool defined = add_pulses_of_file(file, *ap, *ti, xb, yb);
    if (std::ferror(file))
        std::perror(name);
    std::fclose(file);
    return defined;
}

} // namespace kor
