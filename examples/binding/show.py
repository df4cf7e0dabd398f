# SPDX-License-Identifier: MIT
"""Calls the C library through its binding."""
import rates

for rate in (0.005, 0.03, 0.08):
    print("{:5.1%}  {:4}  {:8.2f}  doubled after {} years".format(
        rate, rates.rate_name(rate).decode(), rates.compound(1000, rate, 10),
        rates.doubling_years(rate)))
