// Floor 4.23 - workshop: what the sequence editors show of the current model before their menu
#pragma once

namespace kor {

/// The editor's title and the model file, then spin system, grid (spatially resolved family only), family,
/// number of sectors and result file.
void print_model_state(int family);
/// What is best done next: spins, grid (spatially resolved family only), sectors, then saving and running.
void print_next_step(int family);
/// Defined, missing and next sector numbers, and a summary of every defined sector.
void print_sector_overview(int family);

} // namespace kor
