// What the menus share.
#pragma once

namespace kor {

/// Reads the number of a menu item and goes on to a fresh line below it; false when no number was answered
/// (the answer is dropped) or at end of input: the menu is then left.
bool read_menu_number(int* number);

} // namespace kor
