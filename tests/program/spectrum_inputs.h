// SPDX-License-Identifier: MIT
// Spectrum runs as text: one nucleus, and systems that take their time.
#pragma once

#include <string>

// One nucleus, as nmrspect.in, and its result.
inline constexpr char OneSpin[] = "title\n1\n1\nh\n100\nh\n1.25\nh\n0\nh\n0.001\nh\n0\n";
inline constexpr char OneSpinResult[] =
    "This is a comment line.\n1\nFREQUNCY INTENSITY DEGENERACY LINEWIDTH\n125.000 1.000 1 0\n";

// A system of count single nuclei 1 ppm apart at 100 MHz, coupled by 5 Hz with their neighbours, as nmrspect.in.
std::string ChainInput(int count);

// A weak-coupling system of count such nuclei, each coupled by 5 Hz with every other one; all lines are filtered away.
std::string FilteredWeakInput(int count);

// A weak-coupling system of count single nuclei whose couplings all differ, so that most of its lines stay apart.
std::string ManyLinesInput(int count);
