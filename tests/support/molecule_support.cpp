// SPDX-License-Identifier: MIT
// Molecules for the tests.
#include "tests/support/molecule_support.h"

#include "files/atom_selection.h"
#include "files/parameter_files.h"
#include "files/result_writer.h"
#include "files/run_input.h"
#include "ground/memory.h"
#include "integrals/gamma_matrix.h"
#include "molecule/selected_atoms.h"
#include "nmr/calculate_nmr_parameters.h"
#include "wavefunction/core_hamiltonian.h"
#include "wavefunction/dipole.h"
#include "wavefunction/orbital_tables.h"
#include "wavefunction/overlap_matrix.h"
#include "wavefunction/prepare_system.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <numeric>

namespace fs = std::filesystem;

Molecule HydrogenMolecule(double distance) {
    return {{{"H", 0.0, 0.0, 0.0}, {"H", 0.0, 0.0, distance}}};
}

Molecule HeliumHydride(double distance) {
    return {{{"He", 0.0, 0.0, 0.0}, {"H", 0.0, 0.0, distance}}, {"TotalCharge = 1"}};
}

Molecule WaterMolecule() {
    return {{{"O", 0.0, 0.0, 0.0}, {"H", 0.0, 0.757, 0.586}, {"H", 0.0, -0.757, 0.586}}};
}

Molecule MethaneMolecule() {
    const double a = 1.09 / std::sqrt(3.0);
    return {{{"C", 0.0, 0.0, 0.0}, {"H", a, a, a}, {"H", -a, -a, a}, {"H", -a, a, -a}, {"H", a, -a, -a}}};
}

Molecule FormaldehydeMolecule() {
    return {{{"C", 0.1, 0.2, 0.3}, {"O", 0.1, 0.2, 1.508}, {"H", 0.1, 1.143, -0.287}, {"H", 0.1, -0.743, -0.287}}};
}

Molecule With(Molecule molecule, const std::vector<std::string>& options) {
    molecule.Options.insert(molecule.Options.end(), options.begin(), options.end());
    return molecule;
}

// By the unit quaternion (1, 2, 3, 4) / sqrt(30).
void Rotate(const double* vector, double* rotated) {
    static constexpr double Matrix[3][3] = {{-20, 4, 22}, {20, -10, 20}, {10, 28, 4}};
    for (int row = 0; row < 3; ++row) {
        double sum = 0.0;
        for (int k = 0; k < 3; ++k) {
            sum += Matrix[row][k] * vector[k];
        }
        rotated[row] = sum / 30.0;
    }
}

Molecule Rotated(const Molecule& molecule) {
    Molecule result = molecule;
    for (MoleculeAtom& atom : result.Atoms) {
        const double position[3] = {atom.X, atom.Y, atom.Z};
        double rotated[3];
        Rotate(position, rotated);
        atom.X = rotated[0];
        atom.Y = rotated[1];
        atom.Z = rotated[2];
    }
    return result;
}

static std::string SelectionLines(const char* name, const std::vector<int>& atoms) {
    std::string text = std::string(name) + "SelectionBegin\n" + std::to_string(atoms.size()) + "\n";
    for (const int atom : atoms) {
        text.append("mol 1 atom ").append(std::to_string(atom)).append("\n");
    }
    return text + name + "SelectionEnd\n";
}

static std::string AtomLine(const Molecule& molecule, int number) {
    const MoleculeAtom& atom = molecule.Atoms[static_cast<std::size_t>(number - 1)];
    std::vector<int> neighbours;
    for (const auto& [a, b] : molecule.Bonds) {
        if (a == number || b == number) {
            neighbours.push_back(a == number ? b : a);
        }
    }
    char line[256];
    std::snprintf(line, sizeof line, "atom %d A%d %s %s - %.6f %.17g %.17g %.17g %d", number, number % 100,
                  atom.Element.c_str(), atom.Element == "Lp" ? "0" : atom.Element.c_str(), atom.Charge, atom.X, atom.Y,
                  atom.Z, static_cast<int>(neighbours.size()));
    std::string text = line;
    for (const int neighbour : neighbours) {
        text.append(" ").append(std::to_string(neighbour)).append(" s");
    }
    return text + "\n";
}

std::string MoleculeInput(const Molecule& molecule) {
    std::string text;
    for (const std::string& option : molecule.Options) {
        text += option + "\n";
    }
    std::vector<int> all(molecule.Atoms.size());
    std::iota(all.begin(), all.end(), 1);
    text += SelectionLines("NMR", molecule.NMRAtoms.empty() ? all : molecule.NMRAtoms);
    if (!molecule.QuantumAtoms.empty()) {
        text += SelectionLines("Quantum", molecule.QuantumAtoms);
    }
    text.append("AtomsBegin\n").append(std::to_string(all.size())).append("\nmol 1 test\n");
    for (const int number : all) {
        text += AtomLine(molecule, number);
    }
    return text + "endmol 1\nAtomsEnd\n";
}

