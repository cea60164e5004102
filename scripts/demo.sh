#!/usr/bin/env bash
# The main job on real data: one host writes the rows of a database query as record set text, another
# reads that text from a pipe, and both turn out to hold the same record set.
#
#   scripts/demo.sh PATH-OF-QXRS
#
# Gives status 1, and says so, when they do not.
set -euo pipefail

if (($# != 1)) || [[ ! -x $1 ]]; then
  echo "usage: scripts/demo.sh PATH-OF-QXRS" >&2
  exit 2
fi
qxrs=$(realpath "$1")
data=$(realpath "$(dirname "$0")/../examples/data")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
database=$work/world.db

say() { printf '\n\033[1m%s\033[0m\n' "$*" | if [[ -t 1 ]]; then cat; else sed 's/\x1b\[[0-9]*m//g'; fi; }
fail() {
  echo "demo: FAILED: $*" >&2
  exit 1
}

say "An SQLite database from the CSV files in examples/data"
for table in planets countries elements; do
  "$qxrs" from-csv --infer "$data/$table.csv" | "$qxrs" to-sql "$database" "$table"
done
"$qxrs" from-sql "$database" \
  "SELECT m.name AS 'table', p.name AS 'column', p.type FROM sqlite_master AS m
   JOIN pragma_table_info(m.name) AS p ORDER BY m.rowid, p.cid" |
  "$qxrs" table --columns table,column,type

# exchange NAME SQL: one process loads the rows of a query, real numbers as texts, and writes what it
# holds; another reads that through a pipe and writes what it then holds. The two texts and the cells
# in them must be equal, and those of the query.
exchange() {
  local name=$1 sql=$2
  "$qxrs" from-sql --texts "$database" "$sql" -o "$work/$name.rows"
  "$qxrs" normalize --strict "$work/$name.rows" |
    tee "$work/$name.sent" |
    "$qxrs" normalize --strict -o "$work/$name.received"
  cmp "$work/$name.sent" "$work/$name.received" || fail "the texts of '$name' differ"
  "$qxrs" diff "$work/$name.rows" "$work/$name.received" || fail "the cells of '$name' differ"
  # An empty exchange would be equal, too.
  [[ -n $("$qxrs" get rows.1 "$work/$name.received") ]] || fail "no rows for '$name'"
  "$qxrs" stats "$work/$name.received" | sed -n "1s/^/$name: equal: /p"
}

say "Each query's rows as text, through a pipe, into another process"
exchange union "SELECT name, capital, population, area_km2,
                       CAST(round(1.0 * population / area_km2) AS INTEGER) AS per_km2
                FROM countries WHERE eu ORDER BY per_km2 DESC"
exchange planets "SELECT * FROM planets"
exchange antiquity "SELECT number, symbol, name, mass, discovered FROM elements
                    WHERE discovered IS NULL"

# Where the rows came from has to agree, too: put back into a database, they are what they were.
"$qxrs" to-sql "$work/back.db" planets "$work/planets.received"
"$qxrs" from-sql "$work/back.db" "SELECT * FROM planets" | cmp - "$work/planets.received" ||
  fail "the planets came back changed"
echo "planets: equal again after another database"

say "The most densely settled countries of the European Union, as received"
"$qxrs" table --columns name,capital,population,area_km2,per_km2 --max-rows 10 "$work/union.received"
say "The planets, as received"
"$qxrs" table --columns name,kind,diameter_km,distance_million_km,orbit_days,rings \
  "$work/planets.received"
