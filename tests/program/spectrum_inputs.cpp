// SPDX-License-Identifier: MIT
// Makes spectrum runs of any size.
#include "tests/program/spectrum_inputs.h"

#include <functional>

// Single nuclei 1 ppm apart; coupling(i, j) is the text of a coupling.
static std::string SpinsInput(int count, int frequency, const std::function<std::string(int, int)>& coupling,
                              double minimalIntensity, bool weak) {
    std::string isotopes;
    std::string shifts;
    std::string rows;
    for (int i = 0; i < count; ++i) {
        isotopes += "1 ";
        shifts += std::to_string(i) + " ";
        for (int j = 0; j < count; ++j) {
            rows += coupling(i, j) + " ";
        }
        rows += "\n";
    }
    return "title\n" + std::to_string(count) + "\n" + isotopes + "\nMHz\n" + std::to_string(frequency) + "\nppm\n" +
           shifts + "\nHz\n" + rows + "minimal intensity\n" + std::to_string(minimalIntensity) + "\nweak\n" +
           (weak ? "1" : "0") + "\n";
}

std::string ChainInput(int count) {
    const auto coupling = [](int i, int j) { return i + 1 == j || j + 1 == i ? "5" : "0"; };
    return SpinsInput(count, 100, coupling, 0.001, false);
}

std::string FilteredWeakInput(int count) {
    const auto coupling = [](int, int) { return "5"; };
    return SpinsInput(count, 100, coupling, 1e6, true);
}

std::string ManyLinesInput(int count) {
    const auto coupling = [](int i, int j) {
        return std::to_string(1000 + (j * (j + 1) / 2 + i) * (j + 7) * 37 % 7919) + "e-3";
    };
    return SpinsInput(count, 400, coupling, 0.001, true);
}
