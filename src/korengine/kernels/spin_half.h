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
    t = t * reduced + p.t[0];
    if (plan.squarings == 0) {
        return {c * reduced + 1.0, t};
    }
    Lanes d = c * reduced; // cosine - 1, in which a small turn keeps its digits
    Lanes y = reduced;
    for (int q = 0; q < plan.squarings; ++q) {
        const Lanes doubled = d * (d + 2.0) - t * t * y;
        t += d * t;
        d = doubled;
        y *= 4.0;
    }
    return {d + 1.0, t};
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

template <bool kTilted> [[gnu::always_inline]] inline Turn turn_of_step(const LaneJob& job, int j) {
    const Lanes hx = load(job.hb + j * kLanes);
    const Lanes hz = load(job.hw + j * kLanes);
    if constexpr (!kTilted) {
        const HalfAngle half = half_angle(job.plan[j], (hx * hx + hz * hz) * 0.25);
        const Lanes s = half.sine * -0.5;
        return {half.cosine, s * hz, Lanes{}, s * hx};
    }
    const Lanes hy = load(job.hy + j * kLanes);
    const HalfAngle half = half_angle(job.plan[j], (hx * hx + hy * hy + hz * hz) * 0.25);
    const Lanes s = half.sine * -0.5;
    return {half.cosine, s * hz, s * hy, s * hx};
}

/// a . b, b the turn of one step.
template <bool kTilted> [[gnu::always_inline]] inline Turn product_with_step(const Turn& a, const Turn& b) {
    if constexpr (kTilted) {
        return product(a, b);
    }
    return {a.ar * b.ar - a.ai * b.ai - a.bi * b.bi, a.ar * b.ai + a.ai * b.ar + a.br * b.bi,
            a.br * b.ar - a.ai * b.bi + a.bi * b.ai, a.ar * b.bi + a.bi * b.ar - a.br * b.ai};
}

inline Turn load_turn(const double* re, const double* im) {
    return {load(re), load(im), load(re + kLanes), load(im + kLanes)};
}

inline void store_turn(const Turn& r, double* re, double* im) {
    store(re, r.ar);
    store(im, r.ai);
    store(re + kLanes, r.br);
    store(im + kLanes, r.bi);
    store(re + 2 * kLanes, -r.br);
    store(im + 2 * kLanes, r.bi);
    store(re + 3 * kLanes, r.ar);
    store(im + 3 * kLanes, -r.ai);
}

/// The steps' product. Two halves grow side by side, so that neither waits for its last product alone.
template <bool kTilted> void spin_half_steps(const LaneJob& job) {
    const int middle = job.steps / 2;
    Turn first{Lanes{} + 1.0, Lanes{}, Lanes{}, Lanes{}};
    Turn second = first;
    for (int j = 0; j < middle; ++j) {
        first = product_with_step<kTilted>(first, turn_of_step<kTilted>(job, j));
        second = product_with_step<kTilted>(second, turn_of_step<kTilted>(job, middle + j));
    }
    if (job.steps % 2 == 1) {
        second = product_with_step<kTilted>(second, turn_of_step<kTilted>(job, job.steps - 1));
    }
    store_turn(product(first, second), job.re, job.im);
}

void spin_half(const LaneJob& job) {
    if (job.hy) {
        spin_half_steps<true>(job);
    } else {
        spin_half_steps<false>(job);
    }
}

void join_turns(const TurnJoinJob& job) {
    Turn r = load_turn(job.re, job.im);
    if (job.mirrored) {
        const Turn transposed{r.ar, r.ai, -r.br, r.bi};
        if (job.middle_re) {
            r = product(r, load_turn(job.middle_re, job.middle_im));
        }
        r = product(r, transposed);
        if (job.lead_re) {
            r = product(load_turn(job.lead_re, job.lead_im), r);
        }
    }
    store_turn({r.ar, r.ai, r.br * job.ux + r.bi * job.uy, r.bi * job.ux - r.br * job.uy}, job.re, job.im);
}

} // namespace

} // namespace kor
