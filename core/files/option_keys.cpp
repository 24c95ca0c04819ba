// SPDX-License-Identifier: MIT
// Reads the keyed options, each with the handler of its type.
#include "files/option_keys.h"

#include "files/text_scan.h"
#include "ground/run_state.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>

const char* MatchOptionKey(const char* line, const char* key) {
    line = SkipWhiteSpace(line);
    const std::size_t length = std::strlen(key);
    if (std::strncmp(line, key, length) != 0) {
        return nullptr;
    }
    line = SkipWhiteSpace(line + length);
    return *line == '=' ? SkipWhiteSpace(line + 1) : nullptr;
}

static bool IsOneOf(const char* value, const char* const (&words)[5]) {
    for (const char* word : words) {
        if (EqualIgnoringCase(value, word)) {
            return true;
        }
    }
    return false;
}

static void SetBoolean(int& field, const char* value) {
    if (IsOneOf(value, {"1", "yes", "y", "true", "t"})) {
        field = 1;
    } else if (IsOneOf(value, {"0", "no", "n", "false", "f"})) {
        field = 0;
    }
}

static void SetMethod(int& field, const char* value) {
    if (IsOneOf(value, {"1", "c", "cndo", "tndo1", "tndo1"})) {
        field = 1;
    } else if (IsOneOf(value, {"2", "i", "indo", "tndo2", "tndo2"})) {
        field = 2;
    }
}

static void SetInteger(int& field, const char* value) {
    field = 0;
    ScanInteger(value, &field);
}

// The leading decimal number, or 0; hexadecimal, infinite and undefined numbers count as 0.
static double LeadingReal(const char* value) {
    const char* digits = *value == '+' || *value == '-' ? value + 1 : value;
    if (!std::isdigit(static_cast<unsigned char>(*digits)) && *digits != '.') {
        return 0.0;
    }
    if (digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
        return 0.0;
    }
    const double number = std::strtod(value, nullptr);
    return std::isfinite(number) ? number : 0.0;
}

static void SetReal(double& field, const char* value) {
    field = LeadingReal(value);
}

// The limit is kept as a 32-bit number.
static void SetReal(float& field, const char* value) {
    field = NarrowReal(LeadingReal(value));
}

// The options by key, in the order in which a line is offered to them; exactly one place of each is set.
static const struct {
    const char* Key;
    void (*SetWord)(int& field, const char* value);
    int* Word;
    double* Real;
    float* Single;
} Options[] = {
    {"SemiEmpiricalMethod", SetMethod, &Run.Options.SemiEmpiricalMethod, nullptr, nullptr},
    {"TotalCharge", SetInteger, &Run.Options.TotalCharge, nullptr, nullptr},
    {"SpinMultiplicity", SetInteger, &Run.Options.SpinMultiplicity, nullptr, nullptr},
    {"SCFConvergenceLimit", nullptr, nullptr, nullptr, &Run.Options.SCFConvergenceLimit},
    {"SCFIterationLimit", SetInteger, &Run.Options.SCFIterationLimit, nullptr, nullptr},
    {"SCFAccelerateConvergence", SetBoolean, &Run.Options.SCFAccelerateConvergence, nullptr, nullptr},
    {"ResponseAcceleration", SetBoolean, &Run.Options.ResponseAcceleration, nullptr, nullptr},
    {"LogPrintLevel", SetInteger, &Run.Options.LogPrintLevel, nullptr, nullptr},
    {"ModifySlaterExponents", SetBoolean, &Run.Options.ModifySlaterExponents, nullptr, nullptr},
    {"ComputeThreeCenterTerms", SetBoolean, &Run.Options.ComputeThreeCenterTerms, nullptr, nullptr},
    {"IncludeDOrbitalsForSecondRow", SetBoolean, &Run.Options.IncludeDOrbitalsForSecondRow, nullptr, nullptr},
    {"FinitePerturbation", nullptr, nullptr, &Run.Options.FinitePerturbation, nullptr},
    {"NMRFrequency", nullptr, nullptr, &Run.Options.NMRFrequency, nullptr},
    {"CalculateShielding", SetBoolean, &Run.Options.CalculateShielding, nullptr, nullptr},
    {"CalculateCoupling", SetBoolean, &Run.Options.CalculateCoupling, nullptr, nullptr},
    {"CalculateSpectra", SetBoolean, &Run.Options.CalculateSpectra, nullptr, nullptr},
    {"CalculateShieldTensor", SetBoolean, &Run.Options.CalculateShieldTensor, nullptr, nullptr},
};

// NMRFrequency and CalculateShieldTensor have, on purpose, no default of their own: they keep what they have.
void SetDefaultOptions() {
    Run.Options.SemiEmpiricalMethod = 1;
    Run.Options.TotalCharge = 0;
    Run.Options.SpinMultiplicity = 1;
    Run.Options.SCFConvergenceLimit = 0.01f;
    Run.Options.SCFIterationLimit = 50;
    Run.Options.SCFAccelerateConvergence = 0;
    Run.Options.ResponseAcceleration = 0;
    Run.Options.LogPrintLevel = 0;
    Run.Options.ModifySlaterExponents = 0;
    Run.Options.ComputeThreeCenterTerms = 0;
    Run.Options.IncludeDOrbitalsForSecondRow = 0;
    Run.Options.FinitePerturbation = 0.001;
    Run.Options.CalculateShielding = 1;
    Run.Options.CalculateCoupling = 1;
    Run.Options.CalculateSpectra = 0;
    Run.Options.UnrestrictedWavefunction = 0;
    Run.Options.NextLowestState = 0;
    Run.Options.GeometryRun = 0;
}

bool ReadOption(char* line) {
    for (const auto& option : Options) {
        const char* value = MatchOptionKey(line, option.Key);
        if (value == nullptr) {
            continue;
        }
        if (option.Word != nullptr) {
            option.SetWord(*option.Word, value);
        } else if (option.Real != nullptr) {
            SetReal(*option.Real, value);
        } else {
            SetReal(*option.Single, value);
        }
        line[0] = '\0';
        return true;
    }
    return false;
}
