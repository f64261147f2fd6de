# SPDX-License-Identifier: MIT
"""Camera calibration from a chessboard and pattern recognition.

Images are numpy uint8 arrays: (h, w) grey or (h, w, 3) colour.  Results
are plain objects holding numpy arrays and numbers.
"""
import ctypes
import struct

import numpy as np

from . import _records as r
from ._lib import ERROR_NO_RESULT, HAS_VISION, OK, VexoError, check, lib
from ._points import PointBuffer, as_xyz, pointer

IMAGE_FORMAT_RGB24 = 1
IMAGE_FORMAT_GREY8 = 17
IMAGE_KIND = 2
HEADER_SIZE = ctypes.sizeof(r.ImageBlock)

SIFT = 0x0100
SURF = 0x0200
ORB = 0x0400
FLANN = 0x0001
POSITION = 0x0010
ROTATION = 0x0020
ROBUST = 0x0040
_DETECTORS = {"sift": SIFT, "surf": SURF, "orb": ORB}

THRESHOLD_FIXED = 0
THRESHOLD_OTSU = 1
DOTS_DARK = 0x01
DOTS_NO_BORDER = 0x02
DOTS_UNDISTORT = 0x04
DOTS_PERSPECTIVE = 0x08
SCALE_FLIP_Y = 0x01
ROTATION_GIVEN = 0x01
SORT_GRID = 0x02


def _need_vision():
    if not HAS_VISION:
        raise RuntimeError("this libvexo was built without vision (OpenCV)")


class _Image:
    """An image block (32-byte header, then the pixels) built from a numpy image."""

    def __init__(self, image):
        pixels = np.asarray(image)
        if pixels.dtype != np.uint8:
            raise ValueError(f"images must be uint8, got {pixels.dtype}")
        if pixels.ndim == 3 and pixels.shape[2] == 1:
            pixels = pixels[:, :, 0]
        if pixels.ndim == 2:
            format, depth = IMAGE_FORMAT_GREY8, 8
        elif pixels.ndim == 3 and pixels.shape[2] == 3:
            format, depth = IMAGE_FORMAT_RGB24, 24
        else:
            raise ValueError(f"images have shape (h, w) or (h, w, 3), got {pixels.shape}")
        self.height, self.width = pixels.shape[:2]
        if self.width == 0 or self.height == 0:
            raise ValueError(f"empty image {pixels.shape}")
        data = np.ascontiguousarray(pixels).tobytes()
        self.buffer = ctypes.create_string_buffer(HEADER_SIZE + len(data))
        header = r.ImageBlock.from_buffer(self.buffer)
        header.kind, header.format = IMAGE_KIND, format
        header.width_be[:] = list(struct.pack(">i", self.width))
        header.height_be[:] = list(struct.pack(">i", self.height))
        header.bits, header.data_size = depth, len(data)
        ctypes.memmove(ctypes.addressof(self.buffer) + HEADER_SIZE, data, len(data))

    @property
    def pointer(self):
        return ctypes.cast(self.buffer, ctypes.POINTER(r.ImageBlock))


def _doubles(blocks):
    return np.array([struct.unpack(">d", bytes(block))[0] for block in blocks])


class Calibration:
    """Result of calibrate_chessboard.

    camera: 3x3 camera matrix; distortion: k1, k2, p1, p2; width, height:
    the image size; perspective: 3x3 or None; corners: (columns*rows, 2)
    int32 pixel positions; record: the 216-byte exchange record (bytes).
    """

    def __init__(self, record, corners):
        self.camera = _doubles(record.camera).reshape(3, 3)
        self.distortion = _doubles(record.distortion)
        self.width, self.height = record.width, record.height
        perspective = _doubles(record.perspective).reshape(3, 3)
        self.perspective = perspective if perspective.any() else None
        self.corners = corners
        self.record = bytes(record)


