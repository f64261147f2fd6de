#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Configures and builds libvexo in ./build (warnings are errors).
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEXO_WERROR=ON >/dev/null
cmake --build build -j"$(nproc)"
