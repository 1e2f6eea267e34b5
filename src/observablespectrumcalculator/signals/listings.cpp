// The tables that a receiver calculation prints: line lists and the state at the start of acquisition.
#include "observablespectrumcalculator/signals.h"

#include <cstdio>

namespace kor {

void print_line_lists(const char* title, const LineList& csp, int Nc, const LineList& ssp, int Ns) {
    std::printf("\nKOR legacy DoSpectrum component list: %s\n", title);
    std::printf("  COS components: amplitude * cos(2*pi*frequency_hz*t)\n");
    for (int k = 1; k <= Nc; ++k)
        std::printf("    % .12e  % .12g\n", csp[1][k], csp[2][k]);
    std::printf("  SIN components: amplitude * sin(2*pi*frequency_hz*t)\n");
    for (int k = 1; k <= Ns; ++k)
        std::printf("    % .12e  % .12g\n", ssp[1][k], ssp[2][k]);
}

void print_adc_start_expectations(int n, const CMatrix& densmat, const SpinKet& ket, const SpinIList& Ilist) {
    static CMatrix op;
    std::printf("\nKOR ADC-start per-spin transverse expectations\n");
    std::printf("  columns: spin  <Ix>_re  <Iy>_re\n");
    for (int s = 1; s <= infer_nspins(Ilist); ++s) {
        Complex2 ix;
        Complex2 iy;
        MakeMatrixIx(Ilist, ket, n, s, op);
        NormCMatrix(n, op);
        ExpectationValue(n, op, densmat, ix);
        MakeMatrixIy(Ilist, ket, n, s, op);
        NormCMatrix(n, op);
        ExpectationValue(n, op, densmat, iy);
        std::printf("  %2d  % .12e  % .12e\n", s, ix[1], iy[1]);
    }
}

} // namespace kor
