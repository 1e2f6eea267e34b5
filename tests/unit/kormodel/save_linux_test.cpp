#include "kormodel/save.h"

#include "model_set.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

// Windows takes none of these names.
TEST(SaveModel, ANameMayHaveAnyOtherLetter) {
    const ModelSet set;
    Model model = two_spin_model();
    for (const char* name : {"...", "b..", "b ", "C:", "a<b>|\"?*\x01", "NUL"}) {
        copy_truncated(name, model.cfg.model_name, sizeof model.cfg.model_name);
        EXPECT_EQ(save_model(plain_name(set.root() / "models/out.kormodel"), model), ok) << name;
    }
}

TEST(SaveModel, AFullDiskIsReported) {
    for (const std::string name : {"spin-systems/x.korspin", "sequences/x/x.korseq", "models/x.kormodel"}) {
        const ModelSet set;
        const fs::path file = set.root() / name;
        fs::create_directories(file.parent_path());
        fs::create_symlink("/dev/full", file);
        const Outcome failed{KOR_MODEL_ERR_IO, "failed while closing '" + file.string() + "'"};
        EXPECT_EQ(save_model(plain_name(set.root() / "models/x.kormodel"), two_spin_model()), failed);
    }
}
