#!/bin/sh
# SPDX-License-Identifier: MIT
# Installs the package the way its README says, offline, into a fresh
# virtual environment, and imports it from outside the source tree.
# Arguments: python3, the package folder, a scratch folder, libvexo.so.
set -eu
python=$1
source=$2
scratch=$3
library=$4
rm -rf "$scratch"
mkdir -p "$scratch"
# A copy, so that the build's leftovers never land in the source tree.
cp -r "$source" "$scratch/python"
rm -rf "$scratch/python/build" "$scratch/python/vexo.egg-info"
"$python" -m venv --system-site-packages "$scratch/venv"
"$scratch/venv/bin/pip" install --quiet --no-build-isolation --no-index "$scratch/python"
cd "$scratch"
# A sanitizer build's runtime comes first in the importing process only.
LD_PRELOAD="${VEXO_PRELOAD:-}" VEXO_LIBRARY="$library" "$scratch/venv/bin/python" -c '
import sys, vexo
where = vexo.__file__
assert "site-packages" in where, where
table = vexo.CorrTable()
assert table.xyz.shape == (65, 65, 3), table.xyz.shape
print("installed", where, "library", vexo.library_version())
'
