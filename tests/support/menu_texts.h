// The menus of the program, word for word, for transcripts.
#pragma once

#include <string>

namespace kor_test {

/// The prompts that actions end with.
extern const std::string ENTER_FOR_MENU;    // import, export, reference checks
extern const std::string ENTER_TO_CONTINUE; // preparation menu
extern const std::string NEW_LINE_ENTER;    // run menu

/// A menu up to and including its prompt.
/// loaded: the path of the loaded model file, or empty. status: the lines of the status block.
std::string main_menu_text(const std::string& loaded = "");
std::string prepare_menu_text(const std::string& loaded, const std::string& status);
std::string run_menu_text(const std::string& loaded, const std::string& status);

/// The line that ends the program.
extern const std::string EXITING;
/// The lines between the main menu and the two sub-menus.
extern const std::string OPENING_PREPARATION;
extern const std::string OPENING_RUN_MENU;

/// Status blocks without any model.
extern const std::string NOTHING_PREPARED;
extern const std::string NOTHING_TO_RUN;

/// The question for the file to export to.
std::string export_question(const std::string& models_dir);

} // namespace kor_test
