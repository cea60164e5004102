#!/usr/bin/env python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Runs the benchmarks of one or both architectures and prints, for every piece of work, how many times
# as fast this library is as each peer, and the targets beside what was reached.
#
#   bench/run.py                     both architectures, everything: about 20 minutes
#   bench/run.py --quick             does everything work? about a minute, figures are rough
#   bench/run.py --arch x64 --work parse,cycle
#
# Repetitions of all libraries are interleaved at random within one process per piece of work; the
# figures are medians of the processor time. Raw results go to build/<arch>/bench-results.json, where
# report.py finds them.

import argparse
import collections
import datetime
import json
import os
import pathlib
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
OURS = 'qxrecordset'
PEERS = ['simdjson', 'rapidjson', 'nlohmann']

# The tables, in order: title, the works in them, and what a row's time includes.
TABLES = [
    ('Parse to tree', ['parse'],
     'Text to tree and releasing the tree. In place: copying the input is in the time, for '
     'RapidJSON (in situ) too. simdjson: its fastest variant, a padded input for nothing.'),
    ('Parse and sum every number', ['sum'],
     'The same, and the sum of all numbers in the tree; the peers convert numbers as they parse.'),
    ('Record set', ['load', 'load-read', 'read', 'write', 'cycle'],
     'Everybody reads every cell by its column name, as text; the peers parse to a tree for that. '
     'Copying the input and releasing everything are in the time, except in read and write, which '
     'find a loaded table.'),
    ('Record set beside a walk', ['load-walk', 'walk', 'cycle-walk'],
     'The record set reads as before; the peers take members as they come, without looking for '
     'names, strings as pointers and integers as numbers.'),
    ('Small texts, whole cycle', ['small', 'small-walk'],
     'Load, read every cell (by name, or walking), write, release.'),
    ('Fill and write', ['fill', 'stream'],
     'fill: cell by cell, then text; the peers build a document and write it. stream: the '
     'streaming writers, no table.'),
    ('Lookup', ['name', 'member', 'parse-member', 'path'],
     'Per query; parsing is in the time of parse-member only.'),
    ('Update, copy and write', ['edit', 'build', 'copy', 'dump'],
     'edit: parse, replace and add a member in every row, write. build: a new object member by '
     'member, written; RapidJSON appends without looking for the name, standard is a std::map. '
     'dump: a parsed document as text. Releasing is in the time.'),
    ('Text and numbers', ['escape', 'integers', 'reals'],
     'Into a buffer that is reused.'),
    ('Parameter strings', ['params-build', 'params-read'],
     'Building, or indexing and reading, one text; releasing included.'),
]

# What is to be reached: label, works, inputs, peers, least ratio on x64 and x86. A ratio is taken
# for every work, input, peer and state (reused, fresh) named, and the smallest counts. A quick run
# has tables of 10,000 rows in place of 100,000.
Target = collections.namedtuple('Target', 'label works inputs peers x64 x86')
TARGETS = [
    Target('parse, rows, beside simdjson reused', ['parse'], ['rows-100k'], ['simdjson/reused'], 1.15, 3),
    Target('parse, rows, beside RapidJSON', ['parse'], ['rows-100k'], ['rapidjson'], 3, 3),
    Target('parse, canada', ['parse'], ['canada'], ['simdjson'], 1, 2.5),
    Target('parse, twitter and citm_catalog', ['parse'], ['twitter', 'citm_catalog'], ['simdjson'],
           0.85, 1.8),
    Target('record set: load, read, write', ['cycle'], ['rows-1k', 'rows-100k'], ['rapidjson'], 4, 4),
    Target('load and read every cell', ['load-read'], ['rows-1k', 'rows-100k'], ['simdjson'], 1.3, 2.5),
    Target('write a record set', ['write'], ['rows-1k', 'rows-100k'], ['rapidjson'], 2, 2),
    Target('small texts, whole cycle', ['small'], ['rows-1', 'rows-2', 'rows-10', 'rows-100'],
           ['rapidjson'], 1.5, 1.5),
    Target('fill 1,000,000 cells, then text', ['fill'], ['rows-100k'], ['rapidjson'], 1.3, 1.3),
    Target('write a document of rows', ['dump'], ['rows-1k'], ['rapidjson'], 4, 3),
    Target('edit every row of a document', ['edit'], ['rows-1k'], ['rapidjson'], 1.5, 1.5),
    Target('copy a document, citm_catalog', ['copy'], ['citm_catalog'], ['rapidjson'], 0.6, 0.6),
    Target('copy a document, canada', ['copy'], ['canada'], ['rapidjson'], 0.5, 0.5),
    Target('build 10 members, beside std::map', ['build'], ['members-10'], ['standard'], 0.9, 0.75),
    Target('build 1,000 and 10,000 members, beside std::map', ['build'],
           ['members-1k', 'members-10k'], ['standard'], 1, 1),
]
LARGEST_BEYOND_TEXT = {'x64': 24, 'x86': 16}  # bytes per loaded cell
LARGEST_GROWTH = 1.5  # of the cost per cell, smallest to largest table; per 4x of a hostile shape

