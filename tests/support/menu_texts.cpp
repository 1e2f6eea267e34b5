#include "support/menu_texts.h"

namespace kor_test {

namespace {

std::string file_hint(const std::string& loaded) {
    return "Current model file : " + (loaded.empty() ? "<unsaved current model>" : loaded) + "\n\n";
}

} // namespace

std::string main_menu_text(const std::string& loaded) {
    return "\n"
           "========================================\n"
           " KOR Main Menu\n"
           "========================================\n"
           " Loaded model : " +
           (loaded.empty() ? "<none>" : loaded) +
           "\n"
           "----------------------------------------\n"
           "  1) Prepare / edit current model\n"
           "  2) Run / analyze current model\n"
           "  3) Import .kormodel\n"
           "  4) Export current model (.kormodel)\n"
           "  5) Developer smoke/reference checks\n"
           "  6) Exit\n"
           "----------------------------------------\n"
           "Select [1-6]: ";
}

std::string prepare_menu_text(const std::string& loaded, const std::string& status) {
    return "========================================\n"
           " Prepare / Edit Current Model\n"
           "========================================\n"
           "\n" +
           file_hint(loaded) + status +
           "Options:\n"
           "\n"
           "  1. Define / redefine spin system\n"
           "  2. Define spatial simulation domain (for spatially resolved sequences)\n"
           "  3. Choose sequence family and compose / edit pulse sequence\n"
           "  4. Show current model summary\n"
           "  5. Save current model now (.kormodel)\n"
           "  6. Back\n"
           "\n"
           "Your choice [1..6] : ";
}

std::string run_menu_text(const std::string& loaded, const std::string& status) {
    return "****************************************************\n"
           "***         Run / Analyze Current Model         ***\n"
           "****************************************************\n"
           "\n" +
           file_hint(loaded) + status +
           "Options:\n"
           "\n"
           "  1. Choose sequence family and compose / edit pulse sequence\n"
           "  2. Run current prepared model\n"
           "  3. Calculate expectation values\n"
           "  4. Calculate spectra\n"
           "  5. Optimize one RF sector in current 1D/2D sequence\n"
           "  6. Save current model now (.kormodel)\n"
           "  7. Back\n"
           "\n"
           "Your choice [1..7] : ";
}

std::string export_question(const std::string& models_dir) {
    return "\n[KOR] Default models directory:\n      " + models_dir +
           "\n\nEnter .kormodel file to export to: ";
}

} // namespace kor_test
