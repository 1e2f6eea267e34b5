// Paths made portable on save.
#include "kormodel/paths.h"

#include "korlimits.h"
#include "model_set.h"
#include "path_calls.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

std::string tail_of(const char* path, const char* prefix) {
    return path_of([&](char* out, std::size_t n) { return kor_tail_after_prefix(path, prefix, out, n); });
}

std::string portable_pulse(const std::string& sequence, const std::string& stored) {
    return path_of([&](char* out, std::size_t n) {
        return kor_make_portable_sector_pulse_path(sequence.c_str(), stored.c_str(), out, n);
    });
}

std::string portable_result(const std::string& model, const std::string& stored) {
    return path_of([&](char* out, std::size_t n) {
        return kor_make_portable_result_path(model.c_str(), stored.c_str(), out, n);
    });
}

} // namespace

TEST(TailAfterPrefix, IsTheLowerCasePartBelowAFolder) {
    EXPECT_EQ(tail_of("C:\\Data\\Seq\\Waves\\P1.BIN", "c:/data/SEQ"), "waves/p1.bin");
    EXPECT_EQ(tail_of("/a/b///C", "/a/b"), "c");
    EXPECT_EQ(tail_of("/a/b", "/a/b"), "");
    EXPECT_EQ(tail_of("/a/b/", "/a/b"), "");
    EXPECT_EQ(tail_of("/a/bc", "/a/b"), "<failed>");
    EXPECT_EQ(tail_of("/a", "/a/b"), "<failed>");
    EXPECT_EQ(tail_of("/x/b/c", "/a/b"), "<failed>");
    EXPECT_EQ(tail_of(nullptr, "/a"), "<failed>");
    EXPECT_EQ(tail_of("/a", nullptr), "<failed>");
}

TEST(TailAfterPrefix, FailsWhenItDoesNotFitAndLooksAt2047Characters) {
    char tail[4];
    EXPECT_EQ(kor_tail_after_prefix("/a/bcd", "/a", tail, sizeof tail), 1);
    EXPECT_EQ(kor_tail_after_prefix("/a/bcde", "/a", tail, sizeof tail), 0);
    char whole[4096];
    const std::string path = "/a/" + std::string(3000, 'b');
    EXPECT_EQ(kor_tail_after_prefix(path.c_str(), "/a", whole, sizeof whole), 1);
    EXPECT_EQ(std::string(whole), std::string(2044, 'b'));
}

TEST(PortableSectorPulse, IsRelativeToTheSequenceFilesFolderOrItsParent) {
    EXPECT_EQ(portable_pulse("C:\\Data\\Seq\\s.korseq", "C:\\Data\\Seq\\Waves\\P1.BIN"), "waves/p1.bin");
    EXPECT_EQ(portable_pulse("C:\\Data\\Seq\\s.korseq", "C:\\Data\\Other\\P1.BIN"), "../other/p1.bin");
    EXPECT_EQ(portable_pulse("/d/seq/s.korseq", "/d/seq/P1.BIN"), "p1.bin");
    EXPECT_EQ(portable_pulse("/d/seq/s.korseq", "/D/Seq2/P1.BIN"), "../seq2/p1.bin");
}

TEST(PortableSectorPulse, OtherPathsStayWithSlashes) {
    EXPECT_EQ(portable_pulse("/d/seq/s.korseq", ""), "");
    EXPECT_EQ(portable_pulse("/d/seq/s.korseq", "Waves\\P1.BIN"), "Waves/P1.BIN");
    EXPECT_EQ(portable_pulse("/d/seq/s.korseq", "E:\\Other\\P1.BIN"), "E:/Other/P1.BIN");
    EXPECT_EQ(portable_pulse("/d/seq/s.korseq", "/other/P1.BIN"), "/other/P1.BIN");
    EXPECT_EQ(portable_pulse("s.korseq", "/other/P1.BIN"), "/other/P1.BIN");
    EXPECT_EQ(portable_pulse("/d/seq/s.korseq", "/d/seq"), "../seq");
}

TEST(PortableSectorPulse, DotFoldersDoNotHideThatAFileIsBelow) {
    const TempTree tree;
    const std::string sequence = tree.path("sequences/new/new.korseq");
    tree.make_folder("models");
    tree.write("sequences/new/W", "x");
    tree.write("sequences/old/waves/W", "x");
    EXPECT_EQ(portable_pulse(sequence, tree.path("models/../sequences/new/W")), "w");
    EXPECT_EQ(portable_pulse(sequence, tree.path("models/../sequences/./old/waves/W")), "../old/waves/w");
    EXPECT_EQ(portable_pulse(sequence, tree.path("sequences/old/../new/W")), "../old/../new/w");
    // There is no such file, and a file that lies elsewhere.
    const std::string missing = tree.path("models/../sequences/new/V");
    EXPECT_EQ(portable_pulse(sequence, missing), missing);
    const std::string outside = tree.path("models/../W");
    tree.write("W", "x");
    EXPECT_EQ(portable_pulse(sequence, outside), outside);
}