FULL = {'repetitions': 9, 'min_time': 0.1}
QUICK = {'repetitions': 3, 'min_time': 0.005}

Figure = collections.namedtuple('Figure', 'seconds bytes_per_second items_per_second')


class Results:
    """The figures of one architecture: results[(work, input)][library][variant] is a Figure."""

    def __init__(self, raw):
        self.context = raw['context']
        self.circumstances = raw['circumstances']
        self.memory = raw['memory']  # benchmark name: counters
        samples = collections.defaultdict(list)
        for sample in raw['samples']:
            samples[sample['run_name']].append(sample)
        self.contests = {}
        for name in raw['names']:
            repetitions = samples.get(name)
            if not repetitions:
                continue
            work, input_name, library, variant = name.split('/')
            median = lambda key: statistics.median(r.get(key, 0) for r in repetitions)
            figure = Figure(median('cpu_time') * 1e-9, median('bytes_per_second'),
                            median('items_per_second'))
            contest = self.contests.setdefault((work, input_name), {})
            contest.setdefault(library, {})[variant] = figure

    def peer_seconds(self, contest, peer, state):
        """The peer's fastest variant in that state; in any state, marked, when it has none."""
        variants = self.contests[contest].get(peer, {})
        same = [f.seconds for v, f in variants.items() if state_of(v) == state]
        if same:
            return min(same), ''
        return (min(f.seconds for f in variants.values()), '*') if variants else (None, '')

    def ratio(self, contest, peer, state):
        """How many times as fast as the peer our fastest variant in that state is."""
        ours = [f.seconds for v, f in self.contests[contest].get(OURS, {}).items()
                if state_of(v) == state]
        theirs, _ = self.peer_seconds(contest, peer, state)
        return theirs / min(ours) if ours and theirs else None


def state_of(variant):
    return variant.rsplit('-', 1)[-1]


def format_seconds(seconds):
    for unit, scale in (('s', 1), ('ms', 1e-3), ('µs', 1e-6)):
        if seconds >= scale:
            return f'{seconds / scale:.3g} {unit}'
    return f'{seconds / 1e-9:.3g} ns'


def format_rate(figure):
    if figure.bytes_per_second:
        return f'{figure.bytes_per_second / 1e6:.0f} MB/s'
    if figure.items_per_second:
        return f'{1e9 / figure.items_per_second:.3g} ns each'
    return ''


def table(heads, rows):
    """A Markdown table with aligned columns; all but the first are aligned to the right."""
    widths = [max(len(row[i]) for row in [heads] + rows) for i in range(len(heads))]
    line = lambda cells: '| ' + ' | '.join(
        cell.ljust(w) if i == 0 else cell.rjust(w)
        for i, (cell, w) in enumerate(zip(cells, widths))) + ' |'
    rule = '|' + '|'.join('-' * (w + 2) if i == 0 else '-' * (w + 1) + ':'
                          for i, w in enumerate(widths)) + '|'
    return '\n'.join([line(heads), rule] + [line(row) for row in rows])


def ratio_table(results, works):
    contests = [c for work in works for c in results.contests if c[0] == work]
    libraries = {lib for c in contests for lib in results.contests[c]}
    peers = [p for p in PEERS if p in libraries]
    peers += sorted(libraries - set(PEERS) - {OURS})
    rows = []
    for contest in contests:
        for variant, figure in results.contests[contest].get(OURS, {}).items():
            row = [' '.join(contest) + ', ' + variant.replace('-', ' '),
                   format_seconds(figure.seconds), format_rate(figure)]
            for peer in peers:
                theirs, mark = results.peer_seconds(contest, peer, state_of(variant))
                row.append(f'{theirs / figure.seconds:.2f}{mark}' if theirs else '')
            rows.append(row)
    return table(['', 'time', 'rate'] + peers, rows) if rows else ''


def growth_rows(results):
    """Cost per cell of the cycle for each table size, by library and state."""
    series = collections.defaultdict(dict)
    for (work, input_name), libraries in results.contests.items():
        if work != 'growth':
            continue
        for library, variants in libraries.items():
            for variant, figure in variants.items():
                series[library, variant][input_name] = 1e9 / figure.items_per_second
    return series


