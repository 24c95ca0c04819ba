// SPDX-License-Identifier: MIT
// The chief header: the process-wide state of the one run that a process does. Plain data with static lifetime;
// whatever the run allocates hangs here and nowhere else, and FreeRunData gives it back.
#pragma once

struct AtomTypeName;
struct AtomTypeParameters;
struct NuclearConstants;
struct PlatformWindow;
struct RecoveryFrame;

// The values of RunKind.
inline constexpr int ParameterRun = 1;
inline constexpr int SpectrumRun = 2;

// A composed file path and its terminator.
inline constexpr int FilePathSize = 256;

// One line of a spectrum; 32-bit fields, as they go to the result file.
struct SpectrumLine {
    float Frequency;  // Hz
    float Intensity;  // relative; a single isolated spin-1/2 gives 1
    int Degeneracy;   // coincident transitions, weighted by the multiplicity of their total spins
};

// Neighbours that a record of an atom holds.
inline constexpr int LargestBondCount = 12;

// One atom of the system. Filled by ReadParameterInput; BuildCappingAtoms marks the capping atoms, ValidateSystem turns
// their AtomType to the capping half of the parameter tables.
struct AtomRecord {
    int AtomIndex;       // 0-based position in AtomRecords
    int AtomicNumber;    // element code: 0 lone pair, 1 and up by the periodic table, 18 + Z capping atom
    int AtomType;        // 0-based row of the parameter tables
    int MoleculeIndex;   // 0 before the first molecule line, then 1, 2, ...
    int SelectionState;  // 0 in the calculation, 1 not in it, -1 capping atom
    int BondCount;       // number of neighbours
    int BondedAtoms[LargestBondCount];  // 0-based indices of the neighbours, in any molecule
    float AtomCharge;                   // as read, elementary charges; 0 for a selected atom
};

struct AtomPosition {
    double Position[3];  // x, y, z: Angstrom as read, bohr after ValidateSystem
};

// Atoms and orbitals of the calculation, counted from 1. Filled by BuildSelectedAtomList.
struct QuantumSelection {
    int FirstAtom;          // 1
    int LastAtom;           // selected and capping atoms
    int FirstOrbital;       // 1
    int LastOrbital;        // their orbitals
    int* SelectedAtomList;  // [LastAtom] 1-based atom numbers: selected atoms, then capping atoms, in file order
};

// The orbitals of one atom of SelectedAtomList, by 1-based numbers; an atom without orbitals has Last = First - 1.
struct OrbitalRange {
    int First;   // s
    int LastSP;  // last s or p orbital
    int Last;    // last orbital
};

// Texts are owned by the process, arrays by the run: each array says who fills it, all are freed by FreeRunData
// (those of the spectrum already by WriteResults), and a pointer is null whenever nothing hangs on it.
struct RunState {
    // Process and window: shell/process_entry.cpp.
    int ConsoleMode = 1;                    // 1 until the start message: messages go to standard output
    int QuitRequested = 0;                  // 1 once a poll has met the quit message; ends the message loop
    int RunActive = 0;                      // 1 while RunOneJob runs
    int CloseAfterAbout = 0;                // 1 when a close request came while the About box was open
    PlatformWindow* AboutDialog = nullptr;  // the open About box
    PlatformWindow* MainWindow = nullptr;   // the one window
    unsigned UseSockets = 0;                // registry value of that name, 0 or 1
    unsigned PacketFormat = 0;              // clipboard format "Packet"; stored, and read by nothing
    int ExternalEventSeen = 0;              // message 1125 has come; this and the next two are read by nothing
    unsigned ExternalEventHigh = 0;         // high word of its second parameter
    unsigned ExternalEventLow = 0;          // low word of its second parameter

    // The job: shell/run_job.cpp, from the command line.
    int RunKind = 0;                         // ParameterRun or SpectrumRun
    int ActiveRunKind = 0;                   // kind of the data that hang here; 0 before the first FreeRunData
    int QuietFlag = 0;                       // 1 silences the SCF driver
    int SystemCount = 1;                     // count of systems in the run
    char* ParameterField = nullptr;          // first field of the command line, as given
    char* WorkField = nullptr;               // second field
    char* LogFilePath = nullptr;             // fourth field; empty: no log
    char* ParameterDirectory = nullptr;      // first field with its backslash; buffers are longer than the command line
    char* WorkDirectory = nullptr;           // second field with its backslash
    char InputFilePath[FilePathSize] = "";   // nmrparam.in or nmrspect.in in WorkDirectory
    char OutputFilePath[FilePathSize] = "";  // nmrparam.out or nmrspect.out in WorkDirectory

