#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# it's # a "comment
x = 1  # don't
