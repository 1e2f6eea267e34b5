// Floor 4.30 - workshop: defining and writing out the current pulse
#pragma once

namespace kor {

/// The pulse menu, once: fills ap, ti, h, xb and yb of g_runtime through the pulse dialogues or the
/// optimiser's start pulse and marks the pulse as defined, or opens the spatial sequence editor. ti counts as
/// the total pulse time: h = ti / ap.
void RedefinePulseHamiltonian();
/// Writes Bx(t) or By(t), ap values in rad/s, to a text file chosen at the console.
void OutputPulse();

} // namespace kor
