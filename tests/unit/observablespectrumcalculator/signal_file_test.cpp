#include "observablespectrumcalculator/signal_file.h"

#include "kor/smoke_check_mode.h"
#include "support/constants.h"
#include "support/signal_files.h"

#include <gtest/gtest.h>

#include <limits>

namespace kor {
namespace {

using kor_test::Dense;
using kor_test::from_dense;
using kor_test::NOT_A_NUMBER;
using kor_test::read_signal_file;
using kor_test::SignalFile;
using kor_test::TempTree;
using kor_test::TWO_PI;
using kor_test::write_density_file;

/// A system whose signals are generated, with the basis that the listings need.
class Generator {
public:
    explicit Generator(const std::vector<int>& two_i, const Dense& static_hamiltonian)
        : n_(static_cast<int>(static_hamiltonian.rows())) {
        KOR_SetSmokeCheckMode(1);
        std::fill(Ilist_, Ilist_ + KOR_MAX_SPINS + 1, 0);
        std::copy(two_i.begin(), two_i.end(), Ilist_ + 1);
        MakeKets(ket_, Ilist_);
        from_dense(static_hamiltonian, Istat_);
        from_dense(kor_test::total(two_i, 'x'), Ixtot_);
        from_dense(kor_test::total(two_i, 'y'), Iytot_);
        from_dense(kor_test::total(two_i, 'z'), Iztot_);
    }

    double run(int points, double acq_time, double offset_hz = 0.0, const char* name = "signal.bin") {
        return SeparateSpectra_GenerateSignalWithParams(&n_, points, acq_time, offset_hz, name, densmat_,
                                                        Istat_, Ixtot_, Iytot_, Iztot_, ket_, Ilist_);
    }

    /// The same with what is printed on standard output and standard error.
    double run_printing(std::string& out, std::string& err, int points, double acq_time,
                        const char* name = "signal.bin") {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const double result = run(points, acq_time, 0.0, name);
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
        return result;
    }

