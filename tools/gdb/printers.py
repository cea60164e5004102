# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# What gdb shows of record sets and JSON documents. Installed where gdb loads it along with the
# shared library; for the static one: source .../printers.py
#
#   print people                        record set: 2 rows, 2 columns = {[1].born = 1815, ...}
#   print $qxcell(people, "name", 2)    "Grace"
#   print message                       object of 1 member = {rows = array of 2 elements = {...}}
#   print $qxpath(message, "rows.0.name")
#   print params                        parameter string: header "FIND", 2 parameters = {...}
#   print writer                        writer, 1 open container: {"a":1,"b":
#
# Nothing is called in the program: everything is read from memory, from a core file as well. That
# takes the library's debugging symbols: the package libqxrecordset1-dbgsym, or a library built with
# -g.
"""Pretty printers and functions for libQXRecordSet."""

import gdb
import gdb.printing
import gdb.types

# CQXRecordSet::QX_TYPE and JSON::Type.
QX_NULL, QX_LONG, QX_BOOL, QX_TEXT, QX_RECORDSET = 0, 1, 2, 3, 5
JT_NONE, JT_NULL, JT_STRING, JT_ARRAY, JT_OBJECT = 0, 1, 5, 6, 7


def counted(number, word):
    return f"{number} {word}" + ("" if number == 1 else "s")


def text_at(pointer, length):
    """`length` bytes as a str, as gdb's own character set has them."""
    return pointer.string(length=int(length), errors="backslashreplace") if int(length) else ""


def string_text(string):
    """The content of a std::string."""
    return text_at(string["_M_dataplus"]["_M_p"], string["_M_string_length"])


def plain_value(value):
    """The value that a reference refers to, or the value."""
    code = value.type.strip_typedefs().code
    return value.referenced_value() if code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF) else value


def need_fields(kind, what):
    """Says why a function cannot look into values of a type, when it cannot."""
    if not gdb.types.get_basic_type(kind).fields():
        raise gdb.GdbError(f"gdb knows nothing of the inside of {what}: the debugging symbols of "
                           "libQXRecordSet are missing (package libqxrecordset1-dbgsym).")


def unique_pointer(unique):
    """The pointer in a std::unique_ptr."""
    pair = unique["_M_t"]["_M_t"]
    pair = pair[pair.type.fields()[0]]  # the base that a std::tuple has
    return pair[pair.type.fields()[1]]["_M_head_impl"]


def map_items(tree):
    """The pairs of a std::map, in order."""
    pair = tree["_M_t"].type.strip_typedefs().template_argument(1).pointer()
    header = tree["_M_t"]["_M_impl"]["_M_header"]
    waiting, node = [], header["_M_parent"]
    while waiting or int(node):
        while int(node):
            waiting.append(node)
            node = node["_M_left"]
        node = waiting.pop()
        item = (node + 1).cast(pair).dereference()
        yield item["first"], item["second"]
        node = node["_M_right"]


# ---- Record sets ----


