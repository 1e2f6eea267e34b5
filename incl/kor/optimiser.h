// Floor 3.21 - simulator: conjugate-gradient search for the pulse that maximises <O>
//
// The pulse is the parameter vector of rfpulseparam; O is Istat and the start state densmat, both of the
// state record. Vectors are 0-based with npar (at most KOR_MAX_PARAMETERS) elements in rad/s. The search
// minimises -Re <O>; every evaluation prints its two lines, which are the optimiser's progress log. pcom,
// xicom, xt and kor_ncom of the state record are shared between linmin, func and dfnc: nothing here is
// reentrant.
#pragma once

namespace kor {

/// -Re <O> after the pulse `parvec` acts on densmat, at offset gs x0_s (rad/s). densmat is not changed; xb
/// and yb hold the pulse afterwards.
double fnc(const double* parvec);
/// Forward-difference gradient: df[i] = (fnc(parvec + d e_i) - f) / d, d = parvec[i] / 1e7, or 1e-7 where
/// parvec[i] is exactly 0. f is the objective at parvec, nn the length. df stays as it was when work memory
/// runs out.
void dfnc(double f, const double* parvec, int nn, double* df);
/// The objective on the current line, fnc(pcom + z xicom) over kor_ncom elements; fnc(par) when no line is
/// set.
double func(double z);

/// Brackets a minimum of func, downhill from ax and bx by golden magnification and parabolic steps: bx ends
/// between ax and cx with fb <= fa, fc.
void mnbrak(double* ax, double* bx, double* cx, double* fa, double* fb, double* fc);
/// Minimum of func inside the bracket ax, bx, cx to the fractional tolerance tol; its place in *xmin.
/// R. P. Brent, Algorithms for Minimization without Derivatives (1973), ch. 5.
double brent(double ax, double bx, double cx, double tol, double* xmin);
/// Minimises fnc from parvec along xi: parvec moves to the minimum, xi becomes the step taken, *fret the
/// minimum.
void linmin(double* parvec, double* xi, int nn, double* fret);
/// Polak-Ribiere conjugate gradients from parvec until the objective changes by less than the fraction ftol,
/// at most 100 iterations. *iter the iterations done, *fret the minimum; both stay as they were when memory
/// runs out. E. Polak & G. Ribiere, Rev. Fr. Inform. Rech. Oper. 16 (1969) 35.
void frprmn(double* parvec, int nn, double ftol, int* iter, double* fret);

/// |a| with the sign of b (b >= 0 gives +|a|), and the larger of two.
double sign_double(double a, double b);
double kor_max(double a, double b);

/// 1 when every one of the `ap` samples of xb and yb is finite.
int optimised_pulse_is_finite(int ap, const double* xb, const double* yb);

} // namespace kor
