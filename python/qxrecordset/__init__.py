# Part of libQXRecordSet. MIT licence, see LICENSE.
"""Record sets of libQXRecordSet: tables in memory that programs exchange as JSON text.

    from qxrecordset import RecordSet

    people = RecordSet.from_json('{"rows":[{"name":"Ada","born":1815},{"name":"Grace"}]}')
    people[2, "born"] = 1906
    for row in people.rows():
        print(row["name"], row["born"])
"""

from ._column import Column
from ._recordset import Losses, ParseError, RecordSet, Value

__all__ = ["Column", "Losses", "ParseError", "RecordSet", "Value"]
__version__ = "1.0.0"
