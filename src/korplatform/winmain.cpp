#include "kor-entry.h"

#include <windows.h>

/// Entry of a program linked for the window subsystem: always the interactive menu.
int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    return kor::kor_main(0, nullptr);
}
