#include <windows.h>

// Declared here because the ground floor includes nothing of the floors above it.
namespace kor {
int kor_main(int argc, char** argv);
}

/// Entry of a program linked for the window subsystem: always the interactive menu.
int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    return kor::kor_main(0, nullptr);
}
