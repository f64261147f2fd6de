# SPDX-License-Identifier: MIT
"""Point arrays between numpy and the library.

Polylines travel as lists of (n, 3) float arrays; the library's records
mark the last point of each polyline with an end flag instead.  The
conversion lives here, as does the one owner of every point array the
library allocates: `PointBuffer` frees it exactly once, also when a call
fails half way.
"""
import ctypes

import numpy as np

from . import _records as r
from ._lib import lib

POINT_END = 0x01
POINT_END_MARK = 0x04
_MAX_COUNT = 0xFFFFFFFF

_point_ptr = ctypes.POINTER(r.GeomPoint)


def as_xyz(points, what="points"):
    """points as a float64 (n, 3) array; (n, 2) input gets z 0."""
    array = np.asarray(points, dtype=np.float64)
    if array.ndim != 2 or array.shape[1] not in (2, 3):
        raise ValueError(f"{what} must have shape (n, 2) or (n, 3), got {array.shape}")
    if array.shape[1] == 2:
        array = np.column_stack([array, np.zeros(len(array))])
    return array


def as_polylines(polylines, what="polylines"):
    """A list of (n, 3) arrays from one array or a sequence of them."""
    if isinstance(polylines, np.ndarray) and polylines.ndim == 2:
        polylines = [polylines]
    result = [as_xyz(p, what) for p in polylines]
    for index, line in enumerate(result):
        if len(line) == 0:
            raise ValueError(f"{what}[{index}] has no point")
    return result


def records_from_polylines(polylines, closing_copy=False):
    """Point records with the end flag on each polyline's last point.

    closing_copy appends one more record (a copy of the last polyline's
    first point) for the calls that never read an array's last point.
    """
    lines = as_polylines(polylines)
    total = sum(len(line) for line in lines) + (1 if closing_copy and lines else 0)
    if total > _MAX_COUNT:
        raise ValueError(f"{total} points exceed the library's 32-bit count")
    records = np.zeros(total, dtype=r.POINT_DTYPE)
    at = 0
    for line in lines:
        records["x"][at:at + len(line)] = line[:, 0]
        records["y"][at:at + len(line)] = line[:, 1]
        records["z"][at:at + len(line)] = line[:, 2]
        at += len(line)
        records["flags"][at - 1] = POINT_END
    if closing_copy and lines:
        records[at] = records[at - len(lines[-1])]
        records["flags"][at] = POINT_END
    return records


def polylines_from_records(records):
    """Split records after each end flag into (n, 3) arrays.

    Points behind the last end flag form a last polyline of their own.
    """
    xyz = np.column_stack([records["x"], records["y"], records["z"]])
    ends = np.flatnonzero(records["flags"] & POINT_END) + 1
    if len(ends) == 0 or ends[-1] != len(records):
        ends = np.append(ends, len(records))
    starts = np.concatenate([[0], ends[:-1]])
    return [xyz[s:e].copy() for s, e in zip(starts, ends) if e > s]


def pointer(records):
    """A GeomPoint pointer into a contiguous record array (kept alive by the caller)."""
    if records is None or len(records) == 0:
        return None
    if not records.flags["C_CONTIGUOUS"] or records.dtype != r.POINT_DTYPE:
        raise ValueError("point records must be a contiguous POINT_DTYPE array")
    return records.ctypes.data_as(_point_ptr)


def single_point(xyz):
    """One GeomPoint record for a point given as 2 or 3 numbers."""
    values = [float(v) for v in xyz]
    if len(values) not in (2, 3):
        raise ValueError(f"a point has 2 or 3 coordinates, got {len(values)}")
    if len(values) == 2:
        values.append(0.0)
    return r.GeomPoint(values[0], values[1], values[2], 0, 0)


def release_points(address):
    """Free a library point array (kept apart so tests can count the calls)."""
    lib.vexo_geom_release(ctypes.cast(address, _point_ptr))


class PointBuffer:
    """The one owner of a point array that the library allocated.

    `release` frees it at most once; `give` hands ownership to a call that
    takes the array (and frees it itself when it fails), `adopt` takes back
    what such a call returns.
    """

    def __init__(self, address=None, count=0):
        self.address = address or None
        self.count = count if self.address else 0

    @classmethod
    def copy_of(cls, records):
        """A library-allocated copy of records, for calls that take an array."""
        buffer = cls()
        if len(records) == 0:
            return buffer
        address = ctypes.cast(lib.vexo_geom_realloc(None, len(records)), ctypes.c_void_p).value
        if not address:
            raise MemoryError(f"no memory for {len(records)} points")
        ctypes.memmove(address, records.ctypes.data, records.nbytes)
        buffer.address, buffer.count = address, len(records)
        return buffer

    @classmethod
    def returned(cls, result, count):
        """Take ownership of a pointer a call returned (NULL gives an empty buffer)."""
        return cls(ctypes.cast(result, ctypes.c_void_p).value, count)

    def give(self):
        """The pointer, now owned by the call it is passed to."""
        address, self.address, self.count = self.address, None, 0
        return ctypes.cast(address, _point_ptr) if address else None

    def adopt(self, result, count):
        """Own what a call returned after `give` (NULL: the call freed it)."""
        if self.address:
            raise RuntimeError("adopt() over a buffer still owned")
        self.address = ctypes.cast(result, ctypes.c_void_p).value
        self.count = count if self.address else 0

    def records(self):
        """A numpy copy of the records."""
        if not self.address:
            return np.zeros(0, dtype=r.POINT_DTYPE)
        raw = (ctypes.c_char * (self.count * r.POINT_DTYPE.itemsize)).from_address(self.address)
        return np.frombuffer(bytes(raw), dtype=r.POINT_DTYPE)

    def release(self):
        address, self.address, self.count = self.address, None, 0
        if address:
            release_points(address)

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.release()

    def __del__(self):
        self.release()
