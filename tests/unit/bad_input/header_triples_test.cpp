// Every header (type, num1, num2) of the numbers at the limits of 32-bit integers and of the matrices, in
// front of the data of one row of 257 elements, through every reader of binary data files. The model has n =
// 4 states and three voxels, so that none of these headers fits it.
#include "binaryfilehandling.h"
#include "kor/density_file.h"
#include "kor/expectation_values.h"
#include "kor/runtime_state.h"
#include "kormodel.h"
#include "observablespectrumcalculator/signal_file.h"
#include "observablespectrumcalculator/spectrum_2d.h"
#include "observablespectrumcalculator/spectrum_files.h"
#include "support/console_script.h"
#include "support/temp_tree.h"
#include "unit/kormodel/model_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>

using namespace kor;
using namespace kor_test;

namespace {

constexpr int limits[] = {0, 1, -1, INT_MAX, INT_MIN, 257, 258};
constexpr std::size_t elements = 257; // complex numbers behind the header

struct Triple {
    int type, num1, num2;
};

std::string bytes_of_triple(const Triple& triple) {
    std::vector<double> values(2 * elements);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = 0.5 * static_cast<double>(i) - 100.0;
    return bytes_of<std::int32_t>({triple.type, triple.num1, triple.num2}) + bytes_of(values);
}

std::string numbers(const Triple& triple, const char* between_1, const char* between_2) {
    return std::to_string(triple.type) + between_1 + std::to_string(triple.num1) + between_2 +
           std::to_string(triple.num2);
}

/// Calls check(triple, bytes) for the 343 headers, with the bytes in "x.bin" of a temporary folder.
void for_all_triples(const std::function<void(const Triple&, const std::string&)>& check) {
    const TempTree tree(memory_folder());
    int checked = 0;
    for (const int type : limits)
        for (const int num1 : limits)
            for (const int num2 : limits) {
                const Triple triple = {type, num1, num2};
                const std::string bytes = bytes_of_triple(triple);
                SCOPED_TRACE(numbers(triple, " ", " "));
                tree.write("x.bin", bytes);
                check(triple, bytes);
                ++checked;
            }
    EXPECT_EQ(checked, 343);
}

void activate_two_spins_with_receiver() {
    const ModelSet set;
    write_file(set.model(), replaced(valid_model_text, "ndx: 5", "ndx: 3"));
    write_file(set.sequence(), replaced(replaced(valid_sequence_text, "timepoints: 1 1", "timepoints: 1 4"),
                                        "test\n", "adc\n"));
    write_file(set.wave(), std::string(160, '\0'));
    char message[KOR_MESSAGE_SIZE] = "";
    ASSERT_EQ(KORModel_LoadCurrentLegacyStateFromText(set.model().c_str(), message, sizeof message),
              KOR_MODEL_OK)
        << message;
}

/// Whether the data hold num2 rows of num1 points, both at least one.
bool holds_signals(const Triple& triple) {
    return triple.num1 > 0 && triple.num2 > 0 &&
           static_cast<std::size_t>(triple.num1) * static_cast<std::size_t>(triple.num2) <= elements;
}

} // namespace

TEST(HeaderTriples, AreReadAndWrittenAsTheyStand) {
    for_all_triples([](const Triple& triple, const std::string& bytes) {
        std::FILE* file = std::fopen("x.bin", "rb");
        Triple read = {7, 7, 7};
        EXPECT_EQ(ReadBinFileHeader_status(file, &read.type, &read.num1, &read.num2), BINFH_OK);
        std::fclose(file);
        EXPECT_EQ(std::memcmp(&read, &triple, sizeof read), 0);
        file = std::fopen("y.bin", "wb");
        EXPECT_EQ(WriteBinFileHeader_status(file, triple.type, triple.num1, triple.num2), BINFH_OK);
        std::fclose(file);
        EXPECT_EQ(read_file("y.bin"), bytes.substr(0, 12));
    });
}

TEST(HeaderTriples, RowsAreReadUpToLength257) {
    static CMatrix matrix;
    for_all_triples([](const Triple& triple, const std::string& bytes) {
        std::FILE* file = std::fopen("x.bin", "rb");
        std::fseek(file, 12, SEEK_SET);
        const bool fits = triple.num1 == 1 || triple.num1 == 257;
        EXPECT_EQ(read_cmatrix_row(file, triple.num1, matrix, 1), fits ? 1 : 0);
        double first = 0;
        std::memcpy(&first, bytes.data() + 12, sizeof first);
        if (fits) {
            EXPECT_EQ(matrix[1][1][1], first);
        }
        std::fseek(file, 12, SEEK_SET);
        const bool block = fits && (triple.num2 == 1 || (triple.num2 == 257 && triple.num1 == 1));
        EXPECT_EQ(read_density_matrix(file, triple.num1, triple.num2, matrix), block ? 1 : 0);
        std::fclose(file);
    });
}

TEST(HeaderTriples, CopiesDoNotLookAtThem) {
    for_all_triples([](const Triple&, const std::string& bytes) {
        EXPECT_EQ(copy_file_binary("x.bin", "y.bin"), BINFH_OK);
        EXPECT_EQ(read_file("y.bin"), bytes);
        EXPECT_EQ(copy_density_file("x.bin", "z.bin"), 1);
        EXPECT_EQ(read_file("z.bin"), bytes);
    });
}