static std::string ProjectFolder(const char* name) {
    return (fs::absolute(__FILE__).parent_path().parent_path().parent_path() / name).string();
}

std::string ParameterFolder() {
    return ProjectFolder("parameters/published");
}

std::string ExampleFolder() {
    return ProjectFolder("examples");
}

void CopyParameterFiles(const std::string& directory) {
    for (const char* name : {"nmrtype.txt", "nmr_shft.abp", "nmr_cupl.abp"}) {
        fs::copy_file(ParameterFolder() + "/" + name, directory + "/" + name, fs::copy_options::overwrite_existing);
    }
}

void ReadMolecule(const std::string& directory, const Molecule& molecule) {
    static char folder[FilePathSize];
    CopyParameterFiles(directory);
    WriteText(directory + "/nmrparam.in", MoleculeInput(molecule));
    UseFilesIn(directory);
    std::snprintf(::Run.Job.InputFilePath, FilePathSize, "%s/nmrparam.in", directory.c_str());
    std::snprintf(::Run.Job.OutputFilePath, FilePathSize, "%s/nmrparam.out", directory.c_str());
    std::snprintf(folder, FilePathSize, "%s\\", directory.c_str());
    ::Run.Job.ParameterDirectory = folder;
    ::Run.Job.RunKind = ParameterRun;
    ::Run.Job.ActiveRunKind = ParameterRun;
    ReadParameterFiles();
    ReadRunInput();
    BuildCappingAtoms();
    BuildSelectedAtomList();
}

static void UseTable(const AtomTypeParameters* parameters, const char* fileName) {
    ::Run.Parameters.ActiveParameters = parameters;
    ::Run.Parameters.ActiveParameterFile = fileName;
    PrepareDipoleFactors();
    PrepareOrbitalTables();
}

void UseCouplingTable() {
    UseTable(::Run.Parameters.ParameterFileCoupling, "nmr_cupl.abp");
}

void UseShieldingTable() {
    UseTable(::Run.Parameters.ParameterFileShielding, "nmr_shft.abp");
}

LoadedMolecule::LoadedMolecule(const Molecule& molecule) {
    ResetRun();
    ReadMolecule(Work.Path, molecule);
    PrepareSystem();
    UseCouplingTable();
}

static void FreeMolecule() {
    FreeArray(::Run.Parameters.AtomTypeNames);
    FreeArray(::Run.Parameters.ParameterFileShielding);
    FreeArray(::Run.Parameters.ParameterFileCoupling);
    FreeArray(::Run.Parameters.CouplingConstants);
    ResetRun();
}

LoadedMolecule::~LoadedMolecule() {
    FreeMolecule();
}

RunTexts RunMolecule(const Molecule& molecule) {
    const TemporaryDirectory work;
    ResetRun();
    ReadMolecule(work.Path, molecule);
    CalculateNmrParameters();
    WriteResults();
    FreeMolecule();
    return {ReadText(work.Path + "/nmrparam.out"), ReadText(work.Path + "/run.log")};
}

std::string RefusalOf(const Molecule& molecule) {
    const TemporaryDirectory work;
    const int code = ExitCodeOfChild([&] {
        ResetRun();
        ReadMolecule(work.Path, molecule);
        CalculateNmrParameters();
    });
    return code == 0 ? ReadText(work.Path + "/nmrparam.out") : "(not refused)";
}

std::string LoadedMolecule::Log() const {
    return ReadText(Work.Path + "/run.log");
}

void LoadedMolecule::ClearLog() const {
    fs::remove(Work.Path + "/run.log");
}

std::string LoadedMolecule::Output() const {
    return ReadText(Work.Path + "/nmrparam.out");
}

void BuildIntegrals() {
    BuildOverlapMatrix(::Run.Field.CoreHamiltonian);
    BuildGammaMatrix(::Run.Field.GammaMatrix);
    BuildCoreHamiltonian(::Run.Field.CoreHamiltonian, ::Run.Field.GammaMatrix);
}

std::vector<double> SquareOf(const double* matrix) {
    return {matrix, matrix + static_cast<long long>(::Run.Basis.OrbitalCount) * ::Run.Basis.OrbitalCount};
}

void SetSquare(double* matrix, const std::vector<double>& values) {
    std::copy(values.begin(), values.end(), matrix);
}

AtomTypeParameters& ParametersAt(int place) {
    return ::Run.Parameters.ParameterFileCoupling[SelectedAtom(place).AtomType];
}

// Two-electron integral (ab|cd) of one atom above F0 (which gamma holds); 0 s, 1 to 3 p.
static double OneCentreIntegral(int a, int b, int c, int d, double g, double f) {
    if (a == b && c == d && a > 0 && c > 0) {
        return (a == c ? 4.0 : -2.0) * f / 25.0;
    }
    if (a != b && ((a == c && b == d) || (a == d && b == c))) {
        return a == 0 || b == 0 ? g / 3.0 : 3.0 * f / 25.0;
    }
    return 0.0;
}