def calibrate_chessboard(image, columns, rows):
    """Calibrate from one picture of a chessboard with columns x rows inner corners.

    Raises VexoError (VEXO_ERROR_NO_RESULT) when the board is not found.
    """
    _need_vision()
    block = _Image(image)
    record = r.CalibrationRecord()
    found = ctypes.c_int32(0)
    corners = lib.vexo_calib_gen_correction(block.pointer, int(columns), int(rows),
                                            ctypes.byref(record), ctypes.byref(found))
    if not corners:
        raise VexoError(ERROR_NO_RESULT,
                        f"chessboard not found ({found.value} of {columns}x{rows} corners)")
    try:
        count = int(columns) * int(rows)
        raw = (ctypes.c_int32 * (2 * count)).from_address(ctypes.addressof(corners.contents))
        xy = np.array(raw, dtype=np.int32).reshape(count, 2)
    finally:
        lib.vexo_calib_release_correction(corners)
    return Calibration(record, xy)


class Match:
    """Where a pattern was found: x, y (pixels, less the origin), rotation
    (degrees), scale, matches, inliers, homography (3x3)."""

    def __init__(self, report):
        self.x, self.y = report.x, report.y
        self.rotation, self.scale = report.rotation, report.scale
        self.matches, self.inliers = report.matches, report.inliers
        self.homography = np.array(report.homography[:]).reshape(3, 3)

    def __repr__(self):
        return (f"Match(x={self.x:.3f}, y={self.y:.3f}, rotation={self.rotation:.3f}, "
                f"scale={self.scale:.4f}, matches={self.matches}, inliers={self.inliers})")


KEYPOINT_DTYPE = np.dtype([(name, "<i4") for name, _ in r.PatternKeypoint._fields_])


class Pattern:
    """A pattern taught on a reference image, ready to be found in frames.

    keypoints: structured array (x, y, size, angle, response, octave,
    class_id; positions and sizes x1000); detector: "sift", "surf" or "orb".
    """

    def __init__(self, reference, keypoints, options, origin=(0, 0)):
        _need_vision()
        self.keypoints = np.ascontiguousarray(keypoints, dtype=KEYPOINT_DTYPE)
        self.options = int(options)
        self.detector = next((n for n, bit in _DETECTORS.items() if options & bit), None)
        reference_block = _Image(reference)
        records = (r.PatternKeypoint * len(self.keypoints)).from_buffer_copy(
            self.keypoints.tobytes())
        self._handle = lib.vexo_prcg_create_recogniser(records, len(self.keypoints),
                                                       self.options, reference_block.pointer,
                                                       int(origin[0]), int(origin[1]))
        if not self._handle:
            raise VexoError(16, "keypoints refused for this reference image")

    @classmethod
    def teach(cls, reference, left, top, right, bottom, detector=None, origin=(0, 0)):
        """Teach the keypoints inside a rectangle of the reference image.

        detector: "sift", "surf" or "orb"; None tries all three and keeps
        the one with the most keypoints wholly inside the rectangle.
        """
        _need_vision()
        if detector is not None and detector not in _DETECTORS:
            raise ValueError(f"unknown detector {detector!r}; known: {sorted(_DETECTORS)}")
        options = _DETECTORS[detector] if detector else 0
        block = _Image(reference)
        count = ctypes.c_int32(0)
        chosen = ctypes.c_uint32(options)
        result = lib.vexo_prcg_gen_keypoints(block.pointer, ctypes.byref(count),
                                             ctypes.byref(chosen), int(left), int(top),
                                             int(right), int(bottom))
        if not result:
            raise VexoError(ERROR_NO_RESULT, "no keypoints in the rectangle")
        try:
            size = count.value * ctypes.sizeof(r.PatternKeypoint)
            keypoints = np.frombuffer(ctypes.string_at(result, size), dtype=KEYPOINT_DTYPE)
        finally:
            lib.vexo_prcg_release_keypoints(result)
        return cls(reference, keypoints, chosen.value, origin)

    def find(self, frame, robust=False):
        """Find the pattern in a frame: a Match, or VexoError when not found."""
        if not self._handle:
            raise ValueError("pattern is closed")
        block = _Image(frame)
        report = r.RecognitionReport()
        status = lib.vexo_prcg_start_recogniser2(self._handle, block.pointer,
                                                 ROBUST if robust else 0, ctypes.byref(report))
        check(status, "pattern not found")
        return Match(report)

    def close(self):
        handle, self._handle = getattr(self, "_handle", None), None
        if handle:
            lib.vexo_prcg_release_recogniser(handle)

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()

    def __del__(self):
        self.close()


