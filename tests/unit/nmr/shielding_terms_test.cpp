// SPDX-License-Identifier: MIT
// Tests of the shielding terms: whole systems against independent quadrature, hand values, terms that vanish, tensors.
#include "tests/reference/shielding/terms_systems.inc"
#include "tests/unit/nmr/shielding_calculation.h"

static Molecule MoleculeOf(const TermsReference& reference) {
    Molecule molecule;
    for (int place = 0; place < reference.AtomCount; ++place) {
        const TermsAtom& atom = reference.Atoms[place];
        molecule.Atoms.push_back({atom.Element, 0.5 * place, 0.0, 0.0});
        if (atom.OrbitalCount == 9) {
            molecule.Options.push_back(DOrbitals);
        }
    }
    return With(molecule, {Tndo1, NoCoupling});
}

// A reference system in Run as it stands: geometry, exponents, charges and densities are those of the reference.
static void LoadReference(const TermsReference& reference) {
    UseShieldingTable();
    ASSERT_EQ(::Run.Basis.OrbitalCount, reference.OrbitalCount);
    ::Run.Options.FinitePerturbation = 1.0;
    for (int place = 0; place < reference.AtomCount; ++place) {
        const TermsAtom& atom = reference.Atoms[place];
        const int number = ::Run.Molecule.QuantumSelection.SelectedAtomList[place] - 1;
        std::copy(atom.Position, atom.Position + 3, ::Run.Molecule.AtomCoordinates[number].Position);
        ::Run.Field.NetCharges[place] = static_cast<float>(atom.Charge);
        AtomTypeParameters& parameters = ::Run.Parameters.ParameterFileShielding[SelectedAtom(place).AtomType];
        parameters.SlaterExponentS = atom.Exponents[0];
        parameters.SlaterExponentP = atom.Exponents[1];
        parameters.SlaterExponentD = atom.Exponents[2];
    }
    const int n = reference.OrbitalCount;
    const double* next = reference.Density;
    const double* field[3] = {reference.FieldDensities[0], reference.FieldDensities[1], reference.FieldDensities[2]};
    for (int row = 0; row < n; ++row) {
        for (int column = row; column < n; ++column) {
            ::Run.Field.TotalDensity[row * n + column] = ::Run.Field.TotalDensity[column * n + row] = *next++;
            for (int k = 0; k < 3; ++k) {
                const double value = row == column ? 0.0 : *field[k]++;
                ::Run.Shielding.MagneticDensities[k][row * n + column] = value;
                ::Run.Shielding.MagneticDensities[k][column * n + row] = -value;
            }
        }
    }
}

// Property: the ten terms and the total of whole molecules. Set-up: water, ammonia and hydrogen sulphide with d
// orbitals, off every axis, with given densities; exponents of the table, then following the charges. The reference is
// quadrature that shares no formula. Tolerance: TermTolerance; RuleTolerance for terms 8 to 10, but with hydrogen
// sulphide, where six Gaussians stand in both. The total has the sum of them.
TEST(ShieldingTerms, WholeSystems) {
    for (const TermsReference& reference : TermsReferences) {
        for (const bool modified : {false, true}) {
            const LoadedMolecule loaded(
                With(MoleculeOf(reference), {ThreeCentre, modified ? Modified : "ModifySlaterExponents = no"}));
            LoadReference(reference);
            FormTerms();
            const auto& terms = modified ? reference.ModifiedTerms : reference.Terms;
            for (int place = 0; place < reference.AtomCount; ++place) {
                const double three = reference.Atoms[0].OrbitalCount == 9 ? TermTolerance : RuleTolerance;
                for (int number = 1; number <= 10; ++number) {
                    EXPECT_NEAR(Term(number, place), terms[number - 1][place], number < 8 ? TermTolerance : three)
                        << reference.Atoms[0].Element << (modified ? " modified" : "") << ", term " << number
                        << ", atom " << place + 1;
                }
                EXPECT_NEAR(::Run.Shielding.ShieldingTotal[place], terms[10][place], 7 * TermTolerance + 3 * three);
            }
        }
    }
}

