// The engines that the engine tests run over: the reference, and the fast one with every instruction set
// that this machine has.
#pragma once

#include "korengine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kor_test {

/// Converts to its engine; the instruction set counts for the fast one only.
struct EngineChoice {
    kor::Engine engine;
    kor::InstructionSet set;
    operator kor::Engine() const { return engine; }
};

inline std::vector<EngineChoice> AllEngines() {
    std::vector<EngineChoice> choices = {{kor::Engine::reference, kor::InstructionSet::baseline}};
    for (const kor::InstructionSet set :
         {kor::InstructionSet::baseline, kor::InstructionSet::avx2, kor::InstructionSet::avx512}) {
        if (kor::EngineHasInstructionSet(set)) {
            choices.push_back({kor::Engine::fast, set});
        }
    }
    return choices;
}

/// The fast engine with each of its instruction sets.
inline std::vector<EngineChoice> FastEngines() {
    std::vector<EngineChoice> choices = AllEngines();
    choices.erase(choices.begin());
    return choices;
}

inline std::string EngineName(const EngineChoice& choice) {
    if (choice.engine == kor::Engine::reference) {
        return "reference";
    }
    switch (choice.set) {
    case kor::InstructionSet::baseline:
        return "fast_baseline";
    case kor::InstructionSet::avx2:
        return "fast_avx2";
    case kor::InstructionSet::avx512:
        return "fast_avx512";
    }
    return "unnamed";
}

inline std::string EngineParamName(const testing::TestParamInfo<EngineChoice>& info) {
    return EngineName(info.param);
}

inline void PrintTo(const EngineChoice& choice, std::ostream* out) {
    *out << EngineName(choice);
}

/// Runs with the engine of its parameter in use and leaves the start's choice behind.
class EngineTest : public testing::TestWithParam<EngineChoice> {
protected:
    void SetUp() override {
        kor::EngineSelect(GetParam());
        kor::EngineUseInstructionSet(GetParam().set);
    }
    void TearDown() override {
        kor::EngineSelect(kor::Engine::fast);
        kor::EngineUseInstructionSet(start_set_);
    }

private:
    const kor::InstructionSet start_set_ = kor::EngineInstructionSet();
};

} // namespace kor_test
