// Floor 3.13 - simulator: labels and the readiness verdict of the run menu
#pragma once

namespace kor {

const char* SequenceTypeLabel(int type);
const char* SectorTypeLabel(int type);
void PrintNonInteractiveStatus();

} // namespace kor
