# SPDX-License-Identifier: MIT
"""The Python examples of both READMEs run as printed."""
import re
import shutil

import pytest

from conftest import SOURCE_DIR


def python_blocks(path, section=None):
    text = path.read_text()
    if section:
        start = text.index(section)
        end = text.find("\n## ", start + len(section))
        text = text[start:end if end >= 0 else None]
    return re.findall(r"```python\n(.*?)```", text, re.S)


@pytest.fixture
def head_cor(corpus, tmp_path, monkeypatch):
    shutil.copy(corpus / "corr_cor/integer_marker", tmp_path / "head.cor")
    monkeypatch.chdir(tmp_path)
    return tmp_path


def test_package_tutorial_runs(head_cor):
    blocks = [b for b in python_blocks(SOURCE_DIR / "python" / "README.md")
              if "grey_or_rgb_image" not in b and "photo" not in b]  # sketches need pictures
    assert len(blocks) >= 5, f"found {len(blocks)} blocks"
    namespace = {}
    for block in blocks:
        exec(compile(block, "python/README.md", "exec"), namespace)
    assert (head_cor / "head.ctb").stat().st_size == 65 * 65 * 4


def test_top_readme_example_runs(head_cor):
    blocks = python_blocks(SOURCE_DIR / "README.md", "## Using it from Python")
    assert len(blocks) == 1, f"found {len(blocks)} blocks"
    assert len(blocks[0].strip().splitlines()) == 5
    exec(compile(blocks[0], "README.md", "exec"), {})
    assert (head_cor / "head.ctb").is_file()