def growth_table(results):
    series = growth_rows(results)
    if not series:
        return ''
    inputs = list(next(iter(series.values())))
    rows = [[f'{library}, {variant}'] + [f'{costs[i]:.1f}' for i in inputs] +
            [f'{max(costs.values()) / costs[inputs[0]]:.2f}'] for (library, variant), costs in series.items()]
    return table(['ns per cell'] + inputs + ['growth'], rows)


def hostile_table(results):
    shapes = collections.defaultdict(dict)
    for (work, scale), libraries in results.contests.items():
        if work.startswith('hostile-'):
            figure = next(iter(libraries[OURS].values()))
            shapes[work[len('hostile-'):]][scale] = figure
    rows = []
    for shape, figures in shapes.items():
        costs = [1e9 / f.items_per_second for f in figures.values()]
        steps = [b / a for a, b in zip(costs, costs[1:])]
        rows.append([shape] + [f'{c:.3g}' for c in costs] + [f'{s:.2f}' for s in steps] +
                    [format_seconds(list(figures.values())[-1].seconds)])
    heads = ['ns per item', '1x', '4x', '16x', '4x/1x', '16x/4x', '16x in all']
    return table(heads, rows) if rows else ''


def memory_table(results):
    rows = []
    for name, counters in results.memory.items():
        work, input_name, library, _ = name.split('/')
        items = counters['items']
        rows.append([f'{work[len("memory-"):]} {input_name}, {library}',
                     f'{counters["held"] / items:.1f}', f'{counters["beyond_text"]:.1f}',
                     f'{counters["peak"] / items:.1f}', f'{counters["calls"] / items:.4f}'])
    heads = ['bytes per cell or value', 'held', 'beyond text', 'peak', 'allocations']
    return table(heads, rows) if rows else ''


def target_ratio(results, target):
    """The smallest ratio that counts for the target, with the state it was found in, or None."""
    found = []
    for work in target.works:
        for input_name in target.inputs:
            if (work, input_name) not in results.contests:
                input_name = input_name.replace('rows-100k', 'rows-10k')
            contest = (work, input_name)
            if contest not in results.contests:
                continue
            for peer_and_state in target.peers:
                peer, _, only = peer_and_state.partition('/')
                for state in [only] if only else ['reused', 'fresh']:
                    ratio = results.ratio(contest, peer, state)
                    if ratio:
                        found.append((ratio, f'{input_name} {state}'))
    return min(found) if found else None


def verdict(reached):
    return 'reached' if reached else 'not reached'


def target_table(results, arch):
    rows = []
    for target in TARGETS:
        found = target_ratio(results, target)
        least = getattr(target, arch)
        if found:
            rows.append([target.label, f'≥ {least}', f'{found[0]:.2f}', found[1],
                         verdict(found[0] >= least)])
    for name, counters in results.memory.items():
        if name.startswith('memory-cells') and OURS in name:
            beyond, most = counters['beyond_text'], LARGEST_BEYOND_TEXT[arch]
            rows.append(['memory per loaded cell beyond its text', f'≤ {most} bytes', f'{beyond:.1f}',
                         name.split('/')[1], verdict(beyond <= most)])
    for (library, variant), costs in growth_rows(results).items():
        if library == OURS:
            growth = max(costs.values()) / next(iter(costs.values()))
            rows.append(['growth of the cost per cell', f'< {LARGEST_GROWTH}', f'{growth:.2f}', variant,
                         verdict(growth < LARGEST_GROWTH)])
    heads = ['target', 'wanted', 'reached', 'where', '']
    return table(heads, rows) if rows else ''


def sections(results, arch):
    """Every table of one architecture: title, note, table."""
    for title, works, note in TABLES:
        yield title, note, ratio_table(results, works)
    yield ('Growth', 'Load, read every cell, write, release; by number of rows of ten cells. '
           'Growth: the dearest over the first.', growth_table(results))
    yield ('Hostile shapes', 'Cost per item (bench/hostile/Hostile.h says what an item is) at three '
           'sizes; the steps stay near 1 when the cost is linear.', hostile_table(results))
    yield ('Memory', 'Heap bytes with the allocator\'s own, after loading. cells: a table loaded; '
           'filled: a table filled; values: a document parsed in place, its buffer counted.',
           memory_table(results))
    yield 'Targets', '', target_table(results, arch)


RATIO_NOTE = ('Ratios say how many times as fast this library is as the peer: its fastest variant in '
              'the same state (reused or fresh objects); * where it has only the other state.')


def versions(results):
    context = results.context
    if 'compiler' not in context:
        return ''
    return (f'{context["compiler"]}; simdjson {context["simdjson"]}; RapidJSON '
            f'{context["rapidjson"]}; nlohmann::json {context["nlohmann"]}')