TEST(PortableSectorPulse, ALinkedFolderOnTheWayKeepsThePath) {
    const TempTree tree;
    tree.make_folder("far/models");
    tree.write("far/sequences/old/w", "far");
    tree.write("sequences/old/w", "near");
    std::filesystem::create_directory_symlink(tree.path("far/models"), tree.path("models"));
    tree.make_folder("sequences/new");
    const std::string through_link = tree.path("models/../sequences/old/w");
    EXPECT_EQ(portable_pulse(tree.path("sequences/new/new.korseq"), through_link), through_link);
}

TEST(PortableSectorPulse, KeepsTheLettersThatTellAFileFromAnother) {
    const TempTree tree;
    const std::string sequence = tree.path("sequences/new/new.korseq");
    tree.make_folder("models");
    for (const char* name : {"sequences/foo/P", "sequences/Foo/P", "sequences/old/hard-90x.bin",
                             "sequences/old/Hard-90X.bin", "sequences/new/W", "sequences/new/w"})
        tree.write(name, "x");
    const auto seen = [&](const std::string& name) {
        return portable_pulse(sequence, tree.path("models/../sequences/" + name));
    };
    EXPECT_EQ(seen("foo/P"), "../foo/p");
    EXPECT_EQ(seen("Foo/P"), "../Foo/P");
    EXPECT_EQ(seen("old/hard-90x.bin"), "../old/hard-90x.bin");
    EXPECT_EQ(seen("old/Hard-90X.bin"), "../old/Hard-90X.bin");
    EXPECT_EQ(seen("new/w"), "w");
    EXPECT_EQ(seen("new/W"), "W");
}

TEST(PortableSectorPulse, KeepsTheLettersInTheSequenceFilesOwnFolder) {
    const TempTree tree;
    const std::string sequence = tree.path("sequences/pair/pair.korseq");
    for (const char* name : {"sequences/pair/P", "sequences/pair/p", "sequences/pair/W", "sequences/Other/P",
                             "sequences/other/P"})
        tree.write(name, "x");
    EXPECT_EQ(portable_pulse(sequence, tree.path("sequences/pair/P")), "P");
    EXPECT_EQ(portable_pulse(sequence, tree.path("sequences/pair/p")), "p");
    EXPECT_EQ(portable_pulse(sequence, tree.path("sequences/pair/W")), "w");
    EXPECT_EQ(portable_pulse(sequence, tree.path("sequences/Other/P")), "../Other/P");
    // A file that does not exist is no other one.
    EXPECT_EQ(portable_pulse(sequence, tree.path("sequences/pair/V")), "v");
}

TEST(PortableSectorPulse, AFolderInAnotherCaseIsNotTheSequenceFilesFolder) {
    const TempTree tree;
    const std::string wave = tree.path("sequences/Foo/waveforms/P1");
    const std::string spaced = tree.path("sequences/My Foo/waveforms/P1");
    tree.write("sequences/Foo/waveforms/P1", "x");
    tree.write("sequences/My Foo/waveforms/P1", "x");
    // Where the sequence file's folder is missing, nothing can be read back yet.
    EXPECT_EQ(portable_pulse(tree.path("sequences/foo/foo.korseq"), wave), "waveforms/p1");
    tree.make_folder("sequences/foo");
    tree.make_folder("sequences/my foo");
    EXPECT_EQ(portable_pulse(tree.path("sequences/foo/foo.korseq"), wave), "../Foo/waveforms/P1");
    EXPECT_EQ(portable_pulse(tree.path("sequences/my foo/my foo.korseq"), spaced), spaced);
    tree.write("sequences/foo/waveforms/p1", "another");
    EXPECT_EQ(portable_pulse(tree.path("sequences/foo/foo.korseq"), wave), "../Foo/waveforms/P1");
}

TEST(PortableSectorPulse, ARelativeFormThatIsReadAsAnotherFileIsNotTaken) {
    const TempTree tree;
    tree.make_folder("models");
    tree.write("sequences/a/p", "x");
    tree.write("Sequences/a/p", "another tree");
    const std::string other = tree.path("models/../Sequences/a/p");
    tree.make_folder("sequences/b");
    EXPECT_EQ(portable_pulse(tree.path("sequences/a/a.korseq"), other), other);
    EXPECT_EQ(portable_pulse(tree.path("sequences/b/b.korseq"), other), other);
}

TEST(PortableSectorPulse, DotFoldersOfTheSequenceDoNotHideThatAFileIsBelow) {
    const TempTree tree;
    tree.make_folder("build/runtime");
    tree.write("sequences/old/W", "x");
    const ScopedChdir runtime(tree.root() / "build/runtime");
    const std::string stored = tree.path("models/../sequences/old/W");
    tree.make_folder("models");
    tree.make_folder("sequences/new");
    EXPECT_EQ(portable_pulse("../../sequences/new/new.korseq", stored), "../old/w");
    EXPECT_EQ(portable_pulse("../../sequences/old/old.korseq", stored), "w");
    EXPECT_EQ(portable_pulse("../../sequences/new/new.korseq", tree.path("sequences/old/W")), "../old/w");
}

