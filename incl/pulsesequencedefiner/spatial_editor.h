// Floor 4.27 - workshop: editing a spatially resolved sequence at the console
#pragma once

namespace kor {

/// The editor's menu, until the user goes back or the input ends. Clamps the grid before each round.
void EditPulseSequence();
/// Asks for content, offset, gradients, waveform file and note of sector k (1..KOR_MAX_SECTORS). 1, also when
/// the content was unknown; 0 when the input has ended for good.
int DefineSeqSector(int k);

} // namespace kor
