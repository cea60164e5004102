#!/usr/bin/python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# A table that is too large for one machine, in parts: record set texts are the partitions of a Dask
# bag and a Dask dataframe. A scheduler and two workers are started on this machine (loopback), sum
# up orders by city, of which customers know the name, and write the result back as record set texts.
# SQLite computes the same from the same rows; the demo fails when the two differ.
#
#   demo-cluster.py [PARTS [ROWS]]     8 parts of 20000 orders each
#
# Needs python3-distributed, python3-pandas and the package qxrecordset (PYTHONPATH).
"""Record sets on a Dask cluster."""

import random
import sqlite3
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import dask.bag
import dask.dataframe
from dask import delayed
from distributed import Client

from qxrecordset import RecordSet

CITIES = ["Wien", "Graz", "Linz", "Salzburg", "Gmünd", "Bregenz", "Eisenstadt"]


# ---- What the workers do: each gets the path of one part ----

def read_rows(path):
    return RecordSet.from_json(Path(path).read_bytes()).rows()


def read_frame(path):
    return RecordSet.from_json(Path(path).read_bytes()).to_pandas()


def write_frame(frame, path):
    Path(path).write_text(RecordSet.from_pandas(frame).to_json(), encoding="utf-8")
    return path


# ---- The data ----

def make_orders(part, count):
    author = random.Random(part)
    return [{"id": part * count + i, "customer": author.randrange(500), "cents": author.randrange(1, 10**5),
             "paid": author.random() < .9, "note": author.choice(["", "gift", 'to "Z"', None])}
            for i in range(count)]


def write_parts(folder, parts, count):
    """Writes customers and the parts of the orders, and the same rows to SQLite."""
    database = sqlite3.connect(":memory:")
    database.execute("CREATE TABLE customer (customer INTEGER, city TEXT)")
    database.execute("CREATE TABLE orders (id INTEGER, customer INTEGER, cents INTEGER, paid INTEGER, "
                     "note TEXT)")
    customers = [{"customer": i, "city": CITIES[i * i % len(CITIES)]} for i in range(500)]
    database.executemany("INSERT INTO customer VALUES (:customer, :city)", customers)
    (folder / "customers.json").write_text(RecordSet.from_rows(customers).to_json(), encoding="utf-8")
    paths = []
    for part in range(parts):
        orders = make_orders(part, count)
        database.executemany("INSERT INTO orders VALUES (:id, :customer, :cents, :paid, :note)", orders)
        paths.append(str(folder / f"orders-{part}.json"))
        Path(paths[-1]).write_text(RecordSet.from_rows(orders).to_json(), encoding="utf-8")
    return paths, database


# ---- The cluster ----

def start(*arguments):
    return subprocess.Popen([sys.executable, "-m", "distributed.cli." + arguments[0], *arguments[1:]],
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def address_in(path, scheduler):
    """The scheduler's address, once it has written its file."""
    for _ in range(300):
        if path.exists() and path.stat().st_size > 0:
            return str(path)
        if scheduler.poll() is not None:
            sys.exit("the scheduler ended")
        time.sleep(.1)
    sys.exit("the scheduler does not start")


# ---- The work ----

def unpaid_by_note(paths):
    """The bag: a row is a dictionary. How many unpaid orders there are of each note."""
    rows = dask.bag.from_sequence(paths, npartitions=len(paths)).map(read_rows).flatten()
    return dict(rows.filter(lambda row: not row["paid"]).pluck("note").frequencies().compute())


def cents_by_city(paths, folder):
    """The dataframe: grouped and joined, and its parts written as record set texts."""
    orders = dask.dataframe.from_delayed([delayed(read_frame)(path) for path in paths])
    customers = read_frame(folder / "customers.json")
    paid = orders[orders.paid].merge(customers, on="customer")
    sums = paid.groupby("city").cents.agg(["sum", "count"]).reset_index()
    sums = sums.repartition(npartitions=2)
    written = [delayed(write_frame)(part, str(folder / f"sums-{i}.json"))
               for i, part in enumerate(sums.to_delayed())]
    result = RecordSet()
    for path in dask.compute(*written):
        part = RecordSet.from_json(Path(path).read_bytes()) if Path(path).stat().st_size else RecordSet()
        result = RecordSet.from_rows(result.rows() + part.rows())
    return result


def compare(what, actual, wanted):
    if actual != wanted:
        sys.exit(f"{what} differ:\n  cluster: {actual}\n  SQLite:  {wanted}")
    print(f"{what}: as SQLite has them")


def main():
    parts, count = (int(argument) for argument in (sys.argv[1:] + ["8", "20000"][len(sys.argv) - 1:])[:2])
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        paths, database = write_parts(folder, parts, count)
        print(f"{parts} parts, {parts * count} orders, "
              f"{sum(Path(path).stat().st_size for path in paths) / 1e6:.1f} MB of text")
        processes = [start("dask_scheduler", "--host", "127.0.0.1", "--port", "0", "--no-dashboard",
                           "--scheduler-file", str(folder / "scheduler.json"))]
        try:
            scheduler = address_in(folder / "scheduler.json", processes[0])
            for i in range(2):
                processes.append(start("dask_worker", "--scheduler-file", scheduler, "--host", "127.0.0.1",
                                       "--nthreads", "1", "--no-dashboard", "--no-nanny",
                                       "--local-directory", str(folder / f"worker-{i}")))
            with Client(scheduler_file=scheduler, timeout=60) as client:
                client.wait_for_workers(2, timeout=60)
                print(f"{len(client.scheduler_info()['workers'])} workers")
                begin = time.monotonic()
                notes, sums = unpaid_by_note(paths), cents_by_city(paths, folder)
                print(f"done in {time.monotonic() - begin:.1f} s")
        finally:
            for process in reversed(processes):
                process.terminate()
            for process in processes:
                process.wait(timeout=30)
    compare("sums by city", sorted((row["city"], row["sum"], row["count"]) for row in sums.rows()),
            database.execute("SELECT city, SUM(cents), COUNT(*) FROM orders JOIN customer USING (customer) "
                             "WHERE paid GROUP BY city ORDER BY city").fetchall())
    compare("unpaid orders by note", notes,
            dict(database.execute("SELECT note, COUNT(*) FROM orders WHERE NOT paid GROUP BY note")))


if __name__ == "__main__":
    main()
