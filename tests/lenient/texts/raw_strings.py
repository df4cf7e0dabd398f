# SPDX-License-Identifier: MIT
import re
P = re.compile(r"\d+\.\w")
Q = r'\s'
R = rb"\x"
