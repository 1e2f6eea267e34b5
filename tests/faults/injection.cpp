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

using Strings = std::set<std::string>;

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
        else if (what == "fault" && std::getline(words >> std::ws, path))
            witness.struck.insert({kind, path});
    }
    return witness;
}

std::vector<std::string> lines_of(const ProgramResult& result) {
    std::vector<std::string> lines;
    std::istringstream text(result.out + "\n" + result.err);
    std::string line;
    while (std::getline(text, line))
        lines.push_back(line);
    return lines;
}

/// The lines of the run that the undisturbed one did not print.
std::string new_lines(const ProgramResult& whole, const ProgramResult& run) {
    const std::vector<std::string> lines = lines_of(whole);
    const std::set<std::string> known(lines.begin(), lines.end());
    std::string text;
    for (const std::string& line : lines_of(run))
        if (!known.count(line))
            text += line + "\n";
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

bool says(const std::string& text, const std::string& words) {
    return text.find(words) != std::string::npos;
}

/// Messages that name no file: which use says them, of which failure. "run" and "session" are the uses with
/// --run-model and those of the menus.
struct RoleMessage {
    const char *use, *kind, *file, *text;
};
constexpr RoleMessage role_messages[] = {
    // A part of the model that ends too early: the line, and the model that it is a part of.
    {"run", "read", ".korspin", "[KOR] Load failed: parse error (line "},
    {"run", "read", ".korseq", "[KOR] Load failed: parse error (line "},
    {"session", "read", ".korspin", "[KOR] Import failed: parse error (line "},
    {"session", "read", ".korseq", "[KOR] Import failed: parse error (line "},
    {"profile", "read", ".korspin", "[KOR] Expectation profile model load failed: parse error (line "},
    {"profile", "read", ".korseq", "[KOR] Expectation profile model load failed: parse error (line "},
    {"profile", "read", ".kormodel",
     "[KOR] Expectation profile model load failed: i/o error (could not open"},
    {"voxel-signal", "read", ".korspin", "[KOR] Voxel signal model load failed: parse error (line "},
    {"voxel-signal", "read", ".korseq", "[KOR] Voxel signal model load failed: parse error (line "},
    {"voxel-signal", "read", ".kormodel", "[KOR] Voxel signal model load failed: i/o error (could not open"},
    // The arguments of the read-out modes, and the second mode's scratch file.
    {"profile", "open", "density.bin", "Expectation profile: input density file: "},
    {"profile", "read", "density.bin", "Expectation profile: incompatible density header "},
    {"profile", "read", "density.bin", "Expectation profile: truncated density matrix at point "},
    {"profile", "open", "profile.csv", "Expectation profile: output file: "},
    {"voxel-signal", "open", "density.bin", "Voxel signal: input density file: "},
    {"voxel-signal", "read", "density.bin", "Voxel signal: incompatible density file or point index ("},
    {"voxel-signal", "read", "density.bin", "Voxel signal: truncated density matrix at point "},
    {"voxel-signal", "open", "voxel.bin", "fopen(signal output): "},
    {"voxel-signal", "open", "dm.bin", "Voxel signal: cannot create temporary single-voxel density file."},
    {"voxel-signal", "write", "dm.bin", "Voxel signal: cannot write temporary density matrix."},
    {"voxel-signal", "close", "dm.bin", "Voxel signal: cannot write temporary density matrix."},
    // The folder of the run, by what it is for.
    {"run", "chdir", "", "[KOR] Warning: could not enter run scratch directory: "},
    {"voxel-signal", "chdir", "", "[KOR] Warning: could not enter run scratch directory: "},
    // The files that a session was just asked for, and its scratch files.
    {"analysis", "open", "values.txt", "ExpValNDensMat: fopen(out text): "},
    {"analysis", "open", "values.raw", "ExpValNDensMat: fopen(out bin): "},
    {"analysis", "read", "dm.bin", ">>> READ BINARY FILE ERROR <<< (dw="},
    {"analysis", "open", "spec_td.csv", "fopen(td.csv): "},
    {"analysis", "open", "spec_fd.csv", "fopen(fd.csv): "},
    {"session", "open", ".wave", "fopen(output): "},
    {"session", "open", "korsign.bin", "fopen(signal output): "},
    {"spectrum-2d", "open", "korsign.bin", "fopen: "},
    {"spectrum-2d", "open", "spectra.bin", "fopen: "},
    {"spectrum-2d", "open", "spectra.bin", "fopen(in): "},
    {"spectrum-2d", "open", "spectra.bin", "fopen(out): "},
    {"spectrum-2d", "open", "sort.bin", "fopen(in): "},
    {"spectrum-2d", "open", "sort.bin", "fopen(out): "},
};

bool is_use(const Scenario& scenario, const std::string& use) {
    if (use == "session")
        return scenario.arguments.empty();
    if (use == "run")
        return scenario.arguments.size() == 2;
    return scenario.name == use || scenario.name == "wide-" + use;
}

/// Whether the text speaks of the failed operation by the file's name, or in a message made for it.
bool tells(const std::string& text, const Scenario& scenario, const std::string& kind,
           const std::string& path) {
    const std::string name = final_name(path);
    if (!name.empty() && says(text, name))
        return true;
    return std::any_of(std::begin(role_messages), std::end(role_messages), [&](const RoleMessage& message) {
        return is_use(scenario, message.use) && kind == message.kind && name.ends_with(message.file) &&
               says(text, message.text);
    });
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

/// Results that differ from those of the undisturbed run.
Strings differing(const Scenario& scenario, const Undisturbed& whole, const Files& after) {
    Strings paths;
    for (const ResultFile& result : scenario.results)
        if (!equal(bytes_of(after, result.path), bytes_of(whole.files, result.path)))
            paths.insert(result.path);
    return paths;
}

/// A session that was told of a failed run goes on with the states that stand; one whose spectrum failed
/// keeps the signals of the spectrum before, which are in its viewer data.
bool is_of_an_earlier_state(const Scenario& scenario, const Undisturbed& whole, const std::string& path,
                            const std::string& bytes, const std::string& said) {
    if (scenario.name != "analysis")
        return false;
    const std::string name = fs::path(path).filename().string();
    const std::string lines = "\n" + said;
    const bool run_failed = says(lines, "Rotate2D: failed to copy store to dm.bin\n") ||
                            says(lines, "Rotate2D: write error to store\n") ||
                            says(lines, "Rotate2D: failed to read dm.bin header\n") ||
                            says(lines, "Rotate2D: read error from dm.bin\n") || says(lines, "\ndm.bin: ") ||
                            says(lines, "\nstore: ");
    if (run_failed && (name == "values.raw" || name == "separate.wave" || name == "average.wave"))
        return true;
    return name == "korsign.bin" &&
           (run_failed || bytes.substr(12) == whole.files.at("build/runtime/separate.wave").substr(1024));
}

/// Nothing is left that a reader would take for a whole result and that is none.
std::string judge_results(const Scenario& scenario, const Undisturbed& whole, const Files& before,
                          const Files& after, const std::string& said) {
    std::string wrong;
    const Strings paths = differing(scenario, whole, after);
    for (const ResultFile& result : scenario.results) {
        const std::string* left = bytes_of(after, result.path);
        const std::string* wanted = bytes_of(whole.files, result.path);
        if (paths.count(result.path) && left && !equal(left, bytes_of(before, result.path)) &&
            result.contents != Contents::model_set &&
            passes_for_whole(result.contents, *left, wanted ? *wanted : "") &&
            !is_of_an_earlier_state(scenario, whole, result.path, *left, said))
            wrong += "passes for whole: " + result.path + "\n";
    }
    return wrong;
}

/// A file that is written in place and met a failed write is the beginning of the whole one: what follows a
/// gap would stand in the wrong place. (Where another file failed before it, it may hold something else.)
std::string judge_gaps(const Scenario& scenario, const Undisturbed& whole, const Files& after,
                       const Witness& witness) {
    std::string wrong;
    if (witness.struck.size() != 1 || witness.struck.begin()->first != "write")
        return wrong;
    const std::string written = fs::path(witness.struck.begin()->second).filename().string();
    for (const ResultFile& result : scenario.results) {
        const std::string* left = bytes_of(after, result.path);
        const std::string* wanted = bytes_of(whole.files, result.path);
        const bool in_place = result.contents == Contents::table || result.contents == Contents::pv_wave;
        if (in_place && fs::path(result.path).filename() == written && left && wanted &&
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
    const bool cut = scenario.name == "voxel-signal" && says(said, ">>> READ BINARY FILE ERROR (dm.bin) <<<");
    if (scenario.arguments.size() == 5 && (result.status == 0) != complete && !cut)
        return complete ? "status 1 behind a whole result\n" : "status 0 without a whole result\n";
    return "";
}

/// Losses without a word that hold no danger: nothing stands there that passes for whole. A pass of the 2D
/// transform, but the first and the transpositions, that cannot open its files leaves no spectrum; data for
/// the viewer end where their signals end, and their size says so.
bool is_lost_quietly(const Scenario& scenario, const Witness& witness, const Strings& lost) {
    const auto only = [&](const std::string& kind, const Strings& names) {
        return std::all_of(witness.struck.begin(), witness.struck.end(),
                           [&](const auto& one) { return one.first == kind && names.count(one.second); });
    };
    const bool all_viewer_data =
        std::all_of(lost.begin(), lost.end(), [](const auto& path) { return path.ends_with(".wave"); });
    if (scenario.arguments.empty() && all_viewer_data && only("read", {"korsign.bin"}))
        return true;
    return scenario.name == "spectrum-2d" && lost == Strings{"build/runtime/sort.bin"} &&
           only("open", {"spectra.bin", "sort.bin"});
}

/// Failures that the program can do without when every result is whole: a folder that exists, a file that is
/// not there to be removed or may lie elsewhere, the close of a file that was read, an end of a file that was
/// already reached. No write, rename or flush, no change of the folder and no failing read is among them.
bool is_dispensable(const FaultyRun& run) {
    const std::string& kind = run.fault.kind;
    if (kind == "close")
        return std::none_of(run.witness.struck.begin(), run.witness.struck.end(),
                            [](const auto& one) { return one.second.ends_with(".new"); });
    return kind == "mkdir" || kind == "remove" || kind == "open" ||
           (kind == "read" && run.fault.error == "short");
}

/// Every failure is told, but those above.
std::string judge_messages(const Scenario& scenario, const FaultyRun& run, const Strings& lost,
                           const std::string& said) {
    const auto& struck = run.witness.struck;
    const bool told = std::any_of(struck.begin(), struck.end(), [&](const auto& one) {
        return tells(said, scenario, one.first, one.second);
    });
    if (told || struck.empty() ||
        (lost.empty() ? is_dispensable(run) : is_lost_quietly(scenario, run.witness, lost)))
        return "";
    return "no message names " + struck.begin()->second + "\n";
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
    run.fault = fault;
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
    const Strings lost = differing(scenario, whole, after);
    const std::string wrong = judge_model_set(scenario, whole, before, after) +
                              judge_results(scenario, whole, before, after, said) +
                              judge_status(scenario, run.result, lost.empty(), said) +
                              judge_gaps(scenario, whole, after, run.witness) +
                              judge_messages(scenario, run, lost, said);
    return wrong.empty() ? "" : wrong + "it said: " + said;
}

} // namespace kor_test
