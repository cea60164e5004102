# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# What qxrs does with one command line, as a table:
#
#   (arguments, standard input, standard output, standard error without "qxrs: ", exit status)
#
# The last two default to "" and 0. {data} is the folder of the example data; the files of FILES and
# the database world.db are in the current folder.

FILES = {
    "two.json": '{"rows":[{"a":1,"b":"x"},{"a":2,"b":null,"c":true}]}',
    "one.json": '{"name":"Ada","born":1815}',
    "bad.json": '{\n  "a": 1,\n  "b" 2\n}\n',
    "array.json": "[1]",
    "empty": "",
    "y.csv": "a,b,r\n1,true,0.5\n2,false,2.0\n",
}

# Statements for world.db.
WORLD = """
CREATE TABLE t (i INTEGER, b BOOLEAN, r REAL, s TEXT);
INSERT INTO t VALUES (1, 1, 0.5, 'x'), (-9, 0, 1e300, NULL), (NULL, 7, 2.0, '{"o":1}');
CREATE TABLE big (n INTEGER);
INSERT INTO big VALUES (2147483647), (-2147483648), (2147483648), (9223372036854775807);
CREATE TABLE keys (id INTEGER, name VARCHAR(9) NOT NULL, at TEXT, PRIMARY KEY (name, id));
INSERT INTO keys VALUES (7, 'x', NULL);
CREATE TABLE plain (i INTEGER, b BOOLEAN, r REAL, s TEXT);
INSERT INTO plain VALUES (1, 1, 2.0, '1'), (NULL, 0, -1e300, ''), (9223372036854775807, NULL, 0.1, NULL);
"""

# What that last table is as record set text, and becomes a table of again.
KEYS = ('{"columns":[{"name":"id","type":"INTEGER","key":2},'
        '{"name":"name","type":"VARCHAR(9)","key":1,"notNull":true},{"name":"at","type":"TEXT"}],'
        '"rows":[{"id":7,"name":"x","at":null}]}')

# ODBC in arguments: the driver for SQLite.
ODBC = "odbc:Driver=SQLite3;Database=odbc.db"
IDS = "".join(f'{{"id":{i}}}\n' for i in range(5000))

USAGE = "(see qxrs {} --help)\n"

LATE = ('{"rows":[{"b":2.5,"a":1},{"a":2,"c":[1, {"x" : null}],"big":12345678901234567890}]}')

