// Minimisation of func along one direction: bracketing, then Brent's method.
#include "kor/optimiser.h"

#include "kor/runtime_state.h"
#include "matrixmathlib.h"

#include <algorithm>
#include <cmath>

namespace kor {

namespace {

constexpr double gold = 1.618034; // magnification of successive bracketing steps
constexpr double glimit = 100.0;  // largest parabolic step, in units of the last interval
constexpr double tiny = 1e-20;    // guard against division by zero
constexpr int brent_itmax = 100;
constexpr double cgold = 0.381966; // golden-section ratio
constexpr double zeps = 1e-10;     // absolute tolerance guard
constexpr double line_tolerance = 1e-4;

/// A place on the line and its objective.
struct LinePoint {
    double x;
    double f;
};

LinePoint evaluate(double x) {
    return {x, func(x)};
}

double magnified(const LinePoint& b, const LinePoint& c) {
    return c.x + gold * (c.x - b.x);
}

/// Abscissa of the parabola through three points.
double parabola_vertex(const LinePoint& a, const LinePoint& b, const LinePoint& c) {
    const double r = (b.x - a.x) * (b.f - c.f);
    const double q = (b.x - c.x) * (b.f - a.f);
    return b.x -
           ((b.x - c.x) * q - (b.x - a.x) * r) / (2.0 * sign_double(kor_max(std::fabs(q - r), tiny), q - r));
}

/// One step of the downhill walk; true when a, b, c bracket a minimum.
bool bracket_step(LinePoint& a, LinePoint& b, LinePoint& c) {
    const double vertex = parabola_vertex(a, b, c);
    const double limit = b.x + glimit * (c.x - b.x);
    LinePoint u;
    if ((b.x - vertex) * (vertex - c.x) > 0.0) {
        u = evaluate(vertex);
        if (u.f < c.f) {
            a = b;
            b = u;
            return true;
        }
        if (u.f > b.f) {
            c = u;
            return true;
        }
        u = evaluate(magnified(b, c));
    } else if ((c.x - vertex) * (vertex - limit) > 0.0) {
        u = evaluate(vertex);
        if (u.f < c.f) {
            b = c;
            c = u;
            u = evaluate(magnified(b, c));
        }
    } else if ((vertex - limit) * (limit - c.x) >= 0.0) {
        u = evaluate(limit);
    } else {
        u = evaluate(magnified(b, c));
    }
    a = b;
    b = c;
    c = u;
    return false;
}

/// State of Brent's search: the interval, the best point x, the second best w, the previous w in v, and the
/// last two step lengths.
struct BrentState {
    double low, high;
    LinePoint x, w, v;
    double step, previous_step;
};

double golden_step(BrentState& s, double middle) {
    s.previous_step = s.x.x >= middle ? s.low - s.x.x : s.high - s.x.x;
    return cgold * s.previous_step;
}

/// The next step: to the vertex of the parabola through x, w, v where that is trustworthy, else golden
/// section.
double brent_step(BrentState& s, double middle, double tol1) {
    if (std::fabs(s.previous_step) <= tol1)
        return golden_step(s, middle);
    const double r = (s.x.x - s.w.x) * (s.x.f - s.v.f);
    double q = (s.x.x - s.v.x) * (s.x.f - s.w.f);
    double p = (s.x.x - s.v.x) * q - (s.x.x - s.w.x) * r;
    q = 2.0 * (q - r);
    if (q > 0.0)
        p = -p;
    q = std::fabs(q);
    const double step_before_last = s.previous_step;
    s.previous_step = s.step;
    if (std::fabs(p) >= std::fabs(0.5 * q * step_before_last) || p <= q * (s.low - s.x.x) ||
        p >= q * (s.high - s.x.x))
        return golden_step(s, middle);
    const double step = p / q;
    const double u = s.x.x + step;
    if (u - s.low < 2.0 * tol1 || s.high - u < 2.0 * tol1)
        return sign_double(tol1, middle - s.x.x);
    return step;
}

/// Takes the new point u into the interval and the three best points.
void brent_update(BrentState& s, const LinePoint& u) {
    if (u.f <= s.x.f) {
        (u.x >= s.x.x ? s.low : s.high) = s.x.x;
        s.v = s.w;
        s.w = s.x;
        s.x = u;
        return;
    }
    (u.x < s.x.x ? s.low : s.high) = u.x;
    if (u.f <= s.w.f || s.w.x == s.x.x) {
        s.v = s.w;
        s.w = u;
    } else if (u.f <= s.v.f || s.v.x == s.x.x || s.v.x == s.w.x) {
        s.v = u;
    }
}

} // namespace

double sign_double(double a, double b) {
    return sign(a, b);
}

double kor_max(double a, double b) {
    return a > b ? a : b;
}

void mnbrak(double* ax, double* bx, double* cx, double* fa, double* fb, double* fc) {
    LinePoint a = evaluate(*ax);
    LinePoint b = evaluate(*bx);
    if (b.f > a.f)
        std::swap(a, b);
    LinePoint c = evaluate(magnified(a, b));
    if (b.f >= c.f) {
        bool bracketed = false;
        do
            bracketed = bracket_step(a, b, c);
        while (!bracketed && b.f > c.f);
    }
    *ax = a.x;
    *fa = a.f;
    *bx = b.x;
    *fb = b.f;
    *cx = c.x;
    *fc = c.f;
}

double brent(double ax, double bx, double cx, double tol, double* xmin) {
    const LinePoint first = evaluate(bx);
    BrentState s{std::min(ax, cx), std::max(ax, cx), first, first, first, 0.0, 0.0};
    for (int iteration = 1; iteration <= brent_itmax; ++iteration) {
        const double middle = 0.5 * (s.low + s.high);
        const double tol1 = tol * std::fabs(s.x.x) + zeps;
        if (std::fabs(s.x.x - middle) <= 2.0 * tol1 - 0.5 * (s.high - s.low))
            break;
        s.step = brent_step(s, middle, tol1);
        brent_update(s, evaluate(s.x.x + (std::fabs(s.step) >= tol1 ? s.step : sign_double(tol1, s.step))));
    }
    *xmin = s.x.x;
    return s.x.f;
}

void linmin(double* parvec, double* xi, int nn, double* fret) {
    g_runtime.kor_ncom = nn;
    const int kept = std::min(nn, KOR_MAX_PARAMETERS);
    std::copy_n(parvec, kept, g_runtime.pcom);
    std::copy_n(xi, kept, g_runtime.xicom);
    double ax = 0.0;
    double xx = 1.0;
    double bx = 2.0;
    double fa = 0.0;
    double fx = 0.0;
    double fb = 0.0;
    mnbrak(&ax, &xx, &bx, &fa, &fx, &fb);
    double xmin = 0.0;
    *fret = brent(ax, xx, bx, line_tolerance, &xmin);
    for (int j = 0; j < nn; ++j) {
        xi[j] *= xmin;
        parvec[j] += xi[j];
    }
}

} // namespace kor