def print_results(results, arch):
    print(f'\n# {arch}\n\n{versions(results)}\n\n{RATIO_NOTE}')
    for title, note, text in sections(results, arch):
        if text:
            print(f'\n## {title}\n')
            if note:
                print(note + '\n')
            print(text)


def run_json(command):
    """Runs a benchmark program and returns its JSON output."""
    process = subprocess.run(command + ['--benchmark_format=json'], stdout=subprocess.PIPE, check=False)
    if process.returncode != 0:
        sys.exit(f'run.py: status {process.returncode} from: {" ".join(command)}')
    return json.loads(process.stdout)


def first_match(path, prefix):
    """What follows the prefix and its separator in the first line of a file that begins with it."""
    for line in pathlib.Path(path).read_text().splitlines():
        if line.startswith(prefix):
            return line[len(prefix):].strip(' \t:="')
    return 'unknown'


def circumstances():
    """When, where and of what the figures are."""
    describe = subprocess.run(['git', 'describe', '--always', '--dirty'], cwd=ROOT, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return {
        'date': datetime.date.today().isoformat(),
        'commit': describe.stdout.strip() or 'unknown',
        'processor': first_match('/proc/cpuinfo', 'model name'),
        'cores': os.cpu_count(),
        'memory': first_match('/proc/meminfo', 'MemTotal'),
        'system': first_match('/etc/os-release', 'PRETTY_NAME'),
        'command': ' '.join(['bench/run.py'] + sys.argv[1:]),
    }


def all_names(command):
    """The names of all benchmarks, in the program's order."""
    listing = subprocess.run(command + ['--list'], stdout=subprocess.PIPE, check=True, text=True)
    return listing.stdout.split()


def measure(folder, options):
    """Runs both programs of one architecture and returns the raw results."""
    command = [str(folder / 'bench' / 'bench'), f'--data={options.data}']
    command += ['--quick'] if options.quick else []
    command += ['--large'] if options.large else []
    effort = QUICK if options.quick else FULL
    repetitions = options.repetitions or effort['repetitions']

    raw = {'circumstances': circumstances(), 'context': {}, 'names': all_names(command),
           'samples': [], 'memory': {}}
    for work in dict.fromkeys(name.split('/')[0] for name in raw['names']):
        if options.work and not any(work.startswith(w) for w in options.work.split(',')):
            continue
        print(f'{folder.name}: {work}', file=sys.stderr)
        output = run_json(command + [
            f'--benchmark_filter=^{work}/', f'--benchmark_min_time={effort["min_time"]}',
            f'--benchmark_repetitions={repetitions}', '--benchmark_enable_random_interleaving=true'])
        raw['context'] = output['context']
        raw['samples'] += [s for s in output['benchmarks'] if s['run_type'] == 'iteration']
    if not options.work or 'memory' in options.work:
        print(f'{folder.name}: memory', file=sys.stderr)
        output = run_json([str(folder / 'bench' / 'bench_memory'), f'--data={options.data}'])
        raw['memory'] = {s['run_name'].removesuffix('/iterations:1'): s for s in output['benchmarks']}
        raw['context'] = raw['context'] or output['context']
    return raw


def parse_options():
    parser = argparse.ArgumentParser(description='Runs the benchmarks and prints ratios to the peers.')
    parser.add_argument('--quick', action='store_true', help='a minute instead of twenty; rough figures')
    parser.add_argument('--large', action='store_true', help='add tables of 1,000,000 rows')
    parser.add_argument('--arch', default='x64,x86', help='architectures (default x64,x86)')
    parser.add_argument('--work', default='', help='only works whose names begin so, comma-separated')
    parser.add_argument('--data', default=str(ROOT.parent / 'shared' / 'data'),
                        help='folder with twitter.json, citm_catalog.json, canada.json (if there)')
    parser.add_argument('--build', default=str(ROOT / 'build'),
                        help='folder with the build trees, one per architecture')
    parser.add_argument('--repetitions', type=int, default=0)
    return parser.parse_args()


def main():
    options = parse_options()
    done = False
    for arch in options.arch.split(','):
        folder = pathlib.Path(options.build) / arch
        if not os.access(folder / 'bench' / 'bench', os.X_OK):
            print(f'run.py: no benchmarks for {arch}: {folder}/bench/bench is not built', file=sys.stderr)
            continue
        raw = measure(folder, options)
        (folder / 'bench-results.json').write_text(json.dumps(raw, indent=1))
        print_results(Results(raw), arch)
        done = True
    return 0 if done else 1


if __name__ == '__main__':
    sys.exit(main())
