#include "kormodel_refcheck.h"

#include "korlimits.h"
#include "korplatform.h"

#include <cmath>
#include <cstdio>

namespace kor {

bool approx_equal(double a, double b, double tol) {
    return std::fabs(a - b) <= tol;
}

bool check_scalar(const char* tag, const char* label, double got, double expected, double tol) {
    if (approx_equal(got, expected, tol))
        return true;
    std::printf("FAIL %-9s %s : got %.17g expected %.17g\n", tag, label, got, expected);
    return false;
}

bool check_cmat_entry(const char* tag, const char* name, const CMatrix& matrix, int i, int j, double re,
                      double im, double tol) {
    char label[128];
    std::snprintf(label, sizeof label, "%s[%d,%d].re", name, i, j);
    const bool re_ok = check_scalar(tag, label, matrix[i][j][1], re, tol);
    std::snprintf(label, sizeof label, "%s[%d,%d].im", name, i, j);
    const bool im_ok = check_scalar(tag, label, matrix[i][j][2], im, tol);
    return re_ok && im_ok;
}

static bool is_listed(const MatrixCell* list, int count, int row, int column) {
    for (int k = 0; k < count; ++k)
        if (list[k].row == row && list[k].column == column)
            return true;
    return false;
}

bool check_cmat_zero_except(const char* tag, const char* name, const CMatrix& matrix, int dim,
                            const MatrixCell* list, int count, double tol) {
    bool ok = true;
    for (int i = 1; i <= dim; ++i)
        for (int j = 1; j <= dim; ++j)
            if (!is_listed(list, count, i, j))
                ok &= check_cmat_entry(tag, name, matrix, i, j, 0.0, 0.0, tol);
    return ok;
}

bool write_refcheck_fixture(const char* path, const void* data, std::size_t bytes) {
    std::FILE* file = platform_open(path, "wb");
    if (!file)
        return false;
    const bool written = std::fwrite(data, 1, bytes, file) == bytes;
    const bool closed = std::fclose(file) == 0;
    return written && closed;
}

bool write_refcheck_pulse(const char* tag, const char* path) {
    const double sample[] = {0.5 * KOR_PI / 1e-5, 0.0, 2000.0 * 2.0 * KOR_PI, 0.0, 0.0}; // xb, yb, gx, gy, gz
    if (write_refcheck_fixture(path, sample, sizeof sample))
        return true;
    std::printf("FAIL %-9s could not write pulse fixture\n", tag);
    return false;
}

} // namespace kor
