// Floor 3.30 - simulator: setting up and running the pulse optimiser from the console
#pragma once

namespace kor {

/// Asks for a spin system, the operator O, the number of parameters and a start pulse, then optimises.
/// A wrong answer ends it with a message on the error stream.
void Optimize();

/// Optimises par (npar parameters) from the current start density matrix, leaves the pulse in xb and yb,
/// reports, and offers the pulse as a CSV table with a plot. A pulse with a sample that is not finite is not
/// written.
void StartOptimization();

/// npar = the four parameters of each of `units` mode pairs, at most KOR_MAX_PARAMETERS: more are clamped,
/// with a message that begins with `prefix`. Returns 1; 0 with npar unchanged when units is below 1, which
/// the caller reports.
int optimiser_parameter_count(int units, const char* prefix);

} // namespace kor
