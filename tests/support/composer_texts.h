// What both sequence editors print alike, word for word, for transcripts.
#pragma once

#include <string>

namespace kor_test {

inline const std::string CONTENT_MENU =
    "    1. Hard pulse\n"
    "       (90 x, 90 y, 90 -x, 90 -y, 180 x, 180 y, 180 -x, 180 -y)\n"
    "    2. Amplitude-modulated RF pulse   : Hp(t) = f(t) * Ix\n"
    "    3. General RF pulse               : Hp(t) = f(t) * Ix + g(t) * Iy\n"
    "    4. Read RF pulse from disk        : (Bx, By)\n"
    "    5. Waiting time / free precession\n"
    "Your choice [1..5] : ";
/// With the newline that follows the answer.
inline const std::string HARD_PULSE_MENU = "\nStandard Hard Pulses:\n\n"
                                           "   1. (pi/2) (x')            5. (pi) (x')\n"
                                           "   2. (pi/2) (y')            6. (pi) (y')\n"
                                           "   3. (pi/2) (-x')           7. (pi) (-x')\n"
                                           "   4. (pi/2) (-y')           8. (pi) (-y')\n\n"
                                           "Your choice is [1..8] : \n";
inline const std::string GRADIENT_MENU = "Possible gradient modulation types:\n"
                                         "   1.  Constant gradient \n"
                                         "   2.  cosine spiral (2D excitation)\n"
                                         "   3.  sine spiral   (2D excitation)\n"
                                         "Your choice [1..3] : ";

/// The three gradient dialogues, a constant one along each axis.
std::string constant_gradient_dialogues();
/// Three constant gradients of 0 Hz/cm, as answers.
inline const std::string NO_GRADIENTS = "1\n0\n1\n0\n1\n0\n";
/// Naming the waveform file, up to the prompt. contents: "RF" or "RF and gradient".
std::string file_name_question(const std::string& contents, const std::string& leaf);
/// The same of a sector with gradients, the file written to `path`, up to the question for a note.
std::string spatial_file_dialogue(const std::string& leaf, const std::string& path);
std::string rf_output_folder();
/// The title of a sector's dialogue.
std::string sector_header(const std::string& family, int k);
/// The title of an editor, the model file and the spins of fresh_state_with_spins().
std::string editor_title_and_spins(const std::string& family);

} // namespace kor_test
