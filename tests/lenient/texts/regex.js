// SPDX-License-Identifier: MIT
const r = /['"]\/*[^/]*/g, s = a / b / c;
