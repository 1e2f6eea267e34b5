#include "faults/injection.h"
#include "faults/failing_files_path.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>
#include <sstream>

namespace fs = std::filesystem;

namespace kor_test {

namespace {

constexpr double LONGEST_RUN_S = 60.0;

Witness read_report(const std::string& file) {
    Witness witness;
    std::istringstream lines(fs::exists(file) ? read_file(file) : "");
    std::string line, path;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string what, kind;
        words >> what >> kind;
        if (what == "count")
            words >> witness.counts[kind];
        else if (what == "fault" && std::getline(words >> std::ws, path)) {
            witness.paths.insert(path);
            if (kind == "write")
                witness.written.insert(path);
        }
    }
    return witness;
}

std::multiset<std::string> lines_of(const ProgramResult& result) {
    std::multiset<std::string> lines;
    std::istringstream text(result.out + "\n" + result.err);
    std::string line;
    while (std::getline(text, line))
        lines.insert(line);
    return lines;
}

/// What the run printed that the undisturbed one did not.
std::string new_lines(const ProgramResult& whole, const ProgramResult& run) {
    std::multiset<std::string> known = lines_of(whole);
    std::string text;
    for (const std::string& line : lines_of(run)) {
        const auto found = known.find(line);
        if (found != known.end())
            known.erase(found);
        else
            text += line + "\n";
    }
    return text;
}

/// A file that is written as NAME.PID.new until it is whole is known to the user as NAME.
std::string final_name(const std::string& path) {
    const std::string name = fs::path(path).filename().string();
    if (!name.ends_with(".new"))
        return name;
    const std::string numbered = name.substr(0, name.size() - 4);
    return numbered.substr(0, numbered.rfind('.'));
}

/// Messages that speak of a file by what it is for; a model file that ends too early by what is wrong in it.
bool names_its_role(const std::string& text, const std::string& path) {
    const std::pair<const char*, const char*> roles[] = {
        {"/runtime", "runtime directory"},
        {"/runtime", "run scratch directory"},
        {"/spin-systems", "could not create split output directories"},
        {"/sequences", "could not create split output directories"},
        {".kormodel", "parse error ("},
        {".kormodel", "i/o error ("},
        {".korspin", "parse error ("},
        {".korseq", "parse error ("},
        {"density.bin", "Expectation profile: input density file"},
        {"density.bin", "Expectation profile: truncated density matrix"},
        {"density.bin", "Expectation profile: incompatible density header"},
        {"density.bin", "Voxel signal: input density file"},
        {"density.bin", "Voxel signal: truncated density matrix"},
        {"density.bin", "Voxel signal: incompatible density file"},
        {"profile.csv", "Expectation profile: output file"},
        {"voxel.bin", "fopen(signal output)"},
        {"store", "dm.bin"},
        {"dm.bin", "temporary single-voxel density file"},
        {"dm.bin", "cannot write temporary density matrix"},
        {"dm.bin", ">>> READ BINARY FILE ERROR"},
        {"values.txt", "fopen(out text)"},
        {"values.raw", "fopen(out bin)"},
        {"spec_td.csv", "fopen(td.csv)"},
        {"spec_fd.csv", "fopen(fd.csv)"},
        {".wave", "fopen(output)"},
        {"korsign.bin", "fopen"},
        {"spectra.bin", "fopen"},
        {"sort.bin", "fopen"},
    };
    for (const auto& [file, role] : roles)
        if (path.find(file) != std::string::npos && text.find(role) != std::string::npos)
            return true;
    return false;
}

bool says_what_failed(const std::string& text, const std::string& path) {
    const std::string name = final_name(path);
    return (!name.empty() && text.find(name) != std::string::npos) || names_its_role(text, path);
}

bool is_model_file(const std::string& name) {
    return name.starts_with("models/") || name.starts_with("spin-systems/") ||
           name.starts_with("sequences/") || name == "density.bin";
}

const std::string* bytes_of(const Files& files, const std::string& name) {
    const auto found = files.find(name);
    return found == files.end() ? nullptr : &found->second;
}

bool equal(const std::string* a, const std::string* b) {
    return a && b ? *a == *b : a == b;
}

/// Every file of the model is what it was; one that the run replaces may be the new one. A session that goes
/// on behind a failure may answer other questions than it was written for: what it adds there is its own.
std::string judge_model_set(const Scenario& scenario, const Undisturbed& whole, const Files& before,
                            const Files& after) {
    std::set<std::string> replaced;
    for (const ResultFile& result : scenario.results)
        replaced.insert(result.path);
    Files seen = before;
    seen.insert(after.begin(), after.end());
    std::string wrong;
    for (const auto& [name, bytes] : seen) {
        if (!is_model_file(name) || equal(bytes_of(before, name), bytes_of(after, name)))
            continue;
        const bool added = !before.count(name) && scenario.arguments.empty() && !name.ends_with(".new");
        if (!replaced.count(name) && !added)
            wrong += "changed: " + name + "\n";
        else if (!added && !equal(bytes_of(after, name), bytes_of(whole.files, name)))
            wrong += "neither old nor new: " + name + "\n";
    }
    return wrong;
}

/// Nothing is left that a reader would take for a whole result and that is none.
std::string judge_results(const Scenario& scenario, const Undisturbed& whole, const Files& before,
                          const Files& after, bool* complete) {
    std::string wrong;
    for (const ResultFile& result : scenario.results) {
        const std::string* left = bytes_of(after, result.path);
        const std::string* wanted = bytes_of(whole.files, result.path);
        if (equal(left, wanted))
            continue;
        *complete = false;
        if (left && !equal(left, bytes_of(before, result.path)) && result.contents != Contents::model_set &&
            passes_for_whole(result.contents, *left, wanted ? *wanted : ""))
            wrong += "passes for whole: " + result.path + "\n";
    }
    return wrong;
}

/// A file that is written in place and met a failed write is the beginning of the whole one: what follows a
/// gap would stand in the wrong place. (Where another file failed before it, it may hold something else.)
std::string judge_gaps(const Scenario& scenario, const Undisturbed& whole, const Files& after,
                       const Witness& witness) {
    std::string wrong;
    if (witness.paths.size() != 1 || witness.paths != witness.written)
        return wrong;
    for (const ResultFile& result : scenario.results) {
        const std::string* left = bytes_of(after, result.path);
        const std::string* wanted = bytes_of(whole.files, result.path);
        const bool in_place = result.contents == Contents::table || result.contents == Contents::pv_wave;
        if (in_place && witness.written.count(fs::path(result.path).filename().string()) && left && wanted &&
            !wanted->starts_with(*left))
            wrong += "has a gap: " + result.path + "\n";
    }
    return wrong;
}

std::string judge_status(const Scenario& scenario, const ProgramResult& result, bool complete,
                         const std::string& said) {
    if (result.timed_out)
        return "hangs\n";
    if (result.status != 0 && result.status != 1)
        return "ends with status " + std::to_string(result.status) + "\n";
    // A signal may be cut short by its input, with a message and status 0; a profile may not.
    const bool cut = said.find("READ BINARY FILE ERROR (dm.bin)") != std::string::npos;
    if (scenario.arguments.size() == 5 && (result.status == 0) != complete && !cut)
        return complete ? "status 1 behind a whole result\n" : "status 0 without a whole result\n";
    return "";
}

} // namespace

