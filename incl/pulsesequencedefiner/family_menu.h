// Floor 4.29 - workshop: choosing the sequence family and entering its editor
#pragma once

namespace kor {

/// The family menu, until the user goes back or the input ends.
void ComposePulseSequence();

} // namespace kor
