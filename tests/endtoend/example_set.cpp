#include "endtoend/example_set.h"
#include "support/build_paths.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <sstream>

namespace example_oracle {

namespace fs = std::filesystem;

namespace {

Signals read_signals(const fs::path& file) {
    const std::string bytes = kor_test::read_file(file);
    std::int32_t header[3] = {};
    if (bytes.size() >= sizeof header)
        std::memcpy(header, bytes.data(), sizeof header);
    EXPECT_EQ(header[0], 1) << "type of a signal file";
    Signals out;
    out.points = header[1];
    const std::size_t count = static_cast<std::size_t>(header[1]) * static_cast<std::size_t>(header[2]);
    EXPECT_EQ(bytes.size(), sizeof header + 16 * count);
    if (bytes.size() != sizeof header + 16 * count)
        return out;
    std::vector<std::complex<double>> all(count);
    std::memcpy(static_cast<void*>(all.data()), bytes.data() + sizeof header, 16 * count);
    for (int row = 0; row < header[2]; ++row)
        out.rows.emplace_back(all.begin() + static_cast<std::ptrdiff_t>(row) * header[1],
                              all.begin() + static_cast<std::ptrdiff_t>(row + 1) * header[1]);
    return out;
}

fs::path empty_folder(const kor_test::TempTree& tree) {
    tree.make_folder("my examples");
    return tree.root() / "my examples";
}

} // namespace

ExampleSet::ExampleSet() : program_(empty_folder(tree_)) {
    for (const char* folder : {"models", "spin-systems", "sequences"})
        fs::copy(fs::path(kor_test::source_folder()) / folder, root() / folder, fs::copy_options::recursive);
}

std::string ExampleSet::command(const std::vector<std::string>& arguments) const {
    const kor_test::ProgramResult result = program_.run(arguments);
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_EQ(result.err, "");
    return result.out;
}

std::string ExampleSet::model(const std::string& name) const {
    return (root() / "models" / (name + ".kormodel")).string();
}

std::string ExampleSet::run(const std::string& name) const {
    return command({"--run-model", model(name)});
}

Signals ExampleSet::result_signals(const std::string& name) const {
    return read_signals(program_.result(name));
}

std::vector<ProfilePoint> ExampleSet::profile(const std::string& name,
                                              const std::string& operator_expression) const {
    const fs::path csv = root() / "profile.csv";
    command({"--expectation-profile", model(name), program_.result(name), operator_expression, csv.string()});
    std::istringstream in(kor_test::read_text(csv));
    std::string line;
    std::getline(in, line);
    EXPECT_EQ(line, "# index,x_cm,y_cm,z_cm,expectation_re,expectation_im");
    std::vector<ProfilePoint> out;
    while (std::getline(in, line)) {
        ProfilePoint p{};
        double re = 0, im = 0;
        int index = 0;
        EXPECT_EQ(
            std::sscanf(line.c_str(), "%d,%lf,%lf,%lf,%lf,%lf", &index, &p.x_cm, &p.y_cm, &p.z_cm, &re, &im),
            6);
        p.value = {re, im};
        out.push_back(p);
        EXPECT_EQ(index, static_cast<int>(out.size()));
    }
    return out;
}

Signals ExampleSet::voxel_signal(const std::string& name, int voxel) const {
    const fs::path output = root() / "voxel.bin";
    command({"--voxel-signal", model(name), program_.result(name), std::to_string(voxel), output.string()});
    return read_signals(output);
}

} // namespace example_oracle
