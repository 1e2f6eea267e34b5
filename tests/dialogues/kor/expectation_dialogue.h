// The dialogue of expectation values, word for word, and states to ask it about.
#pragma once

#include "kor/expectation_dialogues.h"
#include "support/console_script.h"
#include "support/model_fixtures.h"
#include "support/temp_tree.h"

#include <string>
#include <vector>

namespace kor_test {

inline const std::string menu = "****************************************************\n"
                                "***       CALCULATION OF EXPECTATION VALUES      ***\n"
                                "****************************************************\n"
                                "\n"
                                "Possible actions :\n"
                                "\n"
                                "          1. Calculate expectation values of operators (from dm.bin)\n"
                                "          2. Continue to main menu\n"
                                "\n"
                                "Your choice [1,2] : ";
inline const std::string create_menu = "Create:\n"
                                       "       1. SG-plot file (ASCII)\n"
                                       "       2. Raw binary double file (one value per dw step)\n"
                                       "Your choice [1,2] : ";
inline const std::string press_enter = "Press <Enter> to continue";

/// Operator Ix of the only spin, from the list.
inline const std::string choose_ix = "1\nIx\n";

inline ConsoleOutput ask(const std::string& answers) {
    return play_console(answers, kor::ExpValNDensMat);
}

/// What is printed from the question about the kind of output on.
inline std::string behind_operator(const ConsoleOutput& printed) {
    const std::size_t at = printed.out.find(create_menu);
    return at == std::string::npos ? printed.out : printed.out.substr(at);
}

/// One spin and a "dm.bin" with these x magnetisations; the expectation value of Ix at unit norm is a /
/// sqrt(2).
inline void prepare(const TempTree& tree, const std::vector<double>& x_components) {
    define_spins({0.0});
    std::vector<DenseMatrix> matrices;
    for (double a : x_components)
        matrices.push_back(bloch_matrix(a, 0.5, -0.25));
    tree.write("dm.bin", density_file(0, 2, static_cast<int>(matrices.size()), matrices));
}

} // namespace kor_test