CASES = [
    # ---- from-csv: texts, types, quoting ----
    ("from-csv", '\ufeffb,é\r\n"x, ""y""\r\n", z \r\n\r\n{oops},日本\r\n',
     '{"rows":[{"b":"x, \\"y\\"\\r\\n","é":" z "},{"b":"{oops}","é":"日本"}]}\n'),
    ("from-csv", "a,b\n", '{"columns":[{"name":"a"},{"name":"b"}],"rows":[]}\n'),
    ("from-csv", '"\ufeffa"\n1\n', '{"\ufeffa":"1"}\n'),
    ("from-csv", 'a,b\n,""\n', '{"a":null,"b":""}\n'),
    ("from-csv -i", 'i,j,k,l,m,n,o,p,q,r\n2147483647,-0,007,7.0,true,True,,"",0,99999999999999999999\n',
     '{"i":2147483647,"j":"-0","k":"007","l":7.0,"m":true,"n":"True","o":null,"p":"","q":0,'
     '"r":"99999999999999999999"}\n'),
    ("from-csv -i", "zip,n,x,y\n12345,1,1,true\n01234,-2.50,,1\n", '{"rows":[{"zip":"12345","n":1,"x":1,'
     '"y":"true"},{"zip":"01234","n":-2.50,"x":null,"y":"1"}]}\n'),
    ("from-csv -i --32-bit", "a,b,c\n-2147483648,2147483648,0.5\n",
     '{"a":-2147483648,"b":"2147483648","c":"0.5"}\n'),
    ("from-csv --null NA -d ;", 'a;b;c\nNA;,;"NA"\n', '{"a":null,"b":",","c":"NA"}\n'),
    ("from-csv", 'a;"b,c"\n1;2\n', '{"a":"1","b,c":"2"}\n'),
    ("from-csv", "a\tb\n1\t2", '{"a":"1","b":"2"}\n'),
    ("from-csv -d '\\t' --names '\"a,b\",c'", "1\t2\n", '{"a,b":"1","c":"2"}\n'),
    ("from-csv", "a\nx\0y\n\n", '{"rows":[{"a":"x\\u0000y"},{"a":null}]}\n'),
    ("from-csv -c b", b"a,b\n1,x\xffy\n2,\xed\xa0\x80\n", '{"rows":[{"b":"x\ufffdy"},'
     '{"b":"\ufffd\ufffd\ufffd"}]}\n', "warning: bytes that are not UTF-8 became U+FFFD (2 times, "
     "first: row 1, column 'b')\n"),
    ("from-csv --strict", b"a\n\xff\n", "", "row 1, column 'a': bytes that are not UTF-8 became U+FFFD\n", 1),
    # ---- from-csv: refusals ----
    ("from-csv", "", "", "standard input: line 1, column 1: the text is empty; the first line has "
     "to name the columns\n", 1),
    ("from-csv", 'a,b\n"x\ny",1\n3\n', "", "standard input: line 4, column 1: 1 field instead of 2\n", 1),
    ("from-csv", 'a,b\n1,x"y\n', "",
     "standard input: line 2, column 4: a quote inside a field without quotes\n", 1),
    ("from-csv", 'a\n"x"y\n', "", "standard input: line 2, column 4: text behind a closing quote\n", 1),
    ("from-csv", 'a\n1\n"x\n\ny\n', "",
     "standard input: line 3, column 1: the quoted field that begins here has no end\n", 1),
    ("from-csv", "a,b,a\n", "", "standard input: line 1, column 1: the column name 'a' occurs more "
     "than once\n", 1),
    ("from-csv", "a\n1\n".encode("utf-16"), "", "standard input: the text is UTF-16; iconv -f UTF-16 -t "
     "UTF-8 makes it readable\n", 1),
    ("from-csv", b"\x1f\x8b", "", "standard input: the compressed data are damaged or end too soon\n", 1),
    ("from-jsonl", b"\x28\xb5\x2f\xfd\x24\x00\x01\x00\x00\x99\xe9\xd8\x51", "{}\n"),
    ("from-csv --names a,a", "1,2\n", "", "names: line 1, column 1: the column name 'a' occurs more than once "
     + USAGE.format("from-csv"), 2),
    ("from-csv missing.csv", "", "", "cannot open missing.csv: No such file or directory\n", 1),
    ("from-csv .", "", "", "cannot read .: Is a directory\n", 1),
    # ---- from-tsv ----
    ("from-tsv -i --null '\\N'", "a\tb\tc\td\te\n\\N\tx\\ty\\\\\\q\t\t5\t\\\\N\r\n",
     '{"a":null,"b":"x\\ty\\\\\\\\q","c":"","d":5,"e":"\\\\N"}\n'),
    # ---- from-json, from-jsonl: values as they are written ----
    ("from-json", '\ufeff[{"r":1.50,"l":[1 , {"x":null}],"o":{"i":+1,"r":2.5},"n":null,"t":true,'
     '"s":"\\u00e9\\/","h":99999999999999999999,"z":1,"z":007,"q":1-2}]',
     '{"r":1.50,"l":[1,{"x":null}],"o":{"i":1,"r":2.5},"n":null,"t":true,"s":"\\u00e9\\/",'
     '"h":99999999999999999999,"z":7,"q":"1-2"}\n',
     "warning: a name occurs more than once in a row; its last value counts (row 1, column 'z')\n"
     "qxrs: warning: a number that JSON does not know became a text (row 1, column 'q')\n"),
    ("from-json --texts", '{"r":1.50,"l":[1, 2],"h":99999999999999999999,"o":{"r":1.5}}',
     '{"r":"1.50","l":"[1,2]","h":"99999999999999999999","o":{"r":1.5}}\n'),
    # Two escapes that are one character, half of one, and a NUL: to hosts and to others.
    ("from-jsonl", '{"a":"\\ud83d\\ude00","b":"\\ud83d","c":"x\\u0000"}',
     '{"a":"😀","b":"\\ud83d","c":"x\\u0000"}\n'),
    ("to-csv", '{"a":"\\ud83d\\ude00","b":"x\\ud83dy","c":"x\\u0000\\q"}', "a,b,c\n😀,x\ufffdy,x\0q\n",
     "warning: half a pair of surrogates, which is no character, became U+FFFD (row 1, column 'b')\n"),
    ("from-json", '[{"a\\"\\ud83d\\ude00":1},{"a\\"😀":2}]',
     '{"rows":[{"a\\"😀":1},{"a\\"😀":2}]}\n'),
    ("from-json", "[]", "{}\n"),
    ("from-json", "[{}]", '{"rows":[{}]}\n'),
    ("from-json", '[{"rows":[1]}]', '{"rows":[{"rows":[1]}]}\n'),
    ("from-json", '[{"a":1},5]', "", "standard input: line 1, column 10: row 2 is no object\n", 1),
    ("from-json", '[{"a":1},', "", "standard input: line 1, column 10: the text ends inside an array\n", 1),
    ("from-json", '[{"a":1}', "", "standard input: line 1, column 9: the text ends inside an array\n", 1),
    ("from-jsonl", '{"a":1}\n\n {"a":2,"b":{}}', '{"rows":[{"a":1},{"a":2,"b":{}}]}\n'),
    ("from-jsonl", '{"a":1}\n{"a":}\n', "", "standard input: line 2, column 6: expected a value\n", 1),
    ("to-csv", '{"rows":[{"a":1}],"x":1,', "", "standard input: line 1, column 25: the text ends inside an object\n", 1),
    ("from-jsonl", '{"a":1} x\n', "", "standard input: line 1, column 9: expected an object\n", 1),
    # ---- from-sql: types by declaration and by value ----
    ("from-sql world.db 'SELECT * FROM t'", "",
     '{"rows":[{"i":1,"b":true,"r":0.5,"s":"x"},{"i":-9,"b":false,"r":1e+300,"s":null},'
     '{"i":null,"b":7,"r":2.0,"s":"{\\"o\\":1}"}]}\n'),
    ("from-sql world.db --32-bit 'SELECT n FROM big'", "",
     '{"rows":[{"n":2147483647},{"n":-2147483648},{"n":"2147483648"},{"n":"9223372036854775807"}]}\n'),
    ("from-sql world.db", "SELECT count(*) AS n FROM t -- comment\n;\n", '{"n":3}\n'),
    ("from-sql world.db 'SELECT i FROM t WHERE 0'", "",
     '{"columns":[{"name":"i","type":"INTEGER"}],"rows":[]}\n'),
    ("from-sql world.db 'SELECT * FROM keys'", "", KEYS + "\n"),
    ("from-sql world.db 'SELECT id, at, i, k.name AS n FROM keys AS k, t WHERE i'", "", '{"columns":[{"name":"id",'
     '"type":"INTEGER"},{"name":"at","type":"TEXT"},{"name":"i","type":"INTEGER"},{"name":"n","type":"VARCHAR(9)"}],'
     '"rows":[{"id":7,"at":null,"i":1,"n":"x"},{"id":7,"at":null,"i":-9,"n":"x"}]}\n'),
    ("from-sql world.db 'SELECT 9e999 AS a, -9e999 AS b'", "", '{"a":9e999,"b":-9e999}\n'),
    ("from-sql world.db 'SELECT x\nFROM t'", "", "", "SQL text: line 1, column 8: no such column: x\n",
     1),
    ("from-sql world.db 'SELECT 1 AS a, 2 AS a'", "",
     "", "the column name 'a' occurs more than once; name it with AS\n", 1),
    ("from-sql world.db 'SELECT 1; SELECT 2'", "", "",
     "the SQL text holds more than one statement\n", 1),
    ("from-sql world.db ' '", "", "", "the SQL text holds no statement\n", 1),
    ("from-sql world.db 'BEGIN'", "", "", "the SQL statement gives no rows\n", 1),
    ("from-sql world.db \"SELECT x'00' AS x\"", "", "",
     "world.db: row 1, column 'x': a blob is no text; select hex() of it\n", 1),
    ("from-sql missing.db 'SELECT 1'", "", "",
     "cannot open missing.db: unable to open database file\n", 1),
    ("from-sql bad.json 'SELECT 1'", "", "", "bad.json: file is not a database\n", 1),
    # ---- table ----
    ("table two.json", "", "a  b  c\n-  -  ----\n1  x\n2     true\n"),
    ("table", '{"rows":[{"n":5,"名":"日本","t":"a\\tb\\u001b\\u0000c"},{"n":-1.5,"名":"é"}]}',
     "   n  名    t\n----  ----  -------------\n   5  日本  a\\tb\\x1b\\x00c\n-1.5  é\n"),
    ("table -c b,a -n 1 two.json", "", "b  a\n-  -\nx  1\n"),
    ("table -w 14", '{"rows":[{"n":123456,"t":"日本日本日本日本"}]}',
     "     n  t\n------  ------\n123456  日本…\n"),
    ("table -w 33", '{"a":"%s","b":"%s","c":"%s"}' % (("x" * 20,) * 3),
     "a          b           c\n---------  ----------  ----------\n"
     "xxxxxxxx…  xxxxxxxxx…  xxxxxxxxx…\n"),
    ("table -w 20 -n 1", '{"rows":[{"a":"xxxxxxxx","b":1,"c":"yyyyyyyy","d":"z","e":2},{},{"a":1}]}',
     "a       b  c       d\n------  -  ------  -\nxxxxx…  1  yyyyy…  z\n... 1 more column\n"),
    ("table", '{"a":"x\u202ey"}', "a\n--------------\nx\\xe2\\x80\\xaey\n"),
    ("table", "{}", "(no rows)\n"),
    ("table empty", "", "", "empty: line 1, column 1: the text is empty; a record set without rows is "
     "{}\n", 1),
    ("table", '{"rows":[{},{"a":1},{}]}', "a\n-\n\n1\n\n"),
    ("table", '{"rows":5,"r":1.5,"l":[1],"n":+07,"o":{"x":1.5}}',
     "rows    r  l    n  o\n----  ---  ---  -  ---------\n   5  1.5  [1]  7  {\"x\":1.5}\n"),
    ("table", "a,b\n", "", "standard input: line 1, column 1: expected '{' or '['; the formats have names, "
     "see --from\n", 1),
    # ---- to-csv, to-tsv, to-json, to-jsonl ----
    ("to-csv", '{"a":"x,y","b":"q\\"","c":"","d":null,"e":" s","f":"l\\nm","g":{"h":1},"h":"t "}',
     'a,b,c,d,e,f,g,h\n"x,y","q""","",, s,"l\nm","{""h"":1}",t \n'),
    ("to-csv", LATE, 'b,a,c,big\n2.5,1,,\n,2,"[1,{""x"":null}]",12345678901234567890\n'),
    ("to-tsv -c a,b", LATE, "a\tb\n1\t2.5\n2\t\n"),
    ("to-csv --unbuffered", LATE, "b,a\n2.5,1\n,2\n", "warning: a column that the first row does not have "
     "was left out (2 times, first: row 2, column 'c')\n"),
    ("to-csv --unbuffered --strict", LATE, "b,a\n2.5,1\n",
     "row 2, column 'c': a column that the first row does not have was left out\n", 1),
    ("to-json", LATE, '[{"b":2.5,"a":1},\n {"a":2,"c":[1,{"x":null}],"big":12345678901234567890}]\n'),
    ("to-csv -d ; --null NA", '{"a":"x;","b":null,"c":"NA"}', 'a;b;c\n"x;";NA;"NA"\n'),
    ("to-csv --bom --crlf --quote-all", '{"a":"x","b":null}', '\ufeff"a","b"\r\n"x",\r\n'),
    ("to-csv", '{"rows":[{"a":null},{"a":1}]}', 'a\n\n1\n'),
    ("to-csv", "{}", ""),
    ("to-csv", '{"columns":[{"name":"b"},{"name":"a"}],"rows":[]}', "b,a\n"),
    ("to-jsonl", '{"columns":[{"name":"b"}],"rows":[]}', "",
     "warning: there are no rows, and JSON has no place for the columns' names\n"),
    ("to-csv", '{"columns":[{"name":"b"}],"rows":[{"c":1}]}', "",
     "standard input: row 1: 'c' is not among the columns that the text names\n", 1),
    ("to-csv", '{"columns":5,"rows":[{"a":1}]}', "a\n1\n", "warning: a member beside the rows was left out\n"),
    ("to-csv", '{"rows":[{"a":1}],}', "", "standard input: line 1, column 20: a member has to follow the comma\n", 1),
    ("to-csv", '{"\ufeffa":1}', '"\ufeffa"\n1\n'),
    ("to-csv -c '\"a,\"\"b\",c' -c d", '{"d":4,"c":3,"a,\\"b":1}', '"a,""b",c,d\n1,3,4\n'),
    ("to-csv -c '\"a'", "{}", "", "names: line 1, column 1: the quoted field that begins here has no end " + USAGE.format("to-csv"), 2),
    ("to-csv -c '\"a\"b'", "{}", "", "names: line 1, column 4: text behind a closing quote " + USAGE.format("to-csv"), 2),
    ("to-csv -c a -c a two.json", "", "", "the column name 'a' occurs more than once\n", 2),
    ("to-csv", '{"a":1}{"a":2}', "", "standard input: line 1, column 8: text behind the document; --from "
     "jsonl reads a row on each line\n", 1),
    ("to-csv", '{"x":0,"rows":[{"a":1}],"y":[1]}', "a\n1\n",
     "warning: a member beside the rows was left out\n"),
    ("to-csv", '{"rows":[{"a":1},null]}', "", "standard input: line 1, column 18: row 2 is no object\n", 1),
    ("to-tsv --null '\\N'", '{"a":"x\\ty\\\\","b":null,"c":false,"d":""}',
     "a\tb\tc\td\nx\\ty\\\\\t\\N\tfalse\t\n"),
    ("to-tsv", '{"a":"","b":null}', "a\tb\n\t\n",
     "warning: a text looks like a null in TSV; --null sets another mark (row 1, column 'a')\n"),
    ("to-jsonl -c b two.json", "", '{"b":"x"}\n{"b":null}\n'),
    # ---- convert, head, tail, sort, sql ----
    ("convert two.json - --to csv --to-null NA", "", "a,b,c\n1,x,NA\n2,NA,true\n"),
    ("convert - -", "", "", "--from has to name the format of '-'\n", 2),
    ("convert two.json x.y", "", "", "--to has to name the format of 'x.y'\n", 2),
    ("convert --from xml - -", "", "", "there is no format 'xml' " + USAGE.format("convert"), 2),
    ("convert world.db - --to csv", "", "", "world.db has 4 tables; name one with --table: t, big, keys, plain\n", 1),
    ("convert world.db - --to csv --table keys", "", "id,name,at\n7,x,\n"),
    ("tail -n 2 --from jsonl --to jsonl", '{"a":1}\n{"b":2}\n{"a":3}', '{"b":2}\n{"a":3}\n'),
    ("sort --by k,v --from jsonl --to jsonl", '{"k":"b"}\n{"k":10,"v":2}\n{"k":9.5}\n{"v":1}\n'
     '{"k":10,"v":1}\n{"k":null,"l":[1]}\n{"k":"a"}',
     '{"k":null,"l":[1]}\n{"v":1}\n{"k":9.5}\n{"k":10,"v":1}\n{"k":10,"v":2}\n{"k":"a"}\n{"k":"b"}\n'),
    ("sort -r --by a -i --from csv --to csv", "a,b\n9,x\n10,y\n9,z\n", "a,b\n10,y\n9,x\n9,z\n"),
    ("sort --by no two.json", "", "", "there is no column 'no'\n", 2),
    ("sql -i 'SELECT x.a, y.b AS b, y.r FROM x JOIN y USING (a) ORDER BY a' x=two.json y=y.csv", "",
     '{"rows":[{"a":1,"b":true,"r":0.5},{"a":2,"b":false,"r":2.0}]}\n'),
    ("sql 'SELECT 1' x", "", "", "'x' is not NAME=FILE\n", 2),
    # ---- diff ----
    ("diff two.json two.json", "", ""),
    ("diff two.json -", '{"rows":[{"b":"x","a":"1"},{"b":null,"c":1,"d":0},{}, {"a":1}]}',
     'row 1, a: 1 -> "1"\nrow 2, a: 2 -> (no cell)\nrow 2, c: true -> 1\nrow 2, d: (no cell) -> 0\n'
     "row 3: only in standard input\nrow 4: only in standard input\n"
     "0 equal, 2 changed, 0 only in two.json, 2 only in standard input\n", "", 1),
    ("diff one.json -", '{"born":1815.0,"name":"\\u0041da"}', "row 1, born: 1815 -> 1815.0\n"
     "0 equal, 1 changed, 0 only in one.json, 0 only in standard input\n", "", 1),
    ("diff two.json - --key a", '[{"a":3},{"a":2,"b":[1],"c":true},{"a":1,"b":"x"}]',
     "a 2, b: null -> [1]\na 3: only in standard input\n"
     "1 equal, 1 changed, 0 only in two.json, 1 only in standard input\n", "", 1),
    ("diff two.json - --key a", '[{"c":true,"a":2,"b":null},{"a":1,"b":"x"}]', ""),
    ("diff --color always -c a one.json two.json", "", "", "there is no column 'a'\n", 2),
    ("diff --color always - one.json", '{"name":"A\\nda","born":1815}',
     'row 1, name: \x1b[31m"A\\nda"\x1b[0m -> \x1b[32m"Ada"\x1b[0m\n'
     "0 equal, 1 changed, 0 only in standard input, 0 only in one.json\n", "", 1),
    ("diff -q one.json two.json", "", "", "", 1),
    ("diff one.json bad.json", "", "", "bad.json: line 3, column 7: expected ':' behind the name\n", 2),
    ("diff - -", "", "", "only one of the two can be standard input\n", 2),
    # ---- stats, normalize, dump ----
    ("stats", '[{"n":10,"t":"b","m":1},{"n":9.5,"t":"a","m":"x","l":[1]},{"n":9.5,"t":null}]',
     "column  kind    missing  null  distinct  min  max     mean  longest\n"
     "------  ------  -------  ----  --------  ---  ---  -------  -------\n"
     "n       real          0     0         2  9.5  10   9.66667        3\n"
     "t       text          0     1         2  a    b                   1\n"
     "m       mixed         1     0         2  1    1          1        1\n"
     "l       nested        2     0         1  [1]  [1]                 3\n"),
    ("normalize", ' { "rows" : [ {"b":1.5,"a":[1],"c":"{\\"k\\":true}"} , {"b":-0} ] } tail',
     '{"rows":[{"a":"","b":"","c":{"k":true}},{"b":0}]}\n',
     "warning: a record set does not keep real numbers (1), arrays (1) (2 times, first: row 1, column 'b')\n"
     "qxrs: warning: the text behind the document is ignored\n"
     "qxrs: warning: a record set writes a text that reads like an object as one, or not at all "
     "(row 1, column 'c')\n"),
    ("normalize --strict", '{"a":"x\\u0000y"}', "",
     "row 1, column 'a': a record set does not keep texts behind a NUL (1)\n", 1),
    ("dump one.json", "", "Row 1\n\tField (born): 1815\n\tField (name): Ada\n"),
    ("dump array.json", "", "", "array.json: line 1, column 1: expected '{': an array is no "
     "record set\n", 1),
    # ---- pretty, get ----
    ("pretty --host one.json", "", '\n{\n\t"name":"Ada",\n\t"born":1815\n}\n'),
    ("pretty", '{"a":"x,[y]","b":[1,,007],"c":[],"d":{ }}', '{\n  "a": "x,[y]",\n  "b": [\n    1,\n    null,'
     '\n    7\n  ],\n  "c": [],\n  "d": {}\n}\n'),
    ("pretty --compact", '{ "a" : [ 1.50 , "\\ud83d\\ude00" ] }', '{"a":[1.50,"\\ud83d\\ude00"]}\n'),
    ("pretty", "12", "", "standard input: line 1, column 1: expected '{' or '['\n", 1),
    ("get rows.1.c two.json", "", "true\n"),
    ("get /rows/*/a two.json", "", "1\n2\n"),
    ("get . array.json", "", "[1]\n"),
    ("get /a.b/~1~0", '{"a.b":{"/~":[1.50]}}', "[1.50]\n"),
    ("get a.0", '{"a":["x\\n\\u00e9"]}', "x\né\n"),
    ("get -j a.0", '{"a":["x\\n\\u00e9"]}', '"x\\né"\n'),
    ("get rows.2 two.json", "", "", "two.json: there is nothing at '/rows/2'\n", 1),
    ("get rows.first two.json", "", "", "two.json: an array has no names but ordinals from 0 at "
     "'/rows/first'\n", 1),
    # ---- to-sql, one after the other ----
    ("to-sql out.db t", '{"rows":[{"i":1,"b":true,"t":"x","m":1},{"i":-5,"b":false,"m":"y","o":{"k":1},'
     '"big":99999999999999999999,"\\"q":null,"r":1},{"r":2.50,"m":true}]}', ""),
    ("from-sql out.db \"SELECT group_concat(name || ' ' || type) AS c FROM pragma_table_info('t')\"", "",
     '{"c":"i INTEGER,b BOOLEAN,t TEXT,m TEXT,o TEXT,big TEXT,\\"q TEXT,r REAL"}\n'),
    ("from-sql out.db 'SELECT i, b, t, m, o, quote(big) AS q, r FROM t'", "",
     '{"rows":[{"i":1,"b":true,"t":"x","m":"1","o":null,"q":"NULL","r":null},'
     '{"i":-5,"b":false,"t":null,"m":"y","o":"{\\"k\\":1}","q":"\'99999999999999999999\'","r":1.0},'
     '{"i":null,"b":null,"t":null,"m":"true","o":null,"q":"NULL","r":2.5}]}\n'),
    ("to-sql out.db t one.json", "", "", 'out.db: table "t" already exists\n', 1),
    ("to-sql --append out.db t --from csv", "i,b,r\n9,true,0.5\n", ""),
    ("to-sql --append out.db t", '{"r":1.00000000000000000001}', "",
     "warning: a number has more digits than the table's reals keep (row 1, column 'r')\n"),
    ("to-sql out.db ir --from jsonl", '{"i":9007199254740993}\n{"i":0.5}', "",
     "warning: a number has more digits than the table's reals keep (row 1, column 'i')\n"),
    ("to-sql --append out.db t", '{"rows":[{"i":10},{"no":1}]}', "",
     "out.db: table t has no column named no\n", 1),
    ("from-sql out.db 'SELECT i, b, r FROM t WHERE rowid > 3'", "",
     '{"rows":[{"i":9,"b":true,"r":0.5},{"i":null,"b":null,"r":1.0}]}\n'),
    ("to-sql --replace out.db t one.json --key name", "", ""),
    ("from-sql out.db 'SELECT * FROM t'", "", '{"columns":[{"name":"name","type":"TEXT","key":1},'
     '{"name":"born","type":"INTEGER"}],"rows":[{"name":"Ada","born":1815}]}\n'),
    ("to-sql out.db keys", KEYS, ""),
    ("from-sql out.db 'SELECT * FROM keys'", "", KEYS + "\n"),
    ("to-sql out.db u", "{}", "", "there are no columns to make a table of\n", 1),
    ("to-sql new.db u", '[{"a":1},{"a":}]', "", "standard input: line 1, column 15: expected a value\n", 1),
    ("from-sql new.db 'SELECT 1'", "", "", "cannot open new.db: unable to open database file\n", 1),
    # ---- the same behind ODBC ----
    ("convert world.db ODBC --query 'SELECT i, r, s FROM plain' --to-table plain", "", ""),
    ("from-sql ODBC 'SELECT * FROM plain'", "", '{"rows":[{"i":1,"r":2.0,"s":"1"},{"i":null,"r":-1.0e+300,"s":""},'
     '{"i":9223372036854775807,"r":0.1,"s":null}]}\n'),
    ("to-sql --append ODBC plain", '{"s":"\\u00e9\\ud83d","r":0.10000000000000000001}', "", "warning: half a pair of "
     "surrogates, which is no character, became U+FFFD (row 1, column 's')\nqxrs: warning: a number has more digits "
     "than the table's reals keep (row 1, column 'r')\n"),
    ("convert ODBC - --to csv -c s", "", 's\n1\n""\n\n\u00e9\ufffd\n'),
    ("to-sql --strict ODBC t", '{"a":[{"r":1}],"b":0.10000000000000000001}', "", "row 1, column 'b': a number has more "
     "digits than the table's reals keep\n", 1),
    ("to-sql ODBC t", '[{"a":1},{"a":', "", "standard input: line 1, column 15: the text ends inside an object\n", 1),
    ("to-sql --key id ODBC t --from jsonl", IDS + '{"id":4000}\n', "",
     "ODBC: [SQLite]UNIQUE constraint failed: t.id (19)\n", 1),
    ("to-sql --key id ODBC t --from jsonl", IDS, ""),
    ("convert --append --unbuffered --from jsonl - ODBC --to-table t", '{"id":-1}\n{"b":0}\n', "", "warning: a column that the first "
     "row does not have was left out (row 2, column 'b')\n"),
    ("from-sql ODBC 'SELECT count(*) AS n, sum(id) AS s FROM t'", "", '{"n":5002,"s":12497499}\n'),
    ("to-sql ODBC long --from csv", "t\nx\n" + "y" * 9000 + "\nz\n", ""),
    ("from-sql ODBC 'SELECT group_concat(length(t)) AS l FROM long'", "", '{"l":"1,9000,1"}\n'),
    ("convert ODBC - --to csv", "", "", ODBC + " has 3 tables; name one with --table: plain, t, long\n", 1),
    ("from-sql odbc:Driver=none 'SELECT 1'", "", "", "ODBC: [unixODBC][Driver Manager]Can't open lib 'none' : file not "
     "found\n", 1),
    # ---- check: what is accepted ----
    ("check", '{"a":1,"b":2}', "standard input: accepted: an object of 2 members\n"),
    ("check", " [1] tail", "standard input: accepted: an array of 1 element; the 5 bytes behind it are "
     "ignored\n"),
    ("check", "[1,,2]\n", "standard input: accepted: an array of 3 elements\n"),
    ("check -q", '{"rows":[{"a":1.5,"b":"\\ud83d\\ude00","c":"\\u0000","d":99999999999999999999,"e":1,"e":2},'
     '{"a":2.5},null,{}]}', "", """warning: a record set does not keep real numbers (2), texts behind a NUL (1), integers beyond its long (1) (4 times, first: row 1, column 'a')
qxrs: warning: a text is not UTF-8, or escapes a character as two surrogates, which a host keeps apart (row 1, column 'b')
qxrs: warning: a name occurs more than once in a row; its last value counts (row 1, column 'e')
qxrs: warning: a null ends the rows; what follows is ignored (row 3)
"""),
    ("check", "[" * 1024 + "]" * 1024, "standard input: accepted: an array of 1 element\n"),
    ("check one.json bad.json two.json", "",
     "one.json: accepted: an object of 2 members\ntwo.json: accepted: an object of 1 member\n",
     'bad.json: line 3, column 7: expected \':\' behind the name\n    "b" 2\n        ^\n', 1),
    # ---- params ----
    ("params build --header CMD --result 0x80004005 -- abc -x", "",
     "CMD;    10;0x80004005;     3;abc;     2;-x\n"),
    ("params build --header CMD --result -1 --lines -", "a;b\n\nc", "CMD;    10;0xFFFFFFFF;     3;a;b;"
     "     0;;     1;c\n"),
    ("params build x", "", "     1;x\n",
     "warning: without --header a reader takes the first length for a header\n"),
    ("params build --header 1a", "", "", "a header must not begin with a digit and not hold ';'\n", 2),
    ("params build --header a --result 0x100000000", "", "", "a result code has 32 bits\n", 2),
    ("params read", "CMD;    10;0x80004005;     3;a;b;     2;x\n\n",
     "header\tCMD\n0\t0x80004005\n1\ta;b\n2\tx\\n\n"),
    ("params read --at 1", "CMD;     0;;     3;a;b\n", "a;b\n"),
    ("params read --header", "CMD;     0;\n", "CMD\n"),
    ("params read --result", "CMD;    10;0xFFFFFFFF\n", "0xFFFFFFFF\n"),
    ("params read --result", "CMD;     3;abc\n", "", "standard input: parameter 0 is no result code\n", 1),
    ("params read --at 2", "CMD;     3;abc\n", "", "standard input: there is no parameter 2; the text "
     "holds 1\n", 1),
    ("params read", "CMD;     3;abc;    12", "", "standard input: line 1, column 16: the length of "
     "parameter 1 has no ';' behind it\n", 1),
    ("params read", "CMD;    -3;abc", "", "standard input: line 1, column 5: the length of parameter 0 "
     "is negative\n", 1),
    ("params read", "CMD;     0;;;x", "", "standard input: line 1, column 13: the length of parameter 1 "
     "is missing\n", 1),
    # ---- wrong usage ----
    ("table -o no/where one.json", "", "", "cannot write no/where: No such file or directory\n", 1),
    ("", "", "", "A subcommand is required (see qxrs --help)\n", 2),
    ("tabel", "", "", "there is no command 'tabel'; did you mean table? (see qxrs --help)\n", 2),
    ("frobnicate", "", "", "there is no command 'frobnicate' (see qxrs --help)\n", 2),
    ("table 'a\x1b[2J'", "", "", "cannot open a\\x1b[2J: No such file or directory\n", 1),
    ("table --bar", "", "", "The following argument was not expected: --bar " + USAGE.format("table"), 2),
    ("table -n 0", "", "", "--max-rows: '0' is not a number above 0 " + USAGE.format("table"), 2),
    ("table --color blue", "", "", "--color: blue not in {auto,always,never} " + USAGE.format("table"), 2),
    ("from-csv -d ;;", "", "", "--delimiter: not one character that can stand between fields "
     + USAGE.format("from-csv"), 2),
    ("get", "", "", "PATH is required " + USAGE.format("get"), 2),
    ("params read --at x", "", "", "--at: 'x' is not a number from 0 on " + USAGE.format("params read"),
     2),
    ("to-sql --append --replace w.db t", "", "", "--replace excludes --append " + USAGE.format("to-sql"),
     2),
]