// Property: tensors, block by block. Set-up: the same systems. The reference follows the same literal blocks with
// integrals by quadrature. Tolerance: as for the terms. The eigenvalues pass through singles: 2e-7 of the largest
// value, twice that for the anisotropy.
TEST(ShieldingTerms, WholeSystemsTensors) {
    for (const TermsReference& reference : TermsReferences) {
        const LoadedMolecule loaded(With(MoleculeOf(reference), {Tensor}));
        LoadReference(reference);
        FormTerms();
        const double* blocks[4] = {::Run.Shielding.ShieldingTensor, ::Run.Shielding.TensorDiamagneticTwoCentre,
                                   ::Run.Shielding.TensorParamagneticOneCentre,
                                   ::Run.Shielding.TensorParamagneticTwoCentre};
        for (int place = 0; place < reference.AtomCount; ++place) {
            for (int number = 1; number <= 4; ++number) {
                EXPECT_NEAR(Term(number, place), reference.TensorTerms[number - 1][place], TermTolerance);
            }
            for (int k = 0; k < 36; ++k) {
                EXPECT_NEAR(blocks[k / 9][9 * place + k % 9], reference.Blocks[k / 9][place][k % 9], TermTolerance)
                    << reference.Atoms[0].Element << " atom " << place + 1 << " block " << k / 9 << " " << k % 9;
            }
        }
        SolveShieldingTensors();
        for (int place = 0; place < reference.AtomCount; ++place) {
            for (int k = 0; k < 9; ++k) {
                EXPECT_NEAR(::Run.Shielding.ShieldingTensor[9 * place + k], reference.Tensor[place][k], TermTolerance);
            }
            const double* expected = reference.Eigenvalues[place];
            const double largest = std::max(std::fabs(expected[0]), std::fabs(expected[2]));
            for (int k = 0; k < 5; ++k) {
                EXPECT_NEAR(::Run.Shielding.TensorDiamagneticTwoCentre[9 * place + k], expected[k],
                            TermTolerance + (k == 4 ? 4e-7 : 2e-7) * largest)
                    << reference.Atoms[0].Element << " atom " << place + 1 << " value " << k;
            }
        }
    }
}

// Property: term 1 of a hydrogen atom with a density of 1 is 17.75 ppm times the exponent: <1s|1/r|1s> = zeta. Hand
// value, for both exponents; without any other atom the other terms are exactly 0. Tolerance: rounding.
TEST(ShieldingTerms, HydrogenAtom) {
    for (const char* tensor : {"CalculateShieldTensor = no", Tensor}) {
        for (const double zeta : {1.0, 1.22}) {
            const LoadedMolecule loaded(
                With({{{"H", 0.3, 0.2, 0.1}}}, {Tndo1, NoCoupling, ThreeCentre, tensor, "TotalCharge = 1"}));
            UseShieldingTable();
            ::Run.Parameters.ParameterFileShielding[SelectedAtom(0).AtomType].SlaterExponentS = zeta;
            ::Run.Options.FinitePerturbation = 1.0;
            ::Run.Field.TotalDensity[0] = 1.0;
            for (double* density : ::Run.Shielding.MagneticDensities) {
                density[0] = 0.0;
            }
            FormTerms();
            EXPECT_NEAR(Term(1, 0), IsotropicFactor * zeta, 1e-12);
            EXPECT_EQ(::Run.Shielding.ShieldingTotal[0], Term(1, 0));
            for (int number = 2; number <= 10; ++number) {
                EXPECT_EQ(Term(number, 0), 0.0);
            }
        }
    }
}

// An s orbital has no angular momentum: terms 3 and 4 are exactly 0, while term 10 is not.
TEST(ShieldingTerms, HydrogenOnly) {
    const LoadedMolecule loaded(With({{{"H", 0.3, 0.1, 0.0}, {"H", 1.2, 0.2, 0.1}, {"H", 0.6, 0.9, -0.2}}},
                                     {Tndo1, NoCoupling, ThreeCentre, Tensor, "TotalCharge = 1"}));
    Calculate();
    for (int place = 0; place < 3; ++place) {
        EXPECT_EQ(Term(3, place), 0.0);
        EXPECT_EQ(Term(4, place), 0.0);
        EXPECT_NE(Term(10, place), 0.0);
    }
}

