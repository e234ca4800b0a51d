#!/usr/bin/env python3
"""Writes reference_filters.h: digital filters computed with SciPy and mpmath, for iir_prototype_test.cpp.

    python3 make_reference_filters.py > reference_filters.h      (SciPy 1.10.1, mpmath 1.2.1)

Butterworth, Tschebyscheff, inverse Tschebyscheff and Bessel prototypes are scipy.signal's. Elliptic ones are
Jacobi elliptic functions in 40 digits, because scipy.signal.ellipap takes the attenuation instead of the selectivity;
from order 5 on the script checks that ellipap gives the same poles for the attenuation that belongs to the selectivity.
Band transformations and the bilinear map are scipy.signal's zpk functions. Sampling frequency 2 pi.
"""
import mpmath as mp
import numpy as np
from scipy import signal

mp.mp.dps = 40
FAMILIES = ["butterworth", "tschebyscheff", "inverse_tschebyscheff", "elliptic", "bessel"]
# name, band, passband edges, stopband edges
BANDS = [
    ("low_pass", (0.6, 0.0), (0.8, 0.0), (1, 2, 3, 5, 9, 13, 20)),
    ("high_pass", (1.9, 0.0), (1.6, 0.0), (1, 2, 3, 5, 8, 13, 20)),
    ("band_pass", (0.9, 1.3), (0.75, 1.6), (2, 4, 6, 10, 20)),
    ("band_stop", (0.5, 1.5), (0.7, 1.2), (2, 4, 6, 10, 20)),
    ("band_pass", (1.0, 1.001), (0.9985, 1.0025), (4, 20)),
    ("band_stop", (0.02, 3.0), (0.08, 2.8), (6, 20)),
]
AP, AS = 0.5, 60.0


def warp(f):
    return 2 * np.tan(np.asarray(f) / 2)


def selectivity(band, fp, fs):
    (p1, p2), (s1, s2) = warp(fp), warp(fs)
    lowpass = {  # the frequency onto which a band transformation puts a stopband edge, passband edge 1
        "low_pass": lambda w: w / p1,
        "high_pass": lambda w: p1 / w,
        "band_pass": lambda w: abs((w * w - p1 * p2) / (w * (p2 - p1))),
        "band_stop": lambda w: abs(w * (p2 - p1) / (w * w - p1 * p2)),
    }[band]
    edges = [s1] if band.endswith("h_pass") or band == "low_pass" else [s1, s2]
    return 1 / min(lowpass(w) for w in edges)


def elliptic(n, k):
    """Poles and zeros with passband edge 1; the ripple parameter as for an infinite degree, 2 atanh(1 / L)."""
    m = mp.mpf(k) ** 2
    big_k = mp.ellipk(m)
    amplitude = mp.mpf(10) ** (mp.mpf(AP) / 20)
    v0 = mp.log((amplitude + 1) / (amplitude - 1)) / n * big_k / mp.pi
    zeros, poles = [], []
    for i in range(n):
        # Zeros of the transfer function lie where the elliptic rational function has its poles, at j / (k cd(u, k)),
        # its own poles at j cd(u - j v0, k), u = (2 i + 1) K / n.
        u = (2 * i + 1) * big_k / n
        cd = mp.ellipfun("cd", u, m)
        if 2 * i + 1 != n:
            zeros.append(complex(1j / (mp.sqrt(m) * cd)))
        pole = 1j * mp.ellipfun("cd", u - 1j * v0, m)
        poles.append(complex(-abs(pole.real) + 1j * pole.imag))
    q1 = mp.qfrom(m=m) ** n
    k1 = mp.kfrom(q=q1)
    eps2 = mp.mpf(10) ** (mp.mpf(AP) / 10) - 1
    attenuation = float(10 * mp.log10(1 + eps2 / k1**2))
    if n >= 5 and attenuation < 300 and k1 < 1e-7:
        z, p, _ = signal.ellipap(n, AP, attenuation)
        order = lambda x: sorted(x, key=lambda c: (round(c.imag, 6), c.real))
        assert np.allclose(order(z), order(zeros), rtol=1e-11, atol=0), (n, k)
        assert np.allclose(order(p), order(poles), rtol=1e-11, atol=1e-12), (n, k)
    return np.array(zeros), np.array(poles)


