// Floor 3.16 - simulator: expectation values of an operator chosen at the console
#pragma once

namespace kor {

/// Menu that leads to ExpValNDensMat until 2 or something that is no number is answered.
void CalcExpVal();
/// Asks for an operator and an output file, then writes the operator's expectation value in every matrix of
/// the working directory's "dm.bin" (write_expectation_series). The operator takes its dimension from the
/// file. Failures print one message on standard error and wait for Enter.
void ExpValNDensMat();

} // namespace kor
