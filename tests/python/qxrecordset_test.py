#!/usr/bin/env python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Tests the package qxrecordset with Debian's Python and pandas, on the shared library that the
# environment names (QXRECORDSET_LIBRARY), from python/ (PYTHONPATH).
"""The package qxrecordset."""

import copy
import gc
import json
import pickle
import random
import unittest

import numpy
import pandas

from qxrecordset import Column, ParseError, RecordSet


def random_value(author):
    return author.choice([None, True, False, author.randrange(-10**9, 10**9), "", "x" * author.randrange(40),
                          "Größe \u20ac", '"\\\n\t', "no object}"])


def random_rows(author):
    names = [f"c{i}" for i in range(author.randrange(1, 7))]
    typed = author.random() < .7  # a column has values of one kind, as most do
    kinds = {name: author.choice([int, bool, str, None]) for name in names}

    def value(name):
        if not typed or kinds[name] is None or author.random() < .1:
            return random_value(author)
        return {int: author.randrange(1000), bool: author.random() < .5, str: f"t{author.random()}"}[kinds[name]]

    gaps = author.random() < .5
    rows = [{name: value(name) for name in names if not gaps or author.random() < .8}
            for _ in range(author.choice([1, 2, 7, 40]))]
    return rows + [{"last": 1}]  # rows without cells behind the last one would be lost


class Rows(unittest.TestCase):
    def test_rows_come_back_as_they_went_in_and_as_json_has_them(self):
        author = random.Random(1)
        for _ in range(300):
            rows = random_rows(author)
            made = RecordSet.from_rows(iter(rows))
            self.assertEqual(made.rows(), rows)
            loaded = RecordSet.from_json(made.to_json())
            text = json.loads(made.to_json())
            self.assertEqual(loaded.rows(), text.get("rows", [text]))
            self.assertEqual(loaded, made)
            columns = made.columns()
            self.assertEqual(list(columns), made.column_names)
            for name, column in columns.items():
                self.assertEqual(column, [row.get(name) for row in rows])
                self.assertEqual(column.complete, all(name in row for row in rows))
                self.assertEqual([made[i, name] for i, row in enumerate(rows, 1) if name in row],
                                 [row[name] for row in rows if name in row])
            self.assertEqual(RecordSet.from_arrow(made).columns(), columns_as_arrow(made))

    def test_more_rows_than_are_made_at_a_time(self):
        rows = [{"n": i, "t": str(i)} for i in range(4000)]
        rows[1700].pop("t")
        self.assertEqual(RecordSet.from_rows(rows).rows(), rows)

    def test_cells(self):
        made = RecordSet()
        made[3, "a"] = 5
        made[3, "a"] = made[3, "a"] + 1
        made[1, "nested"] = {"k": 1}
        made[2, "nested"] = RecordSet.from_rows([{"m": 1}, {"m": 2}])
        self.assertEqual(len(made), 3)
        self.assertEqual(made[2, "nested"].rows(), [{"m": 1}, {"m": 2}])
        self.assertEqual(made.rows()[0]["nested"], RecordSet.from_rows([{"k": 1}]))
        self.assertIn((3, "a"), made)
        self.assertNotIn((1, "a"), made)
        for place in [(1, "a"), (3, "none"), (0, "a")]:
            with self.assertRaises(KeyError):
                made[place]
        again = RecordSet.from_rows(made.rows())  # record sets among the values
        self.assertEqual(again[2, "nested"].rows(), [{"m": 1}, {"m": 2}])
        copied = made.copy()
        made.clear()
        self.assertEqual((len(made), len(copied), made.rows(), RecordSet().rows()), (0, 3, [], []))
        self.assertEqual(RecordSet().to_json(), "")
        self.assertEqual(made.columns(), {})

    def test_row_numbers_are_no_others_when_they_are_too_large(self):
        # They were cut to 64 bits: this one read and wrote row 1.
        made = RecordSet.from_rows([{"a": 1}])
        far = (1 << 64) + 1
        self.assertNotIn((far, "a"), made)
        with self.assertRaises(KeyError):
            made[far, "a"]
        with self.assertRaises(ValueError):
            made[far, "a"] = 2
        made[numpy.int64(-1 << 63), "a"] = 3
        self.assertEqual((made[-1 << 63, "a"], made.rows()), (3, [{"a": 1}]))

    def test_copies_and_pickles_are_independent(self):
        # A shallow copy shared the handle, which was freed twice.
        made = RecordSet.from_rows([{"b": 1}, {"a": None, "b": "x"}])
        made[1, "s"] = RecordSet.from_rows([{"m": 1}, {"m": 2}])
        for copied in [copy.copy(made), copy.deepcopy([made])[0], pickle.loads(pickle.dumps(made))]:
            self.assertEqual(copied, made)
            self.assertEqual(copied.column_names, made.column_names)
            copied[1, "b"] = 2
            self.assertEqual(made[1, "b"], 1)

    def test_a_column_is_a_picture_of_its_time(self):
        made = RecordSet.from_rows([{"n": 1, "t": "a"}, {"n": 2, "t": "b"}])
        numbers, texts = made.columns().values()
        made[1, "t"] = made[1, "n"] = "other"
        self.assertEqual((numbers.tolist(), texts[0], texts[-1:], len(texts)), ([1, 2], "a", ["b"], 2))
        self.assertEqual(numbers.integers.tolist(), [1, 2])
        self.assertIsNone(made.columns()["n"].integers)
        self.assertIsInstance(texts, Column)
        self.assertEqual(repr(texts), "Column(['a', 'b'])")


