#!/usr/bin/env python3
"""Writes tests/data/math_golden.txt: values and derivatives of the model functions on a grid.

    python3 tests/bss/math/make_golden.py > tests/data/math_golden.txt      (needs mpmath)

The formulas are written here a second time, with Python's floats, which are IEEE doubles, in the order of operations
that the functions promise. exp, sin, cos, pow and erfc come from mpmath, rounded to the nearest double, so that the file
does not depend on the machine that wrote it.

Each number carries its own bound. Where only arithmetic enters, it is 0: every bit has to agree. Where a system function
enters, its result may be 2 units in the last place off, and a first-order running error analysis carries that to the end
of the formula (each operation on such a number adds one more unit, since it may round the other way). Nothing else widens
a bound, so a formula that amplifies gets exactly the bound that it needs.

Line: model | coefficients | x | value~bound derivative~bound ...
Coefficients and x are decimal, shortest form that reads back to the same double; results are hexadecimal.
"""

import math

import mpmath

mpmath.mp.prec = 200


class Number:
    """A double, and how far another correct evaluation may lie from it."""

    def __init__(self, value, bound=0.0):
        self.value = float(value)
        self.bound = bound

    def _result(self, value, bound):
        return Number(value, bound + math.ulp(value) if bound else 0.0)

    def __add__(self, other):
        other = number(other)
        return self._result(self.value + other.value, self.bound + other.bound)

    def __sub__(self, other):
        other = number(other)
        return self._result(self.value - other.value, self.bound + other.bound)

    def __mul__(self, other):
        other = number(other)
        bound = abs(self.value) * other.bound + (abs(other.value) + other.bound) * self.bound
        return self._result(self.value * other.value, bound)

    def __truediv__(self, other):
        other = number(other)
        quotient = self.value / other.value
        bound = (self.bound + abs(quotient) * other.bound) / (abs(other.value) - other.bound)
        return self._result(quotient, bound)

    def __neg__(self):
        return Number(-self.value, self.bound)

    __radd__ = lambda self, other: number(other) + self
    __rsub__ = lambda self, other: number(other) - self
    __rmul__ = lambda self, other: number(other) * self
    __rtruediv__ = lambda self, other: number(other) / self


def number(value):
    return value if isinstance(value, Number) else Number(value)


def system(function, slope, x):
    """A system function: 2 units in the last place, and the argument's own bound times the slope."""
    x = number(x)
    value = float(function(mpmath.mpf(x.value)))
    return Number(value, 2 * math.ulp(value) + slope(x.value, value) * x.bound)


def exp(x):
    return system(mpmath.exp, lambda _, y: y, x)


def sin(x):
    return system(mpmath.sin, lambda _, y: 1.0, x)


def cos(x):
    return system(mpmath.cos, lambda _, y: 1.0, x)


def erfc(x):
    return system(mpmath.erfc, lambda v, _: 2 / math.sqrt(math.pi) * math.exp(-v * v), x)


PI = 3.141592653589793
PI2 = 9.869604401089358
SQRT2 = 1.4142135623730951
SQRTPI = 1.772453850905516
SQRT_2_PI = 0.7978845608028654
LN2 = 0.6931471805599453


def polynomial(c, x):
    basis = []
    for _ in c:
        basis.append(basis[-1] * x if basis else 1.0)
    y = 0.0
    for ci, bi in zip(c, basis):
        y = y + ci * bi
    return [y] + basis


def exponential_polynomial(c, x):
    y, *basis = polynomial(c, x)
    e = exp(y)
    return [e] + [b * e for b in basis]


def gaussian(c, x):
    c0, c1, c2, c3, c4 = c
    c2 = c2 or 1e-100
    u = (x - c1) / (c2 * 0.60056120439)
    g = exp(u * -1.0 * u) if abs(u) < 25.0 else Number(0.0)
    w = 2 * c0 * g * u
    return [c0 * g + c3 + c4 * x, g, w / (c2 * 0.60056120439), (w * u) / c2, 1.0, x]


