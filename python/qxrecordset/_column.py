# Part of libQXRecordSet. MIT licence, see LICENSE.
"""Column: the values of one column, as they were when it was taken."""

from __future__ import annotations

import ctypes
import itertools
from collections.abc import Sequence
from typing import Any, Callable, List, Optional, Union

from ._library import BOOL, LONG, NONE, NULL, TEXT, decoded, library

MISSING = object()
"""Stands for a cell that does not exist."""

_NO_CELL = NONE & 0xFF

# For bytes.translate: "0" and "1" to their values; the type of a null to 1, all others to 0.
_DIGIT_VALUES = bytes(int(byte == 0x31) for byte in range(256))
_IS_NULL = bytes(int(byte == NULL) for byte in range(256))


class Column(Sequence):
    """The values of a column, a sequence with one for every row: item 0 is that of row 1. A cell that
    does not exist reads as None.

    The values lie outside of Python, in one piece of memory, until the first of them is asked for;
    tolist() makes them all."""

    def __init__(self, handle: int, index: int, first: int, count: int,
                 value_of: Callable[[int, str], Any]) -> None:
        self._count, self._value_of = count, value_of
        self._list: Optional[List[Any]] = None
        self._integers: Optional[ctypes.Array] = None
        self._texts = b""
        types = (ctypes.c_byte * count)()
        if library.GetIndexType(handle, index, first) == LONG:
            integers = (ctypes.c_int64 * count)()
            library.GetColumnAsLong64(handle, index, first, count, integers, types)
            self._types = bytes(types)
            if self._types.count(LONG) == count:
                self._integers = integers
                return
        length = ctypes.c_size_t()
        texts = library.GetColumnAsStrings(handle, index, first, count, types, ctypes.byref(length))
        if not texts:
            raise MemoryError
        self._texts = ctypes.string_at(texts, length.value)
        self._types = bytes(types)

    @property
    def complete(self) -> bool:
        """Whether every row has a cell in this column, be it null."""
        return self._types.count(_NO_CELL) == 0

    @property
    def integers(self) -> Optional[memoryview]:
        """The values as 64-bit integers in memory (format "q"), where all of them are integers."""
        return None if self._integers is None else memoryview(self._integers).cast("B").cast("q")

    def tolist(self) -> List[Any]:
        """A new list of the values."""
        return list(self._values())

    def values_or(self, missing: Any) -> List[Any]:
        """A new list of the values, with `missing` for cells that do not exist."""
        values = self.tolist()
        if not self.complete:
            for i, kind in enumerate(self._types):
                if kind == _NO_CELL:
                    values[i] = missing
        return values

    def _values(self) -> List[Any]:
        if self._list is None:
            self._list = self._make()
        return self._list

    def _make(self) -> List[Any]:
        if self._integers is not None:
            return self.integers.tolist()
        kinds, count = self._types, self._count
        if kinds.count(BOOL) == count:
            return memoryview(self._texts[::2].translate(_DIGIT_VALUES)).cast("?").tolist()
        values: List[Any] = decoded(self._texts).split("\0")
        values.pop()
        if kinds.count(TEXT) + kinds.count(NULL) == count:
            for i in itertools.compress(range(count), kinds.translate(_IS_NULL)):
                values[i] = None
            return values
        return [None if kind == _NO_CELL else self._value_of(kind, text)
                for text, kind in zip(values, kinds)]

    def __len__(self) -> int:
        return self._count

    def __getitem__(self, place: Union[int, slice]) -> Any:
        return self._values()[place]

    def __iter__(self) -> Any:
        return iter(self._values())

    def __eq__(self, other: object) -> bool:
        if isinstance(other, Column):
            return self._values() == other._values()
        return self._values() == other if isinstance(other, list) else NotImplemented

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        return f"Column({self._values()!r})"
