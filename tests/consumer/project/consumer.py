# Part of libQXRecordSet. MIT licence, see LICENSE.
"""A host program in Python: a table comes in as text, is read and changed, and goes out to pandas."""

import pandas

from qxrecordset import ParseError, RecordSet

try:
    RecordSet.from_json('{"rows":[{"name":"Ada"},\n {"name":Grace}]}')
except ParseError as error:
    assert (error.line, error.column) == (2, 10), error

text = '{"rows":[{"born":1815,"name":"Ada"},{"born":9007199254740993,"name":null}]}'
people = RecordSet.from_json(text)
assert people.to_json() == text
assert people.rows() == RecordSet.from_rows(people.rows()).rows()
assert people.columns()["born"].integers[1] == 9007199254740993
people[2, "born"] = 1906
people[2, "nested"] = {"k": 1}
assert (2, "nested") in people and (1, "nested") not in people
assert RecordSet.from_arrow(people).rows()[1] == people.rows()[1]
frame = pandas.DataFrame({"name": ["Ada", None], "born": [1815, 1906]})
assert RecordSet.from_pandas(frame).to_pandas()["born"].tolist() == people.columns()["born"].tolist()
print(people[1, "name"], "was born in", people[1, "born"])
