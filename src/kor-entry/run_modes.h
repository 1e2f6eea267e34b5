// The command-line modes.
#pragma once

namespace kor {

/// Runs the mode that the arguments name, with *status its exit status; false when they name none.
bool run_named_mode(int argc, char** argv, int* status);

} // namespace kor
