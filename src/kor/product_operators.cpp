#include "kor/product_operators.h"

#include "kor/runtime_state.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace kor {

namespace {

constexpr char labels[] = "ISTUVWABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr int label_count = 32;
constexpr std::size_t expression_size = 512;

bool is_space(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}
bool is_digit(char c) {
    return c >= '0' && c <= '9';
}
char lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}
char upper(char c) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

const char* skip_space(const char* p) {
    while (is_space(*p))
        ++p;
    return p;
}

const char* skip_separators(const char* p) {
    while (*p != '\0' && (is_space(*p) || std::strchr(",_;", *p) != nullptr))
        ++p;
    return p;
}

/// Spin number behind the letter I; `p` moves behind the digits. A number above Nspins stays above it.
int read_spin_number(const char*& p, int Nspins) {
    int number = 0;
    for (; is_digit(*p); ++p)
        number = std::min(10 * number + (*p - '0'), Nspins + 1);
    return number;
}

/// Spin designator at `p`, which moves behind it. Returns the spin, or 0 when nothing matches.
int read_spin(const char*& p, int Nspins) {
    const char letter = upper(*p);
    if (letter == 'I' && is_digit(p[1])) {
        ++p;
        const int number = read_spin_number(p, Nspins);
        return number <= Nspins ? number : 0;
    }
    for (int s = 1; s <= std::min(Nspins, label_count); ++s)
        if (letter == labels[s - 1]) {
            ++p;
            return s;
        }
    return 0;
}

/// out = out . op; op is multiplied in through `product`, since the factors must not be the result.
void multiply_right(int n, CMatrix& out, const CMatrix& op) {
    static CMatrix product;
    CMatMultSparse(n, out, op, product);
    CopyCMatrix(n, product, out);
}

} // namespace

const char* spin_labels_for(int idx1based) {
    static char text[2];
    text[0] = labels[std::clamp(idx1based, 1, label_count) - 1];
    text[1] = '\0';
    return text;
}

int parse_product_operator_string(const char* text, int Nspins, char* symbolic) {
    std::memset(symbolic, 'e', static_cast<std::size_t>(Nspins));
    symbolic[Nspins] = '\0';
    if (text == nullptr)
        return 0;
    const char* p = skip_space(text);
    if (*p == '\0')
        return 0;
    if (lower(*p) == 'e' && (p[1] == '\0' || is_space(p[1])))
        return 1;
    while (*p != '\0') {
        const int spin = read_spin(p, Nspins);
        if (spin == 0)
            return 0;
        const char component = lower(*p);
        if (component != 'x' && component != 'y' && component != 'z')
            return 0;
        symbolic[spin - 1] = component;
        p = skip_separators(p + 1);
    }
    return 1;
}

void decimal_to_base4_symbols(int opno, int Nspins, char* symbolic) {
    for (int s = 0; s < Nspins; ++s) {
        symbolic[s] = "exyz"[opno % 4];
        opno /= 4;
    }
    symbolic[Nspins] = '\0';
}

void format_operator_label(const char* symbolic, int Nspins, char* out, std::size_t cap) {
    if (cap == 0)
        return;
    const bool identity = std::all_of(symbolic, symbolic + Nspins, [](char c) { return c == 'e'; });
    if (identity) {
        std::snprintf(out, cap, "E");
        return;
    }
    std::size_t length = 0;
    for (int s = 1; s <= Nspins; ++s) {
        if (symbolic[s - 1] == 'e')
            continue;
        if (length + 3 > cap)
            break;
        out[length++] = *spin_labels_for(s);
        out[length++] = upper(symbolic[s - 1]);
    }
    out[length] = '\0';
}

