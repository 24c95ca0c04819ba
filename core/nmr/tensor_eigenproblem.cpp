// SPDX-License-Identifier: MIT
// Solves the characteristic cubic of a tensor in complex arithmetic, part of it in single precision.
#include "nmr/tensor_eigenproblem.h"

#include "numerics/elementary_functions.h"
#include "numerics/single_precision.h"

#include <cmath>
#include <utility>

static constexpr double Third = 0.3333333333333333;
static constexpr double TwoTwentySevenths = 0.07407407407407407;
static constexpr double NaturalPerDecimal = 2.302585092994045;

struct ComplexDouble {
    double Real;
    double Imaginary;
};

struct ComplexSingle {
    float Real;
    float Imaginary;
};

static ComplexSingle MakeComplexSingle(double real, double imaginary) {
    return {RoundToSingle(real), RoundToSingle(imaginary)};
}

static ComplexDouble WidenComplex(ComplexSingle z) {
    return {static_cast<double>(z.Real), static_cast<double>(z.Imaginary)};
}

static ComplexDouble ComplexAdd(ComplexDouble a, ComplexDouble b) {
    return {a.Real + b.Real, a.Imaginary + b.Imaginary};
}

static ComplexDouble ComplexSubtract(ComplexDouble a, ComplexDouble b) {
    return {a.Real - b.Real, a.Imaginary - b.Imaginary};
}

static ComplexDouble ComplexMultiply(ComplexDouble a, ComplexDouble b) {
    return {a.Real * b.Real - a.Imaginary * b.Imaginary, a.Real * b.Imaginary + a.Imaginary * b.Real};
}

static double ComplexAbsolute(ComplexDouble z) {
    return std::sqrt(z.Real * z.Real + z.Imaginary * z.Imaginary);
}

static double ComplexArg(ComplexDouble z) {
    if (z.Real == 0.0) {
        return z.Imaginary == 0.0 ? 0.0 : ArcSine(z.Imaginary / ComplexAbsolute(z));
    }
    if (z.Imaginary == 0.0) {
        return ArcCosine(z.Real / ComplexAbsolute(z));
    }
    return ArcTangent2(z.Imaginary, z.Real);
}

static ComplexSingle ComplexSingleSqrt(ComplexSingle z) {
    const ComplexDouble wide = WidenComplex(z);
    const double size = std::sqrt(ComplexAbsolute(wide));
    const double half = ComplexArg(wide) / 2.0;
    return MakeComplexSingle(size * Cosine(half), size * Sine(half));
}

static ComplexDouble ComplexLog(ComplexDouble z) {
    return {DecimalLogarithm(ComplexAbsolute(z)) * NaturalPerDecimal, ComplexArg(z)};
}

static ComplexDouble ComplexExp(ComplexDouble z) {
    const double size = z.Real == 0.0 ? 1.0 : Exponential(z.Real);
    if (z.Imaginary == 0.0) {
        return {size, 0.0};
    }
    return {size * Cosine(z.Imaginary), size * Sine(z.Imaginary)};
}

static ComplexDouble ComplexPower(ComplexDouble z, double power) {
    if (z.Real == 0.0 && z.Imaginary == 0.0) {
        return z;
    }
    const ComplexDouble logarithm = ComplexLog(z);
    return ComplexExp({power * logarithm.Real, power * logarithm.Imaginary});
}

// The roots of the cubic x^3 + a x^2 + b x + c, real parts.
static void SolveCubic(double a, double b, double c, double* roots) {
    const double q2 = (a * a * a * TwoTwentySevenths - a * b * Third + c) * 0.5;
    const double p3 = (b - a * a * Third) * Third;
    const ComplexDouble z1 = WidenComplex(MakeComplexSingle(-q2, 0.0));
    const ComplexDouble z2 = WidenComplex(ComplexSingleSqrt(MakeComplexSingle(q2 * q2 + p3 * p3 * p3, 0.0)));
    const ComplexDouble w1 = WidenComplex(MakeComplexSingle(-0.5, 0.8660254));
    const ComplexDouble w2 = WidenComplex(MakeComplexSingle(-0.5, -0.8660254));
    const ComplexDouble u = ComplexPower(ComplexAdd(z1, z2), Third);
    const ComplexDouble v = ComplexPower(ComplexSubtract(z1, z2), Third);
    const double s = WidenComplex(MakeComplexSingle(a * Third, 0.0)).Real;
    roots[0] = ComplexAdd(u, v).Real - s;
    roots[1] = ComplexAdd(ComplexMultiply(w1, u), ComplexMultiply(w2, v)).Real - s;
    roots[2] = ComplexAdd(ComplexMultiply(w2, u), ComplexMultiply(w1, v)).Real - s;
}

int SolveTensorEigenproblem(const double* t, double* e) {
    const double a = -(t[4] + t[0] + t[8]);
    const double b = t[4] * t[0] + (t[4] + t[0]) * t[8] - t[1] * t[3] - t[5] * t[7] - t[2] * t[6];
    const double c = -(t[2] * t[7] * t[3] + t[4] * t[0] * t[8] + t[5] * t[1] * t[6] - t[1] * t[8] * t[3] -
                       t[5] * t[7] * t[0] - t[4] * t[2] * t[6]);
    SolveCubic(a, b, c, e);
    for (int i = 0; i < 2; ++i) {
        for (int j = i + 1; j < 3; ++j) {
            if (e[j] < e[i]) {
                std::swap(e[i], e[j]);
            }
        }
    }
    e[3] = (e[1] + e[0] + e[2]) * Third;
    e[4] = e[2] - (e[1] + e[0]) * 0.5;
    return 1;
}
