// Products on planes of real and imaginary parts: complex matrix products and sums of spectral lines.
#pragma once

namespace kor {

namespace {

/// Two rows and R registers of columns of out = a . b, from column j0.
template <int R> void product_block(const ProductJob& job, int i0, int rows, int j0) {
    Lanes re[2][R]{}, im[2][R]{};
    const int second = rows > 1 ? job.stride : 0;
    const double* a_re = job.a_re + i0 * job.stride;
    const double* a_im = job.a_im + i0 * job.stride;
    for (int k = 0; k < job.n; ++k) {
#pragma GCC unroll 4
        for (int j = 0; j < R; ++j) {
            const Lanes b_re = load(job.b_re + k * job.stride + j0 + j * kLanes);
            const Lanes b_im = load(job.b_im + k * job.stride + j0 + j * kLanes);
            re[0][j] += b_re * a_re[k];
            re[0][j] -= b_im * a_im[k];
            im[0][j] += b_re * a_im[k];
            im[0][j] += b_im * a_re[k];
            re[1][j] += b_re * a_re[second + k];
            re[1][j] -= b_im * a_im[second + k];
            im[1][j] += b_re * a_im[second + k];
            im[1][j] += b_im * a_re[second + k];
        }
    }
    for (int i = 0; i < rows; ++i) {
#pragma GCC unroll 4
        for (int j = 0; j < R; ++j) {
            store(job.out_re + (i0 + i) * job.stride + j0 + j * kLanes, re[i][j]);
            store(job.out_im + (i0 + i) * job.stride + j0 + j * kLanes, im[i][j]);
        }
    }
}

void complex_product(const ProductJob& job) {
    for (int j0 = 0; j0 < job.n; j0 += 2 * kLanes) {
        for (int i0 = 0; i0 < job.n; i0 += 2) {
            const int rows = i0 + 1 < job.n ? 2 : 1;
            if (job.n - j0 > kLanes) {
                product_block<2>(job, i0, rows, j0);
            } else {
                product_block<1>(job, i0, rows, j0);
            }
        }
    }
}

void line_sums(const LineSumJob& job) {
    for (int p = 0; p < job.blocks; p += 2) {
        for (int q = 0; q < job.points; q += 2 * kLanes) {
            Lanes re[2][2], im[2][2];
#pragma GCC unroll 4
            for (int i = 0; i < 2; ++i) {
#pragma GCC unroll 4
                for (int j = 0; j < 2; ++j) {
                    re[i][j] = load(job.re + (p + i) * job.points + q + j * kLanes);
                    im[i][j] = load(job.im + (p + i) * job.points + q + j * kLanes);
                }
            }
            for (int l = 0; l < job.lines; ++l) {
#pragma GCC unroll 4
                for (int j = 0; j < 2; ++j) {
                    const Lanes c = load(job.cosine + l * job.points + q + j * kLanes);
                    const Lanes s = load(job.sine + l * job.points + q + j * kLanes);
#pragma GCC unroll 4
                    for (int i = 0; i < 2; ++i) {
                        const int e = l * job.blocks + p + i;
                        re[i][j] += c * job.xr[e];
                        re[i][j] -= s * job.xi[e];
                        im[i][j] += c * job.yr[e];
                        im[i][j] -= s * job.yi[e];
                    }
                }
            }
#pragma GCC unroll 4
            for (int i = 0; i < 2; ++i) {
#pragma GCC unroll 4
                for (int j = 0; j < 2; ++j) {
                    store(job.re + (p + i) * job.points + q + j * kLanes, re[i][j]);
                    store(job.im + (p + i) * job.points + q + j * kLanes, im[i][j]);
                }
            }
        }
    }
}

} // namespace

} // namespace kor
