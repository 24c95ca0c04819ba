// SPDX-License-Identifier: MIT
// The lines of a spectrum.
#pragma once

// One line of a spectrum; 32-bit fields, as they go to the result file.
struct SpectrumLine {
    float Frequency;  // Hz
    float Intensity;  // relative; a single isolated spin-1/2 gives 1
    int Degeneracy;   // coincident transitions, weighted by the multiplicity of their total spins
};

// Filled by the simulators, finished by FinishLineList, written and freed by WriteResults.
struct LineData {
    SpectrumLine* SpectrumLines = nullptr;  // [SpectrumLineCapacity] the first SpectrumLineCount are valid
    long long SpectrumLineCapacity = 0;     // records allocated
    int SpectrumLineCount = 0;              // records of the finished list
};
