#include "kor/product_operator_dialogues.h"

#include "consoleutil.h"
#include "kor/product_operators.h"
#include "kor/runtime_state.h"
#include "kordatafileio.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kor {

namespace {

constexpr char frame[] = "*******************************************************\n";

void print_operator_list(int Nspins, int count) {
    std::printf("Product-operator list (spin-1/2):\n");
    std::printf("Spins are labeled: ");
    for (int s = 1; s <= Nspins; ++s)
        std::printf("%s ", spin_labels_for(s));
    std::printf("\nOperator components: X, Y, Z. Identity is E.\n\n");
    if (Nspins >= 4) {
        std::printf("There are %d operators; enter by name (e.g. IxSzUz) or by number [0..%d].\n\n", count,
                    count - 1);
        return;
    }
    std::printf("Available operators:\n");
    for (int opno = 0; opno < count; ++opno) {
        char symbolic[KOR_MAX_SPINS + 1];
        char label[2 * KOR_MAX_SPINS + 1];
        decimal_to_base4_symbols(opno, Nspins, symbolic);
        format_operator_label(symbolic, Nspins, label, sizeof label);
        std::printf("  %3d : %s\n", opno, label);
    }
    std::printf("\n");
}

/// Reads the choice; false at end of input.
bool read_list_answer(char* answer, std::size_t cap) {
    if (!console_read_line(answer, cap))
        return false;
    if (std::strchr(answer, '\n') == nullptr)
        console_discard_line();
    return true;
}

/// Turns the answer, a number or a product, into a symbolic operator and names it; false when it is
/// neither.
bool select_operator(const char* answer, int Nspins, int count, char* symbolic) {
    char label[2 * KOR_MAX_SPINS + 1];
    const char* p = answer;
    while (std::isspace(static_cast<unsigned char>(*p)))
        ++p;
    if (*p >= '0' && *p <= '9') {
        const long number = std::strtol(p, nullptr, 10);
        const int opno = static_cast<int>(std::clamp(number, 0L, static_cast<long>(count) - 1));
        decimal_to_base4_symbols(opno, Nspins, symbolic);
        format_operator_label(symbolic, Nspins, label, sizeof label);
        std::printf("Selected: %s (opno=%d)\n", label, opno);
        return true;
    }
    if (!parse_product_operator_string(p, Nspins, symbolic))
        return false;
    format_operator_label(symbolic, Nspins, label, sizeof label);
    std::printf("Selected: %s\n", label);
    return true;
}

void print_manual_menu() {
    std::printf("%s", frame);
    std::printf("***   EXPECTATION VALUES OF AN ARBITRARY OPERATOR   ***\n"
                "***                  (MANUAL MODE)                 ***\n");
    std::printf("%s", frame);
    std::printf("OP1 and OP2 can be defined as single-spin operators.\n"
                "You can add or multiply them to build more complex operators.\n"
                "Possible actions:\n"
                "  1. Define OP1\n"
                "  2. Define OP2\n"
                "  3. OP1 := OP1 + OP2\n"
                "  4. OP1 := OP1 * OP2\n"
                "  5. Use OP1 as expectation operator\n");
}

/// Asks for a single-spin operator and a factor; an unreadable spin or type leaves `op` as it is.
void define_working_operator(int n, int Nspins, const SpinIList& Ilist, const SpinKet& ket, CMatrix& op) {
    int spin = 0;
    std::printf("Spin number [1..%d]: ", Nspins);
    if (!scan_int(nullptr, &spin))
        return;
    int type = 0;
    std::printf("Operator type:\n"
                "  1. I+\n"
                "  2. I-\n"
                "  3. Ix\n"
                "  4. Iy\n"
                "  5. Iz\n");
    if (!scan_int("Your choice [1..5]: ", &type))
        return;
    double factor = 1.0;
    if (!scan_double("Multiply by factor (real): ", &factor))
        factor = 1.0;
    create_single_spin_operator(n, Ilist, ket, std::max(1, std::min(spin, Nspins)), type, factor, op);
}

} // namespace

void create_operator_from_list(int n, int Nspins, const SpinIList& Ilist, const SpinKet& ket, CMatrix& out) {
    make_identity_operator(n, out);
    if (!all_spins_are_half(Nspins, Ilist)) {
        std::printf("This list is only valid for spin-1/2 systems (2I must be 1).\n");
        std::printf("Falling back to manual operator construction.\n");
        return;
    }
    const int count = 1 << (2 * Nspins);
    print_operator_list(Nspins, count);
    std::printf("Enter operator (e.g. IxSz) or number [0..%d]: ", count - 1);
    char answer[128];
    if (!read_list_answer(answer, sizeof answer))
        return;
    char symbolic[KOR_MAX_SPINS + 1];
    if (select_operator(answer, Nspins, count, symbolic)) {
        create_norm_operator_spinhalf(n, Nspins, Ilist, ket, symbolic, out);
        return;
    }
    std::printf("Could not parse operator string. Examples: Ix  Iy  Iz  IxSz  IxSzTz\n");
    std::printf("Falling back to E (identity).\n");
}

void manual_expectation_operator(int n, int Nspins, const SpinIList& Ilist, const SpinKet& ket,
                                 CMatrix& out) {
    static CMatrix OP1, OP2;
    CMatZero(n, OP1);
    CMatZero(n, OP2);
    int choice = 0;
    while (choice != 5) {
        print_manual_menu();
        if (!scan_int("Your choice [1..5]: ", &choice)) {
            if (console_at_end())
                break;
            choice = 0;
        }
        if (choice == 1 || choice == 2)
            define_working_operator(n, Nspins, Ilist, ket, choice == 1 ? OP1 : OP2);
        else if (choice == 3)
            CMatAdd(n, OP1, OP2, OP1);
        else if (choice == 4)
            multiply_and_normalise(n, OP1, OP2);
    }
    CopyCMatrix(n, OP1, out);
    NormCMatrix(n, out);
}

void ExpectationOperator(int n, int Nspins, const SpinIList& Ilist, const SpinKet& ket, CMatrix& out) {
    std::printf("%s", frame);
    std::printf("***   EXPECTATION VALUES OF AN ARBITRARY OPERATOR   ***\n"
                "***                  OR PRODUCT OPERATOR            ***\n");
    std::printf("%s", frame);
    std::printf("Define operator:\n"
                "    1. Choose from product-operator list (spin-1/2 only)\n"
                "    2. Create manually\n");
    int choice = 0;
    if (scan_int("Your choice [1,2] : ", &choice) && choice == 1)
        create_operator_from_list(n, Nspins, Ilist, ket, out);
    else
        manual_expectation_operator(n, Nspins, Ilist, ket, out);
}

void KORDefineCurrentExpectationOperatorInteractive() {
    RuntimeState& rt = g_runtime;
    if (!rt.spinsystemdefined || rt.Nspins <= 0) {
        std::printf("No current prepared spin system is available.\n");
        return;
    }
    std::printf("Define operator whose expectation value is to be optimized:\n");
    ExpectationOperator(rt.n, rt.Nspins, rt.Ilist, rt.ket, rt.Istat);
}

} // namespace kor
