#include "kormodel/save.h"

#include "model_set.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

namespace {

void name_model(Model& model, const std::string& name) {
    copy_truncated(name.c_str(), model.cfg.model_name, sizeof model.cfg.model_name);
}

} // namespace

// Windows takes none of these names.
TEST(SaveModel, ANameMayHaveAnyOtherLetter) {
    const ModelSet set;
    Model model = two_spin_model();
    for (const char* name : {"...", "b..", "b ", "C:", "a<b>|\"?*\x01", "NUL"}) {
        name_model(model, name);
        EXPECT_EQ(save_model(plain_name(set.root() / "models/out.kormodel"), model), ok) << name;
    }
}

// Windows knows no such long names, or not without being told to.
TEST(SaveModel, LeafNamesHaveAtMost255Characters) {
    const ModelSet set;
    Model model = two_spin_model();
    const std::string file = plain_name(set.root() / "models/x.kormodel");
    name_model(model, std::string(247, 'n'));
    EXPECT_EQ(save_model(file, model), ok);
    name_model(model, std::string(248, 'n'));
    EXPECT_EQ(save_model(file, model), io_error("split output path is too long"));
    EXPECT_TRUE(fs::is_directory(set.root() / "sequences" / std::string(248, 'n')));
}

TEST(SaveModel, FullPathsHaveAtMost1023Characters) {
    const ModelSet set;
    fs::path root = set.root();
    while (root.string().size() < 780)
        root /= std::string(100, 'd');
    // The longest path is ROOT/sequences/NAME/NAME.korseq; an odd rest goes into ROOT.
    const std::size_t rest = 1023 - root.string().size() -
                             std::strlen("/sequences/"
                                         "/.korseq");
    if (rest % 2 == 1)
        root += "d";
    fs::create_directories(root / "models");
    Model model = two_spin_model();
    name_model(model, std::string(rest / 2, 'n'));
    EXPECT_EQ(save_model(plain_name(root / "models/x.kormodel"), model), ok);
    name_model(model, std::string(rest / 2 + 1, 'n'));
    EXPECT_EQ(save_model(plain_name(root / "models/x.kormodel"), model),
              io_error("split output path is too long"));
}

namespace {

/// The two-spin model of a set NAME with one sector file, saved, loaded and called `new_name`.
Model imported_model(const TempTree& tree, const std::string& name, const std::string& new_name) {
    const std::string file = tree.path("models/" + name + ".kormodel");
    tree.make_folder("models");
    tree.write("sequences/" + name + "/waveforms/P1", "x");
    Model loaded;
    EXPECT_EQ(save_model(file, two_spin_model()), ok);
    EXPECT_EQ(load_model(file, loaded), ok);
    name_model(loaded, new_name);
    return loaded;
}

} // namespace

TEST(SaveModel, ASectorFileInAFolderThatDiffersInItsLettersIsNamedWithThem) {
    const TempTree tree;
    const Model model = imported_model(tree, "Foo", "foo");
    EXPECT_EQ(save_model(tree.path("models/foo.kormodel"), model), ok);
    EXPECT_NE(tree.read("sequences/foo/foo.korseq").find("\nsector_pulsefile: 1 ../Foo/waveforms/P1\n"),
              std::string::npos);
}

TEST(SaveModel, ASectorFileThatOnlyAFolderWithABlankLeadsToIsRefusedEachTime) {
    const TempTree tree;
    const Model model = imported_model(tree, "My Foo", "my foo");
    const std::string message = "sector 1 pulse_filename cannot be saved with white space in it: " +
                                tree.path("models/../sequences/My Foo/waveforms/P1");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(save_model(tree.path("models/my foo.kormodel"), model),
                  (Outcome{KOR_MODEL_ERR_RANGE, message}));
        EXPECT_EQ(tree.names("models"), std::vector<std::string>{"My Foo.kormodel"});
        EXPECT_EQ(tree.names("spin-systems"), std::vector<std::string>{"My Foo.korspin"});
        EXPECT_EQ(tree.names("sequences"), std::vector<std::string>{"My Foo"});
    }
}

TEST(SaveModel, TwoPulsesThatDifferInTheirLettersStayTwo) {
    const TempTree tree;
    tree.make_folder("models");
    tree.write("sequences/pair/P", "one");
    tree.write("sequences/pair/p", "another");
    Model model = two_spin_model();
    for (const char* leaf : {"P", "p"}) {
        const std::string wave = tree.path("sequences/pair/" + std::string(leaf));
        copy_truncated(wave.c_str(), model.seq.sectors[1].pulse_filename, KOR_FILE_NAME_SIZE);
        Model loaded;
        EXPECT_EQ(save_model(tree.path("models/pair.kormodel"), model), ok);
        ASSERT_EQ(load_model(tree.path("models/pair.kormodel"), loaded), ok);
        EXPECT_TRUE(fs::equivalent(loaded.seq.sectors[1].pulse_filename, wave)) << leaf;
    }
}

TEST(SaveModel, ASetOfALinkedFolderOfModelsLiesBesideTheFolderLinkedTo) {
    const TempTree tree;
    tree.make_folder("data/models");
    fs::create_directory_symlink(tree.path("data/models"), tree.path("models"));
    tree.write("data/sequences/old/waveforms/P1", "x");
    const std::string old = tree.path("models/old.kormodel");
    Model loaded;
    ASSERT_EQ(save_model(old, two_spin_model()), ok);
    ASSERT_EQ(load_model(old, loaded), ok);
    name_model(loaded, "new");
    const std::string file = tree.path("models/new.kormodel");
    ASSERT_EQ(save_model(file, loaded), ok);
    ASSERT_EQ(load_model(file, loaded), ok);
    EXPECT_TRUE(
        fs::equivalent(loaded.seq.sectors[1].pulse_filename, tree.path("data/sequences/old/waveforms/P1")));
    EXPECT_EQ(tree.names("data"), (std::vector<std::string>{"models", "sequences", "spin-systems"}));
    EXPECT_EQ(tree.names(), (std::vector<std::string>{"data", "models"}));
}

TEST(SaveModel, AFullDiskIsReported) {
    for (const std::string name : {"spin-systems/x.korspin", "sequences/x/x.korseq", "models/x.kormodel"}) {
        const ModelSet set;
        const fs::path file = set.root() / name;
        fs::create_directories(file.parent_path());
        fs::create_symlink("/dev/full", file);
        const Outcome failed = io_error("failed while closing '" + file.string() + "'");
        EXPECT_EQ(save_model(plain_name(set.root() / "models/x.kormodel"), two_spin_model()), failed);
    }
}
