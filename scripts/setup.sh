#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the Debian packages libvexo needs to build, test, benchmark and
# fuzz, only those that are missing.  Works as root or through sudo.
set -euo pipefail

packages=(g++ make cmake pkg-config libopencv-dev libpolyclipping-dev libgtest-dev
          libgmock-dev libbenchmark-dev clang libclang-rt-14-dev locales
          python3 clang-format clang-tidy
          opencv-doc  # OpenCV's sample pictures, read by the recognition tests
          libboost-dev
          # The tool's command line, JSON output and vector plots; GEOS as an
          # independent reference in the line tests; the Python package and
          # its tests (pip installs it from the tree, offline).
          libcli11-dev nlohmann-json3-dev libcairo2-dev libgeos-dev
          python3-numpy python3-pytest python3-setuptools python3-pip
          # The Python package's offline install test: a virtual environment
          # and setuptools' wheel builder.
          python3-venv python3-wheel)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
fi
if [ ${#missing[@]} -gt 0 ]; then
    echo "setup: installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null
fi

# The text-loader tests also run under a decimal-comma locale.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
    echo "setup: generating the de_DE.UTF-8 locale"
    "${as_root[@]}" localedef -i de_DE -f UTF-8 de_DE.UTF-8 || echo "setup: no de_DE locale (test skipped)"
fi
