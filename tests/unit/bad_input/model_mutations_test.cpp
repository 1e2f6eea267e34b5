// Every shipped model set, damaged tens of thousands of times: a set loads, passes every check and comes back
// from saving unchanged, or it is refused with a message that says what and where and leaves the current
// model alone.
#include "kor/runtime_state.h"
#include "kor/snapshot.h"
#include "kormodel.h"
#include "support/build_paths.h"
#include "support/case_count.h"
#include "support/mutator.h"
#include "support/temp_tree.h"
#include "unit/kormodel/model_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

namespace {

/// The three texts of a set and where they lie.
struct SetFiles {
    std::string names[3]; // model, spin system, sequence
    std::string texts[3];
};

std::string value_of(const std::string& text, const std::string& key) {
    const std::size_t at = text.find(key + ": ") + key.size() + 2;
    return text.substr(at, text.find('\n', at) - at);
}

/// The shipped sets, copied into the working directory.
std::vector<SetFiles> shipped_sets() {
    for (const char* folder : {"models", "spin-systems", "sequences"})
        fs::copy(fs::path(source_folder()) / folder, folder, fs::copy_options::recursive);
    std::vector<SetFiles> sets;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::current_path() / "models")) {
        SetFiles set;
        set.names[0] = entry.path().string();
        set.texts[0] = read_file(set.names[0]);
        for (const int part : {1, 2}) {
            const char* key = part == 1 ? "spin_system_file" : "sequence_file";
            set.names[part] = (entry.path().parent_path() / value_of(set.texts[0], key)).string();
            set.texts[part] = read_file(set.names[part]);
        }
        sets.push_back(set);
    }
    std::sort(sets.begin(), sets.end(),
              [](const SetFiles& a, const SetFiles& b) { return a.names[0] < b.names[0]; });
    return sets;
}

/// A refusal says in which line, of which file, or which field of which record is wrong.
bool is_telling(const std::string& message) {
    static const char* const places[] = {"line ",
                                         "'",
                                         "sector ",
                                         "nspins=",
                                         "spin_quantum_numbers[",
                                         "Hilbert dimension ",
                                         "j_hz",
                                         "sector_count=",
                                         "sequence_type=",
                                         "ndx=",
                                         "ndy=",
                                         "ndz=",
                                         "dx_cm/dy_cm/dz_cm",
                                         "result_filename",
                                         "one or more required spin keys",
                                         "one or more required sequence keys"};
    return std::any_of(std::begin(places), std::end(places),
                       [&](const char* place) { return message.find(place) != std::string::npos; });
}

void expect_telling(const Outcome& outcome) {
    EXPECT_LT(outcome.message.size(), std::size_t{KOR_MESSAGE_SIZE});
    EXPECT_TRUE(is_telling(outcome.message)) << outcome.message;
    EXPECT_GE(outcome.status, KOR_MODEL_ERR_IO);
    EXPECT_LE(outcome.status, KOR_MODEL_ERR_INCOMPATIBLE);
}

std::vector<std::string> saved_texts(const fs::path& root, const std::string& name) {
    return {read_file(root / "models/x.kormodel"),
            read_file(root / "spin-systems" / file_name(name + ".korspin")),
            read_file(root / "sequences" / file_name(name) / file_name(name + ".korseq"))};
}

/// Saves, loads and saves again: the same texts, and the records that the texts can hold.
void expect_round_trip(const Model& model) {
    const fs::path root = fs::current_path() / "saved";
    const std::string file = plain_name(root / "models/x.kormodel");
    const std::string name = model.cfg.model_name;
    fs::create_directories(root / "models");
    const Outcome saved = save_model(file, model);
    if (saved != ok) {
        // A set's name becomes a file name; not every text can be one.
        EXPECT_EQ(saved.status, KOR_MODEL_ERR_IO) << saved.message;
        EXPECT_NE(saved.message, "");
    } else if (name.find_first_of("/\\") == std::string::npos) {
        const std::vector<std::string> first = saved_texts(root, name);
        static Model again;
        ASSERT_EQ(load_model(file, again), ok);
        EXPECT_EQ(save_model(file, again), ok);
        EXPECT_EQ(saved_texts(root, name), first);
        EXPECT_EQ(again.spin.nspins, model.spin.nspins);
        EXPECT_EQ(again.seq.sector_count, model.seq.sector_count);
        EXPECT_EQ(again.cfg.ndx, model.cfg.ndx);
    }
    fs::remove_all(root);
}

