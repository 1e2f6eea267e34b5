#include "menu.h"

#include "consoleutil.h"

#include <cstdio>

namespace kor {

bool read_menu_number(int* number) {
    const bool answered = console_read_int(number) != 0;
    console_discard_line();
    if (answered)
        std::puts("");
    return answered;
}

} // namespace kor
