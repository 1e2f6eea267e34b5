// file_floor: the CPU time that the operating system takes for the bytes of W2 and W5 alone: the same files
// made, read, written, copied and renamed in the working directory, in blocks of 256 kB, with no physics
// between, without and with an older result that they replace. No whole run with files can be faster.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

constexpr std::size_t kHeader = 12;
std::vector<char> g_block(262144, 'x');

void write_file(const char* name, std::size_t bytes) {
    std::FILE* file = std::fopen(name, "wb");
    for (std::size_t done = 0; file && done < bytes; done += g_block.size()) {
        std::fwrite(g_block.data(), 1, std::min(g_block.size(), bytes - done), file);
    }
    if (!file || std::fclose(file) != 0) {
        std::perror(name);
    }
}

void read_file(const char* name) {
    std::FILE* file = std::fopen(name, "rb");
    while (file && std::fread(g_block.data(), 1, g_block.size(), file) > 0) {
    }
    if (file) {
        std::fclose(file);
    }
}

/// A whole file takes the place of an older one at once.
void replace_file(const char* name, std::size_t bytes) {
    write_file("new", bytes);
    std::rename("new", name);
}

/// 2 spins: a state has 256 bytes.
void w2() {
    constexpr std::size_t states = kHeader + 32 * 32 * 32 * 256;
    replace_file("dm.bin", states);
    for (int sector = 0; sector < 3; ++sector) {
        read_file("dm.bin");
        write_file("store", states);
        std::rename("store", "dm.bin");
    }
}

void w5() {
    constexpr std::size_t states = kHeader + 256 * 256;
    replace_file("dm.bin", states);
    for (int sector = 0; sector < 3; ++sector) {
        read_file("dm.bin");
        write_file("store", states);
        read_file("store");
        replace_file("dm.bin", states);
        std::remove("store");
    }
    read_file("dm.bin");
    replace_file("korsign.bin", kHeader + 256 * 1024 * 16);
}

void remove_files() {
    for (const char* name : {"dm.bin", "korsign.bin"}) {
        std::remove(name);
    }
}

void leave_files() {}

/// Best mean of 10 runs, ms; what comes `before` each is not measured.
double best_time(void (*work)(), void (*before)()) {
    double best = 1e300;
    for (int repeat = 0; repeat < 20; ++repeat) {
        double total = 0.0;
        for (int k = 0; k < 10; ++k) {
            before();
            const std::clock_t start = std::clock();
            work();
            total += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        }
        best = std::min(best, 100.0 * total);
    }
    return best;
}

void print_times(const char* name, void (*work)()) {
    std::printf("files of %s alone: %.2f ms, over an older result %.2f ms\n", name,
                best_time(work, remove_files), best_time(work, leave_files));
}

} // namespace

int main() {
    print_times("W2", w2);
    print_times("W5", w5);
    remove_files();
}
