// SPDX-License-Identifier: MIT
// A small system for the tests of the integral set-up: atoms and parameters in the run state, as the preparation
// of a run leaves them there.
#pragma once

#include "ground/run_state.h"
#include "molecule/element_tables.h"

#include <gtest/gtest.h>

#include <vector>

// Sets up ::Run from Add and Place, and puts it back when the test ends.
class IntegralSystem : public testing::Test {
protected:
    // Exponents of s, p and d; the type's number.
    int Type(double s, double p, double d) {
        AtomTypeParameters parameters = {};
        parameters.SlaterExponentS = s;
        parameters.SlaterExponentP = p;
        parameters.SlaterExponentD = d;
        Parameters.push_back(parameters);
        return static_cast<int>(Parameters.size()) - 1;
    }

    // An atom of the calculation with that many orbitals, or of the environment with none.
    void Add(int code, int type, double x, double y, double z, int orbitals, int state = 0, float charge = 0.0f) {
        AtomRecord record = {};
        record.AtomIndex = static_cast<int>(Records.size());
        record.AtomicNumber = code;
        record.AtomType = type;
        record.SelectionState = state;
        record.AtomCharge = charge;
        Records.push_back(record);
        Positions.push_back({{x, y, z}});
        Orbitals.push_back(orbitals);
    }

    void Place() {
        List.clear();
        Ranges.clear();
        Exponents.clear();
        Shells.clear();
        for (std::size_t k = 0; k < Records.size(); ++k) {
            if (Records[k].SelectionState <= 0) {
                List.push_back(static_cast<int>(k) + 1);
                AddOrbitals(Records[k], Orbitals[k]);
            }
        }
        ::Run.Molecule.AtomCount = static_cast<int>(Records.size());
        ::Run.Molecule.AtomRecords = Records.data();
        ::Run.Molecule.AtomCoordinates = Positions.data();
        ::Run.Molecule.SelectedAtomCount = static_cast<int>(List.size());
        ::Run.Basis.OrbitalCount = static_cast<int>(Exponents.size());
        ::Run.Molecule.QuantumSelection = {1, ::Run.Molecule.SelectedAtomCount, 1, ::Run.Basis.OrbitalCount,
                                           List.data()};
        ::Run.Basis.OrbitalRanges = Ranges.data();
        ::Run.Basis.OrbitalPrincipalNumbers = Shells.data();
        ::Run.Parameters.ActiveParameters = Parameters.data();
        ::Run.Report.PollShift = 30;
        ::Run.Report.PollCounter = 0;
    }

    std::vector<double> Square(double value) const {
        return std::vector<double>(Exponents.size() * Exponents.size(), value);
    }

    double At(const std::vector<double>& matrix, int row, int column) const {
        return matrix[static_cast<std::size_t>(row) * Exponents.size() + static_cast<std::size_t>(column)];
    }

    void TearDown() override { ::Run = Saved; }

    std::vector<AtomTypeParameters> Parameters;
    std::vector<AtomRecord> Records;
    std::vector<AtomPosition> Positions;
    std::vector<int> Orbitals;
    std::vector<int> List;
    std::vector<OrbitalRange> Ranges;
    std::vector<double> Exponents;
    std::vector<int> Shells;

private:
    void AddOrbitals(const AtomRecord& record, int count) {
        const int first = static_cast<int>(Exponents.size()) + 1;
        Ranges.push_back({first, first + (count < 4 ? count : 4) - 1, first + count - 1});
        for (int k = 0; k < count; ++k) {
            const AtomTypeParameters& type = Parameters[static_cast<std::size_t>(record.AtomType)];
            Exponents.push_back(k == 0 ? type.SlaterExponentS : k < 4 ? type.SlaterExponentP : type.SlaterExponentD);
            Shells.push_back(ValenceShellTable[record.AtomicNumber - 1]);
        }
    }

    RunState Saved = ::Run;
};