# Documents that qxrs check refuses: (text, message, shown text, caret column).
REFUSED = [
    ("", "line 1, column 1: there is no text", "", 0),
    (" \n x", "line 2, column 2: expected '{' or '['", " x", 1),
    ('{"a":1,}', "line 1, column 8: a member has to follow the comma", '{"a":1,}', 7),
    ('{"a":1,b:2}', "line 1, column 8: expected a name in double quotes", '{"a":1,b:2}', 7),
    ("{a:1}", "line 1, column 2: expected a name in double quotes or '}'", "{a:1}", 1),
    ('{"a" 1}', "line 1, column 6: expected ':' behind the name", '{"a" 1}', 5),
    ('{"a":}', "line 1, column 6: expected a value", '{"a":}', 5),
    ('{"a":1 "b":2}', "line 1, column 8: expected ',' or '}'", '{"a":1 "b":2}', 7),
    ("[1 2]", "line 1, column 4: expected ',' or ']'", "[1 2]", 3),
    ("[nul]", "line 1, column 2: expected a value; the words are true, false and null", "[nul]", 1),
    ("[.5]", "line 1, column 2: expected a value; a number begins with a digit or a sign", "[.5]", 1),
    ("['x']", "line 1, column 2: expected a value; texts stand in double quotes", "['x']", 1),
    ('["a\\"b]', "line 1, column 2: the string that begins here has no end", '["a\\"b]', 1),
    ('["\\u12"]', "line 1, column 2: the string that begins here has no end", '["\\u12"]', 1),
    ('{"a":[1, ', "line 1, column 10: the text ends inside an array", '{"a":[1, ', 9),
    ('[12', "line 1, column 4: the text ends inside an array", "[12", 3),
    ('{"a":1', "line 1, column 7: the text ends inside an object", '{"a":1', 6),
    ('[1,\n\t"日本",\n\t"é" x]', "line 3, column 7: expected ',' or ']'", '\\t"é" x]', 6),
    ("[1 \0]", "line 1, column 4: a NUL byte ends the text here", "[1 \\x00]", 3),
    ("\0[]", "line 1, column 1: a NUL byte ends the text here", "\\x00[]", 0),
    ("[" * 1025, "line 1, column 1025: nested more than 1024 levels deep", "[" * 36, 35),
    ('["' + "x" * 200 + '" y ' + "z" * 200 + "]", "line 1, column 205: expected ',' or ']'",
     "x" * 33 + '" y ' + "z" * 33, 35),
]
