# SPDX-License-Identifier: MIT
"""What the benchmark is made of: works, their inputs, the tools that do them, measuring, the table."""
