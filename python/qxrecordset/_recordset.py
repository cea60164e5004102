# Part of libQXRecordSet. MIT licence, see LICENSE.
"""RecordSet: a table in memory that is exchanged as JSON text."""

from __future__ import annotations

import ctypes
import functools
import json
import operator
from collections.abc import Iterable, Mapping
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Callable, Dict, List, Optional, Tuple, Union

from . import _arrow
from ._column import MISSING, Column
from ._library import (BOOL, LONG, NONE, NULL, RECORDSET, ArrowArrayStream, LoadResult, decoded,
                       encoded, library)

if TYPE_CHECKING:
    import pandas

# Rows that are made at a time: what their columns are made of stays in the processor's cache.
_BATCH = 1500

# Row numbers that the library's `long` has.
_ROWS = 1 << (8 * ctypes.sizeof(ctypes.c_long) - 1)

Value = Union[None, bool, int, str, "RecordSet"]


class ParseError(ValueError):
    """A text was refused. Bytes count from 0; lines, and columns in bytes, from 1."""

    def __init__(self, reason: str, offset: int, line: int, column: int) -> None:
        super().__init__(f"line {line}, column {column}: {reason}")
        self.reason, self.offset, self.line, self.column = reason, offset, line, column


@dataclass(frozen=True)
class Losses:
    """What cells lost when a text was loaded: how many did, the first of them, and, by value, what.

    A cell that lost something is the empty text (reals, arrays), is cut at a NUL, or holds the nearest
    integer that the library's `long` has. In a nested record set reals and arrays become null."""

    cells: int = 0
    first_row: int = 0
    first_column: Optional[str] = None
    reals: int = 0
    arrays: int = 0
    cut: int = 0
    limited: int = 0


@functools.lru_cache(maxsize=64)
def _row_maker(names: Tuple[str, ...]) -> Callable[[Iterable[tuple]], List[Dict[str, Value]]]:
    """Makes rows of tuples: a display of a dict is built faster than dict() builds one."""
    variables = [f"v{i}" for i in range(len(names))]
    display = ", ".join(f"{name!r}: {variable}" for name, variable in zip(names, variables))
    return eval(f"lambda rows: [{{{display}}} for {', '.join(variables)}, in rows]")


