// Adds up all density matrices of a result file of kor:
//     sum-voxels DENSITY OUTPUT
// writes a density-matrix file with their sum as its only matrix. kor --voxel-signal MODEL OUTPUT 1 SIGNAL
// then gives the signal of the whole volume. Exit status 0 or 1.
#include "binaryfilehandling.h"
#include "korplatform.h"

#include <cstdio>
#include <vector>

namespace {

using namespace kor;

/// The sum, 2 n^2 doubles in the order of the file; empty when it cannot be read.
std::vector<double> read_sum(std::FILE* file, int* n) {
    int type = 0, count = 0;
    std::vector<double> sum;
    if (ReadBinFileHeader_status(file, &type, n, &count) != BINFH_OK || type != 0 || *n < 1 || count < 1)
        return sum;
    sum.assign(2 * static_cast<std::size_t>(*n) * static_cast<std::size_t>(*n), 0.0);
    std::vector<double> state(sum.size());
    for (int k = 0; k < count; ++k) {
        if (std::fread(state.data(), sizeof(double), state.size(), file) != state.size())
            return {};
        for (std::size_t e = 0; e < sum.size(); ++e)
            sum[e] += state[e];
    }
    return sum;
}

bool write_one(const char* path, int n, const std::vector<double>& sum) {
    std::FILE* file = platform_open(path, "wb");
    if (!file)
        return false;
    const bool written = WriteBinFileHeader_status(file, 0, n, 1) == BINFH_OK &&
                         std::fwrite(sum.data(), sizeof(double), sum.size(), file) == sum.size();
    return std::fclose(file) == 0 && written;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: sum-voxels DENSITY OUTPUT\n");
        return 1;
    }
    std::FILE* file = platform_open(argv[1], "rb");
    if (!file) {
        std::perror(argv[1]);
        return 1;
    }
    int n = 0;
    const std::vector<double> sum = read_sum(file, &n);
    std::fclose(file);
    if (sum.empty()) {
        std::fprintf(stderr, "%s is no complete density-matrix file\n", argv[1]);
        return 1;
    }
    if (!write_one(argv[2], n, sum)) {
        std::perror(argv[2]);
        return 1;
    }
    return 0;
}
