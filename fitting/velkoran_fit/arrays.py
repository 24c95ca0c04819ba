# SPDX-License-Identifier: MIT
"""Names for arrays of numbers; a docstring gives the shape."""
import numpy as np
import numpy.typing as npt

Reals = npt.NDArray[np.float64]
Integers = npt.NDArray[np.int64]
