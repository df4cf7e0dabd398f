#!/usr/bin/env python3
# it's # a "comment
x = 1  # don't
