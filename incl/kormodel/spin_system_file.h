// Floor 2.10 - materials: reading a .korspin file
#pragma once

#include "kormodel/records.h"

namespace kor {

KORModelStatus kor_load_spin_system_text(const char* filename, KORSpinSystemDef* def, char* errbuf,
                                         std::size_t errbufsz);

} // namespace kor
