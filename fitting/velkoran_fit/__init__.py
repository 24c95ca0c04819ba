# SPDX-License-Identifier: MIT
"""Fits the typed parameters of the program to measured shifts and coupling constants."""
