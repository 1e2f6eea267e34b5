// A receiver signal file "korsign.bin" through the transforms and the writers of spectra.
#include "observablespectrumcalculator/spectrum_2d.h"
#include "observablespectrumcalculator/spectrum_files.h"
#include "support/input.h"
#include "support/tree.h"

#include <algorithm>
#include <cstring>

using namespace kor;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = kor_fuzz::Input(data, size).rest();
    kor_fuzz::write_file("build/runtime/korsign.bin", bytes);
    DispTransvSign();
    TransposeDataMatrix("korsign.bin", "sort.bin");
    TransposeDataMatrix("sort.bin", "back.bin");
    int header[3] = {};
    std::memcpy(header, bytes.data(), std::min(bytes.size(), sizeof header));
    const bool small = header[1] >= 1 && header[1] < 4096 && header[2] >= 1 && header[2] < 4096;
    const std::size_t whole =
        12 + 16 * static_cast<std::size_t>(header[1]) * static_cast<std::size_t>(header[2]);
    if (small && bytes.size() >= whole)
        kor_fuzz::require(kor_fuzz::read_file("build/runtime/back.bin") == bytes.substr(0, whole),
                          "transposing twice gives the file again");
    Calc2Dfft();
    const int written = write_spectrum_csv_files("x_td.csv", "x_fd.csv", 0.5);
    kor_fuzz::require(!written || (small && bytes.size() >= whole),
                      "tables are written of whole files alone");
    write_pv_wave_file("x.wave");
    return 0;
}
