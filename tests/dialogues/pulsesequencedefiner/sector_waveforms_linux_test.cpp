#include "pulsesequencedefiner/sector_waveforms.h"

#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"
#include "support/composer_state.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

// Windows' paths end at 259 characters, with the folder.
TEST(WriteSectorWaveformFile, APathOf255CharactersIsTheSectorsFile) {
    TempTree tree;
    fresh_state_with_spins();
    set_current_model_short_name("lac");
    g_runtime.ap = 2;
    const std::string longest = "./" + std::string(121, '/') + std::string(132, 'a');
    ASSERT_EQ(longest.size(), 255u);
    play_console(longest + "\n", [] { ps_write_2d_sector_waveform_file(2); });
    EXPECT_EQ(g_runtime.fnames[2], longest);
    EXPECT_EQ(tree.read(std::string(132, 'a')).size(), 4 * sizeof(double));
}
