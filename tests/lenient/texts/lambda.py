# SPDX-License-Identifier: MIT
f = lambda *a, **k: (a, k) if a else None