TEST(PortableSectorPulse, APathThatNoLineCanHoldIsSeenFromTheRootOfTheSet) {
    const TempTree tree;
    const std::string sequence = tree.path("my set/sequences/new/new.korseq");
    const std::string wave = tree.path("my set/Waves/P1.bin");
    tree.make_folder("my set/sequences/new");
    EXPECT_EQ(portable_pulse(sequence, wave), wave) << "there is no such file";
    tree.write("my set/Waves/P1.bin", "x");
    EXPECT_EQ(portable_pulse(sequence, wave), "../../waves/p1.bin");
    tree.write("my set/waves/p1.bin", "another");
    EXPECT_EQ(portable_pulse(sequence, wave), "../../Waves/P1.bin");
    // A blank below the root stays, and so does a path without one.
    tree.write("my set/my waves/P1.bin", "x");
    EXPECT_EQ(portable_pulse(sequence, tree.path("my set/my waves/P1.bin")),
              tree.path("my set/my waves/P1.bin"));
    tree.write("waves/P1.bin", "x");
    tree.make_folder("sequences/new");
    EXPECT_EQ(portable_pulse(tree.path("sequences/new/new.korseq"), tree.path("waves/P1.bin")),
              tree.path("waves/P1.bin"));
}

TEST(PortableSectorPulse, ALinkedFolderOfSequencesLeadsToAnotherRoot) {
    const TempTree tree;
    tree.make_folder("my set");
    tree.make_folder("far/sequences/new");
    tree.write("my set/waves/p1", "near");
    tree.write("far/waves/p1", "far");
    std::filesystem::create_directory_symlink(tree.path("far/sequences"), tree.path("my set/sequences"));
    const std::string wave = tree.path("my set/waves/p1");
    EXPECT_EQ(portable_pulse(tree.path("my set/sequences/new/new.korseq"), wave), wave);
}

TEST(PortableSectorPulse, FailsWhenItDoesNotFit) {
    char out[6];
    EXPECT_EQ(kor_make_portable_sector_pulse_path("/d/s/x", "/d/ab", out, sizeof out), 1);
    EXPECT_STREQ(out, "../ab");
    EXPECT_EQ(kor_make_portable_sector_pulse_path("/d/s/x", "/d/abc", out, sizeof out), 0);
    EXPECT_EQ(kor_make_portable_sector_pulse_path("/d/s/x", "/d/s/abcdef", out, sizeof out), 0);
    EXPECT_EQ(kor_make_portable_sector_pulse_path("/d/s/x", "abcdef", out, sizeof out), 0);
    EXPECT_EQ(kor_make_portable_sector_pulse_path(nullptr, "a", out, sizeof out), 0);
    EXPECT_EQ(kor_make_portable_sector_pulse_path("x", nullptr, out, sizeof out), 0);
}

TEST(PortableResult, IsALeafInTheRuntimeResults) {
    EXPECT_EQ(portable_result("/m/models/x.kormodel", results_folder() + "/Result.BIN"), "result.bin");
}

TEST(PortableResult, DeeperResultsAreSeenFromTheModelFile) {
    const std::string results = results_folder();
    EXPECT_EQ(portable_result("/m/models/x.kormodel", results + "/sub/R.bin"), results + "/sub/R.bin");
    EXPECT_EQ(portable_result(results + "/x.kormodel", results + "/sub/R.bin"), "sub/r.bin");
    EXPECT_EQ(portable_result("/m/models/x.kormodel", "/M/Models/Out/R.bin"), "out/r.bin");
    EXPECT_EQ(portable_result("/m/models/x.kormodel", "/m/out/R.bin"), "../out/r.bin");
}

TEST(PortableResult, OtherPathsStayWithSlashes) {
    EXPECT_EQ(portable_result("/m/models/x.kormodel", ""), "");
    EXPECT_EQ(portable_result("/m/models/x.kormodel", "Out\\R.bin"), "Out/R.bin");
    EXPECT_EQ(portable_result("/m/models/x.kormodel", "D:\\Out\\R.bin"), "D:/Out/R.bin");
    EXPECT_EQ(portable_result("x.kormodel", "/out/R.bin"), "/out/R.bin");
}

TEST(PortableResult, FailsWhenItDoesNotFit) {
    char out[6];
    EXPECT_EQ(kor_make_portable_result_path("/d/m/x", "/d/abc", out, sizeof out), 0);
    EXPECT_EQ(kor_make_portable_result_path("/d/m/x", "/e/abc", out, sizeof out), 0);
    EXPECT_EQ(kor_make_portable_result_path(nullptr, "a", out, sizeof out), 0);
    EXPECT_EQ(kor_make_portable_result_path("x", nullptr, out, sizeof out), 0);
}