// Two atoms have no third centre: terms 8, 9 and 10 are exactly 0.
TEST(ShieldingTerms, TwoAtoms) {
    const LoadedMolecule loaded(With({{{"C", 0.3, 0.1, 0.0}, {"O", 1.1, 0.7, 0.4}}}, {Tndo1, NoCoupling, ThreeCentre}));
    Calculate();
    for (int place = 0; place < 2; ++place) {
        for (const int number : {8, 9, 10}) {
            EXPECT_EQ(Term(number, place), 0.0);
        }
        EXPECT_NE(Term(5, place), 0.0);
        EXPECT_LT(Term(3, place), 0.0);
    }
}

// Property: terms 1 to 4 don't depend on the tensor. Set-up: formaldehyde off the axes, shells 1 and 2. Terms 1 and 2
// go two ways: three Cartesian parts, or their sum in closed form; 1e-9 ppm leaves room for the cancellation of the
// closed forms. Terms 3 and 4 are the same sums, to the bit.
TEST(ShieldingTerms, TensorOnAndOff) {
    std::vector<double> plain;
    for (const char* tensor : {"CalculateShieldTensor = no", Tensor}) {
        const LoadedMolecule loaded(With(Rotated(FormaldehydeMolecule()), {Tndo1, NoCoupling, tensor}));
        Calculate();
        for (std::size_t k = 0; k < 16; ++k) {
            const double value = Term(static_cast<int>(k / 4) + 1, static_cast<int>(k % 4));
            if (plain.size() < 16) {
                plain.push_back(value);
            } else if (k < 8) {
                EXPECT_NEAR(value, plain[k], 1e-9) << k;
            } else {
                EXPECT_EQ(value, plain[k]);
            }
        }
    }
}

// The mean of the tensor's diagonal is the sum of terms 1 to 4; without the tensor its arrays stay 0. Rounding of
// numbers of 1e3 ppm.
TEST(ShieldingTerms, TraceOfTheTensor) {
    for (const char* tensor : {"CalculateShieldTensor = no", Tensor}) {
        const LoadedMolecule loaded(With(Rotated(FormaldehydeMolecule()), {Tndo1, NoCoupling, tensor}));
        Calculate();
        for (int place = 0; place < 4; ++place) {
            double trace = 0.0;
            for (const double* block :
                 {::Run.Shielding.ShieldingTensor, ::Run.Shielding.TensorDiamagneticTwoCentre,
                  ::Run.Shielding.TensorParamagneticOneCentre, ::Run.Shielding.TensorParamagneticTwoCentre}) {
                trace += block[9 * place] + block[9 * place + 4] + block[9 * place + 8];
            }
            const bool on = ::Run.Options.CalculateShieldTensor != 0;
            EXPECT_NEAR(trace / 3.0, on ? ::Run.Shielding.ShieldingTotal[place] : 0.0, 1e-9);
        }
    }
}

// Four terms without the three-centre option: the others stay 0, and the total has no part of them.
TEST(ShieldingTerms, FourTermsByDefault) {
    const LoadedMolecule loaded(With(WaterMolecule(), {Tndo1, NoCoupling}));
    Calculate();
    for (int place = 0; place < 3; ++place) {
        for (int number = 5; number <= 10; ++number) {
            EXPECT_EQ(Term(number, place), 0.0);
        }
        EXPECT_EQ(::Run.Shielding.ShieldingTotal[place],
                  Term(2, place) + Term(1, place) + Term(4, place) + Term(3, place));
    }
}

// Neutral atoms keep their exponents: the same numbers to the bit. A charge of 0.2 adds 0.35, 0.175 and
// 0.11666666666666665 of it to all three, by the valence shell.
TEST(ShieldingTerms, ModifiedExponents) {
    const LoadedMolecule loaded(With({{{"H", 0.0, 0.0, 0.0}, {"O", 0.0, 1.0, 0.0}, {"S", 0.0, 3.0, 0.0}}},
                                     {Tndo1, NoCoupling, Modified, "TotalCharge = 1"}));
    UseShieldingTable();
    const double steps[3] = {0.35, 0.175, 0.11666666666666665};
    for (const float charge : {0.0f, 0.2f}) {
        for (int place = 0; place < 3; ++place) {
            ::Run.Field.NetCharges[place] = charge;
        }
        StartShieldingTerms();
        for (int place = 0; place < 3; ++place) {
            const AtomTypeParameters& parameters = ::Run.Parameters.ActiveParameters[SelectedAtom(place).AtomType];
            const double step = static_cast<double>(charge) * steps[place];
            EXPECT_EQ(::Run.Shielding.ShieldingExponents[3 * place], parameters.SlaterExponentS + step);
            EXPECT_EQ(::Run.Shielding.ShieldingExponents[3 * place + 1], parameters.SlaterExponentP + step);
            EXPECT_EQ(::Run.Shielding.ShieldingExponents[3 * place + 2], parameters.SlaterExponentD + step);
        }
    }
}

