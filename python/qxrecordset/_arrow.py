# Part of libQXRecordSet. MIT licence, see LICENSE.
"""Capsules by which Python libraries hand Arrow streams to each other."""

from __future__ import annotations

import ctypes
from typing import Any

from ._library import ArrowArrayStream

NAME = b"arrow_array_stream"

_new = ctypes.pythonapi.PyCapsule_New
_new.restype, _new.argtypes = ctypes.py_object, (ctypes.c_void_p, ctypes.c_char_p, ctypes.c_void_p)
_pointer = ctypes.pythonapi.PyCapsule_GetPointer
_pointer.restype, _pointer.argtypes = ctypes.c_void_p, (ctypes.py_object, ctypes.c_char_p)
# In its destructor a capsule has no references any more: it is only an address there.
_pointer_of_dying = ctypes.PYFUNCTYPE(ctypes.c_void_p, ctypes.c_void_p, ctypes.c_char_p)(
    ("PyCapsule_GetPointer", ctypes.pythonapi))

_streams: dict[int, ArrowArrayStream] = {}  # by address, as long as their capsules live


@ctypes.PYFUNCTYPE(None, ctypes.c_void_p)
def _destroy(capsule: int) -> None:
    stream = _streams.pop(_pointer_of_dying(capsule, NAME))
    if stream.release:  # nobody has taken it
        stream.release(ctypes.byref(stream))


def capsule_of(stream: ArrowArrayStream) -> Any:
    """A capsule that owns the stream."""
    address = ctypes.addressof(stream)
    _streams[address] = stream
    return _new(address, NAME, ctypes.cast(_destroy, ctypes.c_void_p))


def stream_in(capsule: Any) -> int:
    """The address of the stream that a capsule holds."""
    return _pointer(capsule, NAME)
