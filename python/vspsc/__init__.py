"""Telephone speech processing: codecs, echo cancellation, detectors, and the building blocks that they consist of.

What applications want is in `vspsc.voice`: `Codec`, `EchoCanceller`, `vad`, `pitch`, `tone`, `level`. The functions of
libvspscy8 have their own names (`vspsMulC_NR_16s_Sfs`, ...) and take numpy arrays where C takes pointers; an error of the
library is an exception (`vspsc.status`), a warning a Python warning.

>>> import numpy as np, vspsc
>>> x = np.array([1000, -1000, 3, 32767], np.int16)
>>> vspsc.vspsMulC_NR_16s_ISfs(16384, x, 4, 15)
0
>>> x
array([  500,  -500,     2, 16384], dtype=int16)
"""

from vspsc.functions import *  # noqa: F403
from vspsc.records import *  # noqa: F403
from vspsc.special import *  # noqa: F403
from vspsc.state import State
from vspsc.status import *  # noqa: F403
from vspsc.voice import *  # noqa: F403
