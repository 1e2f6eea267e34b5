// Saving and loading again, over random models.
#include "model_set.h"

#include "korplatform.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>

using namespace kor;
using namespace kor_test;

namespace {

class RandomModels {
public:
    explicit RandomModels(unsigned seed) : engine_(seed) {}

    int integer(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }

    /// A number that 15 significant digits hold exactly, over 20 orders of magnitude.
    double real() {
        char text[40];
        const double value = std::uniform_real_distribution<double>(-1.0, 1.0)(engine_);
        std::snprintf(text, sizeof text, "%.15g", value * std::pow(10.0, integer(-10, 10)));
        return std::strtod(text, nullptr);
    }

    std::string words(int longest) {
        static const std::string letters = "abcdefghijklmnopqrstuvwxyz0123456789:;,.-_+*/()=[]";
        std::string text;
        for (int left = integer(0, longest); left > 0; --left)
            text += integer(0, 7) == 0 && !text.empty() && text.back() != ' ' && left > 1
                        ? ' '
                        : letters[static_cast<std::size_t>(integer(0, static_cast<int>(letters.size()) - 1))];
        return text;
    }

    Model model() {
        Model model;
        KORSpinSystemDef_Init(&model.spin);
        KORPulseSequenceDef_Init(&model.seq);
        KORRunConfig_Init(&model.cfg);
        fill(model.spin);
        fill(model.seq);
        fill(model.cfg);
        return model;
    }

private:
    void fill(KORSpinSystemDef& spin) {
        spin.nspins = integer(1, 8);
        int dimension = 1;
        for (int i = 1; i <= spin.nspins; ++i) {
            const int room = 256 / dimension / (1 << (spin.nspins - i));
            spin.spin_quantum_numbers[i] = integer(1, std::min(room - 1, 4));
            dimension *= spin.spin_quantum_numbers[i] + 1;
            spin.relative_intensities[i] = real();
            spin.resonance_offsets_hz[i] = real();
            for (int j = 1; j < i; ++j)
                spin.j_hz[i][j] = spin.j_hz[j][i] = integer(0, 2) == 0 ? 0.0 : real();
        }
        spin.coupling_mode = integer(-3, 3);
    }

    void fill(KORPulseSequenceDef& seq) {
        seq.sequence_type = integer(1, 2);
        seq.sector_count = integer(1, 20);
        for (int k = 1; k <= seq.sector_count; ++k) {
            KORPulseSectorDef& sector = seq.sectors[k];
            sector.sector_type = seq.sequence_type == 1 ? 1 : integer(1, 2);
            sector.number_of_timepoints = integer(1, 8192);
            sector.number_of_evolpoints = seq.sequence_type == 1 ? 1 : integer(1, 8192);
            sector.total_duration_s = std::fabs(real()) + 1e-12;
            sector.total_duration_s = std::strtod(rounded(sector.total_duration_s).c_str(), nullptr);
            sector.offset_frequency_hz = real();
            copy_truncated("wave.bin", sector.pulse_filename, sizeof sector.pulse_filename);
            copy_truncated(words(511).c_str(), sector.remark, sizeof sector.remark);
        }
    }

    void fill(KORRunConfig& cfg) {
        for (int* count : {&cfg.ndx, &cfg.ndy, &cfg.ndz})
            *count = integer(1, 256);
        for (double* origin : {&cfg.x0_cm, &cfg.y0_cm, &cfg.z0_cm})
            *origin = real();
        for (double* step : {&cfg.dx_cm, &cfg.dy_cm, &cfg.dz_cm})
            *step = std::fabs(real());
    }

    static std::string rounded(double value) {
        char text[40];
        std::snprintf(text, sizeof text, "%.15g", value);
        return text;
    }

