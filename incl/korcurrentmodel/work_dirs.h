// Floor 4.1 - workshop: the runtime folder and the scratch folder of a run
#pragma once

namespace kor {

void enter_runtime_work_dir();
void enter_private_model_run_work_dir(const char* model_path);

} // namespace kor
