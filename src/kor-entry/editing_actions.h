// The menu items that edit the current model: one function for each, so that every menu that offers one
// reaches the same dialogue.
#pragma once

namespace kor {

void define_spin_system();
void define_spatial_domain();
void compose_sequence();
void optimise_sector();

} // namespace kor
