# SPDX-License-Identifier: MIT
"""Shift scales: from absolute shieldings, and between references.

Scales: TMS for 1H, 13C and 29Si, CFCl3 for 19F, 85 % H3PO4 for 31P, liquid NH3 for 15N, liquid H2O for 17O.
"""

# Shielding of the zero of the scale, ppm, on the absolute scale that the measured shieldings have.
ZERO_SHIELDING = {
    # No shielding of TMS gas belongs to the scale of the table: the mean of shielding plus shift of H2, CH4, C2H6, C2H4
    # and C6H6, which are measured both ways (30.908, 30.853, 30.730, 30.830, 30.900).
    "1H": 30.844,
    "13C": 188.1,  # TMS gas, Jameson and Jameson 1987: gas less gas, without the medium
    # Nitromethane at -135.8 (Jameson and others 1981) and at 380.4 ppm from liquid ammonia.
    "15N": 244.6,
    # H2O gas at 344.0, and at -36.1 ppm from the liquid (Wasylishen and others 1984).
    "17O": 307.9,
    "19F": 195.7,  # CFCl3 gas, Jameson and others 1980: gas less gas
    "29Si": 368.5,  # TMS liquid, Jameson and Jameson 1988
    "31P": 328.35,  # 85 % H3PO4, Jameson and others 1990
}

# Shift of a reference on our scale, ppm.
REFERENCE_SHIFT = {
    "TMS": 0.0,
    "CFCl3": 0.0,
    "H3PO4 85 %": 0.0,
    "H2O liquid": 0.0,
    "NH3 liquid": 0.0,
    "CH3NO2": 380.4,  # from liquid NH3: 244.6 + 135.8, see above
}


def shift_of_shielding(nucleus: str, shielding: float) -> float:
    """The shift in ppm of an absolute shielding in ppm. Raises KeyError for a nucleus without a scale."""
    return round(ZERO_SHIELDING[nucleus] - shielding, 3)


def shift_from_reference(reference: str, shift: float) -> float:
    """The shift in ppm on our scale of a shift from a reference. Raises KeyError for an unknown reference."""
    return round(REFERENCE_SHIFT[reference] + shift, 3)
