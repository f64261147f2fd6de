# SPDX-License-Identifier: MIT
"""Polygon union, difference and outline over either clip engine.

Rings go in as lists of (n, 2) or (n, 3) arrays, closed implicitly;
results come back as rings closed by a copy of their first point.
engine="clip" is the Clipper-based family, engine="clip2" the scan-line
one (exact snap rounding, outer boundaries followed by their holes).
Coordinates are truncated to a 0.001 grid by the library.
"""
import ctypes

from ._lib import ERROR_INVALID_PARAMETER, VexoError, check, lib
from ._points import PointBuffer, pointer, polylines_from_records, records_from_polylines

UNION = 0x01
DIFFERENCE = 0x02
JOIN_MITER = 0x01
JOIN_ROUND = 0x02
JOIN_SQUARE = 0x04
FLAT = 0x10
KEYHOLE = 0x20

_JOINS = {"miter": JOIN_MITER, "round": JOIN_ROUND, "square": JOIN_SQUARE}


class _Engine:
    def __init__(self, prefix):
        self.create = getattr(lib, prefix + "_create")
        self.release = getattr(lib, prefix + "_release")
        self.bool = getattr(lib, prefix + "_bool")
        self.outline = getattr(lib, prefix + "_outline")
        self.get_result = getattr(lib, prefix + "_get_result")


_ENGINES = {"clip": _Engine("vexo_clip"), "clip2": _Engine("vexo_clip2")}


def _engine(name):
    try:
        return _ENGINES[name]
    except KeyError:
        raise ValueError(f"engine must be one of {sorted(_ENGINES)}, got {name!r}") from None


def _records(rings):
    # The clip calls never read an array's last point (it closes the
    # outline), so the rings carry one extra closing record.
    return records_from_polylines(rings, closing_copy=True)


def _mode(flat, keyhole, engine_name):
    mode = FLAT if flat else 0
    if keyhole:
        if engine_name != "clip2":
            raise ValueError("keyhole contours need engine='clip2'")
        mode |= KEYHOLE
    return mode


def _run(engine_name, subject, operation):
    """Create a handle for subject, run operation(handle), return its result."""
    engine = _engine(engine_name)
    records = _records(subject)
    handle = engine.create(pointer(records), len(records), operation.mode & FLAT)
    if not handle:
        raise VexoError(ERROR_INVALID_PARAMETER, "subject refused (empty or off the grid)")
    try:
        check(operation(engine, handle))
        count = ctypes.c_uint32(0)
        with PointBuffer.returned(engine.get_result(handle, ctypes.byref(count)),
                                  count.value) as buffer:
            return polylines_from_records(buffer.records())
    finally:
        engine.release(handle)


class _Bool:
    def __init__(self, operand, mode):
        self.records = _records(operand)
        self.mode = mode

    def __call__(self, engine, handle):
        return engine.bool(handle, pointer(self.records), len(self.records), self.mode)


def union(subject, operand, engine="clip", flat=False, keyhole=False):
    """Even-odd union of two ring sets."""
    operation = _Bool(operand, UNION | _mode(flat, keyhole, engine))
    return _run(engine, subject, operation)


def difference(subject, operand, engine="clip", flat=False, keyhole=False):
    """Even-odd difference subject minus operand."""
    operation = _Bool(operand, DIFFERENCE | _mode(flat, keyhole, engine))
    return _run(engine, subject, operation)


class _Outline:
    def __init__(self, distance, mode):
        self.distance = float(distance)
        self.mode = mode

    def __call__(self, engine, handle):
        return engine.outline(handle, self.mode, self.distance)


def outline(rings, distance, join="round", engine="clip", flat=False, keyhole=False):
    """Rings offset by distance (grows when positive) with miter, round or square joins."""
    if join not in _JOINS:
        raise ValueError(f"join must be one of {sorted(_JOINS)}, got {join!r}")
    operation = _Outline(distance, _JOINS[join] | _mode(flat, keyhole, engine))
    return _run(engine, rings, operation)

