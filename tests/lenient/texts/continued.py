# SPDX-License-Identifier: MIT
s = "one \
    two"
