// SPDX-License-Identifier: MIT
__asm__("mov %0, %%eax\n\t" : "=r"(x)::"memory"); // don't
