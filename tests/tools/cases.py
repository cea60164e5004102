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
}

# Statements for world.db.
WORLD = """
CREATE TABLE t (i INTEGER, b BOOLEAN, r REAL, s TEXT);
INSERT INTO t VALUES (1, 1, 0.5, 'x'), (-9, 0, 1e300, NULL), (NULL, 7, 2.0, '{"o":1}');
CREATE TABLE big (n INTEGER);
INSERT INTO big VALUES (2147483647), (-2147483648), (2147483648), (9223372036854775807);
"""

USAGE = "(see qxrs {} --help)\n"

CASES = [
    # ---- from-csv: texts, types, quoting ----
    ("from-csv", '\ufeffb,é\r\n"x, ""y""\r\n", z \r\n\r\n{oops},日本\r\n',
     '{"rows":[{"b":"x, \\"y\\"\\r\\n","é":" z "},{"b":"{oops}","é":"日本"}]}\n'),
    ("from-csv", "a,b\n", "{}\n"),
    ("from-csv", '"\ufeffa"\n1\n', '{"\ufeffa":"1"}\n'),
    ("from-csv -i", 'i,j,k,l,m,n,o,p,q,r\n2147483647,-0,007,7.0,true,True,,"",0,99999999999999999999\n',
     '{"i":2147483647,"j":"-0","k":"007","l":"7.0","m":true,"n":"True","o":null,"p":"","q":0,'
     '"r":"99999999999999999999"}\n'),
    ("from-csv -i --32-bit", "a,b\n-2147483648,2147483648\n", '{"a":-2147483648,"b":"2147483648"}\n'),
    ("from-csv --null NA -d ;", "a;b\nNA;,\n", '{"a":null,"b":","}\n'),
    ("from-csv -d '\\t' --names '\"a,b\",c'", "1\t2\n", '{"a,b":"1","c":"2"}\n'),
    # ---- from-csv: refusals ----
    ("from-csv", "", "", "standard input: line 1, column 1: the text is empty; the first line has "
     "to name the columns\n", 1),
    ("from-csv", 'a,b\n"x\ny",1\n3\n', "", "standard input: line 4: 1 field instead of 2\n", 1),
    ("from-csv", 'a,b\n1,x"y\n', "",
     "standard input: line 2, column 4: a quote inside a field without quotes\n", 1),
    ("from-csv", 'a\n"x"y\n', "", "standard input: line 2, column 4: text behind a closing quote\n", 1),
    ("from-csv", 'a\n1\n"x\n\ny\n', "", "standard input: line 3: a quoted field in the record that "
     "begins here has no end\n", 1),
    ("from-csv", "a,b,a\n", "", "standard input: line 1, column 1: the column name 'a' occurs more "
     "than once\n", 1),
    ("from-csv", "a\nx\0y\n", "",
     "standard input: line 2, column 2: a NUL byte, which a text of a record set cannot hold\n", 1),
    ("from-csv missing.csv", "", "", "cannot open missing.csv: No such file or directory\n", 1),
    ("from-csv .", "", "", "cannot read .: Is a directory\n", 1),
    # ---- from-tsv ----
    ("from-tsv -i --null '\\N'", "a\tb\tc\td\te\n\\N\tx\\ty\\\\\\q\t\t5\t\\\\N\r\n",
     '{"a":null,"b":"x\\ty\\\\\\\\q","c":null,"d":5,"e":"\\\\N"}\n'),
    ("from-tsv", "a\tb\n1\n", "", "standard input: line 2: 1 field instead of 2\n", 1),
    # ---- from-json, from-jsonl: what a record set cannot hold becomes text ----
    ("from-json", '\ufeff[{"r":1.50,"l":[1,{"x":null}],"o":{"i":1,"r":2.5},"n":null,"t":true,'
     '"s":"\\u00e9","h":99999999999999999999,"z":1,"z":007}]',
     '{"h":"99999999999999999999","l":"[1,{\\"x\\":null}]","n":null,"o":{"i":1,"r":null},"r":"1.50",'
     '"s":"é","t":true,"z":7}\n'),
    ("from-json", "[]", "{}\n"),
    ("from-json", '[{"a":1},5]', "", "standard input: line 1, column 1: element 2 of the array is no "
     "object\n", 1),
    ("from-json", '{"a":1}', "", "standard input: line 1, column 1: expected an array of objects\n", 1),
    ("from-jsonl", '{"a":1}\n\n {"a":2,"b":{}}', '{"rows":[{"a":1},{"a":2,"b":{}}]}\n'),
    ("from-jsonl", '{"a":1}\n{"a":}\n', "", "standard input: line 2, column 6: expected a value\n", 1),
    ("from-jsonl", '{"a":1}{"a":2}\n', "", "standard input: line 1, column 8: text behind the object\n",
     1),
    # ---- from-sql: types by declaration and by value ----
    ("from-sql world.db 'SELECT * FROM t'", "",
     '{"rows":[{"b":true,"i":1,"r":"0.5","s":"x"},{"b":false,"i":-9,"r":"1e+300","s":null},'
     '{"b":7,"i":null,"r":"2","s":"{\\"o\\":1}"}]}\n'),
    ("from-sql world.db --32-bit 'SELECT n FROM big'", "",
     '{"rows":[{"n":2147483647},{"n":-2147483648},{"n":"2147483648"},{"n":"9223372036854775807"}]}\n'),
    ("from-sql world.db", "SELECT count(*) AS n FROM t -- comment\n;\n", '{"n":3}\n'),
    ("from-sql world.db 'SELECT i FROM t WHERE 0'", "", "{}\n"),
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
    ("table", '{"rows":[{"n":5,"名":"日本","t":"a\\tb\\u001b\\u0000c"},{"n":-10,"名":"é"}]}',
     "  n  名    t\n---  ----  --------\n  5  日本  a\\tb\\x1b\n-10  é\n"),
    ("table -c b,a -n 1 two.json", "", "b  a\n-  -\nx  1\n... 1 more row\n"),
    ("table -w 14", '{"rows":[{"n":123456,"t":"日本日本日本日本"}]}',
     "     n  t\n------  ------\n123456  日本…\n"),
    ("table -w 33", '{"a":"%s","b":"%s","c":"%s"}' % (("x" * 20,) * 3),
     "a          b           c\n---------  ----------  ----------\n"
     "xxxxxxxx…  xxxxxxxxx…  xxxxxxxxx…\n"),
    ("table -w 20 -n 1", '{"rows":[{"a":"xxxxxxxx","b":1,"c":"yyyyyyyy","d":"z","e":2},{},{"a":1}]}',
     "a       b  c       d\n------  -  ------  -\nxxxxx…  1  yyyyy…  z\n... 1 more column\n"
     "... 2 more rows\n"),
    ("table", '{"a":"x\u202ey"}', "a\n--------------\nx\\xe2\\x80\\xaey\n"),
    ("table", '\ufeff{"a":1}', "", "standard input: line 1, column 1: a byte order mark stands in "
     "front of the document, which a host refuses\n", 1),
    ("table --color always one.json", "", "\x1b[1mname  born\x1b[0m\n----  ----\nAda   1815\n"),
    ("table empty", "", "(no rows)\n"),
    ("table", '{"rows":[{},{"a":1},{}]}', "a\n-\n\n1\n"),
    ("table", '{"rows":[{"a":1},null,{"a":[[[}', "", "standard input: line 1, column 31: expected a "
     "value\n", 1),
    ("table", '{"rows":5,"r":1.5,"l":[1],"n":+07,"o":{"x":1.5}}',
     "rows  r  l  n  o\n----  -  -  -  ----------\n   5        7  {\"x\":null}\n"),
    ("table array.json", "", "", "array.json: line 1, column 1: an array is no record set; qxrs "
     "from-json reads arrays of objects\n", 1),
    ("table -c nope two.json", "", "", "there is no column 'nope'\n", 1),
    # ---- to-csv, to-tsv, to-json, to-jsonl ----
    ("to-csv", '{"a":"x,y","b":"q\\"","c":"","d":null,"e":" s","f":"l\\nm","g":{"h":1},"h":"t "}',
     'a,b,c,d,e,f,g,h\n"x,y","q""","",," s","l\nm","{""h"":1}","t "\n'),
    ("to-csv -d ; --null NA", '{"a":"x;","b":null,"c":"NA"}', 'a;b;c\n"x;";NA;"NA"\n'),
    ("to-csv", '{"rows":[{"a":null},{"a":1}]}', 'a\n""\n1\n'),
    ("to-csv", "{}", ""),
    ("to-csv", '{"\ufeffa":1}', '"\ufeffa"\n1\n'),
    ("to-csv -c '\"a,\"\"b\",c' -c d", '{"d":4,"c":3,"a,\\"b":1}', '"a,""b",c,d\n1,3,4\n'),
    ("to-csv -c '\"a'", "{}", "", "a name in quotes has no end " + USAGE.format("to-csv"), 2),
    ("to-csv -c '\"a\"b'", "{}", "", "text behind a name in quotes " + USAGE.format("to-csv"), 2),
    ("to-csv -c c,a two.json", "", "c,a\n,1\ntrue,2\n"),
    ("to-csv -c a,a two.json", "", "", "the column name 'a' occurs more than once\n", 2),
    ("to-tsv", "{}", ""),
    ("to-tsv --null '\\N'", '{"a":"x\\ty\\\\","b":null,"c":false}', "a\tb\tc\nx\\ty\\\\\t\\N\tfalse\n"),
    ("to-json two.json", "", '[{"a":1,"b":"x"},\n {"a":2,"b":null,"c":true}]\n'),
    ("to-jsonl -c b two.json", "", '{"b":"x"}\n{"b":null}\n'),
    # ---- diff ----
    ("diff two.json two.json", "", ""),
    ("diff two.json -", '{"rows":[{"b":"x","a":"1"},{"b":null,"c":1,"d":0},{}, {"a":1}]}',
     'row 1, a: 1 -> "1"\nrow 2, a: 2 -> (no cell)\nrow 2, c: true -> 1\nrow 2, d: (no cell) -> 0\n'
     "row 3: only in standard input\nrow 4: only in standard input\n", "", 1),
    ("diff --color always -c a one.json two.json", "", "", "there is no column 'a'\n", 2),
    ("diff --color always - one.json", '{"name":"A\\nda","born":1815}',
     'row 1, name: \x1b[31m"A\\nda"\x1b[0m -> \x1b[32m"Ada"\x1b[0m\n', "", 1),
    ("diff -q one.json two.json", "", "", "", 1),
    ("diff one.json bad.json", "", "", "bad.json: line 3, column 7: expected ':' behind the name\n", 2),
    ("diff - -", "", "", "only one of the two can be standard input\n", 2),
    # ---- stats, normalize, dump ----
    ("stats two.json", "",
     "rows 2, columns 3, cells 5, bytes of text 4\n"
     "column  cells  null  integer  boolean  text  record set  bytes  longest\n"
     "------  -----  ----  -------  -------  ----  ----------  -----  -------\n"
     "a           2     0        2        0     0           0      2        1\n"
     "b           2     1        0        0     1           0      1        1\n"
     "c           1     0        0        1     0           0      1        1\n"),
    ("normalize", ' { "rows" : [ {"b":1.5,"a":[1],"c":"{\\"k\\":true}"} , {"b":-0} ] } tail',
     '{"rows":[{"a":"","b":"","c":{"k":true}},{"b":0}]}\n'),
    ("normalize bad.json", "", "", "bad.json: line 3, column 7: expected ':' behind the name\n", 1),
    ("dump one.json", "", "Row 1\n\tField (born): 1815\n\tField (name): Ada\n"),
    ("dump array.json", "", "", "array.json: line 1, column 1: an array is no record set; qxrs "
     "from-json reads arrays of objects\n", 1),
    # ---- pretty, get ----
    ("pretty one.json", "", '\n{\n\t"name":"Ada",\n\t"born":1815\n}\n'),
    ("pretty", "12", "", "standard input: line 1, column 1: expected '{' or '['\n", 1),
    ("get rows.1.c two.json", "", "true\n"),
    ("get rows.0 two.json", "", '{"a":1,"b":"x"}\n'),
    ("get a.0", '{"a":["x\\n\\u00e9"]}', "x\né\n"),
    ("get -j a.0", '{"a":["x\\n\\u00e9"]}', '"x\\né"\n'),
    ("get rows.2 two.json", "", "", "two.json: there is nothing at 'rows.2'\n", 1),
    # ---- to-sql, one after the other ----
    ("to-sql out.db t", '{"rows":[{"i":1,"b":true,"t":"x","m":1},{"i":-5,"b":false,"m":"y","o":{"k":1},'
     '"big":99999999999999999999,"\\"q":null}]}', ""),
    ("from-sql out.db \"SELECT group_concat(name || ' ' || type) AS c FROM pragma_table_info('t')\"", "",
     '{"c":"i INTEGER,b BOOLEAN,t TEXT,m TEXT,o TEXT,big TEXT,\\"q TEXT"}\n'),
    ("from-sql out.db 'SELECT i, b, t, m, o, quote(big) AS q FROM t'", "",
     '{"rows":[{"b":true,"i":1,"m":"1","o":null,"q":"NULL","t":"x"},'
     '{"b":false,"i":-5,"m":"y","o":"{\\"k\\":1}","q":"\'99999999999999999999\'","t":null}]}\n'),
    ("to-sql out.db t one.json", "", "", 'out.db: table "t" already exists\n', 1),
    ("to-sql --append out.db t", '{"i":9}', ""),
    ("to-sql --append out.db t", '{"rows":[{"i":10},{"no":1}]}', "",
     "out.db: table t has no column named no\n", 1),
    ("from-sql out.db 'SELECT i FROM t'", "", '{"rows":[{"i":1},{"i":-5},{"i":9}]}\n'),
    ("to-sql --replace out.db t one.json", "", ""),
    ("from-sql out.db 'SELECT * FROM t'", "", '{"born":1815,"name":"Ada"}\n'),
    ("to-sql out.db u", "{}", "", "there are no columns to make a table of\n", 1),
    # ---- check: what is accepted ----
    ("check", '{"a":1,"b":2}', "standard input: accepted: an object of 2 members\n"),
    ("check", " [1] tail", "standard input: accepted: an array of 1 element; the 5 bytes behind it are "
     "ignored\n"),
    ("check", "[1,,2]\n", "standard input: accepted: an array of 3 elements\n"),
    ("check", "[" * 1024 + "]" * 1024, "standard input: accepted: an array of 1 element\n"),
    ("check --quiet", "[]", ""),
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
    ("table --bar", "", "", "The following argument was not expected: --bar " + USAGE.format("table"), 2),
    ("table a b", "", "", "The following argument was not expected: b " + USAGE.format("table"), 2),
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
    ("", "line 1, column 1: there is no document: expected '{' or '['", "", 0),
    (" \n x", "line 2, column 2: expected '{' or '['", " x", 1),
    ('{"a":1,}', "line 1, column 8: a member has to follow the comma", '{"a":1,}', 7),
    ('{"a":1,b:2}', "line 1, column 8: expected a name in double quotes", '{"a":1,b:2}', 7),
    ("{a:1}", "line 1, column 2: expected a name in double quotes or '}'", "{a:1}", 1),
    ('{"a" 1}', "line 1, column 6: expected ':' behind the name", '{"a" 1}', 5),
    ('{"a":}', "line 1, column 6: expected a value", '{"a":}', 5),
    ('{"a":1 "b":2}', "line 1, column 8: expected ',' or '}'", '{"a":1 "b":2}', 7),
    ("[1 2]", "line 1, column 4: expected ',' or ']'", "[1 2]", 3),
    ("[truex]", "line 1, column 6: expected ',' or ']'", "[truex]", 5),
    ("[nul]", "line 1, column 2: expected a value; the words are true, false and null", "[nul]", 1),
    ("[.5]", "line 1, column 2: expected a value; a number begins with a digit or a sign", "[.5]", 1),
    ("['x']", "line 1, column 2: expected a value; texts stand in double quotes", "['x']", 1),
    ('["a\\"b]', "line 1, column 2: the string that begins here has no end", '["a\\"b]', 1),
    ('{"a', "line 1, column 2: the string that begins here has no end", '{"a', 1),
    ('["\\u12"]', "line 1, column 2: the string that begins here has no end", '["\\u12"]', 1),
    ('{"a":[1, ', "line 1, column 10: the text ends inside an array", '{"a":[1, ', 9),
    ('[12', "line 1, column 4: the text ends inside an array", "[12", 3),
    ('{"a":1', "line 1, column 7: the text ends inside an object", '{"a":1', 6),
    ("{", "line 1, column 2: the text ends inside an object", "{", 1),
    ('[1,\n\t"日本",\n\t"é" x]', "line 3, column 7: expected ',' or ']'", '\\t"é" x]', 6),
    ("[1 \0]", "line 1, column 4: a NUL byte ends the text here", "[1 \\x00]", 3),
    ("\0[]", "line 1, column 1: a NUL byte ends the text here", "\\x00[]", 0),
    ("[" * 1025, "line 1, column 1025: nested more than 1024 levels deep", "[" * 36, 35),
    ('["' + "x" * 200 + '" y ' + "z" * 200 + "]", "line 1, column 205: expected ',' or ']'",
     "x" * 33 + '" y ' + "z" * 33, 35),
]
