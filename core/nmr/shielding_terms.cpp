// SPDX-License-Identifier: MIT
// Terms on one atom, their exponents, and the sums.
#include "nmr/shielding_terms.h"

#include "ground/message_poll.h"
#include "molecule/element_tables.h"
#include "nmr/on_atom_integrals.h"
#include "nmr/pair_integrals.h"
#include "nmr/pair_rotation.h"
#include "nmr/shielding_atoms.h"
#include "nmr/shielding_constants.h"
#include "nmr/tensor_eigenproblem.h"

#include <algorithm>

// 1/bohr per elementary charge and valence shell: 0.35 over the number of the shell.
static constexpr double ScreeningPerCharge[] = {0.35, 0.35 / 2, 0.35 / 3};

// A net charge tightens or loosens the orbitals by the screening constant per electron; only shielding sees it.
static void FormExponents() {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        double* zeta = Run.Shielding.ShieldingExponents + 3LL * place;
        std::fill(zeta, zeta + 3, 0.0);
        if (atom.AtomicNumber < 1) {
            continue;
        }
        const AtomTypeParameters& parameters = ParametersOf(atom);
        zeta[0] = parameters.SlaterExponentS;
        zeta[1] = parameters.SlaterExponentP;
        zeta[2] = parameters.SlaterExponentD;
        if (Run.Options.ModifySlaterExponents) {
            const double change = static_cast<double>(Run.Field.NetCharges[place]) *
                                  ScreeningPerCharge[ValenceShellTable[atom.AtomicNumber - 1] - 1];
            for (int k = 0; k < 3; ++k) {
                zeta[k] += change;
            }
        }
    }
}

void StartShieldingTerms() {
    const int n = Run.Molecule.SelectedAtomCount;
    for (double* term : Run.Shielding.ShieldingTerms) {
        std::fill(term, term + n, 0.0);
    }
    std::fill(Run.Shielding.ShieldingTotal, Run.Shielding.ShieldingTotal + n, 0.0);
    for (double* tensor : {Run.Shielding.ShieldingTensor, Run.Shielding.TensorDiamagneticTwoCentre,
                           Run.Shielding.TensorParamagneticOneCentre, Run.Shielding.TensorParamagneticTwoCentre}) {
        std::fill(tensor, tensor + 9LL * n, 0.0);
    }
    FormExponents();
}

// Sums of tables element by element: result = a factor + b more.
static void CombineTables(const OrbitalTable& a, double factor, const OrbitalTable& b, double more,
                          OrbitalTable& result) {
    for (int mu = 0; mu < LargestOrbitals; ++mu) {
        for (int nu = 0; nu < LargestOrbitals; ++nu) {
            result[mu][nu] = a[mu][nu] * factor + b[mu][nu] * more;
        }
    }
}

static void AddOneCentreTensor(int place) {
    const SlaterAtom a = AtomAt(place);
    OrbitalTable m[6];
    OrbitalTable sum;
    OrbitalTable table;
    OnAtomTensorTables(SelectedAtom(place).AtomicNumber, a, m);
    CombineTables(m[0], 1.0, m[1], 1.0, sum);
    CombineTables(sum, 1.0, m[2], 1.0, sum);
    double* tensor = Run.Shielding.ShieldingTensor + 9LL * place;
    for (int axis = 0; axis < 3; ++axis) {
        CombineTables(sum, OneCentreTensorFactor, m[axis], -OneCentreTensorFactor, table);
        tensor[4 * axis] = Contract(Run.Field.TotalDensity, a.Range, a.Range, table);
    }
    static constexpr int Places[3][2] = {{1, 3}, {5, 7}, {2, 6}};  // xy, yz and xz with their mirror images
    for (int pair = 0; pair < 3; ++pair) {
        const double value = -OneCentreTensorFactor * Contract(Run.Field.TotalDensity, a.Range, a.Range, m[3 + pair]);
        tensor[Places[pair][0]] = value;
        tensor[Places[pair][1]] = value;
    }
    Run.Shielding.ShieldingTerms[0][place] =
        HalfIsotropicFactor * Contract(Run.Field.TotalDensity, a.Range, a.Range, sum);
}

static void AddOneCentreTerm(int place) {
    const SlaterAtom a = AtomAt(place);
    OrbitalTable table;
    OnAtomChargeTable(a, table);
    Run.Shielding.ShieldingTerms[0][place] += Contract(Run.Field.TotalDensity, a.Range, a.Range, table);
}

static void AddTwoCentreTerm(int place, const SlaterAtom& a, const SlaterAtom& b) {
    OrbitalTable table;
    OrbitalMomentIntegrals(b, Distance(a.Position, b.Position), table);
    RotatePairTable(a.Position, b.Position, table, b.OrbitalCount, b.OrbitalCount);
    Run.Shielding.ShieldingTerms[1][place] += ContractTransposed(Run.Field.TotalDensity, b.Range, table);
}