def exponential(c, x):
    c0, c1, c2, c3 = c
    if c2 == 0.0:
        return [0.0] * 5
    t = x - c1
    u = (t + t) / c2
    s = math.sqrt(LN2 / PI)
    power = Number(s, 2 * math.ulp(s))
    peak = exp(u * u * -1.0 * LN2)
    y = power * (2.0 / c2 * c0) * peak + c3
    d0 = peak * (2.0 / c2 * s)
    d1 = d0 * c0 * LN2 * 4.0 * t / c2
    d2 = d0 * c0 * 8.0 * (t * t) * LN2 / (c2 * c2 * c2) - exp(t * t * -2.0 * LN2 / c2) * ((c0 + c0) * s / (c2 * c2))
    return [y, d0, d1, d2, 0.0]


def exponential_decay(c, x):
    c0, c1, c2, c3 = c
    T = c3 or 1e-100
    z = (x - c2) / T
    e = exp(-z)
    return [e * c1 + c0, 1.0, e, e * (c1 / T), (c1 / T) * z * e]


def simple_exponential_decay(c, x):
    c0, c1, c2 = c
    e = exp(-(x / c2))
    return [e * c1 + c0, 1.0, e, c1 * x * e / (c2 * c2)]


def fermi_dirac(c, x):
    c0, c1, c2 = c
    T = c2 or 1e-100
    z = (x - c1) / T
    p = exp(z)
    q = exp(p) + 1.0
    d1 = (c0 / T) * -1.0 * p / (q * q)
    return [(1.0 - 1.0 / (p + 1.0)) * c0, 1.0 - 1.0 / q, d1, d1 * z]


def sine(c, x):
    c0, c1, c2, c3 = c
    a = c2 * c2 * x + c3
    v = cos(a) * (c1 * c1)
    return [sin(a) * (c1 * c1) + c0, 1.0, sin(a) * 2.0, (v + v) * c2 * x, v]


def cumulants(c, x):
    c0, c1, c2, c3 = c
    q = x * x * c3 * 0.5 + 1.0
    E = exp(c2 * c2 * -2.0 * x)
    d1 = (q * q) * E
    x2 = x * x
    return [E * c1 * (q * q) + c0, 1.0, d1, d1 * -4.0 * c1 * c2 * x, (x2 * x2 * c3 * 0.5 + x2) * (E * c1)]


def exp_times_erfc(t, L, S):
    if S == 0.0:
        return Number(0.0)
    z = (t * S - L / S) / SQRT2
    if abs(z) > 10.0:
        u = 1 / (z * SQRT2)
        u3 = u * u * u
        series = (u3 * (u * u) * 3.0 + (u - u3)) - u3 * u * u3 * 15.0
        return exp(L * L * -0.5 / (S * S)) * SQRT_2_PI * series
    return exp(t * t * (S * S * 0.5) - t * L) * erfc(z)


def gaussian_cumulants(c, x):
    c0, c1, c2, c3 = c
    L = c2 * c2
    S = c3 * c3
    e0 = erfc(-L / (S * SQRT2))
    P = exp_times_erfc(x, L, S)
    i = 1 / e0
    h = P * i
    G = exp(L * L * -0.5 / (S * S)) * SQRT_2_PI
    g = i * P
    w = 1.0 - g
    V = P * (i * i) * c1
    d2 = (w * G / S - P * x) * (4 * c2 * V)
    d3 = (x * x * S * P - (w * L / (S * S) + x) * G) * (4 * c3 * V)
    return [h * h * c1 + c0, 1.0, g * g, d2, d3]