// On purpose: a capping atom has empty one-centre tables of the tensor, so its term 1 is 0 with the tensor only.
// Set-up: methanol cut at the bond of carbon and oxygen; the capping atom stands last.
TEST(ShieldingTerms, CappingAtoms) {
    for (const bool tensor : {false, true}) {
        Molecule molecule = {{{"C", 0.0, 0.0, 0.0},
                              {"H", 0.6, 0.6, 0.6},
                              {"H", -0.6, -0.6, 0.6},
                              {"H", -0.6, 0.6, -0.6},
                              {"O", 0.8, -0.8, -0.8}}};
        molecule.Bonds = {{1, 2}, {1, 3}, {1, 4}, {1, 5}};
        molecule.QuantumAtoms = {1, 2, 3, 4};
        molecule.NMRAtoms = {1, 2, 3, 4};
        const LoadedMolecule loaded(
            With(molecule, {Tndo1, NoCoupling, tensor ? Tensor : "CalculateShieldTensor = no"}));
        ASSERT_EQ(::Run.Molecule.SelectedAtomCount, 5);
        ASSERT_GT(SelectedAtom(4).AtomicNumber, 18);
        Calculate();
        EXPECT_GT(Term(1, 0), 50.0);
        if (tensor) {
            EXPECT_EQ(Term(1, 4), 0.0);
        } else {
            EXPECT_GT(Term(1, 4), 1.0);
        }
        EXPECT_GT(Term(2, 4), 0.0);
    }
}

// The terms and the tensor of an atom, one after the other.
static std::vector<double> ShieldingOf(int place) {
    std::vector<double> values;
    for (int number = 1; number <= 10; ++number) {
        values.push_back(Term(number, place));
    }
    for (const double* block :
         {::Run.Shielding.ShieldingTensor, ::Run.Shielding.TensorDiamagneticTwoCentre,
          ::Run.Shielding.TensorParamagneticOneCentre, ::Run.Shielding.TensorParamagneticTwoCentre}) {
        values.insert(values.end(), block + 9LL * place, block + 9LL * place + 9);
    }
    values.push_back(::Run.Shielding.ShieldingTotal[place]);
    return values;
}

// With a log, whose tables show all atoms, all have their terms. Without one only the NMR atoms have them, the same to
// the bit, and those of the others aren't computed. Set-up: formaldehyde off the axes with a chlorine and a lone pair
// nearby, shells 1 to 3; the lone pair is selected, and has nothing all the same.
TEST(ShieldingTerms, OnlyOfAtomsThatAreShown) {
    Molecule molecule = Rotated(FormaldehydeMolecule());
    molecule.Atoms.push_back({"Lp", 0.3, -0.4, 0.2});
    molecule.Atoms.push_back({"Cl", 2.5, 1.5, 0.5});
    molecule.NMRAtoms = {5, 4, 1};
    const std::vector<double> nothing(47, 0.0);
    std::vector<std::vector<double>> shown;
    for (const char* level : {"LogPrintLevel = 9", "LogPrintLevel = 10"}) {
        const LoadedMolecule loaded(
            With(molecule, {Tndo1, NoCoupling, ThreeCentre, Tensor, DOrbitals, "TotalCharge = -1", level}));
        Calculate();
        for (const int place : {0, 1, 2, 3, 5}) {
            const std::vector<double> values = ShieldingOf(place);
            if (shown.size() < 5) {
                for (int number = 1; number <= 10; ++number) {
                    const bool turns = number == 3 || number == 6 || number == 7;  // an orbital of the nucleus's atom
                    EXPECT_EQ(Term(number, place) == 0.0, turns && SelectedAtom(place).AtomicNumber == 1)
                        << "term " << number << ", place " << place;
                }
                shown.push_back(values);
            } else {
                const bool isNMRAtom = place == 0 || place == 3;
                EXPECT_EQ(values, isNMRAtom ? shown[static_cast<std::size_t>(place)] : nothing) << place;
            }
        }
        EXPECT_EQ(ShieldingOf(4), nothing);
    }
}