# --- field calibration: dots marked on a plate, photographed ---------------

def find_dots(image, threshold=None, min_area=0.0, max_area=0.0, min_circularity=0.0,
              dark=False, skip_border=False, calibration=None, undistort=False,
              perspective=False):
    """Centres of the dots in a photo: an (n, 3) array of x, y (pixels, y
    down) and the contour area, sorted by y then x.

    threshold: grey level 0..254 a dot pixel lies above (None: Otsu's
    level); dark: dark dots on a light ground.  With a Calibration,
    undistort and perspective map the centres through its camera model.
    Raises VexoError (VEXO_ERROR_NO_RESULT) when no dot passes.
    """
    _need_vision()
    block = _Image(image)
    params = r.PrcgDotParams(threshold_kind=THRESHOLD_OTSU if threshold is None
                             else THRESHOLD_FIXED, threshold=int(threshold or 0),
                             min_area=float(min_area), max_area=float(max_area),
                             min_circularity=float(min_circularity))
    params.options = ((DOTS_DARK if dark else 0) | (DOTS_NO_BORDER if skip_border else 0) |
                      (DOTS_UNDISTORT if undistort else 0) |
                      (DOTS_PERSPECTIVE if perspective else 0))
    record = None
    if calibration is not None:
        record = r.CalibrationRecord.from_buffer_copy(calibration.record)
        params.record = ctypes.pointer(record)
    count, status = ctypes.c_uint32(0), ctypes.c_uint32(OK)
    result = lib.vexo_prcg_find_dots(block.pointer, ctypes.byref(params), ctypes.byref(count),
                                     ctypes.byref(status))
    with PointBuffer.returned(result, count.value) as buffer:
        check(status.value, "dot finding")
        records = buffer.records()
    return np.column_stack([records["x"], records["y"], records["z"]])


def _dot_records(dots):
    xyz = as_xyz(dots, "dots")
    records = np.zeros(len(xyz), dtype=r.POINT_DTYPE)
    records["x"], records["y"], records["z"] = xyz[:, 0], xyz[:, 1], xyz[:, 2]
    records["flags"] = 1
    return records


def _xyz(records):
    return np.column_stack([records["x"], records["y"], records["z"]])


def scale_dots(dots, scale_x, scale_y=None, origin=None, flip_y=False):
    """Dots in pixels to field units: (x - origin) * scale, y negated with flip_y.

    origin None: the dot nearest the mean of all dots.  z (an area) is
    scaled by |scale_x * scale_y|.  Returns a new (n, 3) array.
    """
    _need_vision()
    records = _dot_records(dots)
    at = None if origin is None else (ctypes.c_double * 2)(float(origin[0]), float(origin[1]))
    check(lib.vexo_prcg_scale_dots(pointer(records), len(records), float(scale_x),
                                   float(scale_x if scale_y is None else scale_y), at,
                                   SCALE_FLIP_Y if flip_y else 0))
    return _xyz(records)


def unrotate_dots(dots, n=None, rotation=None):
    """Turn dots by -rotation about (0, 0); with n, sort them into n x n grid order.

    rotation None: estimated from neighbouring dots (degrees, -45..45).
    Returns (new (n, 3) array, rotation).
    """
    _need_vision()
    records = _dot_records(dots)
    angle = ctypes.c_double(0.0 if rotation is None else float(rotation))
    options = (ROTATION_GIVEN if rotation is not None else 0) | (SORT_GRID if n else 0)
    check(lib.vexo_prcg_unrotate_dots(pointer(records), len(records), int(n or 0),
                                      ctypes.byref(angle), options))
    return _xyz(records), angle.value