def columns_as_arrow(made):
    """In Arrow a column of several kinds of values is text, and missing cells are nulls."""
    def column(values):
        kinds = {type(value) for value in values} - {type(None)}
        if len(kinds) < 2:
            return list(values)
        return [value if value is None else str(int(value)) if isinstance(value, bool) else str(value)
                for value in values]
    return {name: column(values) for name, values in made.columns().items()}


class Refusals(unittest.TestCase):
    def test_a_text_that_is_refused_tells_where(self):
        with self.assertRaises(ParseError) as caught:
            RecordSet.from_json('{"rows":[{"a":1},\n  {"a":oops}]}')
        error = caught.exception
        self.assertEqual((error.line, error.column, error.offset), (2, 8, 25))
        self.assertEqual(str(error), "line 2, column 8: expected a value")
        made = RecordSet.from_json('{"kept":1}')
        for text in ["", "[]", b"\xff", "{"]:
            with self.assertRaises(ParseError):
                made.load(text)
        self.assertEqual(made.rows(), [{"kept": 1}])

    def test_losses_are_told(self):
        made = RecordSet.from_json('{"rows":[{"a":1},{"a":1,"b":1.5,"c":[1]},{"d":{"e":[2.5]}}]}')
        lost = made.losses
        self.assertEqual((lost.cells, lost.first_row, lost.first_column, lost.reals, lost.arrays),
                         (3, 2, "b", 1, 2))
        self.assertEqual(made[2, "b"], "")
        made.load('{"f":1}')
        self.assertEqual(made.losses.cells, 0)

    def test_values_that_no_cell_holds(self):
        for value, kind in [(1.5, TypeError), (float("nan"), TypeError), ([1], TypeError), (object(), TypeError), (b"x", TypeError),
                            ("a\0b", ValueError), (1 << 64, ValueError)]:
            with self.assertRaises(kind, msg=repr(value)):
                RecordSet.from_rows([{"a": 1}, {"a": value}])
            with self.assertRaises(kind, msg=repr(value)):
                RecordSet()[1, "a"] = value
        with self.assertRaises(ValueError):
            RecordSet()[1, "a\0"] = 1

    def test_bytes_that_are_no_utf8_pass_through(self):
        made = RecordSet.from_json(b'{"a":"\xff\xc3"}')
        self.assertEqual(made.to_json().encode("utf-8", "surrogateescape"), b'{"a":"\xff\xc3"}')
        self.assertEqual(RecordSet.from_rows(made.rows()), made)


