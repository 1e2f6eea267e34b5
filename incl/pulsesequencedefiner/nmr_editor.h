// Floor 4.28 - workshop: editing a 1D or 2D NMR sequence at the console
#pragma once

namespace kor {

/// The editor's menu, until the user goes back or the input ends.
void Edit2DPulseSequence();
/// Asks for type, content, waveform file, offset and note of sector k (1..KOR_MAX_SECTORS). A second
/// evolution sector is refused. 1, also when the sector was refused; 0 when the input has ended for good.
int Define2DSeqSector(int k);

} // namespace kor
