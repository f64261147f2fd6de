# SPDX-License-Identifier: MIT
"""The library's records as ctypes structures and numpy dtypes.

Every record the package exchanges with libvexo is defined here and only
here.  The sizes the header documents are checked when the package is
imported, so a record that drifted from the header fails at once instead of
corrupting memory later.
"""
import ctypes

import numpy as np

c_double = ctypes.c_double
c_uint8 = ctypes.c_uint8
c_uint16 = ctypes.c_uint16
c_uint32 = ctypes.c_uint32
c_int32 = ctypes.c_int32

CELLS_PER_SIDE = 65
CELL_COUNT = CELLS_PER_SIDE * CELLS_PER_SIDE


class GeomPoint(ctypes.Structure):
    _fields_ = [("x", c_double), ("y", c_double), ("z", c_double),
                ("flags", c_uint32), ("reserved", c_uint32)]


# The same record seen by numpy: point arrays are copied in and out of the
# library through this dtype, field for field.
POINT_DTYPE = np.dtype([("x", "<f8"), ("y", "<f8"), ("z", "<f8"),
                        ("flags", "<u4"), ("reserved", "<u4")])


class GeomDotShape(ctypes.Structure):
    _fields_ = [("kind", c_uint16), ("unused", c_uint16), ("options", c_uint32),
                ("steps", c_uint32), ("radius", c_uint32),
                ("inner_radius", c_uint32), ("pitch", c_uint32)]


class GeomMatrix(ctypes.Structure):
    _fields_ = [("m", c_double * 16)]


class VexoHatch(ctypes.Structure):
    _fields_ = [("spacing", c_double), ("angle", c_double), ("inset", c_double),
                ("start_trim", c_double), ("end_trim", c_double),
                ("min_length", c_double), ("origin_x", c_double),
                ("origin_y", c_double), ("connect_distance", c_double),
                ("angle_step", c_double), ("passes", c_uint32),
                ("options", c_uint32)]


DASH_MAX = 16


class VexoDash(ctypes.Structure):
    _fields_ = [("lengths", c_double * DASH_MAX), ("count", c_uint32), ("options", c_uint32),
                ("offset", c_double)]


class CorrTableRecord(ctypes.Structure):
    _fields_ = [("cell", GeomPoint * CELL_COUNT)]


class CorrHead(ctypes.Structure):
    _fields_ = [("version", c_uint16), ("header_size", c_uint16), ("tag", c_uint8),
                ("reserved", c_uint8 * 3), ("value", c_uint32)]


class CorrFileInfo(ctypes.Structure):
    _fields_ = [("format", c_uint32), ("flags", c_uint32), ("head", CorrHead),
                ("reserved", c_uint32), ("scale", c_double),
                ("factors", c_double * 2), ("params", c_uint32 * 16),
                ("trailer_size", c_uint32), ("reserved2", c_uint32),
                ("trailer", ctypes.POINTER(c_uint8))]


class CorrBase(ctypes.Structure):
    _fields_ = [("mirror_gap", c_double), ("distance", c_double),
                ("field_size", c_double), ("focal_length", c_double),
                ("options", c_uint32), ("reserved", c_uint32)]


class ImageBlock(ctypes.Structure):
    # width and height are big-endian in the record; they stay raw bytes
    # here and are packed by the vision module.
    _fields_ = [("header", c_uint8 * 8), ("kind", c_uint8), ("format", c_uint8),
                ("reserved", c_uint8 * 6), ("width_be", c_uint8 * 4),
                ("height_be", c_uint8 * 4), ("bits", c_uint32),
                ("data_size", c_uint32)]


class CalibrationRecord(ctypes.Structure):
    _fields_ = [("camera", (c_uint8 * 8) * 9), ("distortion", (c_uint8 * 8) * 4),
                ("width", c_int32), ("height", c_int32),
                ("reserved0", (c_uint8 * 8) * 3), ("perspective", (c_uint8 * 8) * 9),
                ("reserved1", c_uint8 * 5), ("options", c_uint8),
                ("padding", c_uint8 * 2)]


class PatternKeypoint(ctypes.Structure):
    _fields_ = [("x", c_int32), ("y", c_int32), ("size", c_int32), ("angle", c_int32),
                ("response", c_int32), ("octave", c_int32), ("class_id", c_int32)]


class PrcgDotParams(ctypes.Structure):
    _fields_ = [("threshold_kind", c_uint32), ("threshold", c_uint32), ("min_area", c_double),
                ("max_area", c_double), ("min_circularity", c_double), ("options", c_uint32),
                ("reserved", c_uint32), ("record", ctypes.POINTER(CalibrationRecord))]


class RecognitionResult(ctypes.Structure):
    _fields_ = [("x", ctypes.c_float), ("y", ctypes.c_float),
                ("rotation", ctypes.c_float), ("status", c_int32)]


class RecognitionReport(ctypes.Structure):
    _fields_ = [("x", c_double), ("y", c_double), ("rotation", c_double),
                ("scale", c_double), ("matches", c_uint32), ("inliers", c_uint32),
                ("status", c_uint32), ("reserved", c_uint32),
                ("homography", c_double * 9)]


# Sizes in bytes as the header states them (in its comments or macros).
DOCUMENTED_SIZES = {
    GeomPoint: 32,
    GeomDotShape: 24,
    GeomMatrix: 128,
    VexoHatch: 88,
    VexoDash: 144,
    CorrTableRecord: CELL_COUNT * 32,
    CorrHead: 12,
    CorrBase: 40,
    ImageBlock: 32,
    CalibrationRecord: 216,
    PatternKeypoint: 28,
    PrcgDotParams: 48,
    RecognitionResult: 16,
    RecognitionReport: 120,
}


def check_sizes():
    """Raise ImportError naming every record whose size is not documented."""
    wrong = [f"{record.__name__}: {ctypes.sizeof(record)} bytes, header says {size}"
             for record, size in DOCUMENTED_SIZES.items() if ctypes.sizeof(record) != size]
    if POINT_DTYPE.itemsize != ctypes.sizeof(GeomPoint):
        wrong.append(f"POINT_DTYPE: {POINT_DTYPE.itemsize} bytes, header says 32")
    if wrong:
        raise ImportError("vexo records do not match the header: " + "; ".join(wrong))


check_sizes()
