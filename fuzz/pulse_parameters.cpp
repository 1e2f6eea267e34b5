// A pulse parameter file (one 2D sinc pulse per line) and, in its first line, a sector's remark with the
// optimiser's "group[name=value, ...]".
#include "korlimits.h"
#include "kormodel/sector_optimisation.h"
#include "rfpulselib/dialogues.h"
#include "support/input.h"
#include "support/tree.h"

#include <cstring>
#include <memory>
#include <vector>

using namespace kor;

namespace {

void check_remark(const std::string& remark, std::size_t capacity) {
    const std::unique_ptr<char[]> out(new char[capacity]);
    for (const char* name : {"targetMode", "productOperator", "manualRecipe"}) {
        std::memset(out.get(), '?', capacity);
        const int found = kormodel_metadata_value(remark.c_str(), "optimizeRf", name, out.get(), capacity);
        kor_fuzz::require(std::memchr(out.get(), '\0', capacity) != nullptr,
                          "a value ends within its buffer");
        kor_fuzz::require(found || out[0] == '\0', "no value is an empty text");
        kor_fuzz::require(remark.find(out.get()) != std::string::npos, "a value stands in the remark");
    }
    kormodel_operator_is_defined(remark.c_str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kor_fuzz::Input input(data, size);
    const std::size_t capacity = 1 + input.byte();
    const int samples = static_cast<int>(input.byte() % 33);
    check_remark(input.line(), capacity);
    kor_fuzz::write_file("build/runtime/x.txt", input.rest());
    const kor_fuzz::Answers answers("x.txt\n");
    std::vector<double> xb(static_cast<std::size_t>(samples), 1.0);
    std::vector<double> yb(static_cast<std::size_t>(samples), 1.0);
    const double step = 1e-5;
    fmpulseproc6(&samples, &step, xb.data(), yb.data());
    return 0;
}
