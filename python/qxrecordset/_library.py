# Part of libQXRecordSet. MIT licence, see LICENSE.
"""The shared library: its functions (recordset/RS.h) with their types declared."""

from __future__ import annotations

import ctypes
import os
from ctypes import POINTER, c_byte, c_char_p, c_int, c_int64, c_long, c_longlong, c_size_t, c_void_p

NONE, NULL, LONG, BOOL, TEXT, RECORDSET = -1, 0, 1, 2, 3, 5


class LoadResult(ctypes.Structure):
    """struct RS_LoadResult."""

    _fields_ = [("size", c_size_t), ("offset", c_size_t), ("line", c_size_t), ("column", c_size_t),
                ("reason", c_char_p), ("lossy_cells", c_size_t), ("first_row", c_long),
                ("first_column", c_long), ("reals", c_size_t), ("arrays", c_size_t),
                ("cut", c_size_t), ("limited", c_size_t)]


class ArrowArrayStream(ctypes.Structure):
    """struct ArrowArrayStream."""


ArrowArrayStream._fields_ = [
    ("get_schema", c_void_p), ("get_next", c_void_p), ("get_last_error", c_void_p),
    ("release", ctypes.CFUNCTYPE(None, POINTER(ArrowArrayStream))), ("private_data", c_void_p)]

# The name of each function without RS_: its result, and its arguments behind the handle.
_FUNCTIONS = {
    "Free": (None,),
    "Copy": (c_void_p,),
    "Clear": (None,),
    "Merge": (c_int, c_void_p),
    "Error": (c_char_p,),
    "Load": (c_int, c_char_p, c_size_t, POINTER(LoadResult)),
    "Text": (c_void_p, POINTER(c_size_t)),
    "RowsCount": (c_long,),
    "ColumnsCount": (c_long,),
    "ColumnIndex": (c_long, c_char_p),
    "AddColumn": (c_long, c_char_p),
    "ColumnName": (c_char_p, c_long),
    "SetIndexAsString": (c_int, c_long, c_long, c_char_p),
    "SetIndexAsLong64": (c_int, c_long, c_long, c_longlong),
    "SetIndexAsBool": (c_int, c_long, c_long, c_int),
    "SetIndexNull": (c_int, c_long, c_long),
    "SetIndexAsRecordSet": (c_int, c_long, c_long, c_void_p),
    "GetIndexType": (c_int, c_long, c_long),
    "GetIndexAsString": (c_void_p, c_long, c_long, POINTER(c_size_t)),
    "GetIndexAsLong64": (c_longlong, c_long, c_long),
    "GetIndexAsRecordSet": (c_void_p, c_long, c_long),
    "GetColumnAsLong64": (c_int, c_long, c_long, c_long, POINTER(c_int64), POINTER(c_byte)),
    "GetColumnAsStrings": (c_void_p, c_long, c_long, c_long, POINTER(c_byte), POINTER(c_size_t)),
    "ExportStream": (c_int, c_long, POINTER(ArrowArrayStream)),
    "ImportStream": (c_int, c_void_p),
}


class Library:
    """The functions, without their prefix: library.RowsCount(handle)."""

    def __init__(self, path: str) -> None:
        shared = ctypes.CDLL(path)
        self.Alloc = shared.RS_Alloc
        self.Alloc.restype, self.Alloc.argtypes = c_void_p, ()
        for name, (result, *arguments) in _FUNCTIONS.items():
            function = shared["RS_" + name]
            function.restype, function.argtypes = result, (c_void_p, *arguments)
            setattr(self, name, function)


# The variable names another file than the installed one.
library = Library(os.environ.get("QXRECORDSET_LIBRARY", "libQXRecordSet.so.1"))


def encoded(text: str) -> bytes:
    """UTF-8 for the library; bytes that were none, and came in by decoded(), go out as they were."""
    data = text.encode("utf-8", "surrogateescape")
    if b"\0" in data:
        raise ValueError("a NUL would end the text there")
    return data


def decoded(data: bytes) -> str:
    return data.decode("utf-8", "surrogateescape")
