#include "editing_actions.h"

#include "kor/runtime_state.h"
#include "kor/spin_system_dialogues.h"

#include <cstdio>

namespace kor {

void RedefineSpinSystem() {
    SetupSpins();
    if (!g_runtime.spinsystemdefined)
        return;
    std::printf("Spin system defined: Nspins=%d, n=%d\n", g_runtime.Nspins, g_runtime.n);
    MakeBoltzmann();
    MakeZeeman();
    SpinSpinCoupling();
    g_runtime.systemset = 1;
}

} // namespace kor
