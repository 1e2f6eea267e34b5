#include "kor/runtime_state.h"

#include "modelfiles.h"

#include <initializer_list>

namespace kor {

RuntimeState g_runtime;

namespace {

// The waveforms of this state are files that no output may replace.
[[maybe_unused]] const bool waveforms_are_known =
    (follow_waveform_names({g_runtime.fnames, &g_runtime.nos}), true);

void zero_operators(RuntimeState& state) {
    for (CMatrix* matrix : {&state.densmat, &state.Izee, &state.Icoup, &state.Izgrad, &state.Ixtot,
                            &state.Iytot, &state.Iztot, &state.Istat})
        CMatZero(state.n, *matrix);
}

void set_complex(Complex2& number, double re, double im) {
    number[1] = re;
    number[2] = im;
}

} // namespace

void init() {
    RuntimeState& s = g_runtime;
    s.spinsystemdefined = s.rfpulsedefined = s.offsetsdefined = 0;
    s.rotframe = s.batch = s.meanchoice = 0;
    s.calc = 0;
    s.x0_s = s.y0_s = s.z0_s = s.dx_s = s.dy_s = s.dz_s = 0.0;
    s.gs = 0.0;
    s.ndx = s.ndy = s.ndz = 1;
    s.ndw = 1;
    s.pulseflag = 2;
    set_complex(s.cn, 0.0, 1.0);
    set_complex(s.cn1, 1.0, 0.0);
    set_complex(s.cn2, 0.5, 0.0);
    set_complex(s.cn3, 2.0, 0.0);
    set_complex(s.cn4, 1.0 / 6.0, 0.0);
    set_complex(s.cn5, -1.0, 0.0);
    set_complex(s.Eval, 0.0, 0.0);
    set_complex(s.x, 0.0, 0.0);
    if (s.n > 0)
        zero_operators(s);
}

} // namespace kor
