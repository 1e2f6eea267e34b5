// The nonzero elements of I+ or I-: at most one in a column.
#pragma once

#include "spinoperatorlib.h"

namespace kor {

/// State l = 1..n goes to state l + shift with this coefficient, 0 at the end of its ladder.
struct LadderSteps {
    int shift;
    double coefficient[KOR_MAX_STATES + 1];
};

void list_raising_steps(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, LadderSteps& out);
void list_lowering_steps(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, LadderSteps& out);

} // namespace kor
