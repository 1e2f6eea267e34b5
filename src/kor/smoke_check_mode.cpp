#include "kor/smoke_check_mode.h"

namespace kor {

namespace {
int g_kor_smoke_check_mode = 0;
} // namespace

void KOR_SetSmokeCheckMode(int on) {
    g_kor_smoke_check_mode = on != 0 ? 1 : 0;
}

int KOR_GetSmokeCheckMode() {
    return g_kor_smoke_check_mode;
}

} // namespace kor
