// How the paths of parts and sector files are taken that differ from the files in separators and case.
#include "model_set.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

TEST(SequenceFile, ASectorFileIsStoredAsTheLineSpellsIt) {
    const ModelSet set;
    Model model;
    write_file(set.sequence(), replaced(valid_sequence_text, "waveforms/wave1", "Waveforms\\WAVE1"));
    EXPECT_EQ(load_model(set.model(), model), ok);
    EXPECT_EQ(with_slashes(model.seq.sectors[1].pulse_filename),
              plain_name(set.root() / "models/../sequences/test-gradient/Waveforms/WAVE1-excitation"));
}

TEST(ModelFile, BackslashesAndCaseOfStoredPathsDoNotMatter) {
    const ModelSet set;
    Model model;
    const std::string text = replaced(valid_model_text, "../spin-systems/test", "..\\Spin-Systems\\Test");
    write_file(set.model(), replaced(text, "../sequences/test-gradient/test-gradient.korseq",
                                     "..\\SEQUENCES\\Test-Gradient\\TEST-GRADIENT.KORSEQ"));
    EXPECT_EQ(load_model(set.model(), model), ok);
    EXPECT_EQ(with_slashes(model.seq.sectors[1].pulse_filename),
              plain_name(set.root() / "models/../SEQUENCES/Test-Gradient/waveforms/wave1-excitation"));
}
