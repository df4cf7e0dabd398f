# SPDX-License-Identifier: MIT
print(f"{a!r:>{width}} it's {b['key']}")
