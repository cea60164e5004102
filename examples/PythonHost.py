#!/usr/bin/env python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# A host written in Python, with nothing but ctypes: it takes the text of a record set with a shop's
# orders, sums them up by customer, and answers with the text of another record set.
#
#   PythonHost.py [LIBRARY]     the shared library; without it the installed one is taken
#
# The class Message is a wrapper to copy. docs/hosts.md says why it is made as it is.
"""Reads and writes record set text through the flat interface of libQXRecordSet."""

import ctypes
import sys


class Library:
    """The functions of the flat interface, with their types declared."""

    def __init__(self, path="libQXRecordSet.so.1"):
        handle, text, number = ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int
        self.library = ctypes.CDLL(path)
        self.alloc = self.declare("AllocMessage", handle)
        self.free = self.declare("FreeMessage", None, handle)
        self.parse = self.declare("ParseMessage", number, handle, text)
        self.size = self.declare("MessageSize", number, handle)
        self.is_null = self.declare("IsPathNull", number, handle, text)
        self.string = self.declare("GetPathAsString", text, handle, text)
        self.integer = self.declare("GetPathAsInt", number, handle, text)
        self.real = self.declare("GetPathAsDouble", ctypes.c_double, handle, text)
        self.escape = self.declare("EscapeString", number, ctypes.POINTER(handle), handle, text)

    def declare(self, name, result, *arguments):
        function = self.library["JSON_" + name]
        function.restype, function.argtypes = result, arguments
        return function

    def quoted(self, text):
        """`text` as a JSON string, quotes included."""
        data = encoded(text)
        buffer = ctypes.create_string_buffer(6 * len(data) + 2)  # \u001f is the longest escape
        begin = ctypes.c_void_p(ctypes.addressof(buffer))
        end = ctypes.c_void_p(begin.value + len(buffer))
        if not self.escape(ctypes.byref(begin), end, data):
            raise MemoryError
        return '"' + decoded(buffer.value) + '"'


class Message:
    """A parsed JSON document: what is in it is asked for by path, such as "rows.0.name".

    A missing value reads as None, 0 or 0.0. Use it by `with`, or call close()."""

    def __init__(self, library, text):
        self.library = library
        data = encoded(text)
        self.handle = library.alloc()
        if not library.parse(self.handle, data):
            self.close()
            raise ValueError("no JSON object or array")

    def close(self):
        self.library.free(self.handle)  # None does nothing
        self.handle = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def __len__(self):
        return self.library.size(self.open_handle())

    def string(self, path):
        """A copy of a string, or None: no such value, or no string."""
        data = self.library.string(self.open_handle(), encoded(path))
        return None if data is None else decoded(data)

    def integer(self, path):
        return self.library.integer(self.open_handle(), encoded(path))

    def real(self, path):
        return self.library.real(self.open_handle(), encoded(path))

    def is_null(self, path):
        return bool(self.library.is_null(self.open_handle(), encoded(path)))

    def open_handle(self):
        if self.handle is None:
            raise ValueError("the message is closed")
        return self.handle


def encoded(text):
    """UTF-8 for the library; bytes that were none come back as they were."""
    data = text.encode("utf-8", "surrogateescape")
    if b"\0" in data:
        raise ValueError("a NUL would end the text there")
    return data


def decoded(data):
    return data.decode("utf-8", "surrogateescape")


ORDERS = """{"rows":[
  {"customer":"Zoë \\"Z\\" Müller","item":"lamp","cents":4990,"paid":true},
  {"customer":"Ada","item":"desk","cents":24900,"paid":null},
  {"customer":"Zoë \\"Z\\" Müller","item":"bulb","cents":350,"paid":true}]}"""


def main():
    library = Library(*sys.argv[1:2])
    totals, unpaid = {}, set()
    with Message(library, ORDERS) as orders:
        row = 0
        while (customer := orders.string(f"rows.{row}.customer")) is not None:
            totals[customer] = totals.get(customer, 0) + orders.integer(f"rows.{row}.cents")
            if orders.is_null(f"rows.{row}.paid"):
                unpaid.add(customer)
            row += 1
    print(row, "orders of", len(totals), "customers")

    rows = [f'{{"cents":{cents},"customer":{library.quoted(customer)}}}'
            for customer, cents in totals.items()]
    answer = '{"rows":[' + ",".join(rows) + "]}"
    print(answer)

    with Message(library, answer) as read_back:  # what a receiver sees
        print(read_back.string("rows.0.customer"), read_back.real("rows.0.cents") / 100)
    print("unpaid:", *unpaid)

    try:
        Message(library, "[1, 2")
    except ValueError as error:
        print("refused:", error)


if __name__ == "__main__":
    main()
