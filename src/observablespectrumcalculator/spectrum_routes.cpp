#include "observablespectrumcalculator/spectrum_routes.h"

#include "consoleutil.h"
#include "kor/smoke_check_mode.h"
#include "observablespectrumcalculator/signal_file.h"
#include "observablespectrumcalculator/spectrum_2d.h"
#include "observablespectrumcalculator/spectrum_dialogues.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

struct ReceiverParameters {
    int points;
    double acquisition_time_s;
    double offset_hz;
};

/// Asks for the three; false at the first answer that is no number, whose line is dropped.
bool ask_receiver_parameters(ReceiverParameters& parameters) {
    std::printf("How many time-points (power of 2): ");
    bool read = console_read_int(&parameters.points) != 0;
    if (read) {
        std::printf("\nAcquisition time [seconds] : ");
        read = console_read_double(&parameters.acquisition_time_s) != 0;
    }
    if (read) {
        std::printf("\nOffset frequency [Hz] = ");
        read = console_read_double(&parameters.offset_hz) != 0;
    }
    if (!read)
        console_discard_line();
    return read;
}

bool has_points(const ReceiverParameters& parameters) {
    if (parameters.points < 1)
        std::printf("The number of time-points must be at least 1 (%d given).\n", parameters.points);
    return parameters.points >= 1;
}

/// The sum of the matrices of "dm.bin" and its signal; false when there is none.
bool make_average_signal(std::FILE* in, int n, int count, const ReceiverParameters& parameters,
                         CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot, const CMatrix& Iytot,
                         const CMatrix& Iztot) {
    static CMatrix H;
    if (!sum_density_matrices(in, n, count, densmat))
        return false;
    make_receiver_hamiltonian(n, Istat, parameters.offset_hz, Iztot, H);
    return write_line_list_signal_file(n, parameters.points, parameters.acquisition_time_s, densmat, H, Ixtot,
                                       Iytot) != 0;
}

} // namespace

double SeparateSpectra_GenerateSignal(const int* n, int* ap, CMatrix& densmat, const CMatrix& Istat,
                                      const CMatrix& Ixtot, const CMatrix& Iytot, const CMatrix& Iztot,
                                      const SpinKet& ket, const SpinIList& Ilist) {
    if (n == nullptr || ap == nullptr)
        return 0.0;
    ReceiverParameters parameters = {std::max(*ap, 1), 0.001, 0.0};
    if (!KOR_GetSmokeCheckMode()) {
        std::printf("----------------------------------------------------------\n"
                    "-    Calculation spectra of density matrix / matrices    -\n"
                    "----------------------------------------------------------\n\n");
        if (!ask_receiver_parameters(parameters))
            return 0.0;
    }
    *ap = parameters.points;
    return SeparateSpectra_GenerateSignalWithParams(n, parameters.points, parameters.acquisition_time_s,
                                                    parameters.offset_hz, KOR_SIGNAL_FILE, densmat, Istat,
                                                    Ixtot, Iytot, Iztot, ket, Ilist);
}

void SeparateSpectra(const int* n, int* ap, CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot,
                     const CMatrix& Iytot, const CMatrix& Iztot, const SpinKet& ket, const SpinIList& Ilist) {
    const double acq_time =
        SeparateSpectra_GenerateSignal(n, ap, densmat, Istat, Ixtot, Iytot, Iztot, ket, Ilist);
    if (acq_time > 0.0)
        SpectrumOutputMenu(acq_time);
}

void AverageSpectrum(const int* n, int* ap, CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot,
                     const CMatrix& Iytot, const CMatrix& Iztot, const SpinKet&, const SpinIList&) {
    if (n == nullptr || ap == nullptr)
        return;
    std::printf("**********************************************************\n"
                "*** Calculation of average spectrum of density matrices ***\n"
                "**********************************************************\n\n");
    int count = 0;
    std::FILE* const in = open_density_matrices(*n, &count);
    if (in == nullptr)
        return;
    ReceiverParameters parameters = {0, 0.0, 0.0};
    bool made = false;
    if (*n > KOR_MAX_EIGEN_STATES)
        std::printf("The average spectrum needs line lists, which serve dimensions up to %d (n=%d).\n",
                    KOR_MAX_EIGEN_STATES, *n);
    else if (ask_receiver_parameters(parameters) && has_points(parameters)) {
        *ap = parameters.points;
        made = make_average_signal(in, *n, count, parameters, densmat, Istat, Ixtot, Iytot, Iztot);
    }
    std::fclose(in);
    if (made)
        SpectrumOutputMenu(parameters.acquisition_time_s);
}

void Determine2DSpectrum(const int* n, int* ap, CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot,
                         const CMatrix& Iytot, const CMatrix& Iztot, const SpinKet& ket,
                         const SpinIList& Ilist) {
    const double acq_time =
        SeparateSpectra_GenerateSignal(n, ap, densmat, Istat, Ixtot, Iytot, Iztot, ket, Ilist);
    if (!(acq_time > 0.0) || KOR_GetSmokeCheckMode())
        return;
    std::printf("\nDo 2D FFT? (1=no, 2=yes)\nYour choice [1,2] : ");
    int choice = 1;
    if (!console_read_int(&choice)) {
        console_discard_line();
        return;
    }
    if (choice == 2)
        Calc2Dfft();
    SpectrumOutputMenu(acq_time);
}

} // namespace kor
