# SPDX-License-Identifier: MIT
d = {'a': "b", "c": 'd', **e}
