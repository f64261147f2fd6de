# SPDX-License-Identifier: MIT
"""Scanner correction tables: loading, saving, adjusting, looking up."""
import ctypes
import os

import numpy as np

from . import _records as r
from ._lib import check, lib
from ._points import as_xyz

SIZE = r.CELLS_PER_SIDE
CELLS = r.CELL_COUNT

# Format numbers of the loaders and writers, by the name of the extension.
FORMATS = {"auto": 0, "ucf": 1, "ctb": 2, "ct5": 3, "gcd": 4, "kxo": 5, "xml": 6, "txt": 7,
           "crt": 8, "cor": 9, "fcr": 10, "scor": 11}
WRITABLE = ("kxo", "ctb", "cor")
FORMAT_NAMES = {number: name for name, number in FORMATS.items()}

INFO_HEAD = 0x01
INFO_SCALE = 0x02
INFO_FACTORS = 0x04
INFO_PARAMS = 0x08
INFO_TRAILER = 0x10
INFO_NO_Z = 0x20

BASE_FOCUS = 0x1
APPLY_INVERSE = 0x1


def format_number(format):
    """A format number from a name ("kxo", ".cor"), a number, or None (auto)."""
    if format is None:
        return 0
    if isinstance(format, str):
        key = format.lower().lstrip(".")
        if key not in FORMATS:
            raise ValueError(f"unknown correction format {format!r}; known: {sorted(FORMATS)}")
        return FORMATS[key]
    number = int(format)
    if number not in FORMAT_NAMES:
        raise ValueError(f"unknown correction format number {number}")
    return number


def _path(path):
    return os.fsencode(os.fspath(path))


def _flat_xyz(grid, what):
    array = np.asarray(grid, dtype=np.float64)
    return as_xyz(array.reshape(-1, array.shape[-1]) if array.ndim == 3 else array, what)


def _square_grids(measured, nominal):
    """measured and nominal as (n*n, 3) arrays, and n."""
    m, q = _flat_xyz(measured, "measured"), _flat_xyz(nominal, "nominal")
    if len(m) != len(q):
        raise ValueError(f"measured has {len(m)} points, nominal {len(q)}")
    n = int(round(len(m) ** 0.5))
    if n * n != len(m) or n == 0:
        raise ValueError(f"{len(m)} points do not form a square grid")
    return m, q, n


def _point_records(xyz):
    # The pointer keeps its array alive (numpy's data_as holds a reference).
    records = np.zeros(len(xyz), dtype=r.POINT_DTYPE)
    records["x"], records["y"], records["z"] = xyz[:, 0], xyz[:, 1], xyz[:, 2]
    return records.ctypes.data_as(ctypes.POINTER(r.GeomPoint))


class FileInfo:
    """What a correction file holds beside the grid.

    format: the format name it was read as; head_tag, head_value: the kxo
    header fields (with head_version, head_size); scale: galvo units per mm
    of a ".cor" (None when the file has none); factors: a ".cor"'s x, y
    factors or None; params: the 16 ".ct5" header words or None; trailer:
    bytes after the ".ctb" planes or None; has_z: False when the table's z
    is only a fill.
    """

    def __init__(self, format="kxo", head_tag=0, head_value=0, head_version=0, head_size=0,
                 scale=None, factors=None, params=None, trailer=None, has_z=True):
        self.format = format
        self.head_tag = head_tag
        self.head_value = head_value
        self.head_version = head_version
        self.head_size = head_size
        self.scale = scale
        self.factors = factors
        self.params = params
        self.trailer = trailer
        self.has_z = has_z

    @classmethod
    def _from_record(cls, record):
        flags = record.flags
        info = cls(format=FORMAT_NAMES.get(record.format, str(record.format)))
        if flags & INFO_HEAD:
            info.head_tag, info.head_value = record.head.tag, record.head.value
            info.head_version, info.head_size = record.head.version, record.head.header_size
        if flags & INFO_SCALE:
            info.scale = record.scale
        if flags & INFO_FACTORS:
            info.factors = (record.factors[0], record.factors[1])
        if flags & INFO_PARAMS:
            info.params = list(record.params)
        if flags & INFO_TRAILER and record.trailer_size:
            info.trailer = ctypes.string_at(record.trailer, record.trailer_size)
        info.has_z = not flags & INFO_NO_Z
        return info

    def __repr__(self):
        fields = ", ".join(f"{k}={v!r}" for k, v in vars(self).items()
                           if k not in ("params", "trailer") and v is not None)
        return f"FileInfo({fields})"


