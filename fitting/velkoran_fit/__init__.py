# SPDX-License-Identifier: MIT
"""Fits the parameters of the method to measured shifts and couplings, by atom type."""
