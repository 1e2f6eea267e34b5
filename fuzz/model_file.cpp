// A .kormodel file or a whole set: model, spin system and sequence, each behind a line "=====". What is not
// there is a small valid file. A set that loads is saved and loaded again.
#include "kormodel/model_file.h"
#include "kormodel/model_rules.h"
#include "kormodel/save.h"
#include "support/model_outcome.h"
#include "support/tree.h"

#include <filesystem>
#include <string>
#include <vector>

using namespace kor;

namespace {

struct Records {
    KORSpinSystemDef spin;
    KORPulseSequenceDef seq;
    KORRunConfig cfg;
};

KORModelStatus load(const std::string& name, Records& records) {
    const std::string file = kor_fuzz::tree() + "/" + name;
    return kor_fuzz::checked_status([&](char* message, std::size_t capacity) {
        return KORModel_LoadText(file.c_str(), &records.spin, &records.seq, &records.cfg, message, capacity);
    });
}

KORModelStatus save(const std::string& name, const Records& records) {
    const std::string file = kor_fuzz::tree() + "/" + name;
    return kor_fuzz::checked_status([&](char* message, std::size_t capacity) {
        return KORModel_SaveText(file.c_str(), &records.spin, &records.seq, &records.cfg, message, capacity);
    });
}

std::vector<std::string> saved_texts(const std::string& set, const std::string& name) {
    return {kor_fuzz::read_file(set + "/models/x.kormodel"),
            kor_fuzz::read_file(set + "/spin-systems/" + name + ".korspin"),
            kor_fuzz::read_file(set + "/sequences/" + name + "/" + name + ".korseq")};
}

/// Of the forms in which a result file is saved only a bare name leads back to the same file.
bool result_comes_back(const std::string& result) {
    const std::string folder = kor_fuzz::tree() + "/build/runtime/results/";
    return result.rfind(folder, 0) == 0 && result.find_first_of("/\\", folder.size()) == std::string::npos;
}

void check_round_trip(const Records& records) {
    if (!result_comes_back(records.cfg.result_filename))
        return;
    const std::string name = records.cfg.model_name;
    // A name that leads elsewhere would leave the tree.
    if (name.find_first_of("/\\") != std::string::npos || name == "." || name == "..")
        return;
    std::filesystem::create_directories(kor_fuzz::tree() + "/saved/models");
    if (save("saved/models/x.kormodel", records) == KOR_MODEL_OK) {
        const std::vector<std::string> first = saved_texts("saved", name);
        Records again;
        kor_fuzz::require(load("saved/models/x.kormodel", again) == KOR_MODEL_OK, "a saved set loads");
        kor_fuzz::require(save("saved/models/x.kormodel", again) == KOR_MODEL_OK,
                          "a set that was saved saves again");
        kor_fuzz::require(saved_texts("saved", name) == first, "saving what was saved gives the same texts");
    }
    std::filesystem::remove_all(kor_fuzz::tree() + "/saved");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string names[] = {"models/slice.kormodel", "spin-systems/pair.korspin",
                                        "sequences/slice/slice.korseq"};
    static const std::vector<std::string> valid = [] {
        kor_fuzz::write_small_models();
        std::vector<std::string> texts;
        for (const std::string& name : names)
            texts.push_back(kor_fuzz::read_file(name));
        return texts;
    }();
    kor_fuzz::Input input(data, size);
    for (std::size_t i = 0; i < valid.size(); ++i) {
        const std::string text = input.section();
        kor_fuzz::write_file(names[i], text.empty() ? valid[i] : text);
    }
    Records records;
    if (load(names[0], records) != KOR_MODEL_OK)
        return 0;
    kor_fuzz::require(KORModel_ValidateAll(&records.spin, &records.seq, &records.cfg, nullptr, 0) ==
                          KOR_MODEL_OK,
                      "a model that loads is valid");
    check_round_trip(records);
    return 0;
}
