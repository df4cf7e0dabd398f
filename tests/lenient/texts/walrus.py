# SPDX-License-Identifier: MIT
while (n := f.read(10)) != b'':
    print(n, end="")