std::string describe(const Fault& fault) {
    return fault.kind + " " + std::to_string(fault.at) + " " + fault.error + (fault.onward ? " onward" : "");
}

FaultyRun run_with_fault(const Scenario& scenario, const Fault& fault) {
    scenario.reset();
    const TempTree witness;
    // The loader takes a blank in LD_PRELOAD for the end of a name; the temporary folder has none.
    const std::string library = witness.path("failing_files.so");
    fs::create_symlink(failing_files_library(), library);
    ProgramCall call;
    call.timeout_s = LONGEST_RUN_S;
    call.environment = {{"LD_PRELOAD", library},
                        {"KOR_FAULT_KIND", fault.kind},
                        {"KOR_FAULT_AT", std::to_string(fault.at)},
                        {"KOR_FAULT_ERROR", fault.error},
                        {"KOR_FAULT_ONWARD", fault.onward ? "1" : "0"},
                        {"KOR_FAULT_REPORT", witness.path("report")}};
    FaultyRun run;
    run.result = run_program(scenario.call(call));
    run.witness = read_report(witness.path("report"));
    return run;
}

Undisturbed run_undisturbed(const Scenario& scenario) {
    Undisturbed whole;
    whole.run = run_with_fault(scenario, {});
    whole.files = scenario.files();
    return whole;
}

std::vector<Fault> all_faults(const Witness& undisturbed) {
    std::vector<Fault> faults;
    for (const auto& [kind, count] : undisturbed.counts) {
        std::vector<std::string> errors = {std::to_string(EIO), std::to_string(ENOSPC),
                                           std::to_string(EACCES)};
        if (kind == "read" || kind == "write")
            errors.push_back("short");
        for (long at = 1; at <= count; ++at)
            for (const std::string& error : errors)
                for (const bool onward : {false, true})
                    faults.push_back({kind, at, error, onward});
    }
    return faults;
}

std::string judge(const Scenario& scenario, const Undisturbed& whole, const Files& before,
                  const FaultyRun& run) {
    const Files after = scenario.files();
    const std::string said = new_lines(whole.run.result, run.result);
    bool complete = true;
    std::string wrong = judge_model_set(scenario, whole, before, after);
    const std::string mistaken = judge_results(scenario, whole, before, after, &complete);
    wrong += judge_status(scenario, run.result, complete, said);
    wrong += judge_gaps(scenario, whole, after, run.witness);
    const std::set<std::string>& paths = run.witness.paths;
    const bool named = std::any_of(paths.begin(), paths.end(),
                                   [&](const std::string& path) { return says_what_failed(said, path); });
    // A session goes on behind a failure that it was told of, with the states that stand.
    if (!scenario.arguments.empty() || !named)
        wrong += mistaken;
    // Data for the viewer end quietly where their signals end; their size says so. A pass of the 2D transform
    // that cannot open its files ends quietly and leaves no spectrum.
    const bool quiet = said.empty() && mistaken.empty() &&
                       (paths.count("korsign.bin") || paths.count("spectra.bin") || paths.count("sort.bin"));
    if (!complete && !named && !quiet)
        wrong += "no message names " + (paths.empty() ? "the file" : *paths.begin()) + "\n";
    return wrong.empty() ? "" : wrong + "it said: " + said;
}

} // namespace kor_test
