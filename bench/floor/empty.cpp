// SPDX-License-Identifier: MIT
// An empty program: what it costs to start one.
int main() {}
