#!/bin/sh
# SPDX-License-Identifier: MIT
for f in dir/*; do echo "it's $f" '$x' `date` ${f%.*}; done
case $1 in a) b;; esac
