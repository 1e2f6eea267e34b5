// Floor 4.5 - workshop: importing and exporting model files from the menus
#pragma once

namespace kor {

void import_kor_model();
void export_loaded_kor_model();
void KORExportCurrentModelInteractive();

} // namespace kor
