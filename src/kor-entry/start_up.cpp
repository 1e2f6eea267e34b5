#include "kor-entry.h"

#include "kor/runtime_state.h"
#include "korplatform.h"

namespace kor {

namespace {

constexpr int CLEAR_SCREEN = 3;

}

void TotalStartUp() {
    init();
}

void ScreenMode(int mode) {
    if (mode == CLEAR_SCREEN)
        platform_clear_console();
}

} // namespace kor
