# SPDX-License-Identifier: MIT
a = 1_000j
b = 0b1010
c = 0o17
d = 1e
e = 0x
f = 1.
g = 10..real
