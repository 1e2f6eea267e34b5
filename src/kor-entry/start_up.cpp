#include "kor-entry.h"

#include "kor/runtime_state.h"
#include "kor/spin_system_dialogues.h"
#include "korplatform.h"

namespace kor {

namespace {

constexpr int CLEAR_SCREEN = 3;

}

void TotalStartUp() {
    init();
    // The defaults define no spin system, so a process starts without asking for one.
    if (g_runtime.spinsystemdefined) {
        SetupSpins();
        MakeBoltzmann();
        MakeZeeman();
        SpinSpinCoupling();
    }
}

void ScreenMode(int mode) {
    if (mode == CLEAR_SCREEN)
        platform_clear_console();
}

} // namespace kor
