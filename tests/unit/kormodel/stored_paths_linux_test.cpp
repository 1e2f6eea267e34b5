// How the paths of parts and sector files are taken that differ from the files in separators and case.
#include "model_set.h"
#include "path_calls.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

/// The two spellings of a folder of results, in the folder of the build: absent at the start and at the end.
class SpeltFolders {
public:
    SpeltFolders() { remove(); }
    ~SpeltFolders() { remove(); }
    SpeltFolders(const SpeltFolders&) = delete;
    SpeltFolders& operator=(const SpeltFolders&) = delete;

    const std::string path = results_folder();

private:
    void remove() const {
        for (const char* name : {"/Spelling", "/spelling"})
            std::filesystem::remove_all(path + name);
    }
};

} // namespace

TEST(SequenceFile, ASectorFileIsStoredAsTheFolderSpellsIt) {
    const ModelSet set;
    Model model;
    write_file(set.sequence(), replaced(valid_sequence_text, "waveforms/wave1", "Waveforms\\WAVE1"));
    EXPECT_EQ(load_model(set.model(), model), ok);
    EXPECT_EQ(model.seq.sectors[1].pulse_filename,
              plain_name(set.root() / "models/../sequences/test-gradient/waveforms/wave1-excitation"));
}

TEST(ModelFile, AnExistingResultIsNamedAsItsFolderSpellsIt) {
    const ModelSet set;
    write_file(set.model(), replaced(valid_model_text, "split-composition-result.bin", "spelling/myres.bin"));
    const auto result = [&] {
        Model loaded;
        EXPECT_EQ(load_model(set.model(), loaded), ok);
        return std::string(loaded.cfg.result_filename);
    };
    const SpeltFolders spelt;
    const std::string& folder = spelt.path;
    std::filesystem::create_directories(folder + "/Spelling");
    EXPECT_EQ(result(), folder + "/spelling/myres.bin") << "a new one is made as it is spelt";
    write_file(folder + "/Spelling/MyRes.bin", "x");
    EXPECT_EQ(result(), folder + "/Spelling/MyRes.bin");
    write_file(folder + "/spelling/myres.bin", "x");
    EXPECT_EQ(result(), folder + "/spelling/myres.bin") << "spelt exactly so";
    std::filesystem::remove(folder + "/spelling/myres.bin");
    std::filesystem::create_directory(folder + "/spelling/MYRES.BIN");
    EXPECT_EQ(result(), folder + "/spelling/myres.bin") << "a folder is no result";
}

TEST(ModelFile, BackslashesAndCaseOfStoredPathsDoNotMatter) {
    const ModelSet set;
    Model model;
    const std::string text = replaced(valid_model_text, "../spin-systems/test", "..\\Spin-Systems\\Test");
    write_file(set.model(), replaced(text, "../sequences/test-gradient/test-gradient.korseq",
                                     "..\\SEQUENCES\\Test-Gradient\\TEST-GRADIENT.KORSEQ"));
    EXPECT_EQ(load_model(set.model(), model), ok);
    EXPECT_EQ(model.seq.sectors[1].pulse_filename,
              plain_name(set.root() / "models/../sequences/test-gradient/waveforms/wave1-excitation"));
}
