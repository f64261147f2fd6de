# SPDX-License-Identifier: MIT
"""Shared fixtures: the repository's sample files and a plain ctypes view of
the library that the tests use as the reference.

The reference declares its own prototypes and records (bytes, not the
package's structures), so a wrong prototype or layout in the package shows
up as a difference instead of being shared by both sides.
"""
import ctypes
import os
from pathlib import Path

import pytest

SOURCE_DIR = Path(os.environ.get("VEXO_SOURCE_DIR", Path(__file__).resolve().parents[2]))
CORPUS = SOURCE_DIR / "fuzz" / "corpus"
HEADER = SOURCE_DIR / "include" / "vexo.h"

TABLE_BYTES = 65 * 65 * 32
POINT_BYTES = 32


class Reference:
    """Direct calls into libvexo with hand-written prototypes."""

    def __init__(self, path):
        self.lib = ctypes.CDLL(path)
        vp, u32, dbl, cp = ctypes.c_void_p, ctypes.c_uint32, ctypes.c_double, ctypes.c_char_p
        self._proto("vexo_corr_load_corr65", u32, [vp, cp, u32])
        self._proto("vexo_corr_save_kxo", u32, [vp, cp, vp])
        self._proto("vexo_corr_save_ctb", u32, [vp, cp])
        self._proto("vexo_corr_save_cor", u32, [vp, cp, dbl])
        self._proto("vexo_corr_get_corr_head", u32, [vp])
        self._proto("vexo_geom_create_circle", vp, [dbl, vp, dbl, dbl, u32, vp])
        self._proto("vexo_geom_cover", vp, [vp, u32, vp, vp, vp])
        self._proto("vexo_geom_release", None, [vp])
        self._proto("vexo_clip_create", vp, [vp, u32, u32])
        self._proto("vexo_clip_bool", u32, [vp, vp, u32, u32])
        self._proto("vexo_clip_get_result", vp, [vp, vp])
        self._proto("vexo_clip_release", None, [vp])

    def _proto(self, name, restype, argtypes):
        function = getattr(self.lib, name)
        function.restype, function.argtypes = restype, argtypes

    def load(self, path, format):
        """(status, table bytes) of vexo_corr_load_corr65."""
        table = ctypes.create_string_buffer(TABLE_BYTES)
        status = self.lib.vexo_corr_load_corr65(table, os.fsencode(path), format)
        return status, table.raw

    def head(self):
        head = ctypes.create_string_buffer(12)
        assert self.lib.vexo_corr_get_corr_head(head) == 1
        return head.raw

    def save(self, table_bytes, path, kind, scale=0.0, head=bytes(12)):
        table = ctypes.create_string_buffer(table_bytes, TABLE_BYTES)
        target = os.fsencode(path)
        if kind == "kxo":
            head_block = ctypes.create_string_buffer(head, 12)
            return self.lib.vexo_corr_save_kxo(table, target, head_block)
        if kind == "ctb":
            return self.lib.vexo_corr_save_ctb(table, target)
        return self.lib.vexo_corr_save_cor(table, target, scale)

    def take_points(self, address, count):
        """Bytes of count points at address, then the array is released."""
        if not address:
            return b""
        data = ctypes.string_at(address, count * POINT_BYTES)
        self.lib.vexo_geom_release(address)
        return data


@pytest.fixture(scope="session")
def reference():
    path = os.environ.get("VEXO_LIBRARY")
    if not path:
        import vexo._lib
        path = vexo._lib.lib._name
    return Reference(path)


@pytest.fixture(scope="session")
def corpus():
    if not CORPUS.is_dir():
        pytest.skip(f"sample files not found under {CORPUS}")
    return CORPUS


@pytest.fixture(scope="session")
def header_text():
    if not HEADER.is_file():
        pytest.skip(f"header not found at {HEADER}")
    return HEADER.read_text()


@pytest.fixture
def release_log(monkeypatch):
    """Addresses passed to the package's point-array release, in order."""
    import vexo._points as points
    released = []
    original = points.release_points

    def counting(address):
        released.append(address)
        original(address)

    monkeypatch.setattr(points, "release_points", counting)
    return released
