# SPDX-License-Identifier: MIT
"""Fits parameters by atom type to measured shifts and couplings."""
