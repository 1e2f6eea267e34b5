#include "support/composer_state.h"

#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace kor_test {

namespace {

template <typename T> void zero(T& array) {
    std::memset(&array, 0, sizeof array);
}

} // namespace

void fresh_state() {
    kor::RuntimeState& rt = kor::g_runtime;
    rt.Nspins = rt.n = rt.Jexact = rt.Jcount = rt.sequencetype = rt.nos = rt.sector = 0;
    zero(rt.quantnum);
    zero(rt.relspinamp);
    zero(rt.resofreqs);
    zero(rt.couplings);
    zero(rt.jc);
    zero(rt.sectype);
    zero(rt.noti);
    zero(rt.nevo);
    zero(rt.sectdur);
    zero(rt.statoff);
    zero(rt.fnames);
    zero(rt.remarks);
    zero(rt.resultflnm);
    rt.x0 = rt.y0 = rt.z0 = rt.dx = rt.dy = rt.dz = 0;
    rt.systemset = rt.sectorset = rt.offsetset = 0;
    rt.ap = 0;
    rt.h = rt.ti = 0;
    for (auto* samples : {&rt.xb, &rt.yb, &rt.gx, &rt.gy, &rt.gz})
        zero(*samples);
    kor::init();
    kor::clear_loaded_model_path();
}

void fresh_state_with_spins() {
    fresh_state();
    kor::RuntimeState& rt = kor::g_runtime;
    rt.Nspins = 2;
    rt.quantnum[1] = rt.quantnum[2] = 1;
    rt.relspinamp[1] = rt.relspinamp[2] = 1;
    rt.resofreqs[1] = 100;
    rt.resofreqs[2] = -50.25;
    rt.Jexact = rt.Jcount = 1;
    rt.couplings[1] = 7.3;
    rt.systemset = 1;
}

void fresh_state_with_short_name() {
    fresh_state_with_spins();
    kor::set_current_model_short_name("lac");
}

std::vector<std::vector<double>> waveform_blocks(const TempTree& tree, const std::string& name, int N,
                                                 int blocks) {
    const std::string bytes = tree.read(name);
    const std::size_t block_bytes = sizeof(double) * static_cast<std::size_t>(N);
    std::vector<std::vector<double>> values;
    EXPECT_EQ(bytes.size(), block_bytes * static_cast<std::size_t>(blocks)) << name;
    if (bytes.size() != block_bytes * static_cast<std::size_t>(blocks))
        return std::vector<std::vector<double>>(static_cast<std::size_t>(blocks),
                                                std::vector<double>(static_cast<std::size_t>(N)));
    for (int b = 0; b < blocks; ++b) {
        std::vector<double> block(static_cast<std::size_t>(N));
        std::memcpy(block.data(), bytes.data() + static_cast<std::size_t>(b) * block_bytes, block_bytes);
        values.push_back(block);
    }
    return values;
}

void expect_waveform(const std::vector<std::vector<double>>& blocks, const Pulse& pulse) {
    const double tolerance = 1e-12 * largest(pulse);
    ASSERT_GE(blocks.at(0).size(), pulse.size());
    for (std::size_t j = 0; j < blocks[0].size(); ++j) {
        const Field expected = j < pulse.size() ? pulse[j] : Field(0);
        EXPECT_NEAR(blocks[0][j], expected.real(), tolerance) << "xb sample " << j;
        EXPECT_NEAR(blocks[1][j], expected.imag(), tolerance) << "yb sample " << j;
    }
}

} // namespace kor_test
