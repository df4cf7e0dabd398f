// SPDX-License-Identifier: MIT
outer: for (;;) { if (!--n) break outer; x ||= y; z **= 2; }
