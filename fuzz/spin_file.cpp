// A .korspin file.
#include "kormodel/spin_system_file.h"
#include "support/model_outcome.h"
#include "support/tree.h"

using namespace kor;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string file = kor_fuzz::tree() + "/x.korspin";
    kor_fuzz::write_file("x.korspin", {reinterpret_cast<const char*>(data), size});
    KORSpinSystemDef spin;
    const KORModelStatus status = kor_fuzz::checked_status([&](char* message, std::size_t capacity) {
        return kor_load_spin_system_text(file.c_str(), &spin, message, capacity);
    });
    if (status == KOR_MODEL_OK)
        kor_fuzz::require(KORSpinSystemDef_Validate(&spin, nullptr, 0) == KOR_MODEL_OK,
                          "a spin system that loads is valid");
    return 0;
}