    // Messages: ground/log.cpp, ground/fatal_error.cpp, ground/message_poll.cpp.
    int LogEnabled = 0;                        // non-zero: lines go to LogFilePath
    int LastErrorCode = 0;                     // id of the fatal error in flight
    int ReportFatalFlag = 1;                   // 0: the next FatalError is silent, and sets it back to 1
    RecoveryFrame* ErrorFrameTop = nullptr;    // newest guarded scope
    RecoveryFrame* FatalGuardFrame = nullptr;  // non-null only while FatalError is reporting
    int PollCounter = 0;                       // work units since the last yield
    int PollShift = 0;                         // a yield is due once PollCounter >> PollShift is non-zero

    // Options of both kinds of run: files/option_keys.cpp, files/spectrum_input.cpp.
    int CalculateSpectra = 0;     // 1: simulate a spectrum
    int CalculateShielding = 0;   // 1: compute shielding constants
    int CalculateCoupling = 0;    // 1: compute spin-spin coupling constants
    int LogPrintLevel = 0;        // 0 to 9 how much is listed; 10 or more switches the log off
    double NMRFrequency = 0;      // spectrometer frequency, MHz
    double MinimalIntensity = 0;  // lines below it are dropped from the result
    int UseWeakCoupling = 0;      // non-zero: perturbation theory; 0: exact

    // Options of a parameter run: files/option_keys.cpp.
    int SemiEmpiricalMethod = 0;           // 1 TNDO/1, 2 TNDO/2
    int TotalCharge = 0;                   // of the system, elementary charges
    int SpinMultiplicity = 0;              // must be 1
    float SCFConvergenceLimit = 0;         // of the wavefunction and of the responses
    int SCFIterationLimit = 0;             // of the wavefunction
    int SCFAccelerateConvergence = 0;      // 1: extrapolate the Fock matrix
    int ModifySlaterExponents = 0;         // 1: other exponents for shielding
    int ComputeThreeCenterTerms = 0;       // 1: with the three-centre terms of the shielding
    int IncludeDOrbitalsForSecondRow = 0;  // 1: d orbitals on sodium to argon, TNDO/1 only
    double FinitePerturbation = 0;         // atomic units; read, and without effect on a result
    int CalculateShieldTensor = 0;         // 1: tensors beside the shielding constants
    int UnrestrictedWavefunction = 0;      // this and the next four have no key and stay 0
    int NextLowestState = 0;
    int ConfigurationInteraction = 0;
    int GeometryRun = 0;
    int RestraintsPresent = 0;

    // Parameter files, T = AtomTypeCount: files/parameter_files.cpp. Entry i is type i as an ordinary atom, T + i the
    // same as a capping atom.
    int AtomTypeCount = 0;                                 // at least 1 once read
    AtomTypeName* AtomTypeNames = nullptr;                 // [T] names in upper case
    AtomTypeParameters* ParameterFileShielding = nullptr;  // [2T] nmr_shft.abp
    AtomTypeParameters* ParameterFileCoupling = nullptr;   // [2T] nmr_cupl.abp
    NuclearConstants* CouplingConstants = nullptr;         // [2T] nmr_cupl.abp

    // The molecule: files/parameter_input.cpp, files/atom_selection.cpp.
    int AtomCount = 0;                         // atoms of the system
    AtomRecord* AtomRecords = nullptr;         // [AtomCount]
    AtomPosition* AtomCoordinates = nullptr;   // [AtomCount]
    int NMRAtomCount = 0;                      // entries of the NMR selection
    int* NMRAtomList = nullptr;                // [NMRAtomCount] 1-based atom numbers
    int SelectedAtomCount = 0;                 // atoms of the calculation, capping atoms included once listed
    int CappingAtomCount = 0;                  // capping atoms among them
    ::QuantumSelection QuantumSelection = {};  // the lists of the calculation

    // Orbitals and levels, N = OrbitalCount: wavefunction/prepare_system.cpp.
    OrbitalRange* OrbitalRanges = nullptr;  // [SelectedAtomCount] by place in SelectedAtomList
    int OrbitalCount = 0;                   // orbitals of the calculation
    int ElectronCount = 0;                  // valence electrons
    int DoublyOccupiedLevels = 0;           // levels with two electrons
    int OccupiedLevels = 0;                 // levels with one or two

    // The parameter table in force: nmr/calculate_nmr_parameters.cpp sets it before each wavefunction.
    const AtomTypeParameters* ActiveParameters = nullptr;  // ParameterFileShielding or ParameterFileCoupling
    const char* ActiveParameterFile = "";                  // its file, for the listing

