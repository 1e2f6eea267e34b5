#include "observablespectrumcalculator/signal_file.h"

#include "binaryfilehandling.h"
#include "double_buffer.h"
#include "kor/density_file.h"
#include "kor/smoke_check_mode.h"
#include "korengine.h"
#include "korplatform.h"
#include "observablespectrumcalculator/signals.h"
#include "wholefile.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>

namespace kor {

namespace {

constexpr int signal_file_type = 1;
constexpr std::size_t block_doubles = 32768; // of signals or states at a time, in the processor's cache
constexpr char read_error[] = ">>> READ BINARY FILE ERROR (dm.bin) <<<";

CMatrix store; // Hamiltonian of the free evolution, with its sign

/// What one receiver calculation works with.
struct Receiver {
    int n;
    int points;
    double acquisition_time_s;
    const CMatrix& Ixtot;
    const CMatrix& Iytot;
    const SpinKet& ket;
    const SpinIList& Ilist;
};

/// States of "dm.bin" that could not be read, with the system's reason where the file does not simply end.
void report_unread(std::FILE* in) {
    if (std::ferror(in))
        std::perror("dm.bin");
    std::puts(read_error);
}

enum class Outcome { done, input_ended, no_memory, unwritten };

Outcome report_no_memory() {
    std::perror("signal buffer");
    return Outcome::no_memory;
}

/// The signal of the only matrix of `in`, with its listings.
Outcome write_single_signal(std::FILE* in, std::FILE* out, const Receiver& receiver, CMatrix& densmat) {
    const DoubleBuffer re = allocate_doubles(static_cast<std::size_t>(receiver.points));
    const DoubleBuffer im = allocate_doubles(static_cast<std::size_t>(receiver.points));
    if (!re || !im)
        return report_no_memory();
    if (!read_density_matrix(in, receiver.n, receiver.n, densmat)) {
        report_unread(in);
        return Outcome::input_ended;
    }
    if (!KOR_GetSmokeCheckMode())
        print_adc_start_expectations(receiver.n, densmat, receiver.ket, receiver.Ilist);
    build_legacy_separate_spectra_signal(receiver.n, receiver.points, receiver.acquisition_time_s, densmat,
                                         store, receiver.Ixtot, receiver.Iytot, re.get(), im.get(), true);
    return write_signal_samples(out, receiver.points, re.get(), im.get()) ? Outcome::done
                                                                          : Outcome::unwritten;
}

/// One signal per matrix of `in`, in order, several at a time.
Outcome write_signals(std::FILE* in, std::FILE* out, int count, const Receiver& receiver, CMatrix& densmat) {
    const auto n = static_cast<std::size_t>(receiver.n);
    const auto signal = 2 * static_cast<std::size_t>(receiver.points);
    const std::size_t state = 2 * n * n;
    const auto together = static_cast<int>(std::max<std::size_t>(1, block_doubles / std::max(signal, state)));
    const DoubleBuffer states = allocate_doubles(state * static_cast<std::size_t>(together));
    const DoubleBuffer signals = allocate_doubles(signal * static_cast<std::size_t>(together));
    if (!states || !signals)
        return report_no_memory();
    const double dt = receiver.acquisition_time_s / receiver.points;
    for (int done = 0; done < count;) {
        const int wanted = std::min(together, count - done);
        const int got = read_density_states(in, receiver.n, wanted, states.get());
        EngineSampleStates(receiver.n, store, dt, receiver.points, got, states.get(), receiver.Ixtot,
                           receiver.Iytot, signals.get());
        const std::size_t doubles = signal * static_cast<std::size_t>(got);
        if (std::fwrite(signals.get(), sizeof(double), doubles, out) != doubles)
            return Outcome::unwritten;
        if (got > 0)
            CMatFromPairs(receiver.n, states.get() + state * static_cast<std::size_t>(got - 1), densmat);
        if (got < wanted) {
            report_unread(in);
            return Outcome::input_ended;
        }
        done += got;
    }
    return Outcome::done;
}

/// Keeps the file when everything could be written; else it is dropped, with a message that names it.
bool keep_signals(WholeFile& out, bool written) {
    const std::string name = out.name;
    if (written && keep_whole_file(out))
        return true;
    if (!written)
        drop_whole_file(out);
    std::perror(name.c_str());
    return false;
}

/// Header and signals into the named file; a message where they cannot be written.
Outcome write_signal_file(std::FILE* in, int count, const char* name, const Receiver& receiver,
                          CMatrix& densmat) {
    if (platform_same_file(name, "dm.bin")) {
        std::fprintf(stderr, "%s: a signal cannot replace the states that it is calculated from\n", name);
        return Outcome::unwritten;
    }
    WholeFile out;
    if (!open_whole_file(name, "wb", out)) {
        std::perror("fopen(signal output)");
        return Outcome::unwritten;
    }
    Outcome outcome = Outcome::unwritten;
    if (WriteBinFileHeader_status(out.file, signal_file_type, receiver.points, count) == BINFH_OK)
        outcome = count == 1 ? write_single_signal(in, out.file, receiver, densmat)
                             : write_signals(in, out.file, count, receiver, densmat);
    if (outcome == Outcome::no_memory) {
        drop_whole_file(out);
        return outcome;
    }
    return keep_signals(out, outcome != Outcome::unwritten) ? outcome : Outcome::unwritten;
}

/// Samples of one channel from the line list of its observable.
void sample_channel(int n, int points, double acquisition_time_s, const CMatrix& densmat,
                    const CMatrix& hamiltonian, const CMatrix& observable, double* out) {
    static LineList csp, ssp;
    int Nc = 0;
    int Ns = 0;
    DoSpectrum(n, densmat, hamiltonian, observable, csp, ssp, &Nc, &Ns);
    build_scalar_signal_from_spectrum(points, acquisition_time_s, csp, Nc, ssp, Ns, out);
}

} // namespace

void make_receiver_hamiltonian(int n, const CMatrix& Istat, double receiver_offset_hz, const CMatrix& Iztot,
                               CMatrix& hamiltonian) {
    CMatRMultAdd(n, Istat, -1.0, Iztot, -2.0 * KOR_PI * receiver_offset_hz, hamiltonian);
}

std::FILE* open_density_matrices(int n, int* count) {
    std::FILE* const in = platform_open("dm.bin", "rb");
    if (in == nullptr) {
        std::perror("fopen(dm.bin)");
        return nullptr;
    }
    int type = 0;
    int dimension = 0;
    read_legacy_bin_header(in, &type, &dimension, count);
    if (type == signal_file_type || dimension != n) {
        std::printf("dm.bin header mismatch: ftype=%d fn=%d expected n=%d\n", type, dimension, n);
        std::fclose(in);
        return nullptr;
    }
    return in;
}

int write_signal_samples(std::FILE* out, int points, const double* re, const double* im) {
    constexpr int together = 512;
    double pairs[2 * together];
    for (int first = 0; first < points; first += together) {
        const int count = std::min(together, points - first);
        for (int k = 0; k < count; ++k) {
            pairs[2 * k] = finite_or_zero(re[first + k]);
            pairs[2 * k + 1] = finite_or_zero(im[first + k]);
        }
        const auto doubles = static_cast<std::size_t>(2 * count);
        if (std::fwrite(pairs, sizeof(double), doubles, out) != doubles)
            return 0;
    }
    return 1;
}

int sum_density_matrices(std::FILE* in, int n, int count, CMatrix& sum) {
    static CMatrix tmp;
    CMatZero(n, sum);
    for (int m = 1; m <= count; ++m) {
        if (!read_density_matrix(in, n, n, tmp)) {
            report_unread(in);
            return 0;
        }
        CMatAdd(n, sum, tmp, sum);
    }
    return 1;
}

int write_line_list_signal_file(int n, int points, double acquisition_time_s, const CMatrix& densmat,
                                const CMatrix& hamiltonian, const CMatrix& Ixtot, const CMatrix& Iytot) {
    const DoubleBuffer re = allocate_doubles(static_cast<std::size_t>(points));
    const DoubleBuffer im = allocate_doubles(static_cast<std::size_t>(points));
    if (!re || !im) {
        std::perror("signal buffer");
        return 0;
    }
    sample_channel(n, points, acquisition_time_s, densmat, hamiltonian, Ixtot, re.get());
    sample_channel(n, points, acquisition_time_s, densmat, hamiltonian, Iytot, im.get());
    WholeFile out;
    if (!open_whole_file(KOR_SIGNAL_FILE, "wb", out)) {
        std::perror("fopen(korsign.bin)");
        return 0;
    }
    const bool written = WriteBinFileHeader_status(out.file, signal_file_type, points, 1) == BINFH_OK &&
                         write_signal_samples(out.file, points, re.get(), im.get());
    return keep_signals(out, written);
}

double SeparateSpectra_GenerateSignalWithParams(const int* n, int signal_points, double acquisition_time_s,
                                                double receiver_offset_hz, const char* output_filename,
                                                CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot,
                                                const CMatrix& Iytot, const CMatrix& Iztot,
                                                const SpinKet& ket, const SpinIList& Ilist) {
    if (n == nullptr || signal_points < 1 || !(acquisition_time_s > 0.0))
        return 0.0;
    int count = 0;
    std::FILE* const in = open_density_matrices(*n, &count);
    if (in == nullptr)
        return 0.0;
    make_receiver_hamiltonian(*n, Istat, receiver_offset_hz, Iztot, store);
    const bool named = output_filename != nullptr && *output_filename != '\0';
    const Receiver receiver = {*n, signal_points, acquisition_time_s, Ixtot, Iytot, ket, Ilist};
    const Outcome outcome =
        write_signal_file(in, count, named ? output_filename : KOR_SIGNAL_FILE, receiver, densmat);
    std::fclose(in);
    return outcome == Outcome::done || outcome == Outcome::input_ended ? acquisition_time_s : 0.0;
}

} // namespace kor
