// A pulse waveform file: two bytes for the number of samples (from -1 to above the limit), one for the
// layout, then the file.
#include "../tests/support/finite_doubles.h"
#include "korlimits.h"
#include "rfwaveformfile.h"
#include "support/input.h"
#include "support/tree.h"

#include <algorithm>
#include <vector>

using namespace kor;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kor_fuzz::Input input(data, size);
    const int samples = input.number(-1, KOR_MAX_RF_POINTS + 1);
    const int blocks = input.byte() % 2 == 0 ? 2 : 5;
    const std::string bytes = input.rest();
    static const std::string file = kor_fuzz::tree() + "/x.bin";
    kor_fuzz::write_file("x.bin", bytes);

    const std::size_t length = static_cast<std::size_t>(std::max(samples, 0));
    // Never without an element: callers hand over arrays, not null pointers.
    std::vector<std::vector<double>> values(5, std::vector<double>(std::max<std::size_t>(length, 1)));
    double* arrays[5];
    for (std::size_t b = 0; b < 5; ++b)
        arrays[b] = values[b].data();
    const bool whole = samples >= 0 && samples <= KOR_MAX_RF_POINTS &&
                       bytes.size() >= length * sizeof(double) * static_cast<std::size_t>(blocks);
    kor_fuzz::require(read_waveform_blocks(file.c_str(), samples, blocks, arrays) == (whole ? 1 : 0),
                      "a file is read when, and only when, it holds every block");
    if (!whole)
        return 0;
    const std::string copy = kor_fuzz::tree() + "/copy.bin";
    const int written = blocks == 2 ? BinArrayOut2D(samples, arrays[0], arrays[1], copy.c_str())
                                    : BinArrayOut(&samples, arrays[0], arrays[1], arrays[2], arrays[3],
                                                  arrays[4], copy.c_str());
    kor_fuzz::require(written == 1, "what was read can be written");
    kor_fuzz::require(kor_fuzz::read_file("copy.bin") ==
                          bytes.substr(0, length * sizeof(double) * static_cast<std::size_t>(blocks)),
                      "writing what was read gives the same bytes");
    if (blocks == 2)
        kor_fuzz::require(koropt_load_waveform_xy(file.c_str(), samples, arrays[0], arrays[1]) ==
                              (samples >= 1 && kor_test::holds_finite_doubles(bytes, 2 * length)),
                          "the optimiser's reader takes the same files whose samples are finite");
    return 0;
}
