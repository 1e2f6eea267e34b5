// A text file of a real series in both layouts: two bytes for the number of values, then the file.
#include "kordatafileio.h"
#include "support/input.h"
#include "support/tree.h"

#include <cmath>
#include <vector>

using namespace kor;

namespace {

bool equal_to_twelve_digits(double a, double b) {
    if (!std::isfinite(a) || !std::isfinite(b))
        return std::isnan(a) == std::isnan(b);
    return std::fabs(a - b) <= 1e-12 * std::fabs(a);
}

template <class Write, class Read>
void check_round_trip(const std::vector<double>& values, Write write, Read read) {
    const auto count = static_cast<unsigned>(values.size());
    std::vector<double> again(values.size());
    kor_fuzz::require(write(count, values.data(), "y.txt") == DATAIO_OK, "what was read can be written");
    kor_fuzz::require(read(count, again.data(), "y.txt") == DATAIO_OK, "what was written can be read");
    for (std::size_t i = 0; i < values.size(); ++i)
        kor_fuzz::require(equal_to_twelve_digits(values[i], again[i]), "values come back to twelve digits");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kor_fuzz::Input input(data, size);
    const auto count = static_cast<unsigned>(input.number(0, 64));
    kor_fuzz::write_file("build/runtime/x.txt", input.rest());
    std::vector<double> values(count);
    if (AsciiIn_status(count, values.data(), "x.txt") == DATAIO_OK)
        check_round_trip(values, AsciiOut_status, AsciiIn_status);
    if (SGFileIn_status(count, values.data(), "x.txt") == DATAIO_OK)
        check_round_trip(values, SGFileOut_status, SGFileIn_status);
    return 0;
}
