// Density-matrix and signal files made and read by hand, in a folder of the test's own.
#pragma once

#include "support/spin_oracle.h"
#include "support/temp_tree.h"

#include <complex>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kor_test {

inline std::string header_bytes(int type, int num1, int num2) {
    return bytes_of(std::vector<std::int32_t>{type, num1, num2});
}

inline std::string complex_bytes(const std::vector<std::complex<double>>& values) {
    return bytes_of(values);
}

/// "dm.bin" with these matrices, row by row.
inline void write_density_file(int type, int n, int count, const std::vector<Dense>& matrices) {
    std::string bytes = header_bytes(type, n, count);
    for (const Dense& matrix : matrices)
        for (Eigen::Index r = 0; r < matrix.rows(); ++r)
            for (Eigen::Index c = 0; c < matrix.cols(); ++c)
                bytes += complex_bytes({matrix(r, c)});
    write_file("dm.bin", bytes);
}

/// A binary data file of complex rows taken apart.
struct SignalFile {
    std::int32_t header[3] = {-1, -1, -1}; // type, points, signals
    std::vector<std::complex<double>> samples;
    std::complex<double> at(int signal, int point) const {
        return samples.at(static_cast<std::size_t>(signal) * static_cast<std::size_t>(header[1]) +
                          static_cast<std::size_t>(point));
    }
};

inline SignalFile read_signal_file(const std::string& name) {
    SignalFile file;
    const std::string bytes = read_file(name);
    if (bytes.size() < sizeof file.header)
        return file;
    std::memcpy(file.header, bytes.data(), sizeof file.header);
    file.samples.resize((bytes.size() - sizeof file.header) / sizeof file.samples[0]);
    std::memcpy(file.samples.data(), bytes.data() + sizeof file.header,
                file.samples.size() * sizeof file.samples[0]);
    return file;
}

} // namespace kor_test
