// SPDX-License-Identifier: MIT
// The tables by element.
#include "molecule/element_tables.h"

int OrbitalCountTable[LastElementCode] = {1, 1, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4,
                                          4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4};

const int ValenceShellTable[LastElementCode] = {1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3,
                                                2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3};

// A capping atom has seven electrons of its own and one bond to make.
const double CoreChargeTable[LastElementCode] = {1.0, 2.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 1.0, 2.0,
                                                 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 7.0, 7.0, 7.0, 7.0, 7.0, 7.0,
                                                 7.0, 7.0, 7.0, 7.0, 7.0, 7.0, 7.0, 7.0, 7.0, 7.0, 7.0, 7.0};

const double AtomicMassTable[LastElementCode] = {
    1.0079,   4.0026,  6.94,     9.01218, 10.81,    12.011, 14.0067,  15.9994, 18.9984,  20.179,  22.98977, 24.305,
    26.98154, 28.0855, 30.97376, 32.06,   35.453,   39.948, 1.0079,   4.0026,  6.94,     9.01218, 10.81,    12.011,
    14.0067,  15.9994, 18.9984,  20.179,  22.98977, 24.305, 26.98154, 28.0855, 30.97376, 32.06,   35.453,   39.948};

const char ElementLabel[LastElementCode][3] = {" H", "He", "Li", "Be", " B", " C", " N", " O", " F", "Ne", "Na", "Mg",
                                               "Al", "Si", " P", " S", "Cl", "Ar", " H", "He", "Li", "Be", " B", " C",
                                               " N", " O", " F", "Ne", "Na", "Mg", "Al", "Si", " P", " S", "Cl", "Ar"};

const char ElementNames[ElementNameCount][4] = {
    "Lp", "H",  "He", "Li", "Be", "B",  "C",  "N",  "O",  "F",  "Ne", "Na", "Mg", "Al", "Si", "P",  "S",  "Cl",
    "Ar", "K",  "Ca", "Sc", "Ti", "V",  "Cr", "Mn", "Fe", "Co", "Ni", "Cu", "Zn", "Ga", "Ge", "As", "Se", "Br",
    "Kr", "Rb", "Sr", "Y",  "Zr", "Nb", "Mo", "Tc", "Ru", "Rh", "Pd", "Ag", "Cd", "In", "Sn", "Sb", "Te", "I",
    "Xe", "Cs", "Ba", "La", "Ce", "Pr", "Nd", "Pm", "Sm", "Eu", "Gd", "Tb", "Dy", "Ho", "Er", "Tm", "Yb", "Lu",
    "Hf", "Ta", "W",  "Re", "Os", "Ir", "Pt", "Au", "Hg", "Tl", "Pb", "Bi", "Po", "At", "Rn", "Fr", "Ra", "Ac",
    "Th", "Pa", "U",  "Np", "Pu", "Am", "Cm", "Bk", "Cf", "Es", "Fm", "Md", "No", "Lr", "  ", "  ", "  ", ""};
