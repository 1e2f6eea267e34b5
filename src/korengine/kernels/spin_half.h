// One uncoupled spin 1/2: the closed form of SU(2), U = cos(angle/2) - i sin(angle/2) (axis . sigma).
#pragma once

namespace kor {

namespace {

void fill_offsets(const OffsetJob& job) {
    const Lanes x = load(job.x);
    const Lanes y = load(job.y);
    const Lanes z = load(job.z);
    for (int j = 0; j < job.steps; ++j) {
        const Lanes w = x * job.gx[j] + y * job.gy[j] + z * job.gz[j] + job.offset;
        store(job.hw + j * kLanes, w * load(job.h + j * kLanes));
    }
}

struct HalfAngle {
    Lanes cosine;
    Lanes sine; // over the half angle
};

/// Cosine and sine of half the angle whose half square is x, by the polynomial and `squarings` doublings.
inline HalfAngle half_angle(const StepPlan& plan, Lanes x) {
    const TrigPolynomial& p = *plan.polynomial;
    double shrink = 1.0;
    for (int q = 0; q < plan.squarings; ++q) {
        shrink *= 0.25;
    }
    const Lanes reduced = x * shrink;
    const int degree = p.high ? 2 * p.powers : p.powers;
    Lanes c = reduced * p.c[degree] + p.c[degree - 1];
    Lanes t = reduced * p.t[degree] + p.t[degree - 1];
    for (int k = degree - 2; k >= 0; --k) {
        c = c * reduced + p.c[k];
        t = t * reduced + p.t[k];
    }
    Lanes y = reduced;
    for (int q = 0; q < plan.squarings; ++q) {
        const Lanes doubled = c * c - t * t * y;
        t = c * t;
        c = doubled;
        y *= 4.0;
    }
    return {c, t};
}

/// r = r . U step by step; r is kept as its first row (alpha, beta).
void spin_half(const LaneJob& job) {
    const double splitting = job.h0[0] - job.h0[3];
    Lanes alpha_re = Lanes{} + 1.0, alpha_im{}, beta_re{}, beta_im{};
    for (int j = 0; j < job.steps; ++j) {
        const Lanes hx = load(job.hb + j * kLanes);
        const Lanes hy = load(job.hy + j * kLanes);
        const Lanes hz = load(job.hw + j * kLanes) + load(job.h + j * kLanes) * splitting;
        const HalfAngle half = half_angle(job.plan[j], (hx * hx + hy * hy + hz * hz) * 0.25);
        const Lanes s = half.sine * 0.5;
        const Lanes ur = half.cosine, ui = -s * hz;
        const Lanes vr = -s * hy, vi = -s * hx;
        const Lanes next_ar = alpha_re * ur - alpha_im * ui - beta_re * vr - beta_im * vi;
        const Lanes next_ai = alpha_re * ui + alpha_im * ur - beta_im * vr + beta_re * vi;
        const Lanes next_br = alpha_re * vr - alpha_im * vi + beta_re * ur + beta_im * ui;
        const Lanes next_bi = alpha_re * vi + alpha_im * vr + beta_im * ur - beta_re * ui;
        alpha_re = next_ar;
        alpha_im = next_ai;
        beta_re = next_br;
        beta_im = next_bi;
    }
    store(job.re, alpha_re);
    store(job.im, alpha_im);
    store(job.re + kLanes, beta_re);
    store(job.im + kLanes, beta_im);
    store(job.re + 2 * kLanes, -beta_re);
    store(job.im + 2 * kLanes, beta_im);
    store(job.re + 3 * kLanes, alpha_re);
    store(job.im + 3 * kLanes, -alpha_im);
}

} // namespace

} // namespace kor
