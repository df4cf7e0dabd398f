# SPDX-License-Identifier: MIT
a[1:2, ..., ::-1]
b //= 3
c = a // b
