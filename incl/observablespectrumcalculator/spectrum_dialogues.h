// Floor 2.22 - materials: the spectrum output menu
//
// Asks for names and calls the writers of spectrum_files.h on "korsign.bin" of the working directory.
#pragma once

#include <cstddef>

namespace kor {

/// Offers the two output formats for a signal of acq_time seconds; any other answer returns. After the
/// CSV tables it writes the plot script and can open it.
void SpectrumOutputMenu(double acq_time);
/// Asks for a base name and writes NAME_td.csv and NAME_fd.csv; fd_filename (may be null, fd_size
/// characters) receives the second name, cut to fit. 1, or 0 on failure (messages of the writer).
int Create_CSV_Files(double acq_time, char* fd_filename, std::size_t fd_size);
/// Asks for a name and writes the PV-WAVE/IDL file.
void Create_PV_WAVE_File();
/// 1 when the answer starts with y or Y.
int AskOpenPlotNow();

} // namespace kor
