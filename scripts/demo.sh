#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Sets everything up, builds, and runs the libvexo demo: a distorted sample
# correction table is made, inspected, converted with scale and focus into
# the kxo, ctb and cor formats, and plotted.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
# Only what the demo runs: the library, the tool and the examples (the test
# command builds the tests and benchmarks).
echo "demo: building the library, the vexo tool and the examples"
bash scripts/build.sh vexo_tool vexo_examples >/dev/null
vexo=./build/tools/vexo
out=out/demo
# The tool never overwrites an output unasked; each run starts afresh.
rm -rf "$out"
mkdir -p "$out"
run() { echo; echo "\$ vexo $*"; "$vexo" "$@"; }

run corr sample "$out/sample.kxo"
run corr info "$out/sample.kxo"
run corr convert "$out/sample.kxo" "$out/scaled.kxo" --scale 0.98 --focal 163 110 110
run corr convert "$out/scaled.kxo" "$out/scaled.ctb"
run corr convert "$out/scaled.kxo" "$out/scaled.cor" --field 110
run corr diff "$out/scaled.kxo" "$out/scaled.cor"
run corr plot "$out/sample.kxo" "$out/sample.png" --size 900
echo
echo "The point-array example (examples/dots.c):"
./build/examples/vexo_example_dots
echo
echo "Outputs are in $(pwd)/$out:"
ls -l "$out"
