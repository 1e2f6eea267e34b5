// Floor 3.13 - simulator: labels and the readiness verdict of the run menu
#pragma once

namespace kor {

/// Family: 0 "<unset>", 1 "spatial resolved", 2 "1D/2D NMR", else "<unknown>".
const char* SequenceTypeLabel(int type);
/// Sector type of the spatially resolved family: 0 "<unset>", 1..6 the kind of pulse or waiting time, else
/// "<unknown>".
const char* SectorTypeLabel(int type);
/// The lines that every status block begins with: spins, family, number of sectors.
void PrintModelSizeLines();
/// The status block of the run menu: model state, result file and, in one line, whether the model can run
/// or what is missing first.
void PrintNonInteractiveStatus();

} // namespace kor
