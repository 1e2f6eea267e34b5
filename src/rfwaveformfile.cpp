#include "rfwaveformfile.h"

#include "korlimits.h"
#include "korplatform.h"
#include "wholefile.h"

#include <cmath>
#include <cstddef>
#include <cstdio>

namespace kor {

namespace {

struct Block {
    const double* values;
    const char* label;
};

int write_blocks(const char* name, int count, const Block* blocks, int block_count) {
    WholeFile out;
    if (!open_whole_file(name, "wb", out)) {
        std::perror(name);
        return 0;
    }
    // Unbuffered: each block is one write, and a failure belongs to the block that met it.
    std::setvbuf(out.file, nullptr, _IONBF, 0);
    const std::size_t wanted = count > 0 ? static_cast<std::size_t>(count) : 0;
    int complete = 1;
    for (int b = 0; b < block_count; ++b) {
        if (std::fwrite(blocks[b].values, sizeof(double), wanted, out.file) != wanted) {
            std::printf(" >>> WRITE TO BINARY FILE ERROR (%s) <<< \n", blocks[b].label);
            complete = 0;
        }
    }
    if (!complete) {
        drop_whole_file(out);
    } else if (!keep_whole_file(out)) {
        std::perror(name);
        complete = 0;
    }
    return complete;
}

} // namespace

int BinArrayOut(const int* ap, const double* xb, const double* yb, const double* gx, const double* gy,
                const double* gz, const char* name) {
    const Block blocks[] = {{xb, "xb"}, {yb, "yb"}, {gx, "gx"}, {gy, "gy"}, {gz, "gz"}};
    return write_blocks(name, *ap, blocks, 5);
}

int BinArrayOut2D(int ap, const double* xb, const double* yb, const char* name) {
    const Block blocks[] = {{xb, "xb"}, {yb, "yb"}};
    return write_blocks(name, ap, blocks, 2);
}

int first_bad_sample(const double* const* arrays, int blocks, int N) {
    for (int l = 0; l < N; ++l) {
        for (int b = 0; b < blocks; ++b) {
            if (!std::isfinite(arrays[b][l])) {
                return l;
            }
        }
    }
    return -1;
}

int read_waveform_blocks(const char* name, int N, int blocks, double* const* arrays) {
    if (!name || !*name || N < 0 || N > KOR_MAX_RF_POINTS) {
        return 0;
    }
    std::FILE* file = platform_open(name, "rb");
    if (!file) {
        std::perror(name);
        return 0;
    }
    const std::size_t wanted = static_cast<std::size_t>(N);
    bool complete = true;
    for (int b = 0; b < blocks && complete; ++b) {
        complete = std::fread(arrays[b], sizeof(double), wanted, file) == wanted;
    }
    if (std::ferror(file)) {
        std::perror(name);
    } else if (!complete) {
        std::fprintf(stderr, "%s: too short for %d blocks of %d samples\n", name, blocks, N);
    }
    std::fclose(file);
    return complete ? 1 : 0;
}

int koropt_load_waveform_xy(const char* path, int ap_local, double* bx, double* by) {
    if (!bx || !by || ap_local < 1) {
        return 0;
    }
    double* const arrays[] = {bx, by};
    if (!read_waveform_blocks(path, ap_local, 2, arrays)) {
        return 0;
    }
    const int l = first_bad_sample(arrays, 2, ap_local);
    if (l >= 0) {
        std::printf("Bad pulse sample at l=%d: xb=%g yb=%g\n", l, bx[l], by[l]);
    }
    return l < 0 ? 1 : 0;
}

} // namespace kor