class Table:
    """The contents of a record set: columns, and cells by row number and column index."""

    def __init__(self, record_set):
        self.names = []
        self.rows = None
        pointer = unique_pointer(record_set["pTable"])
        if int(pointer):
            column = pointer["columns"]["pFirst_"]
            for _ in range(int(pointer["columns"]["nCount_"])):
                name = column["name"]
                self.names.append(text_at(name["pName_"], name["nLength_"]))
                column = column["pBehind"]
            self.rows = pointer["rows"]

    def numbered_rows(self):
        """The rows by ascending number: number, row. Rows of the grid without cells are left out."""
        if self.rows is None:
            return
        outside = [(int(number), row) for number, row in map_items(self.rows["mapOutside_"])]
        yield from (entry for entry in outside if entry[0] <= 0)
        page_rows = int(gdb.parse_and_eval("recordset::Rows::kPageRows"))
        for i in range(int(self.rows["nSlots_"])):
            yield i + 1, self.rows["pPages_"][i // page_rows][i % page_rows]
        yield from (entry for entry in outside if entry[0] > 0)

    def cells(self, number, row):
        """The cells of a row that exist: column name, cell."""
        for i in range(int(row["nSpan"])):
            cell = row["pCells"][i]
            if int(cell["pText"]):
                yield self.names[i], cell
        if int(row["bHasFar"]):
            for key, cell in map_items(self.rows["mapFar_"]):
                if int(key["first"]) == number and int(cell["pText"]):
                    yield self.names[int(key["second"]) - 1], cell

    def all_cells(self):
        for number, row in self.numbered_rows():
            for name, cell in self.cells(number, row):
                yield number, name, cell


class RecordSetPrinter:
    """A CQXRecordSet: its size, and the cells that exist, by row number and column name."""

    def __init__(self, value):
        self.row_count = int(value["lRowsCount"])
        self.table = Table(value)

    def to_string(self):
        return "record set: " + counted(self.row_count, "row") + ", " + \
            counted(len(self.table.names), "column")

    def children(self):
        for number, name, cell in self.table.all_cells():
            yield f"[{number}].{name}", cell


class CellPrinter:
    """A cell by its type: null, a number, true or false, a quoted text, the text of a record set."""

    def __init__(self, value):
        self.type = int(value["eType"])
        self.pointer = value["pText"]
        self.length = int(value["nLengthAndPlain"]) // 2  # as Cell::Length() has it

    def to_string(self):
        if not int(self.pointer):
            return "no cell"
        if self.type == QX_NULL:
            return "null"
        if self.type == QX_BOOL:
            return "false" if text_at(self.pointer, self.length) == "0" else "true"
        if self.type in (QX_LONG, QX_RECORDSET):
            return text_at(self.pointer, self.length)
        return self.pointer.lazy_string(length=int(self.length))


class CellFunction(gdb.Function):
    """$qxcell(SET, NAME, ROW = 1): the cell of a record set in column NAME."""

    def __init__(self):
        super().__init__("qxcell")

    def invoke(self, record_set, name, row=1):
        wanted = name.string()
        record_set = plain_value(record_set)
        need_fields(record_set.type, "a record set")
        table = unique_pointer(record_set["pTable"])
        need_fields(table.type.target(), "a record set")
        for number, column, cell in Table(record_set).all_cells():
            if number == int(row) and column == wanted:
                return cell
        raise gdb.GdbError(f"There is no cell '{wanted}' in row {int(row)}.")


# ---- JSON documents ----


def container_of(value):
    """The container of an array or object, also of one whose parse failed, or None."""
    composite = value["pComposite"]
    if not int(composite):
        return None
    kind = {JT_ARRAY: "JSON::ArrayValue", JT_OBJECT: "JSON::ObjectValue"}.get(int(value["eType"]))
    pointer = gdb.lookup_type(kind).pointer() if kind else composite.dynamic_type
    return composite.cast(pointer).dereference()


def elements_of(container):
    """The elements or members of a container: name or None, value."""
    is_object = any(field.name == "avValues" for field in container.type.strip_typedefs().fields())
    values = (container["avValues"] if is_object else container)["vValues"]
    names = {}
    if is_object:
        entries = container["vNameMap"]
        for i in range(int(entries["nSize"])):
            entry = entries["pItems"][i]
            names[int(entry["nOrdinal"])] = text_at(entry["pName"], entry["nLength"])
    for i in range(int(values["nSize"])):
        yield names.get(i, "") if is_object else None, values["pItems"][i]


class ContainerPrinter:
    """An array or object: its elements, or its members by name, in the order of the document."""

    def __init__(self, container):
        self.elements = list(elements_of(container))
        self.is_object = "Object" in container.type.strip_typedefs().name

    def to_string(self):
        count = len(self.elements)
        return "object of " + counted(count, "member") if self.is_object else \
            "array of " + counted(count, "element")

    def children(self):
        for i, (name, value) in enumerate(self.elements):
            yield f"[{i}]" if name is None else name, value


class ValuePrinter:
    """A scalar as it is written in JSON, or a container."""

    def __init__(self, value):
        self.value = value
        self.type = int(value["eType"])
        container = container_of(value)
        self.container = None if container is None else ContainerPrinter(container)

    def to_string(self):
        if self.container is not None:
            return ("" if self.type in (JT_ARRAY, JT_OBJECT) else "invalid ") + \
                self.container.to_string()
        if self.type == JT_NONE:
            return "nothing"
        if self.type == JT_NULL:
            return "null"
        pointer = self.value["pText"]
        if self.type < 0 or not int(pointer):
            return "invalid" if self.type < 0 else "without text"
        if self.type == JT_STRING:
            return pointer.lazy_string(length=int(self.value["nLength"]))
        return text_at(pointer, self.value["nLength"])

    def children(self):
        return iter(()) if self.container is None else self.container.children()


class PathFunction(gdb.Function):
    """$qxpath(VALUE, PATH): the JSON value at a path of names and ordinals joined by '.'."""

    def __init__(self):
        super().__init__("qxpath")

    def invoke(self, value, path):
        value = plain_value(value)
        need_fields(value.type, "a document")
        for step in path.string().split("."):
            container = container_of(value)
            found = None
            for i, (name, element) in enumerate(elements_of(container) if container else ()):
                if found is None and step == (str(i) if name is None else name):
                    found = element
            if found is None:
                raise gdb.GdbError(f"There is no '{step}' in '{path.string()}'.")
            value = found
        return value


# ---- Parameter strings and writers ----


class ParamsPrinter:
    """A CParamsRS: its header, and its parameters as they are read back."""

    def __init__(self, value):
        text = value["paramText"]
        # One character for each byte, because lengths count bytes.
        self.text = text["_M_dataplus"]["_M_p"].string("latin-1", length=int(text["_M_string_length"]))
        self.header = self.text[:max(int(value["headerLength"]) - 1, 0)]
        offsets = value["paramOffsets"]["_M_impl"]
        count = int(offsets["_M_finish"] - offsets["_M_start"])
        self.offsets = [int(offsets["_M_start"][i]) for i in range(count)]

    def parameter(self, offset):
        field, _, rest = self.text[offset:].partition(";")
        digits = field.strip()
        return rest[:int(digits)] if digits.isdigit() else rest

    def to_string(self):
        header = f'header "{self.header}", ' if self.header else ""
        return "parameter string: " + header + counted(len(self.offsets), "parameter")

    def children(self):
        for i, offset in enumerate(self.offsets):
            text = self.parameter(offset).encode("latin-1").decode("utf-8", "backslashreplace")
            yield f"[{i}]", '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


class WriterPrinter:
    """A JSON::Serialize: what is written so far, and what is open."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        if bool(self.value["bError"]):
            return "writer, called out of order"
        output = self.value["strOutput"]
        depth = int(self.value["nDepth"])
        length = self.value["nWritten"] if depth else output["_M_string_length"]
        text = text_at(output["_M_dataplus"]["_M_p"], length)
        return "writer" + (", " + counted(depth, "open container") if depth else "") + ": " + text


class BlindPrinter:
    """Stands in where gdb knows only the name of the type."""

    def __init__(self, name):
        self.name = name

    def to_string(self):
        return self.name + " (seen with the debugging symbols of libQXRecordSet)"


def or_blind(printer):
    def chosen(value):
        plain = gdb.types.get_basic_type(value.type)
        if value.type.strip_typedefs().code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            value = value.referenced_value()
        return printer(value) if plain.fields() else BlindPrinter(plain.name)
    return chosen


def register(objfile):
    printers = gdb.printing.RegexpCollectionPrettyPrinter("libQXRecordSet")
    printers.add_printer("record set", "^(CQXRecordSet|CBeforeAfterRecord)$",
                         or_blind(RecordSetPrinter))
    printers.add_printer("cell", "^recordset::Cell$",
                         or_blind(CellPrinter))
    printers.add_printer("value", "^JSON::(JSONValue|UnsafeJSONValue|Message)$",
                         or_blind(ValuePrinter))
    printers.add_printer("parameters", "^CParamsRS$", or_blind(ParamsPrinter))
    printers.add_printer("writer", "^JSON::Serialize$", or_blind(WriterPrinter))
    printers.add_printer("container", "^JSON::(ArrayValue|ObjectValue)$",
                         or_blind(ContainerPrinter))
    gdb.printing.register_pretty_printer(objfile, printers, replace=True)


CellFunction()
PathFunction()
register(gdb.current_objfile())
