# SPDX-License-Identifier: MIT
if x:
	if y:
		return "	"
