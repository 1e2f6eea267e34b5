// Runs a target on the files that are named, or on every file of the folders that are named: the kept corpus
// as an ordinary test, with any compiler.
#include "support/input.h"
#include "support/tree.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> files_of(int argc, char** argv) {
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        const fs::path named = fs::absolute(argv[i]);
        if (!fs::is_directory(named))
            files.push_back(named);
        else
            for (const fs::directory_entry& entry : fs::directory_iterator(named))
                files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void say(int stream, const std::string& text) {
    if (write(stream, text.data(), text.size()) < 0)
        _exit(2);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<fs::path> files = files_of(argc, argv);
    const int report = dup(STDERR_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    for (const fs::path& file : files) {
        say(report, file.filename().string() + "\n");
        std::ifstream in(file, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    say(report, std::to_string(files.size()) + " inputs\n");
    return files.empty() ? 1 : 0;
}
