// SPDX-License-Identifier: MIT
// Conversions of units. Some were rounded by themselves, and lengths aren't converted back by the inverse: on purpose,
// as results depend on each digit.
#pragma once

// Lengths.
inline constexpr double BohrsPerAngstrom = 1.889725985;  // of the input; ten digits
inline constexpr double AngstromsPerBohr = 0.52917725;   // of the listing; eight digits, not the inverse

// Energies.
inline constexpr double ElectronVoltsPerHartree = 27.211396;  // eight digits
inline constexpr double HartreesPerElectronVolt = 1.0 / ElectronVoltsPerHartree;
inline constexpr double KcalPerElectronVolt = 23.061;  // per mole; five digits
inline constexpr double KcalPerHartree = 627.5220032;  // per mole; the product of the two above in ten digits
inline constexpr double HartreesPerKcal = 1.0 / KcalPerHartree;
inline constexpr float ListedElectronVoltsPerHartree = 27.211395f;  // of eigenvalues, listed from 32-bit values; as
                                                                    // such a value it is the same as 27.211396

// Dipole moments.
inline constexpr double DebyesPerChargeBohr = 2.5416;  // five digits
