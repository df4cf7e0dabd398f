# SPDX-License-Identifier: MIT
s = "\u00e9 \N{BULLET} \101 \e"
