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
[[gnu::always_inline]] inline HalfAngle half_angle(const StepPlan& plan, Lanes x) {
    const TrigPolynomial& p = *plan.polynomial;
    double shrink = 1.0;
    for (int q = 0; q < plan.squarings; ++q) {
        shrink *= 0.25;
    }
    const Lanes reduced = x * shrink;
    const int degree = p.high ? 2 * p.powers : p.powers;
    Lanes c = reduced * p.c[degree] + p.c[degree - 1];
    Lanes t = reduced * p.t[degree] + p.t[degree - 1];
    for (int k = degree - 2; k > 0; --k) {
        c = c * reduced + p.c[k];
        t = t * reduced + p.t[k];
    }
    c = c * reduced + (1.0 + p.c[0]);
    t = t * reduced + p.t[0];
    Lanes y = reduced;
    for (int q = 0; q < plan.squarings; ++q) {
        const Lanes doubled = c * c - t * t * y;
        t = c * t;
        c = doubled;
        y *= 4.0;
    }
    return {c, t};
}

/// A turn by its first row (alpha, beta); the second is (-conj(beta), conj(alpha)).
struct Turn {
    Lanes ar, ai, br, bi;
};

inline Turn product(const Turn& a, const Turn& b) {
    return {a.ar * b.ar - a.ai * b.ai - a.br * b.br - a.bi * b.bi,
            a.ar * b.ai + a.ai * b.ar - a.bi * b.br + a.br * b.bi,
            a.ar * b.br - a.ai * b.bi + a.br * b.ar + a.bi * b.ai,
            a.ar * b.bi + a.ai * b.br + a.bi * b.ar - a.br * b.ai};
}

[[gnu::always_inline]] inline Turn turn_of_step(const LaneJob& job, int j, double splitting) {
    const Lanes hx = load(job.hb + j * kLanes);
    const Lanes hy = load(job.hy + j * kLanes);
    const Lanes hz = load(job.hw + j * kLanes) + load(job.h + j * kLanes) * splitting;
    const HalfAngle half = half_angle(job.plan[j], (hx * hx + hy * hy + hz * hz) * 0.25);
    const Lanes s = half.sine * 0.5;
    return {half.cosine, -s * hz, -s * hy, -s * hx};
}

/// The steps' product. Two halves grow side by side, so that neither waits for its last product alone.
void spin_half(const LaneJob& job) {
    const double splitting = job.h0[0] - job.h0[3];
    const int middle = job.steps / 2;
    Turn first{Lanes{} + 1.0, Lanes{}, Lanes{}, Lanes{}};
    Turn second = first;
    for (int j = 0; j < middle; ++j) {
        first = product(first, turn_of_step(job, j, splitting));
        second = product(second, turn_of_step(job, middle + j, splitting));
    }
    if (job.steps % 2 == 1) {
        second = product(second, turn_of_step(job, job.steps - 1, splitting));
    }
    const Turn r = product(first, second);
    store(job.re, r.ar);
    store(job.im, r.ai);
    store(job.re + kLanes, r.br);
    store(job.im + kLanes, r.bi);
    store(job.re + 2 * kLanes, -r.br);
    store(job.im + 2 * kLanes, r.bi);
    store(job.re + 3 * kLanes, r.ar);
    store(job.im + 3 * kLanes, -r.ai);
}

} // namespace

} // namespace kor
