# SPDX-License-Identifier: MIT
'''Don't
say "no"'''
x = '''a'''