class RecordSet:
    """A table: rows by number from 1, columns by name, and cells that are None, bool, int, str or a
    RecordSet.

    A record set is used by one thread at a time. Exhausted memory raises MemoryError. copy.copy,
    copy.deepcopy and pickle work; a pickle holds what rows() gives."""

    losses: Losses
    """What the last text lost that was loaded."""

    def __init__(self) -> None:
        """An empty record set."""
        self.losses = Losses()
        self._handle: Optional[int] = None
        self._handle = _checked(library.Alloc())

    def __del__(self) -> None:
        if getattr(self, "_handle", None) is not None:
            library.Free(self._handle)

    def __copy__(self) -> "RecordSet":
        return self.copy()

    def __deepcopy__(self, memo: Any) -> "RecordSet":
        return self.copy()

    def __reduce__(self) -> Any:
        return _restored, (type(self), self.column_names, self.rows())

    @property
    def _as_parameter_(self) -> Optional[int]:
        """Lets ctypes pass a record set, which lives as long as the call."""
        return self._handle

    # ---- In and out ----

    @classmethod
    def from_json(cls, text: Union[str, bytes]) -> "RecordSet":
        """A record set of a JSON text: an object is row 1, {"rows": [...]} several rows. A text that
        is refused raises ParseError; what its cells lost is in `losses`."""
        made = cls()
        made.load(text)
        return made

    @classmethod
    def from_rows(cls, rows: Iterable[Mapping[str, Value]]) -> "RecordSet":
        """A record set of mappings. A value of another kind than a cell's raises TypeError, an int
        beyond the library's `long`, or a text with a NUL in it, ValueError. Rows behind the last one
        that has a value are lost. A name that is no str becomes what json.dumps makes of it."""
        listed = [row if isinstance(row, dict) else dict(row) for row in rows]
        made = cls()
        try:
            text = json.dumps({"rows": listed}, ensure_ascii=False, separators=(",", ":"),
                              check_circular=False, default=_refuse_value)
        except _NestedRecordSet:
            for number, row in enumerate(listed, 1):
                for name, value in row.items():
                    made[number, name] = value
            return made
        data = text.encode("utf-8", "surrogateescape")
        try:
            made.load(data)
        except ParseError as error:
            if data.startswith((b"NaN", b"Infinity", b"-Infinity"), error.offset):
                raise TypeError("there are no cells for not-a-number and infinity") from None
            raise
        lost = made.losses
        if lost.cells:
            where = f"row {lost.first_row}, column {lost.first_column!r}"
            if lost.reals or lost.arrays:
                raise TypeError(f"{where}: there are no cells for real numbers and lists")
            raise ValueError(f"{where}: " + ("the text holds a NUL" if lost.cut else
                                             "the integer is out of range"))
        return made

    def load(self, text: Union[str, bytes]) -> None:
        """Adds the rows of a JSON text to those that are there; see from_json."""
        data = text.encode("utf-8", "surrogateescape") if isinstance(text, str) \
            else text if isinstance(text, bytes) else bytes(memoryview(text))
        result = LoadResult(size=ctypes.sizeof(LoadResult))
        if not library.Load(self._handle, data, len(data), ctypes.byref(result)):
            if result.reason is None:
                raise MemoryError
            raise ParseError(result.reason.decode(), result.offset, result.line, result.column)
        first = library.ColumnName(self._handle, result.first_column) if result.lossy_cells else None
        self.losses = Losses(result.lossy_cells, result.first_row,
                             None if first is None else decoded(first), result.reals,
                             result.arrays, result.cut, result.limited)

    def to_json(self) -> str:
        """The compact JSON text; "" of a record set that nothing was ever put in. There are no arrays
        inside a cell's object: of a nested record set of several rows only {"rows":null} is written."""
        length = ctypes.c_size_t()
        text = _checked(library.Text(self._handle, ctypes.byref(length)))
        return decoded(ctypes.string_at(text, length.value))

    def copy(self) -> "RecordSet":
        """An independent copy."""
        made = type(self)()
        made.merge(self)
        return made

    def merge(self, other: "RecordSet") -> None:
        """Adds all cells of another record set, each to the same row and column."""
        _checked(library.Merge(self._handle, other._handle))

    def clear(self) -> None:
        """Removes all rows and columns."""
        library.Clear(self._handle)

    # ---- Cells ----

    def __getitem__(self, place: Tuple[int, str]) -> Value:
        """The cell in (row, name). KeyError when there is none."""
        row, column, kind = self._find(place)
        if kind == NONE:
            raise KeyError(place)
        length = ctypes.c_size_t()
        text = library.GetIndexAsString(self._handle, column, row, ctypes.byref(length))
        return _value(kind, decoded(ctypes.string_at(text, length.value)))

    def __setitem__(self, place: Tuple[int, str], value: Value) -> None:
        """Writes a cell; a new name becomes a column. A mapping becomes a nested record set."""
        row, name = operator.index(place[0]), place[1]
        if not -_ROWS <= row < _ROWS:
            raise ValueError("the row number is out of range")
        setter, argument = _setter(value)
        column = library.AddColumn(self._handle, encoded(name))
        if column < 0 or not setter(self._handle, column, row, *argument):
            raise MemoryError

    def __contains__(self, place: object) -> bool:
        """Whether there is a cell in (row, name)."""
        return self._find(place)[2] != NONE  # type: ignore[arg-type]

    def _find(self, place: Tuple[int, str]) -> Tuple[int, int, int]:
        """The row, the column's index and the type of a cell."""
        row, name = operator.index(place[0]), place[1]
        column = library.ColumnIndex(self._handle, encoded(name))
        if column < 0 or not -_ROWS <= row < _ROWS:
            return row, column, NONE
        return row, column, library.GetIndexType(self._handle, column, row)

    def __len__(self) -> int:
        """The number of rows."""
        return library.RowsCount(self._handle)

    def __bool__(self) -> bool:
        return True

    def __eq__(self, other: object) -> bool:
        """Whether both have the same columns, in any order, and the same cells in the same rows."""
        if not isinstance(other, RecordSet):
            return NotImplemented
        return len(self) == len(other) and self.rows() == other.rows() and \
            set(self.column_names) == set(other.column_names)

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        return f"<RecordSet: {len(self)} rows, {len(self.column_names)} columns>"

    # ---- Tables ----

    @property
    def column_names(self) -> List[str]:
        """The names of the columns, in the order in which they were added."""
        count = library.ColumnsCount(self._handle)
        return [decoded(_checked(library.ColumnName(self._handle, i + 1))) for i in range(count)]

    def columns(self) -> Dict[str, Column]:
        """All columns by name, as they are now; each is a sequence of a value for every row."""
        count = len(self)
        return {name: self._column(i, 1, count) for i, name in enumerate(self.column_names, 1)}

    def rows(self) -> List[Dict[str, Value]]:
        """All rows, each a dictionary of the cells that exist."""
        names = tuple(self.column_names)
        if not names:
            return [{} for _ in range(len(self))]
        made: List[Dict[str, Value]] = []
        for first in range(1, len(self) + 1, _BATCH):
            count = min(_BATCH, len(self) + 1 - first)
            columns = [self._column(i, first, count) for i in range(1, len(names) + 1)]
            if all(column.complete for column in columns):
                made += _row_maker(names)(zip(*columns))
            else:
                made += [{name: value for name, value in zip(names, row) if value is not MISSING}
                         for row in zip(*(column.values_or(MISSING) for column in columns))]
        return made

    def _column(self, index: int, first: int, count: int) -> Column:
        return Column(self._handle, index, first, count, _value)

    # ---- pandas ----

    def to_pandas(self) -> "pandas.DataFrame":
        """A DataFrame, with a row for every row. Columns of integers are int64, or Int64 where cells are
        null or missing; of booleans bool or boolean; all others object."""
        import pandas

        def series(column: Column) -> "pandas.Series":
            values = column.tolist()
            kinds = {type(value) for value in values}
            empty = type(None) in kinds
            kinds.discard(type(None))
            kind = {frozenset({int}): "Int64" if empty else "int64",
                    frozenset({bool}): "boolean" if empty else "bool"}.get(frozenset(kinds), "object")
            return pandas.Series(values, dtype=kind)

        return pandas.DataFrame({name: series(column) for name, column in self.columns().items()},
                                index=range(len(self)))

    @classmethod
    def from_pandas(cls, frame: "pandas.DataFrame", reals: str = "refuse") -> "RecordSet":
        """A record set of a DataFrame, without its index. What pandas takes for missing becomes null.
        Whole numbers are integers, whatever their column is; others raise TypeError, or become text
        with reals="text", and so do whole ones that are too large. Values of categories are taken;
        dates, times and whatever else is no cell's value raise TypeError: make them text before, by
        astype(str). Two columns of the same name raise ValueError."""
        if reals not in ("refuse", "text"):
            raise ValueError("reals is 'refuse' or 'text'")
        import numpy

        def cell(value: Any) -> Any:
            if isinstance(value, numpy.generic):
                value = value.item()
            if isinstance(value, float):
                if value.is_integer() and -_ROWS <= value < _ROWS:
                    return int(value)
                return repr(value) if reals == "text" else value
            return value

        columns = []
        for i in range(frame.shape[1]):
            column = frame.iloc[:, i]
            values = column.astype(object).where(column.notna(), None).tolist()
            columns.append([cell(value) for value in values] if column.dtype.kind in "fO" else values)
        names = [str(name) for name in frame.columns]
        if len(set(names)) != len(names):
            raise ValueError("two columns have the same name")
        return cls.from_rows(dict(zip(names, row)) for row in zip(*columns))

    # ---- Arrow ----

    def __arrow_c_stream__(self, requested_schema: Any = None) -> Any:
        """A stream of the rows for libraries that read Arrow; they take the record set itself."""
        stream = ArrowArrayStream()
        _checked(library.ExportStream(self._handle, 1 << 16, ctypes.byref(stream)))
        return _arrow.capsule_of(stream)

    @classmethod
    def from_arrow(cls, table: Any) -> "RecordSet":
        """A record set of whatever gives an Arrow stream: columns of integers, booleans, texts and
        nulls. Others raise TypeError."""
        made = cls()
        capsule = table.__arrow_c_stream__()
        if not library.ImportStream(made._handle, _arrow.stream_in(capsule)):
            reason = library.Error(made._handle).decode()
            raise MemoryError if reason == "memory is exhausted" else TypeError(reason)
        return made


