// Floor 4.25 - workshop: what happens in a sector: a pulse, a pulse from disk, or waiting
#pragma once

namespace kor {

enum class SectorContent {
    defined,     // noti, sectdur and the RF waveform of the sector are set
    unknown,     // the answer named no content (told); nothing was changed but the cleared waveform
    input_ended, // for good: the editor is left
};
/// Asks for the content of sector k and fills noti[k], sectdur[k] (s) and the RF waveform: ap samples of ti
/// seconds in xb and yb, the rest of the waveform arrays zero. ap is the typed number of intervals brought
/// into 0..KOR_MAX_RF_POINTS, by clamp_ap with its warning when `warn` is set.
SectorContent define_sector_content(int k, bool warn);

} // namespace kor
