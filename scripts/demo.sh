#!/usr/bin/env bash
# Sets everything up, builds, and runs the libvexo demo.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
bash scripts/build.sh
./build/examples/vexo_dots_example
