#include "kormodel/save.h"

#include "model_set.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

// "C:" would be a folder elsewhere or a hidden stream, a dot at the end would be dropped, "nul" would take
// the files and keep nothing.
TEST(SaveModel, ANameThatCannotBeAFileNameIsRefused) {
    const ModelSet set;
    const std::string file = plain_name(set.root() / "models/out.kormodel");
    const auto names_before = [&set](const char* folder) {
        return std::distance(fs::directory_iterator(set.root() / folder), fs::directory_iterator());
    };
    Model model = two_spin_model();
    for (const std::string name :
         {"C:", "a:b", "what?", "a\tb", "b..", "...", "b ", "NUL", "con.x", "two/com1"}) {
        copy_truncated(name.c_str(), model.cfg.model_name, sizeof model.cfg.model_name);
        EXPECT_EQ(save_model(file, model),
                  (Outcome{KOR_MODEL_ERR_IO, "model name '" + name + "' cannot be a file name"}));
    }
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(names_before("sequences"), 1);
    EXPECT_EQ(names_before("spin-systems"), 1);
}

TEST(SaveModel, ATypedFileNameNamesTheSetToo) {
    const ModelSet set;
    const std::string file = plain_name(set.root() / "models/a|b.kormodel");
    EXPECT_EQ(save_model(file, two_spin_model()),
              (Outcome{KOR_MODEL_ERR_IO, "model name 'a|b' cannot be a file name"}));
}

TEST(SaveModel, AFolderWithATooLongNameIsNotMade) {
    const ModelSet set;
    Model model = two_spin_model();
    copy_truncated(std::string(248, 'n').c_str(), model.cfg.model_name, sizeof model.cfg.model_name);
    EXPECT_EQ(save_model(plain_name(set.root() / "models/x.kormodel"), model),
              (Outcome{KOR_MODEL_ERR_IO, "could not create split output directories"}));
}
