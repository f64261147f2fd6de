#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Configures and builds libvexo in ./build (warnings are errors): everything,
# or only the targets named as arguments (e.g. vexo_tool vexo_examples).
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEXO_WERROR=ON >/dev/null
targets=()
for t in "$@"; do targets+=(--target "$t"); done
cmake --build build -j"$(nproc)" "${targets[@]}"