TEST(HeaderTriples, ASectorRefusesTheStates) {
    static CMatrix matrix;
    for_all_triples([](const Triple& triple, const std::string& bytes) {
        write_file("dm.bin", bytes);
        const DensityReport report = {"Rotate3D", false};
        const ConsoleOutput console = play_console("", [&] {
            EXPECT_TRUE(resize_density_file(report, 4, 3, matrix));
            DensityStream stream;
            EXPECT_FALSE(open_density_stream(report, 4, 3, stream));
        });
        const std::string text =
            "Rotate3D: dm.bin dimensions mismatch (type=" + numbers(triple, " n=", " ndw=") +
            "), expected (0 4 3)\n";
        EXPECT_EQ(console.out, text);
        EXPECT_EQ(console.err, "");
        EXPECT_EQ(read_file("dm.bin"), bytes);
    });
}

TEST(HeaderTriples, TheReceiverRefusesTheStates) {
    for_all_triples([](const Triple& triple, const std::string& bytes) {
        write_file("dm.bin", bytes);
        const ConsoleOutput console = play_console("", [] {
            int count = 0;
            EXPECT_EQ(open_density_matrices(4, &count), nullptr);
        });
        EXPECT_EQ(console.out, "dm.bin header mismatch: ftype=" + std::to_string(triple.type) +
                                   " fn=" + std::to_string(triple.num1) + " expected n=4\n");
    });
}

TEST(HeaderTriples, TheReadOutModesRefuseThemAndNameThem) {
    activate_two_spins_with_receiver();
    for_all_triples([](const Triple& triple, const std::string&) {
        const ConsoleOutput profile =
            play_console("", [] { EXPECT_EQ(KORWriteExpectationProfile("x.bin", "Ix", "p.csv"), 0); });
        EXPECT_EQ(profile.err, "Expectation profile: incompatible density header type=" +
                                   numbers(triple, " n=", " points=") + "; expected type=0 n=4.\n");
        const ConsoleOutput signal =
            play_console("", [] { EXPECT_EQ(KORWriteVoxelSignal("x.bin", 1, "s.bin"), 0); });
        EXPECT_EQ(signal.err, "Voxel signal: incompatible density file or point index (type=" +
                                  numbers(triple, " n=", " points=") + " requested=1 expected_n=4).\n");
        EXPECT_FALSE(std::filesystem::exists("p.csv"));
        EXPECT_FALSE(std::filesystem::exists("s.bin"));
        EXPECT_FALSE(std::filesystem::exists("dm.bin"));
    });
}

TEST(HeaderTriples, SpectrumTablesNeedEverySignalThatIsPromised) {
    for_all_triples([](const Triple& triple, const std::string& bytes) {
        write_file("korsign.bin", bytes);
        int written = 0;
        const ConsoleOutput console =
            play_console("", [&] { written = write_spectrum_csv_files("td.csv", "fd.csv", 0.1); });
        EXPECT_EQ(written, holds_signals(triple) ? 1 : 0);
        if (holds_signals(triple)) {
            const std::string table = read_file("td.csv");
            EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 1 + triple.num1 * triple.num2);
        } else if (triple.num1 > 0 && triple.num2 > 0) {
            EXPECT_NE(console.out + console.err, "");
        }
    });
}

TEST(HeaderTriples, TransposingTurnsWholeFilesAlone) {
    for_all_triples([](const Triple& triple, const std::string& bytes) {
        const ConsoleOutput console = play_console("", [] { TransposeDataMatrix("x.bin", "y.bin"); });
        const bool empty = triple.num1 <= 0 || triple.num2 <= 0;
        if (holds_signals(triple)) {
            // One row or one column: the points keep their order.
            const std::size_t points =
                static_cast<std::size_t>(triple.num1) * static_cast<std::size_t>(triple.num2);
            EXPECT_EQ(read_file("y.bin"), bytes_of<std::int32_t>({triple.type, triple.num2, triple.num1}) +
                                              bytes.substr(12, 16 * points));
            EXPECT_EQ(console.out, "");
        } else if (empty) {
            EXPECT_EQ(read_file("y.bin"), bytes_of<std::int32_t>({triple.type, triple.num2, triple.num1}));
        } else {
            EXPECT_NE(console.out + console.err, "");
            EXPECT_EQ(read_file("y.bin"), "");
        }
    });
}

TEST(HeaderTriples, TheTransformAndTheRawWriterEnd) {
    for_all_triples([](const Triple& triple, const std::string& bytes) {
        write_file("korsign.bin", bytes);
        play_console("", Calc2Dfft);
        play_console("", DispTransvSign);
        EXPECT_EQ(read_file("spectra.bin").substr(0, 12), bytes.substr(0, 12));
        EXPECT_EQ(write_pv_wave_file("w.bin"), 1);
        const std::string wave = read_file("w.bin");
        ASSERT_GE(wave.size(), 1024U);
        std::int32_t counts[2];
        std::memcpy(counts, wave.data() + 16, sizeof counts);
        EXPECT_EQ(counts[0], triple.num1);
        EXPECT_EQ(counts[1], triple.num2);
    });
}