    // Tables by orbital and sums by parameter table: wavefunction/orbital_tables.cpp.
    double* OrbitalExponents = nullptr;      // [N] Slater exponent, 1/bohr
    int* OrbitalAtoms = nullptr;             // [N] 1-based atom number
    int* OrbitalKinds = nullptr;             // [N] 1 s; 2 to 4 px, py, pz; 5 to 9 dz2, dxz, dyz, dx2-y2, dxy
    int* OrbitalPrincipalNumbers = nullptr;  // [N] principal quantum number
    double IsolatedEnergy = 0;               // of the isolated atoms, kcal/mol
    double HeatOffset = 0;                   // heats of formation of the atoms less IsolatedEnergy, kcal/mol

    // Matrices of the wavefunction, square and row-major, both triangles filled: allocated by PrepareSystem, filled by
    // SolveWavefunction. The scratch buffers hold PaddedRows rows, N rounded up to an even number.
    double* CoreHamiltonian = nullptr;     // [N][N] Hartree
    double* GammaMatrix = nullptr;         // [N][N] Coulomb integrals of orbital pairs, Hartree
    double* FirstScratch = nullptr;        // [PaddedRows][N], or [NMRAtomCount][SelectedAtomCount] if that is more
    double* SecondScratch = nullptr;       // [PaddedRows][N]
    double* FockMatrix = nullptr;          // [PaddedRows][N] Hartree
    double* MolecularOrbitals = nullptr;   // [PaddedRows][N] coefficients of one level in each row
    double* HalfDensity = nullptr;         // [N][N] alpha density
    double* TotalDensity = nullptr;        // [N][N]
    double* PreviousDensity = nullptr;     // [N][N] total density of the iteration before
    double* DiagonalHistory = nullptr;     // [N] diagonal of the total density two iterations back
    double* CoreDiagonal = nullptr;        // [N] the orbital's own energy parameter, Hartree
    double* OrbitalEnergiesRaw = nullptr;  // [N] as the eigensolver leaves them, Hartree
    double* OrbitalEnergies = nullptr;     // [N] Hartree
    double* CommutatorHistory = nullptr;   // [5][N][N] with SCFAccelerateConvergence only
    double* FockHistory = nullptr;         // [5][N][N] the same
    double* MagneticDensities[3] = {};     // [N][N] each, with CalculateShielding: nmr/magnetic_density.cpp
    double CoreRepulsion = 0;              // Hartree
    double EnvironmentEnergy = 0;          // of the charges outside the selection, Hartree
    int ScfPassCounter = -1;               // 0 in the first call of SolveWavefunction
    int LevelShiftStartIteration = 0;      // BuildSelectedAtomList lowers it to -1, and the level shifter stays off

    // Shielding, with CalculateShielding: allocated by PrepareSystem, filled by nmr/shielding_terms.cpp and its kin. By
    // place in SelectedAtomList; a tensor has nine values, row = field direction, column = moment direction.
    double* ShieldingExponents = nullptr;          // [SelectedAtomCount][3] s, p, d, 1/bohr
    double* ShieldingTerms[10] = {};               // [SelectedAtomCount] each, terms 1 to 10, ppm
    double* ShieldingTotal = nullptr;              // [SelectedAtomCount] ppm
    double* ShieldingTensor = nullptr;             // [SelectedAtomCount][9] one-centre diamagnetic, then the total, ppm
    double* TensorDiamagneticTwoCentre = nullptr;  // [SelectedAtomCount][9] ppm; then three eigenvalues, isotropic
                                                   // value and anisotropy in the first five
    double* TensorParamagneticOneCentre = nullptr;  // [SelectedAtomCount][9] ppm
    double* TensorParamagneticTwoCentre = nullptr;  // [SelectedAtomCount][9] ppm

    // Spin system, N = SpinGroupCount: filled by files/spectrum_input.cpp, rounded by PrepareSpinSystem.
    int SpinGroupCount = 0;            // groups of equivalent spin-1/2 nuclei
    int* IsotopicNumbers = nullptr;    // [N] mass number; compared for equality only
    int* NucleiInGroup = nullptr;      // [N] equivalent nuclei in the group, 0 or more
    double* ChemicalShifts = nullptr;  // [N] ppm
    double* CouplingMatrix = nullptr;  // [N][N] Hz; upper triangle all pairs, lower triangle like isotopes only

    // Spectrum: filled by the simulators, finished by FinishLineList.
    SpectrumLine* SpectrumLines = nullptr;  // [SpectrumLineCapacity] the first SpectrumLineCount are valid
    long long SpectrumLineCapacity = 0;     // records allocated
    int SpectrumLineCount = 0;              // records of the finished list
};

extern RunState Run;

// Frees every array of the run that is there and nulls its pointer; safe at any stage. The first call of a process
// does nothing but set ActiveRunKind to 1.
void FreeRunData();
