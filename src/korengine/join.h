// Putting partial products together.
#pragma once

#include "pack.h"
#include "steps.h"

namespace kor {

/// p = Z(phi of first) p Z(-phi of last), Z(phi) = exp(-i phi Fz): from the frames of the fields' directions
/// to the frame of the operators. The phases that both ends share are left out.
void turn_ends(const SystemStructure& s, const Step& first, const Step& last, Planes& p);

/// a = a . b; work is any other record.
void multiply(int n, Planes& a, const Planes& b, Planes& work);

/// out = transpose of a, not conjugated; another record.
void transpose(int n, const Planes& a, Planes& out);

/// half = lead . half . middle . transpose(half); null factors are left out.
void join_palindrome(int n, const Planes* lead, const Planes* middle, Planes& half);

} // namespace kor
