// The engines that the engine tests run over.
#pragma once

#include "korengine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kor_test {

inline std::vector<kor::Engine> AllEngines() {
    return {kor::Engine::reference};
}

inline std::string EngineName(const testing::TestParamInfo<kor::Engine>& info) {
    switch (info.param) {
    case kor::Engine::reference:
        return "reference";
    }
    return "unnamed";
}

/// Runs with the engine of its parameter in use and leaves the reference behind.
class EngineTest : public testing::TestWithParam<kor::Engine> {
protected:
    void SetUp() override { kor::EngineSelect(GetParam()); }
    void TearDown() override { kor::EngineSelect(kor::Engine::reference); }
};

} // namespace kor_test