    std::mt19937 engine_;
};

void expect_equal(const KORSpinSystemDef& a, const KORSpinSystemDef& b) {
    ASSERT_EQ(a.nspins, b.nspins);
    EXPECT_EQ(a.coupling_mode, b.coupling_mode);
    for (int i = 0; i <= KOR_MAX_SPINS; ++i) {
        EXPECT_EQ(a.spin_quantum_numbers[i], b.spin_quantum_numbers[i]);
        EXPECT_EQ(a.relative_intensities[i], b.relative_intensities[i]);
        EXPECT_EQ(a.resonance_offsets_hz[i], b.resonance_offsets_hz[i]);
        for (int j = 0; j <= KOR_MAX_SPINS; ++j)
            EXPECT_EQ(a.j_hz[i][j], b.j_hz[i][j]);
    }
}

/// All but the paths of the sector files.
void expect_equal(const KORPulseSequenceDef& a, const KORPulseSequenceDef& b) {
    EXPECT_EQ(a.sequence_type, b.sequence_type);
    ASSERT_EQ(a.sector_count, b.sector_count);
    for (int k = 0; k <= KOR_MAX_SECTORS; ++k) {
        EXPECT_EQ(a.sectors[k].sector_type, b.sectors[k].sector_type);
        EXPECT_EQ(a.sectors[k].number_of_timepoints, b.sectors[k].number_of_timepoints);
        EXPECT_EQ(a.sectors[k].number_of_evolpoints, b.sectors[k].number_of_evolpoints);
        EXPECT_EQ(a.sectors[k].total_duration_s, b.sectors[k].total_duration_s);
        EXPECT_EQ(a.sectors[k].offset_frequency_hz, b.sectors[k].offset_frequency_hz);
        EXPECT_STREQ(a.sectors[k].remark, b.sectors[k].remark);
    }
}

void expect_equal(const KORRunConfig& a, const KORRunConfig& b) {
    EXPECT_EQ(a.ndx, b.ndx);
    EXPECT_EQ(a.ndy, b.ndy);
    EXPECT_EQ(a.ndz, b.ndz);
    EXPECT_EQ(a.x0_cm, b.x0_cm);
    EXPECT_EQ(a.y0_cm, b.y0_cm);
    EXPECT_EQ(a.z0_cm, b.z0_cm);
    EXPECT_EQ(a.dx_cm, b.dx_cm);
    EXPECT_EQ(a.dy_cm, b.dy_cm);
    EXPECT_EQ(a.dz_cm, b.dz_cm);
}

} // namespace

TEST(ModelRoundTrip, GivesEveryFieldBackOver200RandomModels) {
    constexpr unsigned seed = 20240611;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::printf("seed %u\n", seed);
    const TempTree tree;
    const std::string file = tree.path("models/random.kormodel");
    const std::string wave = tree.path("sequences/random/waveforms/wave.bin");
    tree.make_folder("models");
    write_file(wave, "x");
    char results[KOR_PATH_SIZE] = "";
    kor_get_runtime_results_dir(results, sizeof results);
    RandomModels random(seed);
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE("model " + std::to_string(i));
        const Model model = random.model();
        Model loaded;
        ASSERT_EQ(save_model(file, model), ok);
        ASSERT_EQ(load_model(file, loaded), ok);
        expect_equal(model.spin, loaded.spin);
        expect_equal(model.seq, loaded.seq);
        expect_equal(model.cfg, loaded.cfg);
        EXPECT_STREQ(loaded.cfg.model_name, "random");
        EXPECT_EQ(with_slashes(loaded.cfg.result_filename),
                  with_slashes(std::string(results)) + "/result.bin");
        for (int k = 1; k <= loaded.seq.sector_count; ++k)
            EXPECT_EQ(with_slashes(loaded.seq.sectors[k].pulse_filename),
                      tree.path("models/../sequences/random/waveforms/wave.bin"));
        if (HasFailure())
            break;
    }
}

TEST(ModelRoundTrip, ASecondSaveWritesTheSameBytes) {
    constexpr unsigned seed = 7;
    std::printf("seed %u\n", seed);
    const TempTree tree;
    tree.make_folder("models");
    tree.write("sequences/random/wave.bin", "x");
    const std::string file = tree.path("models/random.kormodel");
    const std::vector<std::string> names = {"models/random.kormodel", "spin-systems/random.korspin"};
    RandomModels random(seed);
    for (int i = 0; i < 20; ++i) {
        Model loaded;
        ASSERT_EQ(save_model(file, random.model()), ok);
        std::vector<std::string> first;
        for (const std::string& name : names)
            first.push_back(tree.read(name));
        ASSERT_EQ(load_model(file, loaded), ok);
        ASSERT_EQ(save_model(file, loaded), ok);
        for (std::size_t n = 0; n < names.size(); ++n)
            EXPECT_EQ(tree.read(names[n]), first[n]);
    }
}
