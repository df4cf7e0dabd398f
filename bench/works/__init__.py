# SPDX-License-Identifier: MIT
"""The works of the benchmark, in the order of the table."""
from .plain import Plain
from .macros import Macros
from .calls import Calls
from .loops import For, While
from .counting import Counting
from .definitions import Definitions
from .recursion import Recursion
from .rows import Rows
from .start import Start
from .imports import Imports
from .generator import Generator
from .expressions import Expressions
from .python_macro import PythonMacro

ALL = (Plain(), Macros(), Calls(), For(), While(), Counting(), Definitions(), Recursion(), Start(),
       Imports(), Generator(), Expressions(), PythonMacro(), Rows())
