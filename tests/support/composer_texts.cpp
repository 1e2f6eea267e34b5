#include "support/composer_texts.h"

#include "korlimits.h"
#include "korpaths.h"
#include "support/plain_text.h"

#include <stdexcept>

namespace kor_test {

namespace {

const std::string RULE = "========================================\n";

}

std::string constant_gradient_dialogues() {
    std::string text;
    for (const char* axis : {"X", "Y", "Z"})
        text += "Define " + std::string(axis) + "-gradient waveform\n" + GRADIENT_MENU +
                " Constant gradient strength [Hz/cm] : \n";
    return text;
}

std::string rf_output_folder() {
    char folder[kor::KOR_PATH_SIZE];
    if (!kor::KOR_GetDefaultRFOutputDir(folder, sizeof folder))
        throw std::runtime_error("no RF output folder");
    return with_slashes(folder);
}

std::string file_name_question(const std::string& contents, const std::string& leaf) {
    return "Default sector waveform directory : " + rf_output_folder() +
           "\nDefault sector waveform file name : " + leaf + "\nThis binary file stores " + contents +
           " samples for this sector.\n"
           "Bare names are written to the default sector waveform directory.\n"
           "Press Enter to use the default name: " +
           leaf + "\nFile name : ";
}

std::string spatial_file_dialogue(const std::string& leaf, const std::string& path) {
    return file_name_question("RF and gradient", leaf) + "Sector waveform file written to : " + path +
           "\nSector note (optional): ";
}

std::string sector_header(const std::string& family, int k) {
    return "\n" + RULE + " Edit " + family + " Sequence Sector " + std::to_string(k) + "\n" + RULE + "\n";
}

std::string editor_title_and_spins(const std::string& family) {
    return "\n" + RULE + " " + family + " Pulse Sequence Editor\n" + RULE +
           "\nCurrent model file : <unsaved current model>\n\n"
           "Current model state:\n"
           "  number of spins       : 2\n"
           "  quantum numbers (2I)  : 1 1\n"
           "  relative intensities  : 1.000E+00 1.000E+00\n"
           "  offsets [Hz]          : 1.000E+02 -5.025E+01\n"
           "  coupling mode         : 1  Weak coupling approximation\n"
           "  number of couplings   : 1\n"
           "  J(1,2) [Hz]           : 7.300E+00\n";
}

} // namespace kor_test
