// SPDX-License-Identifier: MIT
// Exponential, logarithms, sine, cosine and their inverses from additions, multiplications, divisions and square roots
// in a fixed order: the same bytes on every processor, which a C library doesn't promise. Special values are those of
// the functions of <cmath>; errno and the floating-point flags aren't part of it.
#pragma once

// Each gives the nearest double but for about one argument in 100 000, and then one less than 0.501 units of the last
// place away.
double Exponential(double x);
double NaturalLogarithm(double x);
double DecimalLogarithm(double x);
double Sine(double x);
double Cosine(double x);
double ArcSine(double x);
double ArcCosine(double x);
double ArcTangent2(double y, double x);