void create_norm_operator_spinhalf(int n, int Nspins, const SpinIList& Ilist, const SpinKet& ket,
                                   const char* symbolic, CMatrix& out) {
    static CMatrix spin_operator;
    CMatIdentity(n, out);
    for (int s = 1; s <= Nspins; ++s) {
        const char component = symbolic[s - 1];
        if (component == 'e')
            continue;
        if (component == 'x')
            MakeMatrixIx(Ilist, ket, n, s, spin_operator);
        else if (component == 'y')
            MakeMatrixIy(Ilist, ket, n, s, spin_operator);
        else
            MakeMatrixIz(Ilist, ket, n, s, spin_operator);
        multiply_right(n, out, spin_operator);
    }
    NormCMatrix(n, out);
}

int create_operator_expression_spinhalf(int n_local, int Nspins_local, const SpinIList& Ilist_local,
                                        const SpinKet& ket_local, const char* expression, CMatrix& out) {
    static CMatrix term_operator;
    if (is_undefined_operator_expression(expression) || !all_spins_are_half(Nspins_local, Ilist_local))
        return 0;
    char copy[expression_size];
    std::snprintf(copy, sizeof copy, "%s", expression);
    CMatZero(n_local, out);
    int terms = 0;
    for (char* term = copy; term != nullptr;) {
        char* const plus = std::strchr(term, '+');
        if (plus != nullptr)
            *plus = '\0';
        trim_operator_token(term);
        if (*term != '\0') {
            char symbolic[KOR_MAX_SPINS + 1];
            if (!parse_product_operator_string(term, Nspins_local, symbolic))
                return 0;
            create_norm_operator_spinhalf(n_local, Nspins_local, Ilist_local, ket_local, symbolic,
                                          term_operator);
            CMatAdd(n_local, out, term_operator, out);
            ++terms;
        }
        term = plus != nullptr ? plus + 1 : nullptr;
    }
    if (terms == 0)
        return 0;
    NormCMatrix(n_local, out);
    return 1;
}

bool is_undefined_operator_expression(const char* expression) {
    if (expression == nullptr || *skip_space(expression) == '\0')
        return true;
    char start[64];
    std::snprintf(start, sizeof start, "%s", expression);
    trim_operator_token(start);
    std::transform(start, start + std::strlen(start), start, lower);
    return std::strcmp(start, "not defined") == 0;
}

void trim_operator_token(char* text) {
    const char* const start = skip_space(text);
    std::size_t length = std::strlen(start);
    while (length > 0 && is_space(start[length - 1]))
        --length;
    std::memmove(text, start, length);
    text[length] = '\0';
}

bool all_spins_are_half(int Nspins, const SpinIList& Ilist) {
    return std::all_of(Ilist + 1, Ilist + Nspins + 1, [](int twice_i) { return twice_i == 1; });
}

void make_identity_operator(int n, CMatrix& out) {
    CMatIdentity(n, out);
}

void create_single_spin_operator(int n, const SpinIList& Ilist, const SpinKet& ket, int spin, int type,
                                 double factor, CMatrix& out) {
    using Builder = void (*)(const SpinIList&, const SpinKet&, int, int, CMatrix&);
    constexpr Builder builders[] = {MakeMatrixIplus, MakeMatrixImin, MakeMatrixIx, MakeMatrixIy};
    const Builder build = type >= 1 && type <= 4 ? builders[type - 1] : MakeMatrixIz;
    build(Ilist, ket, n, spin, out);
    RMultCMat(n, factor, out, out);
}

void multiply_and_normalise(int n, CMatrix& op1, const CMatrix& op2) {
    CMatMult(n, op1, op2, op1);
    NormCMatrix(n, op1);
}

int KORDefineCurrentExpectationOperatorExpression(const char* expression) {
    RuntimeState& rt = g_runtime;
    if (!rt.spinsystemdefined || rt.Nspins <= 0) {
        std::printf("No current prepared spin system is available.\n");
        return 0;
    }
    if (!create_operator_expression_spinhalf(rt.n, rt.Nspins, rt.Ilist, rt.ket, expression, rt.Istat))
        return 0;
    char shown[expression_size];
    std::snprintf(shown, sizeof shown, "%s", expression);
    trim_operator_token(shown);
    std::printf("Using GUI-defined expectation operator: %s\n", shown);
    return 1;
}

} // namespace kor