std::vector<double> PlainFock(const std::vector<double>& alpha, const std::vector<double>& beta) {
    const std::size_t n = static_cast<std::size_t>(::Run.Basis.OrbitalCount);
    std::vector<double> fock(::Run.Field.CoreHamiltonian, ::Run.Field.CoreHamiltonian + n * n);
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            fock[i * n + j] -= alpha[i * n + j] * ::Run.Field.GammaMatrix[i * n + j];
            fock[i * n + i] += (alpha[j * n + j] + beta[j * n + j]) * ::Run.Field.GammaMatrix[i * n + j];
        }
    }
    for (int place = 0; ::Run.Options.SemiEmpiricalMethod == 2 && place < ::Run.Molecule.SelectedAtomCount; ++place) {
        const std::size_t s = static_cast<std::size_t>(::Run.Basis.OrbitalRanges[place].First - 1);
        if (SelectedAtom(place).AtomicNumber < 3) {
            continue;
        }
        const double g = ParametersAt(place).SlaterCondonG1;
        const double f = ParametersAt(place).SlaterCondonF2;
        for (int k = 0; k < 256; ++k) {
            const int a = k % 4, b = k / 4 % 4, c = k / 16 % 4, d = k / 64;
            const auto at = [&](int row, int column) {
                return (s + static_cast<std::size_t>(row)) * n + s + static_cast<std::size_t>(column);
            };
            const double integral = OneCentreIntegral(a, b, c, d, g, f);
            fock[at(a, b)] += (alpha[at(c, d)] + beta[at(c, d)]) * integral;
            fock[at(a, c)] -= alpha[at(b, d)] * integral;
        }
    }
    return fock;
}

double PlainElectronicEnergy(const std::vector<double>& density) {
    std::vector<double> half = density;
    for (double& value : half) {
        value *= 0.5;
    }
    const std::vector<double> fock = PlainFock(half, half);
    double sum = 0.0;
    for (std::size_t i = 0; i < density.size(); ++i) {
        sum += 0.5 * density[i] * (::Run.Field.CoreHamiltonian[i] + fock[i]);
    }
    return sum;
}

static void JacobiRotation(std::vector<double>& a, std::vector<double>& rows, std::size_t n, std::size_t p,
                           std::size_t q) {
    if (a[p * n + q] == 0.0) {
        return;
    }
    const double theta = 0.5 * std::atan2(2.0 * a[p * n + q], a[q * n + q] - a[p * n + p]);
    const double c = std::cos(theta), s = std::sin(theta);
    for (std::size_t k = 0; k < n; ++k) {
        const double x = a[k * n + p], y = a[k * n + q];
        a[k * n + p] = c * x - s * y;
        a[k * n + q] = s * x + c * y;
    }
    for (std::size_t k = 0; k < n; ++k) {
        const double x = a[p * n + k], y = a[q * n + k];
        a[p * n + k] = c * x - s * y;
        a[q * n + k] = s * x + c * y;
        const double u = rows[p * n + k], v = rows[q * n + k];
        rows[p * n + k] = c * u - s * v;
        rows[q * n + k] = s * u + c * v;
    }
}

void JacobiEigen(std::vector<double> matrix, int order, std::vector<double>* values, std::vector<double>* vectors) {
    const std::size_t n = static_cast<std::size_t>(order);
    std::vector<double> rows(n * n, 0.0);
    for (std::size_t i = 0; i < n; ++i) {
        rows[i * n + i] = 1.0;
    }
    for (int sweep = 0; sweep < 12; ++sweep) {
        for (std::size_t p = 0; p < n; ++p) {
            for (std::size_t q = p + 1; q < n; ++q) {
                JacobiRotation(matrix, rows, n, p, q);
            }
        }
    }
    std::vector<std::size_t> sorted(n);
    std::iota(sorted.begin(), sorted.end(), std::size_t{0});
    std::sort(sorted.begin(), sorted.end(),
              [&](std::size_t i, std::size_t j) { return matrix[i * n + i] < matrix[j * n + j]; });
    values->clear();
    vectors->clear();
    for (const std::size_t level : sorted) {
        values->push_back(matrix[level * n + level]);
        vectors->insert(vectors->end(), rows.begin() + static_cast<std::ptrdiff_t>(level * n),
                        rows.begin() + static_cast<std::ptrdiff_t>(level * n + n));
    }
}

std::vector<double> NumbersAfter(const std::string& text, const std::string& label, int count) {
    const std::size_t at = text.find(label);
    std::vector<double> numbers;
    if (at == std::string::npos) {
        return numbers;
    }
    const char* next = text.c_str() + at + label.size();
    for (int i = 0; i < count; ++i) {
        char* end;
        numbers.push_back(std::strtod(next, &end));
        next = end;
    }
    return numbers;
}

int CountOf(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}