def gaussian_cumulants_results(c, x):
    """E, e, first and second cumulant, their error factors by L and S, and their errors for errors of x and x / 2."""
    L = c[2] * c[2]
    S = c[3] * c[3]
    q = L / (S * SQRT2)
    E = exp(-(q * q))
    e = erfc(-q)
    r = E / e
    R = L / S
    e1 = erfc(L / (S * -1.414213562373095))
    k1 = exp(L * L * -0.5 / (S * S)) * (SQRT_2_PI * S) / e1 + L
    p = 1.1283791670955126
    k2 = (L * L - k1 * k1) + ((1 - p) / e1 + p) * (S * S)
    first_L = 1 - (SQRT2 / PI * r + R) * (SQRT_2_PI * r)
    first_S = (SQRT_2_PI * R * r + (R * R + 1.0)) * (SQRT_2_PI * r)
    two_over_pi = 0.6366197723675814
    A = L * 2.8284271247461903 / (S * SQRTPI)
    B = E * SQRTPI + 1.0
    second_L = ((1 - two_over_pi) - A * B - R * R * (2 * SQRTPI * e) + E * 4.0 / (e * PI)) * (
        SQRT2 * S * E * (1 / PI) * (1 / (e * e)))
    m = 1 - two_over_pi
    Z = exp(-(R * R))
    T1 = exp(q * q) * e * (e * p + m) + 2 * e * E / PI
    T2 = Z * 2.8284271247461903 / (e * PI2) + (SQRT2 / (2 * PI) * m + e * SQRT_2_PI)
    V = (T1 - T2 * R + 2 * (R * R) * E * (SQRTPI + 1.0) / 5.568327996831708
         - R * R * R * 2.8284271247461903 * e / SQRTPI)
    second_S = V * (2 * S * E / (e * e))
    magnitude = lambda v: Number(abs(v.value), v.bound)
    errors = [magnitude(s) * (x / 2) + magnitude(l) * x for l, s in ((first_L, first_S), (second_L, second_S))]
    return [E, e, k1, k2, first_L, first_S, second_L, second_S] + errors


def broadening(c, x):
    a, b = c
    z = (a * a - (b * LN2 + x) * b) / (b * a * SQRT2)
    ramp = exp((a * a - 2 * b * x) / (2 * (b * b)))
    F = ramp * (1.0 - erfc(z)) / (b * 4.0)
    Q = exp(-(z * z)) * (2 * (1 / (4 * b))) * ramp
    d0 = F * a / (b * b) - (1.0 - (a * a - (a * LN2 + x) * b) / (2 * (a * a))) * (SQRT2 / b) * Q / SQRTPI
    d1 = ((-x / (b * b) - (a * a - 2 * b * x) / (b * b * b)) * F - F / b
          - (-((b * 1.3862943611198906 + x) / (SQRT2 * b * a)) - (a * a - (b * LN2 + x) * b) / (b * SQRT2 * b * a))
          * Q / SQRTPI)
    return [F, d0, d1]


HARMONICS = [(18.84955592153876, 1526.8140296446395), (2 * PI, 2 * PI), (31.41592653589793, 19634.954084936206),
             (43.982297150257104, 105601.4954577673), (56.548667764616276, 371015.80920364737),
             (69.11503837897544, 1011913.2769065795), (81.68140899333463, 2332902.72225863)]


def triangle_dither(c, x):
    """The first two coefficients are the constructor's: base interval and stage length."""
    base, length, c0, c1, c2 = c
    stage = 0
    if x >= base:
        t = (math.floor(x / base + 0.5) - 1.0) / length
        if t > 0.0:
            stage = math.floor(math.log(t) * (1 / math.log(2)) + 1.0)
    W = base * 2.0 ** stage
    h = W * 0.5
    A = c1 * c1
    D = A - 3.0
    t1, t2 = x - h, x + h
    I = J = 0.0
    for k, k5 in HARMONICS:
        I = I + (sin(k * c2 * t2) - sin(k * c2 * t1)) / (k5 * c2)
        J = J + (cos(k * c2 * t2) * t2 - cos(k * c2 * t1) * t1) * k / (k5 * c2)
    swing = I * (A * 32.0 / PI2)
    y = ((swing + h * c0 + h) * (-6.0 / D)) / W
    d0 = ((h * -6.0) / D) / W
    d1 = ((h * c0 + h + swing) * (c1 * 12.0 / (D * D)) - (c1 * 384.0 / (D * PI2)) * I) / W
    d2 = ((J - I / c2) * (A * -192.0 / (D * PI2))) / W
    return [y, d0, d1, d2]


