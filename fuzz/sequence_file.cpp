// A .korseq file; the waveform files "pulse", "waveforms/wait" and, in the RF output folder, "made" exist.
#include "kormodel/sequence_file.h"
#include "support/model_outcome.h"
#include "support/tree.h"

using namespace kor;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string file = [] {
        kor_fuzz::write_file("sequences/x/pulse", "");
        kor_fuzz::write_file("sequences/x/waveforms/wait", "");
        kor_fuzz::write_file("rf-output/made", "");
        return kor_fuzz::tree() + "/sequences/x/x.korseq";
    }();
    kor_fuzz::write_file("sequences/x/x.korseq", {reinterpret_cast<const char*>(data), size});
    KORPulseSequenceDef seq;
    const KORModelStatus status = kor_fuzz::checked_status([&](char* message, std::size_t capacity) {
        return kor_load_pulse_sequence_text(file.c_str(), &seq, message, capacity);
    });
    if (status == KOR_MODEL_OK)
        kor_fuzz::require(KORPulseSequenceDef_Validate(&seq, nullptr, 0) == KOR_MODEL_OK,
                          "a sequence that loads is valid");
    return 0;
}