KORLegacySnapshot definition_now() {
    KORLegacySnapshot snapshot;
    CaptureLegacySnapshot(&snapshot);
    return snapshot;
}

/// Loads the file as the program does; a refused one leaves the definition of the current model as it was.
Outcome enter_model(const std::string& file) {
    const KORLegacySnapshot before = definition_now();
    const Outcome outcome = outcome_of([&](char* message, std::size_t size) {
        return KORModel_LoadCurrentLegacyStateFromText(file.c_str(), message, size);
    });
    if (outcome.status != KOR_MODEL_OK) {
        const KORLegacySnapshot after = definition_now();
        EXPECT_EQ(std::memcmp(&before, &after, sizeof after), 0) << "a refused model changed the current one";
    }
    return outcome;
}

struct Tally {
    int refused = 0, loaded = 0;
};

void expect_refused_or_sound(const std::string& file, Tally& tally) {
    static Model model;
    const Outcome outcome = load_model(file, model);
    if (outcome.status != KOR_MODEL_OK) {
        ++tally.refused;
        expect_telling(outcome);
        EXPECT_EQ(enter_model(file), outcome);
        return;
    }
    ++tally.loaded;
    EXPECT_EQ(outcome.message, "");
    EXPECT_EQ(validate_model(model), ok);
    expect_round_trip(model);
}

/// cases_here(count) damages of file `part` (0 model, 1 spin system, 2 sequence; 3 one to three of all
/// files).
void damage_sets(unsigned seed, int count, std::size_t part) {
    std::printf("seed %u\n", seed);
    const TempTree tree(memory_folder());
    const std::vector<SetFiles> sets = shipped_sets();
    Mutator mutator(seed);
    Tally tally;
    const int mutants = cases_here(count);
    for (int i = 0; i < mutants && !testing::Test::HasFailure(); ++i) {
        const SetFiles& set = sets[mutator.below(sets.size())];
        SCOPED_TRACE("seed " + std::to_string(seed) + ", mutant " + std::to_string(i) + " of " +
                     set.names[0]);
        bool damaged[3] = {};
        for (std::size_t left = part == 3 ? 1 + mutator.below(3) : 1; left > 0; --left) {
            const std::size_t k = part == 3 ? mutator.below(3) : part;
            write_file(set.names[k],
                       mutator.damaged_text(damaged[k] ? read_file(set.names[k]) : set.texts[k]));
            damaged[k] = true;
        }
        expect_refused_or_sound(set.names[0], tally);
        for (const std::size_t k : {0U, 1U, 2U})
            if (damaged[k])
                write_file(set.names[k], set.texts[k]);
    }
    // Most damages are fatal, but not all of them: both outcomes are covered.
    EXPECT_GT(tally.refused, mutants / 4);
    EXPECT_GT(tally.loaded, mutants / 20);
}

} // namespace

TEST(ModelMutations, DamagedModelFiles) {
    damage_sets(20011, 15000, 0);
}

TEST(ModelMutations, DamagedSpinSystems) {
    damage_sets(20021, 15000, 1);
}

TEST(ModelMutations, DamagedSequences) {
    damage_sets(20023, 15000, 2);
}

TEST(ModelMutations, SetsWithSeveralDamages) {
    damage_sets(20029, 15000, 3);
}

TEST(ModelMutations, ARefusedModelLeavesTheWholeStateUntouched) {
    const TempTree tree(memory_folder());
    const std::vector<SetFiles> sets = shipped_sets();
    ASSERT_EQ(enter_model(sets[0].names[0]), ok);
    static RuntimeState before;
    std::memcpy(static_cast<void*>(&before), &g_runtime, sizeof before);
    Mutator mutator(20047);
    int refused = 0;
    for (int i = 0; i < 300; ++i) {
        write_file("models/damaged.kormodel", mutator.damaged_text(sets[1].texts[0]).substr(0, 200));
        refused += enter_model(tree.path("models/damaged.kormodel")).status != KOR_MODEL_OK;
    }
    EXPECT_EQ(refused, 300);
    EXPECT_EQ(std::memcmp(&before, &g_runtime, sizeof before), 0);
}
