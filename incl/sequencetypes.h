// Floor 0.5 - ground: the numbers that name the families of sequences and the kinds of their sectors
//
// They stand in the files of a model and in the runtime state, which hold plain ints: any other number may
// arrive there and is refused or told where it does.
#pragma once

namespace kor {

/// Family of a sequence: spatially resolved, or 1D/2D NMR. 0 stands for none.
enum SequenceFamily { FAMILY_SPATIAL = 1, FAMILY_NMR = 2 };

/// Kind of a sector of the 1D/2D family: every row alike, or row k for k - 1 times the sector.
enum NmrSectorType { NMR_SECTOR_NORMAL = 1, NMR_SECTOR_EVOLUTION = 2 };

} // namespace kor
