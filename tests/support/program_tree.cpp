#include "support/program_tree.h"
#include "support/build_paths.h"

#include "support/temp_tree.h"

#include <algorithm>
#include <cstdio>

namespace fs = std::filesystem;

namespace kor_test {

namespace {

std::string number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

std::string spin_text(const ModelText& model) {
    std::string quantum = "spin_quantum_numbers:", intensity = "relative_intensities:",
                offset = "resonance_offsets_hz:";
    for (std::size_t i = 0; i < model.offsets_hz.size(); ++i) {
        quantum += " 1";
        intensity += " " + (model.intensities.empty() ? "1" : number(model.intensities[i]));
        offset += " " + number(model.offsets_hz[i]);
    }
    std::string text = "format_version: 1\nnspins: " + std::to_string(model.offsets_hz.size()) + "\n" +
                       quantum + "\n" + intensity + "\n" + offset + "\ncoupling_mode: 1\n";
    if (model.offsets_hz.size() > 1)
        text += "jcoupling_hz: 1 2 " + number(model.j_hz) + "\n";
    return text;
}

std::string sequence_text(const ModelText& model) {
    std::string text = "format_version: 1\nsequence_type: " + std::to_string(model.sequence_type) +
                       "\nnumber_of_sectors: " + std::to_string(model.sectors.size()) + "\n";
    for (std::size_t k = 1; k <= model.sectors.size(); ++k) {
        const SectorText& sector = model.sectors[k - 1];
        const std::string index = ": " + std::to_string(k) + " ";
        text += "sector_type" + index + std::to_string(sector.type) + "\n";
        text += "sector_timepoints" + index + std::to_string(sector.points) + "\n";
        text += "sector_evolpoints" + index + std::to_string(sector.rows) + "\n";
        text += "sector_duration_s" + index + number(sector.duration_s) + "\n";
        text += "sector_pulsefile" + index + "waveforms/sector" + std::to_string(k) + "\n";
        text += "sector_statoff_hz" + index + number(sector.offset_hz) + "\n";
        text += "sector_remark" + index + sector.remark + "\n";
    }
    return text;
}

std::string model_text(const ModelText& model) {
    return "format_version: 1\nmodel_name: " + model.name + "\nspin_system_file: ../spin-systems/" +
           model.name + ".korspin\nsequence_file: ../sequences/" + model.name + "/" + model.name +
           ".korseq\nndx: " + std::to_string(model.ndx) + "\nndy: " + std::to_string(model.ndy) +
           "\nndz: " + std::to_string(model.ndz) + "\nx0_cm: " + number(model.x0_cm) +
           "\ny0_cm: " + number(model.y0_cm) + "\nz0_cm: " + number(model.z0_cm) +
           "\ndx_cm: " + number(model.dx_cm) + "\ndy_cm: " + number(model.dy_cm) +
           "\ndz_cm: " + number(model.dz_cm) + "\nresult_file: " + model.name + ".bin\n";
}

} // namespace

ProgramTree::ProgramTree(const fs::path& root) : root_(fs::canonical(root)) {
    fs::create_directories(root_ / "build");
    fs::copy_file(kor_test::kor_program(), executable());
}

std::string ProgramTree::executable() const {
    return root() + "/build/" + program_file();
}

ProgramResult ProgramTree::run(const std::vector<std::string>& arguments, const std::string& input) const {
    return run_program({.executable = executable(),
                        .arguments = arguments,
                        .input = input,
                        .working_dir = root(),
                        .timeout_s = 600.0});
}

std::string ProgramTree::write_model(const ModelText& model) const {
    const fs::path sequence = root_ / "sequences" / file_name(model.name);
    write_file(root_ / "spin-systems" / file_name(model.name + ".korspin"), spin_text(model));
    write_file(sequence / file_name(model.name + ".korseq"), sequence_text(model));
    for (std::size_t k = 1; k <= model.sectors.size(); ++k) {
        std::string samples;
        for (const std::vector<double>& block : model.sectors[k - 1].blocks)
            samples += bytes_of<double>(block);
        write_file(sequence / "waveforms" / ("sector" + std::to_string(k)), samples);
    }
    const std::string path = root() + "/models/" + model.name + ".kormodel";
    write_file(file_name(path), model_text(model));
    return path;
}

std::string ProgramTree::waveform(const std::string& name, int sector) const {
    return root() + "/models/../sequences/" + name + "/waveforms/sector" + std::to_string(sector);
}

std::vector<fs::path> ProgramTree::scratch_folders() const {
    std::vector<fs::path> folders;
    const fs::path runs = root_ / "build/runtime/runs";
    if (fs::exists(runs))
        for (const auto& entry : fs::directory_iterator(runs))
            folders.push_back(entry.path());
    std::sort(folders.begin(), folders.end());
    return folders;
}

} // namespace kor_test