class Pandas(unittest.TestCase):
    def test_frames_come_back(self):
        frame = pandas.DataFrame({"n": [1, 2, 3], "t": ["a", None, "c"], "b": [True, False, True],
                                  "w": [1.0, float("nan"), 3.0],
                                  "i": pandas.array([1, None, 3], dtype="Int64")})
        made = RecordSet.from_pandas(frame)
        self.assertEqual(made.rows()[1], {"n": 2, "t": None, "b": False, "w": None, "i": None})
        back = made.to_pandas()
        self.assertEqual([str(kind) for kind in back.dtypes], ["int64", "object", "bool", "Int64", "Int64"])
        self.assertEqual(back["w"].tolist(), [1, pandas.NA, 3])
        self.assertEqual(RecordSet.from_pandas(back), made)
        self.assertEqual(RecordSet().to_pandas().shape, (0, 0))

    def test_values_of_every_kind(self):
        cases = [(pandas.Categorical(["a", None, "a"]), ["a", None, "a"]),
                 (pandas.Categorical([5, 7, 5]), [5, 7, 5]),
                 (pandas.Series([numpy.int64(1), numpy.bool_(True), numpy.float64(2)], dtype=object), [1, True, 2]),
                 (pandas.to_datetime(["2020-01-01", None]).astype(str), ["2020-01-01", "NaT"]),
                 (pandas.array([None, "x"], dtype="string"), [None, "x"]),
                 ([pandas.NA, None, pandas.NaT], [None] * 3)]
        for values, wanted in cases:
            made = RecordSet.from_pandas(pandas.DataFrame({"c": values}))
            self.assertEqual(repr(made.columns()["c"].tolist()), repr(wanted))
        for values in [pandas.to_datetime(["2020-01-01"]), [1j], [b"x"], [float("inf")], [1e300]]:
            with self.assertRaises(TypeError):
                RecordSet.from_pandas(pandas.DataFrame({"c": values}))
        with self.assertRaises(ValueError):  # the second was taken, and the first lost
            RecordSet.from_pandas(pandas.DataFrame([[1, 2]], columns=["c", "c"]))

    def test_reals_are_refused_or_text(self):
        frame = pandas.DataFrame({"r": [1.5, 2.0, 1e300]})
        with self.assertRaises(TypeError):
            RecordSet.from_pandas(frame)
        self.assertEqual(RecordSet.from_pandas(frame, reals="text").columns()["r"], ["1.5", 2, "1e+300"])


class Arrow(unittest.TestCase):
    def test_nested_sets_are_known_again(self):
        made = RecordSet()
        made[1, "s"] = {"k": 1}
        made[2, "s"] = None
        self.assertEqual(RecordSet.from_arrow(made).rows(), made.rows())

    def test_a_stream_is_taken_once(self):
        class Given:
            capsule = RecordSet.from_rows([{"a": 1}]).__arrow_c_stream__()

            def __arrow_c_stream__(self):
                return self.capsule
        self.assertEqual(len(RecordSet.from_arrow(Given())), 1)
        with self.assertRaises(TypeError):  # called through a null pointer
            RecordSet.from_arrow(Given())

    def test_a_capsule_that_nobody_takes_releases_its_stream(self):
        from qxrecordset import _arrow
        capsule = RecordSet.from_rows([{"a": 1}]).__arrow_c_stream__()
        self.assertEqual(len(_arrow._streams), 1)
        del capsule
        gc.collect()
        self.assertEqual(len(_arrow._streams), 0)


if __name__ == "__main__":
    unittest.main()
