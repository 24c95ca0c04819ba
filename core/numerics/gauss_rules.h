// SPDX-License-Identifier: MIT
// Nodes and weights of Gauss rules for the two-centre integrals of the magnetic shielding.
#pragma once

struct GaussRule {
    int Count;              // number of nodes
    const double* Nodes;    // Legendre: [Count/2], the positive ones, rising; Laguerre: [Count], rising
    const double* Weights;  // of the same shape; Laguerre: times e^node
};

inline constexpr int LegendreRuleCount = 11;
inline constexpr int LegendreRuleStep = 4;
inline constexpr int SmallestLegendreRule = 8;
inline constexpr int LargestLegendreRule = SmallestLegendreRule + (LegendreRuleCount - 1) * LegendreRuleStep;
inline constexpr int LaguerreRuleCount = 5;

// On (-1, 1), with 8, 12, ... 48 nodes.
extern const GaussRule LegendreRules[LegendreRuleCount];

// On (0, infinity), with 12, 16, ... 28 nodes.
extern const GaussRule LaguerreRules[LaguerreRuleCount];
