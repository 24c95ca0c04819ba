// SPDX-License-Identifier: MIT
// e^(-x) by a polynomial, for the Boys and Bessel functions of the three-centre integrals. It is faster than
// Exponential of numerics/elementary_functions.h and rounds otherwise: on purpose another function, results depend on
// its digits.
//
// The reduction and the lower half of the polynomial serve one number here and several in a register in
// nmr/three_centre_kernels_template.h. What serves both is local to each file that includes this one, as some of those
// have compile options of their own.
#pragma once

// e^(-x) for 0 <= x < 700 to 1e-15 relative, by operations that give the same bytes on every processor.
double DecayingExponential(double x);

static constexpr double Ln2High = 0.6931471803691238;     // ln 2 with its last 20 bits zero
static constexpr double Ln2Low = 1.9082149292705877e-10;  // the rest

// x = Count ln 2 - R, R between -0.35 and 0.35, and the series of e^R up to R^7 in two halves: Low + R^4 Middle.
template <class Number> struct DecaySeries {
    Number Shifted;  // its low bits hold Count
    Number R;
    Number R2;
    Number R4;
    Number Low;
    Number Middle;
};

template <class Number> static inline __attribute__((always_inline)) DecaySeries<Number> ExpandDecay(Number x) {
    constexpr double log2OfE = 1.4426950408889634;
    constexpr double roundingShift = 0x1.8p52;  // added, it leaves the nearest integer below
    DecaySeries<Number> series;
    series.Shifted = x * log2OfE + roundingShift;
    const Number count = series.Shifted - roundingShift;
    const Number r = (count * Ln2High - x) + count * Ln2Low;
    const Number r2 = r * r;
    series.R = r;
    series.R2 = r2;
    series.R4 = r2 * r2;
    series.Low = (1.0 + r) + r2 * (1.0 / 2 + r * (1.0 / 6));
    series.Middle = (1.0 / 24 + r * (1.0 / 120)) + r2 * (1.0 / 720 + r * (1.0 / 5040));
    return series;
}

// e^R 2^(-Count): what Shifted holds goes to the place of the exponent. Bits: unsigned integers as wide as Number.
template <class Bits, class Number>
static inline __attribute__((always_inline)) Number ScaleDecay(Number power, Number shifted) {
    return __builtin_bit_cast(Number, __builtin_bit_cast(Bits, power) - (__builtin_bit_cast(Bits, shifted) << 52));
}
