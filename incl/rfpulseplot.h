// Floor 2.4 - materials: pulse tables and plot scripts
#pragma once

namespace kor {

int WritePulseCSV(const char* filename, int ap, double h, const double* xb, const double* yb);
int WriteGnuplotPulseScript(const char* gp_name, const char* csv_name);

} // namespace kor