    double run_without_dimension() {
        return SeparateSpectra_GenerateSignalWithParams(nullptr, 4, 1.0, 0.0, "signal.bin", densmat_, Istat_,
                                                        Ixtot_, Iytot_, Iztot_, ket_, Ilist_);
    }

private:
    static CMatrix densmat_, Istat_, Ixtot_, Iytot_, Iztot_;
    static SpinKet ket_;
    SpinIList Ilist_;
    int n_;
};
CMatrix Generator::densmat_, Generator::Istat_, Generator::Ixtot_, Generator::Iytot_, Generator::Iztot_;
SpinKet Generator::ket_;

Dense one_x() {
    return kor_test::single_spin(1, 'x');
}
Dense one_z() {
    return kor_test::single_spin(1, 'z');
}

TEST(SignalFile, HoldsTypePointsAndSignalsThenPairs) {
    const TempTree folder;
    write_density_file(0, 2, 2, {one_x(), 2.0 * one_x()});
    Generator generator({1}, TWO_PI * 5.0 * one_z());
    EXPECT_EQ(generator.run(8, 0.1), 0.1);
    EXPECT_EQ(folder.read("signal.bin").size(), 12U + 2 * 8 * 16U);
    const SignalFile file = read_signal_file("signal.bin");
    EXPECT_EQ(file.header[0], 1);
    EXPECT_EQ(file.header[1], 8);
    EXPECT_EQ(file.header[2], 2);
    for (int s = 0; s < 2; ++s)
        for (int k = 0; k < 8; ++k) {
            const double phase = TWO_PI * 5.0 * k * 0.1 / 8;
            const std::complex<double> expected = std::polar(0.5 * (s + 1), -phase);
            EXPECT_LT(std::abs(file.at(s, k) - expected), 1e-14) << "signal " << s << " point " << k;
        }
}

TEST(SignalFile, ReceiverOffsetAddsToTheSpinsOffset) {
    const TempTree folder;
    write_density_file(0, 2, 1, {one_x()});
    Generator generator({1}, TWO_PI * 40.0 * one_z());
    EXPECT_EQ(generator.run(64, 0.5, 25.0), 0.5);
    const SignalFile file = read_signal_file("signal.bin");
    for (int k = 0; k < 64; ++k) {
        const std::complex<double> expected = std::polar(0.5, -TWO_PI * 65.0 * k * 0.5 / 64);
        EXPECT_LT(std::abs(file.at(0, k) - expected), 1e-12) << k;
    }
}

TEST(SignalFile, OnePointIsTheStateAtTheStart) {
    const TempTree folder;
    write_density_file(0, 2, 1, {one_x()});
    Generator generator({1}, 1000.0 * one_z());
    EXPECT_EQ(generator.run(1, 2.0), 2.0);
    EXPECT_EQ(folder.read("signal.bin"), kor_test::header_bytes(1, 1, 1) + kor_test::complex_bytes({0.5}));
}

TEST(SignalFile, IsNamedKorsignWithoutAName) {
    const TempTree folder;
    write_density_file(0, 2, 1, {one_x()});
    Generator generator({1}, one_z());
    EXPECT_EQ(generator.run(2, 1.0, 0.0, nullptr), 1.0);
    EXPECT_TRUE(folder.exists("korsign.bin"));
    std::filesystem::remove("korsign.bin");
    EXPECT_EQ(generator.run(2, 1.0, 0.0, ""), 1.0);
    EXPECT_TRUE(folder.exists("korsign.bin"));
}

TEST(SignalFile, NonFiniteSamplesAreWrittenAsZero) {
    const TempTree folder;
    Dense rho = one_x();
    rho(0, 1) = NOT_A_NUMBER;
    write_density_file(0, 2, 1, {rho});
    Generator generator({1}, 10.0 * one_z());
    EXPECT_EQ(generator.run(3, 1.0), 1.0);
    EXPECT_EQ(folder.read("signal.bin"),
              kor_test::header_bytes(1, 3, 1) + kor_test::complex_bytes({0.0, 0.0, 0.0}));
}

TEST(SignalFile, RefusesParametersWithoutTouchingFiles) {
    const TempTree folder;
    write_density_file(0, 2, 1, {one_x()});
    Generator generator({1}, one_z());
    EXPECT_EQ(generator.run_without_dimension(), 0.0);
    EXPECT_EQ(generator.run(0, 1.0), 0.0);
    EXPECT_EQ(generator.run(-5, 1.0), 0.0);
    EXPECT_EQ(generator.run(4, 0.0), 0.0);
    EXPECT_EQ(generator.run(4, -1.0), 0.0);
    EXPECT_EQ(generator.run(4, NOT_A_NUMBER), 0.0);
    EXPECT_FALSE(folder.exists("signal.bin"));
}

TEST(SignalFile, NeedsDensityMatrices) {
    const TempTree folder;
    Generator generator({1}, one_z());
    std::string out, err;
    EXPECT_EQ(generator.run_printing(out, err, 4, 1.0), 0.0);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "fopen(dm.bin): No such file or directory\n");
    EXPECT_FALSE(folder.exists("signal.bin"));
}

TEST(SignalFile, RefusesASignalFileOrAnotherDimension) {
    const TempTree folder;
    Generator generator({1}, one_z());
    std::string out, err;
    write_density_file(1, 2, 1, {one_x()});
    EXPECT_EQ(generator.run_printing(out, err, 4, 1.0), 0.0);
    EXPECT_EQ(out, "dm.bin header mismatch: ftype=1 fn=2 expected n=2\n");
    write_density_file(0, 4, 1, {Dense::Identity(4, 4)});
    EXPECT_EQ(generator.run_printing(out, err, 4, 1.0), 0.0);
    EXPECT_EQ(out, "dm.bin header mismatch: ftype=0 fn=4 expected n=2\n");
    folder.write("dm.bin", "short");
    EXPECT_EQ(generator.run_printing(out, err, 4, 1.0), 0.0);
    EXPECT_EQ(out, "dm.bin header mismatch: ftype=0 fn=0 expected n=2\n");
    EXPECT_FALSE(folder.exists("signal.bin"));
}

TEST(SignalFile, TypesOtherThanOneAreDensityMatrices) {
    const TempTree folder;
    write_density_file(-3, 2, 1, {one_x()});
    Generator generator({1}, one_z());
    EXPECT_EQ(generator.run(2, 1.0), 1.0);
}

TEST(SignalFile, EndsShortWhereTheMatricesEnd) {
    const TempTree folder;
    Generator generator({1}, 10.0 * one_z());
    std::string out, err;
    for (const int announced : {3, std::numeric_limits<int>::max()}) {
        write_density_file(0, 2, announced, {one_x(), one_x()});
        EXPECT_EQ(generator.run_printing(out, err, 4, 0.25), 0.25);
        EXPECT_EQ(out, ">>> READ BINARY FILE ERROR (dm.bin) <<<\n");
        const SignalFile file = read_signal_file("signal.bin");
        EXPECT_EQ(file.header[2], announced);
        EXPECT_EQ(file.samples.size(), 8U);
    }
}

TEST(SignalFile, ANegativeCountHoldsNoSignals) {
    const TempTree folder;
    write_density_file(0, 2, -7, {one_x()});
    Generator generator({1}, one_z());
    EXPECT_EQ(generator.run(4, 1.0), 1.0);
    EXPECT_EQ(folder.read("signal.bin"), kor_test::header_bytes(1, 4, -7));
}

TEST(SignalFile, SaysWhenTheOutputCannotBeMade) {
    const TempTree folder;
    write_density_file(0, 2, 1, {one_x()});
    Generator generator({1}, one_z());
    std::string out, err;
    EXPECT_EQ(generator.run_printing(out, err, 4, 1.0, "no-such-folder/signal.bin"), 0.0);
    EXPECT_EQ(err, "fopen(signal output): No such file or directory\n");
    EXPECT_EQ(out, "");
}

TEST(SignalFile, DoesNotReplaceTheStatesItIsCalculatedFrom) {
    const TempTree folder;
    write_density_file(0, 2, 1, {one_x()});
    const std::string states = folder.read("dm.bin");
    Generator generator({1}, one_z());
    std::string out, err;
    for (const std::string& name : {std::string("dm.bin"), std::string("./dm.bin"), folder.path("dm.bin")}) {
        EXPECT_EQ(generator.run_printing(out, err, 4, 1.0, name.c_str()), 0.0);
        EXPECT_EQ(err, name + ": a signal cannot replace the states that it is calculated from\n");
        EXPECT_EQ(folder.read("dm.bin"), states);
    }
}

TEST(SignalFile, ListsASingleMatrixOutsideTheQuietMode) {
    const TempTree folder;
    Generator generator({1}, TWO_PI * 10.0 * one_z());
    std::string out, err;
    write_density_file(0, 2, 1, {one_x()});
    KOR_SetSmokeCheckMode(0);
    EXPECT_EQ(generator.run_printing(out, err, 2, 1.0), 1.0);
    EXPECT_EQ(out, "\nKOR ADC-start per-spin transverse expectations\n"
                   "  columns: spin  <Ix>_re  <Iy>_re\n"
                   "   1   7.071067811865e-01   0.000000000000e+00\n"
                   "\nKOR legacy DoSpectrum component list: Ix absorption channel\n"
                   "  COS components: amplitude * cos(2*pi*frequency_hz*t)\n"
                   "     5.000000000000e-01   10\n"
                   "  SIN components: amplitude * sin(2*pi*frequency_hz*t)\n"
                   "\nKOR legacy DoSpectrum component list: Iy dispersion channel\n"
                   "  COS components: amplitude * cos(2*pi*frequency_hz*t)\n"
                   "  SIN components: amplitude * sin(2*pi*frequency_hz*t)\n"
                   "    -5.000000000000e-01   10\n");
    KOR_SetSmokeCheckMode(1);
    generator.run_printing(out, err, 2, 1.0);
    EXPECT_EQ(out, "");
    write_density_file(0, 2, 2, {one_x(), one_x()});
    KOR_SetSmokeCheckMode(0);
    generator.run_printing(out, err, 2, 1.0);
    EXPECT_EQ(out, "");
}

TEST(ReceiverHamiltonian, IsTheNegativeOfStaticPlusOffset) {
    static CMatrix Istat, Iztot, hamiltonian;
    const Dense H = 3.0 * kor_test::single_spin(1, 'x');
    from_dense(H, Istat);
    from_dense(one_z(), Iztot);
    make_receiver_hamiltonian(2, Istat, -12.5, Iztot, hamiltonian);
    EXPECT_LT(kor_test::distance(hamiltonian, Dense(-H + TWO_PI * 12.5 * one_z())), 1e-13);
}

TEST(SumDensityMatrices, AddsWithoutDividing) {
    const TempTree folder;
    static CMatrix sum;
    write_density_file(0, 2, 3, {one_x(), 2.0 * one_x(), one_z()});
    int count = 0;
    std::FILE* const in = open_density_matrices(2, &count);
    ASSERT_NE(in, nullptr);
    ASSERT_EQ(count, 3);
    EXPECT_EQ(sum_density_matrices(in, 2, count, sum), 1);
    EXPECT_LT(kor_test::distance(sum, Dense(3.0 * one_x() + one_z())), 1e-15);
    testing::internal::CaptureStdout();
    EXPECT_EQ(sum_density_matrices(in, 2, 1, sum), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), ">>> READ BINARY FILE ERROR (dm.bin) <<<\n");
    std::fclose(in);
}

} // namespace
} // namespace kor