SIGNED = [-7.5, -2.0, -0.3, 0.0, 1e-3, 0.25, 1.1, 3.7, 12.0]
LAGS = [0.0, 1e-3, 0.1, 0.37, 1.0, 2.5, 6.0]
GRID = [
    (polynomial, [[], [3.5], [0.1, -0.7], [1.0, 0.1, -2.3, 0.7], [0.3, -1.7, 1e-3, 2.1, -0.013, 1e-4]], SIGNED),
    (exponential_polynomial, [[], [0.1, -0.7], [-1.0, 0.1, -0.3]], SIGNED),
    (gaussian, [[1.0, 0.0, 1.0, 0.0, 0.0], [2.7, 0.4, 1.3, -0.6, 0.01], [-0.3, -1.0, 0.1, 5.0, -2.0],
                [1.7, 1.1, 0.0, 0.3, 0.7]], SIGNED),
    (exponential, [[1.0, 0.0, 1.0, 0.0], [2.7, 0.4, 1.3, -0.6], [0.9, 0.2, 0.0, 4.0]], SIGNED),
    (exponential_decay, [[0.1, 0.9, 0.0, 1.0], [-0.2, 3.1, 0.7, 0.45]], SIGNED),
    (exponential_decay, [[0.3, 0.9, -8.0, 0.0]], SIGNED),
    (simple_exponential_decay, [[0.1, 0.9, 1.0], [-0.2, 3.1, 0.45], [1e-3, 0.4, -2.0]], SIGNED),
    (fermi_dirac, [[1.0, 0.0, 1.0], [-2.3, 0.6, 2.7]], [-7.5, -2.0, -0.3, 0.0, 0.25, 1.1, 3.7]),
    (sine, [[0.0, 1.0, 1.0, 0.0], [0.4, 1.3, 0.8, -0.5], [2.0, -0.7, 1.7, 0.1]], SIGNED),
    (cumulants, [[0.0, 1.0, 1.0, 0.0], [1e-3, 0.87, 0.9, 0.2], [-0.02, 0.4, -1.2, -0.1]], LAGS),
    (gaussian_cumulants, [[0.0, 1.0, 1.0, 0.5], [1e-3, 0.87, 0.9, 0.7], [0.0, 1.0, 0.6, 1.9], [0.0, 0.8, 1.5, 0.2],
                          [0.2, 0.7, 1.1, 1.5]], LAGS),
    (gaussian_cumulants_results, [[0.0, 1.0, 1.0, 0.9], [0.0, 0.9, 0.6, 1.9], [0.0, 1.0, 1.1, 0.7]], [0.01]),
    (broadening, [[1.0, 1.0], [0.5, 1.3], [-0.7, 0.9], [2.0, -1.1]], [-2.0, -0.3, 0.0, 0.25, 1.1, 3.7]),
    (triangle_dither, [[1.0, 8.0, 0.1, 0.4, 0.07], [0.5, 2.0, -0.3, 1.9, 0.02], [1.0, 8.0, 0.0, -1.0, 0.011]],
     [0.2, 1.0, 2.0, 5.0, 9.0, 17.4, 33.0]),
]


def text(value):
    value = number(value)
    assert math.isfinite(value.value) and math.isfinite(value.bound), "the grid has only finite results"
    return f"{value.value.hex()}~{value.bound:.3g}"


if __name__ == "__main__":
    print("# Made by tests/bss/math/make_golden.py, which tells what the columns and bounds are.")
    for model, sets, xs in GRID:
        for c in sets:
            for x in xs:
                print(model.__name__, " ".join(map(repr, c)), repr(x), " ".join(map(text, model(c, x))), sep=" | ")
