# SPDX-License-Identifier: MIT
print("(")
print('[')
# ]})
