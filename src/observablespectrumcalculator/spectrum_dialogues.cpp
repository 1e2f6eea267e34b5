#include "observablespectrumcalculator/spectrum_dialogues.h"

#include "consoleutil.h"
#include "korlimits.h"
#include "modelfiles.h"
#include "observablespectrumcalculator/spectrum_files.h"
#include "rfpulseplot.h"

#include <cstdio>

namespace kor {

namespace {

constexpr std::size_t table_name_size = KOR_FILE_NAME_SIZE + sizeof "_fd.csv";

void create_csv_files_and_plot(double acq_time) {
    char fd_name[table_name_size];
    if (!Create_CSV_Files(acq_time, fd_name, sizeof fd_name))
        return;
    std::printf("Frequency-domain CSV: %s\n", fd_name);
    char script_name[table_name_size + sizeof ".gp"];
    std::snprintf(script_name, sizeof script_name, "%s.gp", fd_name);
    if (replaces_model_files(script_name) ||
        !WriteGnuplotSpectrumScript(script_name, fd_name, "KOR Spectrum"))
        return;
    std::printf("Wrote gnuplot script: %s\n", script_name);
    if (AskOpenPlotNow())
        open_plot(script_name);
}

} // namespace

void SpectrumOutputMenu(double acq_time) {
    std::printf("\nOutput format:\n"
                "  1. PV-Wave/IDL (legacy)\n"
                "  2. CSV (_td.csv and _fd.csv)\n"
                "Your choice [1,2] : ");
    int choice = 0;
    if (!console_read_int(&choice))
        console_discard_line();
    if (choice == 1)
        Create_PV_WAVE_File();
    else if (choice == 2)
        create_csv_files_and_plot(acq_time);
}

int Create_CSV_Files(double acq_time, char* fd_filename, std::size_t fd_size) {
    char base[KOR_FILE_NAME_SIZE];
    std::printf("Base file name (without extension): ");
    if (!console_read_word(base, sizeof base))
        return 0;
    char td_name[table_name_size];
    char fd_name[table_name_size];
    std::snprintf(td_name, sizeof td_name, "%s_td.csv", base);
    std::snprintf(fd_name, sizeof fd_name, "%s_fd.csv", base);
    if (replaces_model_files(td_name) || replaces_model_files(fd_name))
        return 0;
    if (!write_spectrum_csv_files(td_name, fd_name, acq_time))
        return 0;
    std::printf("Wrote %s and %s\n", td_name, fd_name);
    if (fd_filename != nullptr && fd_size > 0)
        std::snprintf(fd_filename, fd_size, "%s", fd_name);
    return 1;
}

void Create_PV_WAVE_File() {
    char name[KOR_FILE_NAME_SIZE];
    std::printf("File name PV-Wave file : ");
    if (console_read_word(name, sizeof name) && !replaces_model_files(name))
        write_pv_wave_file(name);
}

int AskOpenPlotNow() {
    char answer[16];
    std::printf("Open spectrum in gnuplot now? [y/n] : ");
    return console_read_word(answer, sizeof answer) && (answer[0] == 'y' || answer[0] == 'Y');
}

} // namespace kor