def prototype(family, n, k):
    """Zeros and poles with the passband edge at 1."""
    d = np.expm1(np.log(10) * AS / 10) / np.expm1(np.log(10) * AP / 10)
    if family == "butterworth":
        z, p, _ = signal.buttap(n)
        edge = np.expm1(np.log(10) * AP / 10) ** (0.5 / n)
    elif family == "tschebyscheff":
        (z, p, _), edge = signal.cheb1ap(n, AP), 1
    elif family == "inverse_tschebyscheff":
        (z, p, _), edge = signal.cheb2ap(n, AS), 1 / np.cosh(np.arccosh(np.sqrt(d)) / n)
    elif family == "elliptic":
        (z, p), edge = elliptic(n, k), 1
    else:
        (z, p, _), edge = signal.besselap(n, norm="delay"), 1
    return np.asarray(z) / edge, np.asarray(p) / edge


def digital(family, band, fp, fs, order):
    n = order // 2 if band.startswith("band") else order
    z, p = prototype(family, n, selectivity(band, fp, fs))
    w1, w2 = warp(fp)
    if band == "low_pass":
        z, p, k = signal.lp2lp_zpk(z, p, 1, w1)
    elif band == "high_pass":
        z, p, k = signal.lp2hp_zpk(z, p, 1, w1)
    else:
        move = signal.lp2bp_zpk if band == "band_pass" else signal.lp2bs_zpk
        z, p, k = move(z, p, 1, np.sqrt(w1 * w2), w2 - w1)
    z, p, _ = signal.bilinear_zpk(z, p, k, 1)
    return z, p


def upper(roots):
    """One of each conjugate pair, and the real roots."""
    result = [complex(r.real, 0 if abs(r.imag) < 1e-13 else r.imag) for r in roots if r.imag > -1e-13]
    return ", ".join("{%r, %r}" % (r.real, r.imag) for r in sorted(result, key=lambda r: (r.imag, r.real)))


def main():
    print("// Written by make_reference_filters.py with SciPy 1.10.1 and mpmath 1.2.1; see there. Passband ripple 0.5 dB,")
    print("// stopband attenuation 60 dB, sampling frequency 2 pi, bilinear map. Complex values stand for themselves and")
    print("// their conjugates, real ones for themselves; zeros at 1 and -1 are counted.")
    print("#pragma once\n")
    print('#include "engine/core/code_tables.h"\n\n#include <array>\n#include <complex>\n#include <vector>\n')
    print("namespace brisel {\n\nstruct ReferenceFilter {\n  AnalogPrototype family;\n  FilterType band;")
    print("  int order;\n  std::array<double, 2> passband, stopband;\n  int zeros_at_1, zeros_at_minus_1;")
    print("  std::vector<std::complex<double>> zeros, poles;\n};\n")
    print("// clang-format off\ninline const std::vector<ReferenceFilter> reference_filters{")
    for family in FAMILIES:
        for band, fp, fs, orders in BANDS:
            more = (27,) if family == "elliptic" and band == "low_pass" else ()
            for order in orders + more:
                z, p = digital(family, band, fp, fs, order)
                at = [abs(z - s) < 1e-9 for s in (1, -1)]
                rest = z[~(at[0] | at[1])]
                print("    {AnalogPrototype::%s, FilterType::%s, %d, {%r, %r}, {%r, %r}, %d, %d,\n     {%s},\n     {%s}}," % (
                    family, band, order, *fp, *fs, sum(at[0]), sum(at[1]), upper(rest), upper(p)))
    print("};\n\n// Poles of the Bessel prototypes with group delay 1, by order: mpmath.polyroots in 100 digits.")
    print("inline const std::vector<std::vector<std::complex<double>>> bessel_poles{\n    {},")
    mp.mp.dps = 100
    for n in range(1, 31):
        c = [mp.factorial(n + k) / (mp.factorial(n - k) * mp.factorial(k) * mp.mpf(2) ** k) for k in range(n + 1)]
        roots = mp.polyroots(c, maxsteps=2000, extraprec=1000)
        print("    {%s}," % upper([complex(r) for r in roots]))
    print("};\n// clang-format on\n\n} // namespace brisel")


main()
