// Floor 4.26 - workshop: what both sequence editors do alike
#pragma once

namespace kor {

using DefineSector = int (*)(int k);

/// Asks for a sector number, checks it and has that sector defined. 1, or 0 when the input has ended for
/// good.
int define_chosen_sector(DefineSector define_sector);
/// Asks for the result file name: one line; an empty answer clears the name. 1, or 0 at the end of input.
int define_result_file();
/// Static offset of sector k, Hz. 1, or 0 when the input has ended for good.
int ask_sector_offset(int k);
/// Free remark of sector k; a message for one that a model file cannot hold. 1, or 0 when the input has ended
/// for good; an end of input at a terminal is an empty remark.
int ask_sector_note(int k);
/// The title of a sector's dialogue.
void print_sector_header(const char* family, int k);

} // namespace kor
