# SPDX-License-Identifier: MIT
"""A module.

It's long.
"""


def f():
    """One line."""
    return 1
