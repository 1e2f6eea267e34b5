#include "editing_actions.h"

namespace kor {

void define_spin_system() {}

void define_spatial_domain() {}

void compose_sequence() {}

void optimise_sector() {}

} // namespace kor