class HeadGeometry:
    """A two-mirror scanner head (see CorrTable.set_head)."""

    def __init__(self, mirror_gap, distance, field_size, focal_length=0.0, focus=False):
        self.record = r.CorrBase(float(mirror_gap), float(distance), float(field_size),
                                 float(focal_length), BASE_FOCUS if focus else 0, 0)

    def angles(self, x, y):
        """Mirror angles (degrees) that put the spot at field position (x, y)."""
        ax, ay = ctypes.c_double(), ctypes.c_double()
        check(lib.vexo_corr_calc_base_angles(ctypes.byref(self.record), float(x), float(y),
                                             ctypes.byref(ax), ctypes.byref(ay)))
        return ax.value, ay.value


class CorrTable:
    """A 65x65 scanner correction table held in library memory.

    `xyz` views the table without a copy: writing into it changes what the
    table saves.  A new table is neutral (the identity correction).
    """

    def __init__(self):
        self._record = r.CorrTableRecord()
        self.info = FileInfo()
        check(lib.vexo_corr_set_neutral(ctypes.byref(self._record)))

    @classmethod
    def neutral(cls):
        """A new identity table."""
        return cls()

    @classmethod
    def load(cls, path, format=None):
        """Read a correction file of any readable format (by name, number or extension)."""
        table = cls()
        record = r.CorrFileInfo()
        try:
            status = lib.vexo_corr_load_ex(ctypes.byref(table._record), _path(path),
                                           format_number(format), ctypes.byref(record))
            check(status, f"cannot load {os.fspath(path)!r}")
            table.info = FileInfo._from_record(record)
        finally:
            lib.vexo_corr_release_info(ctypes.byref(record))
        return table

    @classmethod
    def from_grid(cls, measured, nominal, field_size, base=None):
        """A table corrected from a measured n x n grid of marks.

        measured, nominal: (n*n, 2|3) or (n, n, 2|3) field positions (mm),
        element i*n + j at row i (along y) and column j (along x); the
        nominal grid rectilinear and increasing.  The marks were made
        through `base` (a CorrTable, None: the neutral table).  A perfect
        measurement gives base back exactly.
        """
        m, q, n = _square_grids(measured, nominal)
        table = cls()
        base_record = ctypes.byref(base._record) if base is not None else None
        check(lib.vexo_corr_from_grid(n, _point_records(m), _point_records(q), float(field_size),
                                      base_record, ctypes.byref(table._record)))
        return table

    @classmethod
    def interpolate(cls, measured, nominal, field_range):
        """The older resampling of a measured grid (first index along X).

        Node p samples grid position p * (n - 1) / 65, so even a perfect
        measurement is not the neutral table; from_grid is the one to use
        for new work.
        """
        m, q, n = _square_grids(measured, nominal)
        table = cls()
        check(lib.vexo_corr_interpolate(n, _point_records(m), _point_records(q),
                                         float(field_range), ctypes.byref(table._record)))
        return table

    def copy(self):
        """An independent table with the same cells and file information."""
        other = CorrTable()
        ctypes.memmove(ctypes.byref(other._record), ctypes.byref(self._record),
                       ctypes.sizeof(self._record))
        other.info = FileInfo(**vars(self.info))
        return other

    # --- views -------------------------------------------------------------

    @property
    def cells(self):
        """The (65, 65) records (x, y, z, flags) as a structured view, no copy."""
        return np.frombuffer(self._record, dtype=r.POINT_DTYPE).reshape(SIZE, SIZE)

    @property
    def xyz(self):
        """x, y, z of every cell as a (65, 65, 3) float64 view, no copy.

        Row r, column c is cell (r, c); the column runs along X.
        """
        return np.ndarray((SIZE, SIZE, 3), dtype=np.float64, buffer=memoryview(self._record),
                          strides=(SIZE * r.POINT_DTYPE.itemsize, r.POINT_DTYPE.itemsize, 8))

    def diff(self, other):
        """self.xyz - other.xyz as a new (65, 65, 3) array."""
        if not isinstance(other, CorrTable):
            raise TypeError(f"diff needs a CorrTable, got {type(other).__name__}")
        return self.xyz - other.xyz

    def deviation(self):
        """The difference from the identity table, (65, 65, 3)."""
        return self.diff(CorrTable())

    def __eq__(self, other):
        return isinstance(other, CorrTable) and bytes(self._record) == bytes(other._record)

    __hash__ = None

    # --- saving ------------------------------------------------------------

    def save(self, path, format=None, scale=None, head_tag=None, head_value=None):
        """Write the table as kxo, ctb or cor (format by name, or the extension).

        The file information of the last load travels along: a kxo header's
        tag and value, a ".cor" scale, a ".ctb" trailer.  scale (galvo units
        per mm) and the header fields can be given instead.
        """
        record = r.CorrFileInfo()
        info = self.info
        tag = info.head_tag if head_tag is None else head_tag
        value = info.head_value if head_value is None else head_value
        record.head.tag, record.head.value = int(tag), int(value)
        record.flags = INFO_HEAD
        scale = info.scale if scale is None else scale
        if scale is not None:
            record.scale = float(scale)
            record.flags |= INFO_SCALE
        trailer = None
        if info.trailer:
            trailer = (ctypes.c_uint8 * len(info.trailer)).from_buffer_copy(info.trailer)
            record.trailer = ctypes.cast(trailer, ctypes.POINTER(ctypes.c_uint8))
            record.trailer_size = len(info.trailer)
            record.flags |= INFO_TRAILER
        # The record's trailer is the package's own memory: it is never
        # passed to the release call.
        check(lib.vexo_corr_save_ex(ctypes.byref(self._record), _path(path),
                                    format_number(format), ctypes.byref(record)),
              f"cannot save {os.fspath(path)!r}")
        return self

    # --- adjustments -----------------------------------------------------

    def set_neutral(self):
        """Reset every cell to the identity correction."""
        check(lib.vexo_corr_set_neutral(ctypes.byref(self._record)))
        return self

    def scale(self, factor):
        """Shrink (< 1) or enlarge the field near the centre, rim fixed."""
        check(lib.vexo_corr_set_scale(ctypes.byref(self._record), float(factor)))
        return self

    def focus(self, focal_length, field_size, target_size):
        """Recompute z for a flat field under a lens of focal_length."""
        check(lib.vexo_corr_set_focal(ctypes.byref(self._record), float(focal_length),
                                      float(field_size), float(target_size)))
        return self

    def adjust(self, landed, wanted, radius_factor=1.0, mode=3):
        """A mark meant for `wanted` landed at `landed` (output units): move nearby nodes."""
        src = (ctypes.c_double * 2)(float(landed[0]), float(landed[1]))
        dst = (ctypes.c_double * 2)(float(wanted[0]), float(wanted[1]))
        check(lib.vexo_corr_adjust_single(ctypes.byref(self._record), src, dst,
                                          float(radius_factor), int(mode)))
        return self

    def trapezoid(self, side, factor):
        """Scale one side (0 last row, 1 first column, 2 last column, 3 first row)."""
        if not 0 <= int(side) <= 255:
            raise ValueError(f"side must be 0..3, got {side}")
        check(lib.vexo_corr_set_spatial(ctypes.byref(self._record), int(side), float(factor)))
        return self

    def set_head(self, head):
        """Fill with the ideal correction of a HeadGeometry; returns the full-scale angle."""
        full_scale = ctypes.c_double()
        check(lib.vexo_corr_set_base(ctypes.byref(self._record), ctypes.byref(head.record),
                                     ctypes.byref(full_scale)))
        return full_scale.value

    def lookup(self, points, field_size, inverse=False):
        """Output values for field positions (n, 2|3); inverse: the other way.

        Returns a new (n, 2) array of x, y.
        """
        xyz = as_xyz(points)
        records = np.zeros(len(xyz), dtype=r.POINT_DTYPE)
        records["x"], records["y"], records["z"] = xyz[:, 0], xyz[:, 1], xyz[:, 2]
        data = records.ctypes.data_as(ctypes.POINTER(r.GeomPoint)) if len(records) else None
        check(lib.vexo_corr_apply(ctypes.byref(self._record), data, len(records),
                                  float(field_size), APPLY_INVERSE if inverse else 0))
        return np.column_stack([records["x"], records["y"]])



