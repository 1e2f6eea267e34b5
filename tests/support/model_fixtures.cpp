#include "support/model_fixtures.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "kor/spin_system.h"
#include "support/temp_tree.h"

#include <cstring>

namespace kor_test {

void define_spins(const std::vector<double>& offsets_hz, double j_hz) {
    kor::RuntimeState& state = kor::g_runtime;
    kor::init();
    state.Nspins = static_cast<int>(offsets_hz.size());
    for (int i = 1; i <= kor::KOR_MAX_SPINS; ++i) {
        const bool used = i <= state.Nspins;
        state.quantnum[i] = used ? 1 : 0;
        state.relspinamp[i] = used ? 1.0 : 0.0;
        state.resofreqs[i] = used ? offsets_hz[static_cast<std::size_t>(i - 1)] : 0.0;
        for (int j = 1; j <= kor::KOR_MAX_SPINS; ++j)
            state.jc[i][j] = 0.0;
    }
    state.Jexact = 1;
    state.Jcount = 1;
    state.couplings[1] = j_hz;
    state.nos = 0;
    kor::KOR_SetSmokeCheckMode(1);
    kor::KOR_RebuildSpinSystemFromPulseSequenceGlobals();
    kor::KOR_SetSmokeCheckMode(0);
}

DenseMatrix bloch_matrix(double a, double b, double c) {
    return {{c / 2, 0}, {a / 2, -b / 2}, {a / 2, b / 2}, {-c / 2, 0}};
}

std::string density_file(int type, int n, int points, const std::vector<DenseMatrix>& matrices) {
    std::string bytes = bytes_of<int>({type, n, points});
    for (const DenseMatrix& matrix : matrices)
        for (const std::complex<double>& element : matrix)
            bytes += bytes_of<double>({element.real(), element.imag()});
    return bytes;
}

std::vector<double> reals_behind_header(const std::string& bytes) {
    constexpr std::size_t header_size = 12;
    if (bytes.size() < header_size)
        return {};
    std::vector<double> values((bytes.size() - header_size) / sizeof(double));
    std::memcpy(values.data(), bytes.data() + header_size, values.size() * sizeof(double));
    return values;
}

} // namespace kor_test
