// The 1D/2D NMR family: sector by sector, every evolution row, then the receiver.
#include "kor/sequence_driver.h"

#include "kor/propagation.h"
#include "kor/runtime_state.h"
#include "kor/spin_system.h"
#include "observablespectrumcalculator/signal_file.h"
#include "observablespectrumcalculator/spectrum_routes.h"
#include "rfwaveformfile.h"
#include "sectors.h"
#include "sequencetypes.h"

#include <cstdio>

namespace kor {

namespace {

/// What the sectors seen so far say about the output.
struct Acquisition {
    int samples = 0;         // of the last acquisition sector; 0: none
    double duration_s = 0.0; // its duration
    double offset_hz = 0.0;  // receiver offset
    int rows = 1;            // evolution rows of the last evolution sector
    bool evolved = false;    // an evolution sector was run
};

bool sector_is_valid(int k) {
    const RuntimeState& s = g_runtime;
    if (s.sectype[k] != NMR_SECTOR_NORMAL && s.sectype[k] != NMR_SECTOR_EVOLUTION) {
        std::printf("Invalid 1D/2D sector type in sector %d : %d\n", k, s.sectype[k]);
        return false;
    }
    if (s.ap < 1) {
        std::printf("Invalid number of time intervals in sector %d : %d\n", k, s.ap);
        return false;
    }
    if (s.ndw < 1) {
        std::printf("Invalid number of evolution intervals in sector %d : %d\n", k, s.ndw);
        return false;
    }
    return true;
}

void describe_sector(int k) {
    const RuntimeState& s = g_runtime;
    inform("\nCalculating sector                      : %d\n", k);
    inform("Sector type                             : %d%s\n", s.sectype[k],
           s.sectype[k] == NMR_SECTOR_EVOLUTION ? "  # evolution sector" : "  # normal sector");
    inform("Number of time intervals in this sector : %d\n", s.ap);
    inform("Number of evolution intervals           : %d\n", s.ndw);
    inform("Sector or pulsetime                [ms] : %.9g\n", 1000.0 * s.pt);
    inform("Reading pulse file                      : %s\n", s.fnames[k]);
}

void describe_remark(int k) {
    inform("Remark on sector                        : %s\n", g_runtime.remarks[k]);
}

bool load_samples(int k) {
    const RuntimeState& s = g_runtime;
    if (!Load2DSectorPulseFile(s.fnames[k], s.ap)) {
        report_unreadable_pulse_file(k);
        return false;
    }
    const double* const arrays[] = {s.xb, s.yb};
    const int l = first_bad_sample(arrays, 2, s.ap);
    if (l >= 0) {
        std::printf("Bad pulse sample at l=%d: xb=%g yb=%g\n", l, s.xb[l], s.yb[l]);
    }
    return l < 0;
}

void remember_receiver(int k, Acquisition& acquisition) {
    const RuntimeState& s = g_runtime;
    describe_remark(k);
    inform("ADC sector marked for receiver/FID export; density matrix is preserved at acquisition start.\n");
    acquisition.samples = s.noti[k];
    acquisition.duration_s = s.sectdur[k];
    acquisition.offset_hz = s.statoff[k];
}

bool propagate_sector(int k, Acquisition& acquisition) {
    const RuntimeState& s = g_runtime;
    if (!load_samples(k)) {
        return false;
    }
    describe_remark(k);
    const int done = s.calc;
    Rotate2D_internal(s.sectype[k], s.h, s.statoff_s);
    if (s.calc == done) {
        return false;
    }
    if (s.sectype[k] == NMR_SECTOR_EVOLUTION) {
        acquisition.rows = s.ndw;
        acquisition.evolved = true;
    }
    return true;
}

/// False when the sector failed; it has said why.
bool run_sector(int k, Acquisition& acquisition) {
    RuntimeState& s = g_runtime;
    select_sector(k);
    s.ndw = s.nevo[k];
    if (!sector_is_valid(k)) {
        return false;
    }
    describe_sector(k);
    // Only a plain sector can be the receiver: the marker says nothing about an evolution sector.
    if (s.sectype[k] == NMR_SECTOR_NORMAL && kor_is_acquisition_remark(s.remarks[k])) {
        remember_receiver(k, acquisition);
        return true;
    }
    return propagate_sector(k, acquisition);
}

void write_receiver_signal(const Acquisition& acquisition) {
    RuntimeState& s = g_runtime;
    const char* dimension = acquisition.evolved ? "2D " : "";
    if (!kor_is_power_of_two_int(acquisition.samples)) {
        std::printf("ADC sample count %d is not a power of two; not writing %sreceiver signal.\n",
                    acquisition.samples, dimension);
        return;
    }
    // The receiver weighs every spin by its normalised operators.
    make_transverse_totals(1);
    const double written_s = SeparateSpectra_GenerateSignalWithParams(
        &s.n, acquisition.samples, acquisition.duration_s, acquisition.offset_hz, s.resultflnm, s.densmat,
        s.Istat, s.Ixtot, s.Iytot, s.Iztot, s.ket, s.Ilist);
    make_transverse_totals(0);
    if (!(written_s > 0.0)) {
        std::printf("Failed to write %scomplex receiver signal to %s\n", dimension, s.resultflnm);
    } else if (acquisition.evolved) {
        inform(
            "Wrote 2D complex receiver signal to %s (samples=%d, evolution rows=%d, acquisition=%.15g s)\n",
            s.resultflnm, acquisition.samples, acquisition.rows, acquisition.duration_s);
    } else {
        inform("Wrote complex receiver signal to %s (samples=%d, acquisition=%.15g s)\n", s.resultflnm,
               acquisition.samples, acquisition.duration_s);
    }
}

void calculate_2d_spectrum() {
    RuntimeState& s = g_runtime;
    make_transverse_totals(1);
    Determine2DSpectrum(&s.n, &s.ap, s.densmat, s.Istat, s.Ixtot, s.Iytot, s.Izgrad, s.ket, s.Ilist);
    make_transverse_totals(0);
}

void write_output(const Acquisition& acquisition) {
    RuntimeState& s = g_runtime;
    CMatAdd(s.n, s.Izee, s.Icoup, s.Istat);
    const bool has_result_file = s.resultflnm[0] != '\0';
    if (has_result_file && acquisition.samples >= 1) {
        write_receiver_signal(acquisition);
    } else if (has_result_file) {
        publish_density_file("density-matrix");
    } else if (acquisition.evolved) {
        calculate_2d_spectrum();
    }
}

} // namespace

void SimulateLoaded2DPulseSequence() {
    if (!start_sequence_run()) {
        return;
    }
    inform("Number of pulse sectors to calculate    : %d\n", g_runtime.nos);
    if (kor_current_sequence_is_pulse_acquire_fid()) {
        inform("Detected sequence subtype               : pulse-acquire FID\n");
    }
    Acquisition acquisition;
    for (int k = 1; k <= g_runtime.nos; ++k) {
        if (!run_sector(k, acquisition)) {
            return;
        }
    }
    write_output(acquisition);
}

} // namespace kor
