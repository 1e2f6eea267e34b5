// A product-operator expression over 1 to 4 spins 1/2: one byte for the number of spins, then the text.
#include "kor/product_operators.h"
#include "korlimits.h"
#include "support/input.h"

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace kor;

namespace {

double frobenius_norm(int n, const CMatrix& matrix) {
    double sum = 0.0;
    for (int r = 1; r <= n; ++r)
        for (int c = 1; c <= n; ++c)
            sum += matrix[r][c][1] * matrix[r][c][1] + matrix[r][c][2] * matrix[r][c][2];
    return std::sqrt(sum);
}

void check_product(const std::string& text, int spins) {
    char symbolic[KOR_MAX_SPINS + 1];
    if (!parse_product_operator_string(text.c_str(), spins, symbolic))
        return;
    kor_fuzz::require(std::strlen(symbolic) == static_cast<std::size_t>(spins),
                      "one component for every spin");
    kor_fuzz::require(std::strspn(symbolic, "exyz") == static_cast<std::size_t>(spins),
                      "components are e, x, y, z");
    char label[2 * KOR_MAX_SPINS + 1];
    format_operator_label(symbolic, spins, label, sizeof label);
    char again[KOR_MAX_SPINS + 1];
    kor_fuzz::require(parse_product_operator_string(label, spins, again) && std::strcmp(symbolic, again) == 0,
                      "the label of a product reads as the same product");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static CMatrix out;
    static SpinKet ket;
    kor_fuzz::Input input(data, size);
    const int spins = 1 + static_cast<int>(input.byte() % 4);
    std::string text = input.rest();
    text = text.c_str();
    check_product(text, spins);
    SpinIList list = {};
    std::fill_n(&list[1], spins, 1);
    const int n = 1 << spins;
    MakeKets(ket, list);
    if (create_operator_expression_spinhalf(n, spins, list, ket, text.c_str(), out)) {
        kor_fuzz::require(!is_undefined_operator_expression(text.c_str()),
                          "an operator comes of a defined text");
        kor_fuzz::require(std::fabs(frobenius_norm(n, out) - 1.0) < 1e-12, "an operator has unit norm");
    }
    if (!text.empty()) {
        text.push_back('\0');
        trim_operator_token(text.data());
    }
    return 0;
}