static void AddTwoCentreTensor(int place, const SlaterAtom& a, const SlaterAtom& b) {
    OrbitalTable m[9];
    OrbitalTable sum;
    PairTensorIntegrals(b, Distance(a.Position, b.Position), m);
    RotatePairTensor(a.Position, b.Position, b.OrbitalCount, b.OrbitalCount, m);
    CombineTables(m[0], 1.0, m[4], 1.0, sum);
    CombineTables(sum, 1.0, m[8], 1.0, sum);
    double* tensor = Run.Shielding.TensorDiamagneticTwoCentre + 9LL * place;
    for (int element = 0; element < 9; ++element) {
        const bool diagonal = element % 4 == 0;
        CombineTables(sum, diagonal ? TwoCentreTensorFactor : 0.0, m[element], -TwoCentreTensorFactor, m[element]);
        RotatePairTable(a.Position, b.Position, m[element], b.OrbitalCount, b.OrbitalCount);
        tensor[element] += ContractTransposed(Run.Field.TotalDensity, b.Range, m[element]);
    }
    RotatePairTable(a.Position, b.Position, sum, b.OrbitalCount, b.OrbitalCount);
    Run.Shielding.ShieldingTerms[1][place] +=
        IsotropicFactor * ContractTransposed(Run.Field.TotalDensity, b.Range, sum);
}

void ComputeDiamagneticOnAtomTerms() {
    for (int i = 0; i < Run.Molecule.SelectedAtomCount; ++i) {
        if (!ShieldingIsShown(i)) {
            continue;
        }
        const SlaterAtom a = AtomAt(i);
        if (Run.Options.CalculateShieldTensor) {
            AddOneCentreTensor(i);
        } else {
            AddOneCentreTerm(i);
        }
        for (int j = 0; j < Run.Molecule.SelectedAtomCount; ++j) {
            if (j == i || !HasOrbitals(j) || !HavePairTerms(a.Position, SelectedPosition(j))) {
                continue;
            }
            if (Run.Options.CalculateShieldTensor) {
                AddTwoCentreTensor(i, a, AtomAt(j));
            } else {
                AddTwoCentreTerm(i, a, AtomAt(j));
            }
            PollMessages(100);
        }
    }
}

static double ParamagneticOneCentre(const SlaterAtom& a, const double* density, int k) {
    if (a.Shell == 1) {
        return 0.0;
    }
    OrbitalTable table;
    OnAtomMomentTable(a, k, ParamagneticFactor(), table);
    return ContractTransposed(density, a.Range, table);
}

// The field of the nucleus's magnetic moment in the orbitals of one other atom; an atom of shell 1 has no first-order
// matrix of its own.
static double ParamagneticTwoCentre(int place, const SlaterAtom& a, const double* density, int k) {
    double sum = 0.0;
    for (int j = 0; j < Run.Molecule.SelectedAtomCount; ++j) {
        if (j == place || !HasOrbitals(j) || AtomAt(j).Shell == 1 || !HavePairTerms(a.Position, SelectedPosition(j))) {
            continue;
        }
        const SlaterAtom b = AtomAt(j);
        OrbitalTable local[3];
        OrbitalTable table;
        PairMagneticIntegrals(b, Distance(a.Position, b.Position), ParamagneticFactor(), local);
        RotatePairVector(a.Position, b.Position, k, local, table, b.OrbitalCount, b.OrbitalCount);
        sum += ContractTransposed(density, b.Range, table);
        PollMessages(100);
    }
    return sum;
}

void ComputeParamagneticOnAtomTerms(int j, int k) {
    const double* density = Run.Shielding.MagneticDensities[j];
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        if (!ShieldingIsShown(place)) {
            continue;
        }
        const SlaterAtom a = AtomAt(place);
        const double one = ParamagneticOneCentre(a, density, k);
        const double two = ParamagneticTwoCentre(place, a, density, k);
        if (j == k) {
            Run.Shielding.ShieldingTerms[2][place] += one;
            Run.Shielding.ShieldingTerms[3][place] += two;
        }
        if (Run.Options.CalculateShieldTensor) {
            Run.Shielding.TensorParamagneticOneCentre[9LL * place + 3 * j + k] += 3.0 * one;
            Run.Shielding.TensorParamagneticTwoCentre[9LL * place + 3 * j + k] += 3.0 * two;
        }
    }
}

void SumShieldingTerms(bool threeCentre) {
    static constexpr int AllTerms[] = {10, 9, 8, 7, 6, 5, 4, 3, 2, 1};
    static constexpr int FourTerms[] = {2, 1, 4, 3};
    const int* order = threeCentre ? AllTerms : FourTerms;
    const int count = threeCentre ? 10 : 4;
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        double total = 0.0;
        for (int t = 0; HasOrbitals(place) && t < count; ++t) {
            total += Run.Shielding.ShieldingTerms[order[t] - 1][place];
        }
        Run.Shielding.ShieldingTotal[place] = total;
    }
}

void SolveShieldingTensors() {
    for (long long place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        double* tensor = Run.Shielding.ShieldingTensor + 9 * place;
        for (long long element = 0; element < 9; ++element) {
            const long long at = 9 * place + element;
            tensor[element] += Run.Shielding.TensorParamagneticTwoCentre[at] +
                               Run.Shielding.TensorParamagneticOneCentre[at] +
                               Run.Shielding.TensorDiamagneticTwoCentre[at];
        }
        double values[5];
        SolveTensorEigenproblem(tensor, values);
        std::copy(values, values + 5, Run.Shielding.TensorDiamagneticTwoCentre + 9 * place);
    }
}