def _checked(result: Any) -> Any:
    """The result of a function that fails only for want of memory."""
    if not result and result != b"":
        raise MemoryError
    return result


def _value(kind: int, text: str) -> Value:
    if kind == LONG:
        return int(text)
    if kind == BOOL:
        return text == "1"
    if kind == NULL:
        return None
    return RecordSet.from_json(text) if kind == RECORDSET and text else text


def _restored(kind: Any, names: List[str], rows: List[Dict[str, Value]]) -> RecordSet:
    """What a pickle holds."""
    made = kind()
    for name in names:
        library.AddColumn(made._handle, encoded(name))
    made.merge(RecordSet.from_rows(rows))
    return made


class _NestedRecordSet(Exception):
    """A value is a record set, which is no JSON text yet."""


def _refuse_value(value: Any) -> Any:
    if isinstance(value, RecordSet):
        raise _NestedRecordSet
    raise TypeError(f"there are no cells for {type(value).__name__}")


def _setter(value: Value) -> Tuple[Any, tuple]:
    """The function that writes such a value, and its last arguments."""
    if value is None:
        return library.SetIndexNull, ()
    if isinstance(value, bool):
        return library.SetIndexAsBool, (value,)
    if isinstance(value, int):
        if not -(1 << 63) <= value < 1 << 63:
            raise ValueError("the integer is out of range")
        return library.SetIndexAsLong64, (value,)
    if isinstance(value, str):
        return library.SetIndexAsString, (encoded(value),)
    if isinstance(value, Mapping):
        value = RecordSet.from_rows([value])
    if isinstance(value, RecordSet):
        return library.SetIndexAsRecordSet, (value,)
    raise TypeError(f"there are no cells for {type(value).__name__}")
