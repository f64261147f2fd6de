# SPDX-License-Identifier: MIT
"""Where the package finds libvexo: the variable, its own folder, the system."""
import os
import shutil
import subprocess
import sys
from pathlib import Path

import vexo

PACKAGE = Path(vexo.__file__).resolve().parent
WHICH = "import vexo, vexo._lib as l; print(l.lib._name)"


def run(code, cwd, env):
    return subprocess.run([sys.executable, "-c", code], cwd=cwd, env=env, capture_output=True,
                          text=True)


def test_library_in_package_folder_is_found(tmp_path):
    copy = tmp_path / "vexo"
    shutil.copytree(PACKAGE, copy, ignore=shutil.ignore_patterns("__pycache__", "*.so*"))
    shutil.copy(vexo._lib.lib._name, copy / "libvexo.so")
    env = {k: v for k, v in os.environ.items() if k not in ("VEXO_LIBRARY", "PYTHONPATH")}
    result = run(WHICH, tmp_path, env)
    assert result.returncode == 0, result.stderr
    assert result.stdout.strip() == str(copy / "libvexo.so")


def test_named_library_that_is_missing_is_not_replaced(tmp_path):
    env = dict(os.environ, VEXO_LIBRARY=str(tmp_path / "absent.so"),
               PYTHONPATH=str(PACKAGE.parent))
    result = run(WHICH, tmp_path, env)
    assert result.returncode != 0, result.stdout
    assert "VEXO_LIBRARY" in result.stderr, result.stderr[-500:]
