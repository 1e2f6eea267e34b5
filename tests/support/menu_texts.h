// The menus of the program, word for word, for transcripts.
#pragma once

#include <string>

namespace kor_test {

/// The prompts that actions end with.
inline const std::string ENTER_FOR_MENU =
    "\nPress Enter to return to the menu...";                              // import, export, reference checks
inline const std::string ENTER_TO_CONTINUE = "Press Enter to continue..."; // preparation menu
inline const std::string NEW_LINE_ENTER = "\nPress Enter to continue...";  // run menu

/// A menu up to and including its prompt.
/// loaded: the path of the loaded model file, or empty. status: the lines of the status block.
std::string main_menu_text(const std::string& loaded = "");
std::string prepare_menu_text(const std::string& loaded, const std::string& status);
std::string run_menu_text(const std::string& loaded, const std::string& status);

/// The line that ends the program.
inline const std::string EXITING = "\n[KOR] Exiting.\n";
/// The lines between the main menu and the two sub-menus.
inline const std::string OPENING_PREPARATION = "\n[KOR] Opening model preparation / editing...\n";
inline const std::string OPENING_RUN_MENU = "\n[KOR] Starting non-interactive mode...\n";

/// Status blocks without any model.
inline const std::string NOTHING_PREPARED = "Current model state:\n"
                                            "  Nspins           : 0\n"
                                            "  sequence family  : <unset>\n"
                                            "  sequence sectors : 0\n"
                                            "  result file      : <unset>\n"
                                            "  spin system      : <none prepared>\n"
                                            "  pulse sequence   : <none prepared>\n"
                                            "\n";
inline const std::string NOTHING_TO_RUN = "Current model state:\n"
                                          "  Nspins           : 0\n"
                                          "  sequence family  : <unset>\n"
                                          "  sequence sectors : 0\n"
                                          "  result file      : <unset>\n"
                                          "  run status       : incomplete (spin system missing)\n"
                                          "  spin system      : <none prepared>\n"
                                          "  pulse sequence   : <none prepared>\n"
                                          "\n";

/// The formats in which a spectrum is written.
inline constexpr char SPECTRUM_OUTPUT_MENU[] = "\nOutput format:\n"
                                               "  1. PV-Wave/IDL (legacy)\n"
                                               "  2. CSV (_td.csv and _fd.csv)\n"
                                               "Your choice [1,2] : ";

/// The question for the file to export to.
std::string export_question(const std::string& models_dir);

} // namespace kor_test
