#include "support/two_spin_model.h"

namespace kor_test {
namespace {

constexpr double QUARTER_TURN = 1.5707963267948966;
constexpr double PULSE_DURATION_S = 1e-5;

std::string status_lines(const char* first_sector, const std::string& result, const char* verdict) {
    return "Current model state:\n"
           "  Nspins           : 2\n"
           "  sequence family  : 1D/2D NMR (2)\n"
           "  sequence sectors : 2\n" +
           std::string(first_sector) + "  result file      : " + result + "\n" + verdict + "\n";
}

} // namespace

ModelText two_spin_model(const std::string& name) {
    ModelText model;
    model.name = name;
    model.offsets_hz = {100.0, -40.5};
    model.intensities = {1.0, 0.75};
    model.j_hz = 12.0;
    model.sequence_type = 2;
    SectorText pulse;
    pulse.duration_s = PULSE_DURATION_S;
    pulse.blocks = {{QUARTER_TURN / PULSE_DURATION_S}, {0.0}};
    pulse.remark = "excitation";
    SectorText receiver;
    receiver.points = 4;
    receiver.duration_s = 0.004;
    receiver.offset_hz = -12.5;
    receiver.blocks = {{0, 0, 0, 0}, {0, 0, 0, 0}};
    receiver.remark = "ADC";
    model.sectors = {pulse, receiver};
    return model;
}

std::string two_spin_summary(const ProgramTree& tree, const std::string& name) {
    return "\n[KOR] Loaded model: " + tree.root() + "/models/" + name +
           ".kormodel\n"
           "[KOR] Spin system:\n"
           "  nspins = 2\n"
           "  spin quantum numbers: 1 1\n"
           "  relative intensities: 1 0.75\n"
           "  resonance offsets [Hz]: 100 -40.5\n"
           "  coupling mode = 1\n"
           "[KOR] Sequence:\n"
           "  sequence type = 2\n"
           "  number of sectors = 2\n"
           "    sector 1: type=1 timepoints=1 evolpoints=1 duration=1e-05 pulsefile=" +
           tree.waveform(name, 1) +
           " statoff=0 remark=excitation\n"
           "    sector 2: type=1 timepoints=4 evolpoints=1 duration=0.004 pulsefile=" +
           tree.waveform(name, 2) +
           " statoff=-12.5 remark=ADC\n"
           "[KOR] Grid/run config:\n"
           "  ndx=1 ndy=1 ndz=1\n"
           "  origin [cm] = (0, 0, 0)\n"
           "  delta  [cm] = (0, 0, 0)\n"
           "  result file = " +
           tree.result(name) + "\n";
}

std::string two_spin_run_begin(const ProgramTree& tree, const std::string& name) {
    return "Running current prepared 1D / 2D NMR model...\n" + TWO_SPIN_BUILD_REPORT +
           "Number of pulse sectors to calculate    : 2\n"
           "Detected sequence subtype               : pulse-acquire FID\n"
           "\n"
           "Calculating sector                      : 1\n"
           "Sector type                             : 1  # normal sector\n"
           "Number of time intervals in this sector : 1\n"
           "Number of evolution intervals           : 1\n"
           "Sector or pulsetime                [ms] : 0.01\n"
           "Reading pulse file                      : " +
           tree.waveform(name, 1) +
           "\n"
           "Remark on sector                        : excitation\n"
           "*\n"
           "\n"
           "Calculating sector                      : 2\n"
           "Sector type                             : 1  # normal sector\n"
           "Number of time intervals in this sector : 4\n"
           "Number of evolution intervals           : 1\n"
           "Sector or pulsetime                [ms] : 4\n"
           "Reading pulse file                      : " +
           tree.waveform(name, 2) +
           "\n"
           "Remark on sector                        : ADC\n"
           "ADC sector marked for receiver/FID export; density matrix is preserved at acquisition start.\n";
}

std::string two_spin_run_end(const ProgramTree& tree, const std::string& name) {
    return "Wrote complex receiver signal to " + tree.result(name) + " (samples=4, acquisition=0.004 s)\n";
}

std::string two_spin_status(const ProgramTree& tree, const std::string& name) {
    return status_lines("", tree.result(name), "");
}

std::string two_spin_run_status(const ProgramTree& tree, const std::string& name) {
    return status_lines("  first sector     : normal sector (1)\n", tree.result(name),
                        "  run status       : ready\n");
}

} // namespace kor_test
