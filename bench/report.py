#!/usr/bin/python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Writes docs/benchmarks.md and its plots (docs/plots/*.svg) from the results that run.py left in
# build/<arch>/bench-results.json. Needs matplotlib from Debian's python3-matplotlib, and so Debian's
# Python.
#
#   make bench-report
#   bench/report.py --build build --docs docs     from results that are there

import argparse
import json
import pathlib
import sys

import matplotlib

matplotlib.use('svg')
import matplotlib.pyplot as plt  # noqa: E402

sys.dont_write_bytecode = True
import run  # noqa: E402

LABELS = {'qxrecordset': 'libQXRecordSet', 'simdjson': 'simdjson DOM', 'rapidjson': 'RapidJSON',
          'nlohmann': 'nlohmann::json'}
COLOURS = {'qxrecordset': '#0b6e99', 'simdjson': '#e0a030', 'rapidjson': '#7d8790',
           'nlohmann': '#c3c9ce'}
SIZE = (9, 3.6)  # inches
# Where the panels lie in the figure: room for the title above and the legend below.
PANELS = {'left': 0.08, 'right': 0.99, 'top': 0.8, 'bottom': 0.24, 'wspace': 0.18}

STYLE = {
    'svg.fonttype': 'none',      # text stays text
    'svg.hashsalt': 'bench',     # the same figures give the same file
    'font.family': 'sans-serif',
    'font.size': 10,
    'axes.spines.top': False,
    'axes.spines.right': False,
    'axes.axisbelow': True,
}


def save(figure, path):
    figure.savefig(path, metadata={'Date': None}, facecolor='white')
    plt.close(figure)


def best_rate(results, contest, library):
    """The best throughput of any variant, in MB/s."""
    variants = results.contests.get(contest, {}).get(library, {})
    return max((f.bytes_per_second / 1e6 for f in variants.values()), default=0)


def panels(all_results, title):
    """A titled figure with one panel per architecture."""
    figure, axes = plt.subplots(1, len(all_results), figsize=SIZE, squeeze=False)
    figure.subplots_adjust(**PANELS)
    figure.suptitle(title, x=PANELS['left'], y=0.97, ha='left', fontweight='bold')
    for axis, arch in zip(axes[0], all_results):
        axis.set_title(f'{arch} ({"64" if arch == "x64" else "32"}-bit)', loc='left', fontsize=10)
    return figure, axes[0]


def bars(axis, groups, values, unit):
    """Grouped bars: values[library] is a list as long as groups; 0 stands for no figure."""
    width = 0.8 / len(values)
    for k, (library, heights) in enumerate(values.items()):
        places = [i - 0.4 + width * (k + 0.5) for i in range(len(groups))]
        drawn = axis.bar(places, heights, width * 0.92, color=COLOURS[library], label=LABELS[library])
        axis.bar_label(drawn, [f'{h:.0f}' if h else '' for h in heights], fontsize=7, padding=1)
    axis.set_xticks(range(len(groups)), groups, fontsize=9)
    axis.set_ylabel(unit)
    axis.grid(axis='y', color='#e5e5e5', linewidth=0.6)


def legend(figure, axis):
    handles, labels = axis.get_legend_handles_labels()
    figure.legend(handles, labels, loc='lower center', ncol=len(labels), frameon=False)


def plot_rates(all_results, contests, title, path):
    """Throughput of every library in each contest: one panel per architecture."""
    with plt.rc_context(STYLE):
        figure, axes = panels(all_results, title)
        for axis, results in zip(axes, all_results.values()):
            there = {label: c for label, c in contests.items() if c in results.contests}
            values = {library: [best_rate(results, c, library) for c in there.values()]
                      for library in LABELS}
            bars(axis, list(there), {l: v for l, v in values.items() if any(v)}, 'MB/s')
        legend(figure, axes[0])
        save(figure, path)


def rows_of(input_name):
    number = input_name[len('rows-'):]
    return int(number.replace('k', '000').replace('M', '000000'))


def plot_growth(all_results, path):
    with plt.rc_context(STYLE):
        figure, axes = panels(all_results, 'Load, read every cell, write: cost per cell')
        for axis, results in zip(axes, all_results.values()):
            for (library, variant), costs in run.growth_rows(results).items():
                axis.plot([rows_of(i) * 10 for i in costs], list(costs.values()), marker='o',
                          markersize=4, color=COLOURS[library],
                          linestyle='-' if variant == 'fresh' else ':',
                          label=f'{LABELS[library]}, {variant}')
            axis.set_xscale('log')
            axis.set_ylim(bottom=0)
            axis.set_xlabel('cells')
            axis.set_ylabel('ns per cell')
            axis.grid(color='#e5e5e5', linewidth=0.6)
        legend(figure, axes[0])
        save(figure, path)


def held_per_item(results, work, input_name, library):
    for name, counters in results.memory.items():
        if name.split('/')[:3] == [work, input_name, library]:
            return counters['held'] / counters['items']
    return 0


def plot_memory(all_results, path):
    groups = {'cell of a table': ('memory-cells', 'rows-100k'),
              'value of twitter': ('memory-values', 'twitter'),
              'value of canada': ('memory-values', 'canada')}
    with plt.rc_context(STYLE):
        figure, axes = panels(all_results, 'Memory held, text included')
        for axis, results in zip(axes, all_results.values()):
            values = {library: [held_per_item(results, *place, library) for place in groups.values()]
                      for library in LABELS}
            bars(axis, list(groups), {l: v for l, v in values.items() if any(v)}, 'bytes')
        legend(figure, axes[0])
        save(figure, path)


def plot_all(all_results, folder):
    """Draws every plot and gives (file, caption) pairs."""
    folder.mkdir(parents=True, exist_ok=True)
    measured = {contest for results in all_results.values() for contest in results.contests}
    rows = 'rows-100k' if ('cycle', 'rows-100k') in measured else 'rows-10k'  # a quick run's
    tables = {'load and read': ('load-read', rows), 'write': ('write', rows),
              'load, read, write': ('cycle', rows)}
    documents = {'rows': ('parse', rows), 'twitter': ('parse', 'twitter'),
                 'citm_catalog': ('parse', 'citm_catalog'), 'canada': ('parse', 'canada')}
    plot_rates(all_results, tables, f'Record set of {rows_of(rows):,} rows of 10 cells',
               folder / 'recordset.svg')
    plot_rates(all_results, documents, 'Parse to tree, tree released', folder / 'parse.svg')
    plot_growth(all_results, folder / 'growth.svg')
    plot_memory(all_results, folder / 'memory.svg')
    return [('recordset.svg', 'Throughput of record set work beside other libraries'),
            ('parse.svg', 'Throughput of parsing beside other libraries'),
            ('growth.svg', 'Cost per cell against the number of cells'),
            ('memory.svg', 'Bytes held per cell and per value')]


def write_page(all_results, plots, path):
    first = next(iter(all_results.values()))
    facts = first.circumstances
    lines = [
        '# Benchmarks', '',
        'How fast record sets are read and written, beside general JSON libraries doing the same in '
        'the same process. This page is written by `make bench-report`; `bench/README.md` says how '
        'the work is made equal.', '',
        f'Measured on {facts["date"]} at commit {facts["commit"]} with `{facts["command"]}`: '
        f'{facts["processor"]}, {facts["cores"]} cores, {facts["memory"]} of memory, '
        f'{facts["system"]}. Figures are medians of the processor time of interleaved repetitions; '
        'plots show each library\'s fastest variant.', '',
    ]
    for arch, results in all_results.items():
        lines.append(f'- {arch}: {run.versions(results)}')
    lines.append('')
    for file_name, caption in plots:
        lines += [f'![{caption}](plots/{file_name})', '']
    lines += [run.RATIO_NOTE, '']
    for arch, results in all_results.items():
        lines += [f'## {arch}', '']
        for title, note, text in run.sections(results, arch):
            if text:
                lines += [f'### {title}, {arch}', ''] + ([note, ''] if note else []) + [text, '']
    path.write_text('\n'.join(lines))


def main():
    parser = argparse.ArgumentParser(description='Writes docs/benchmarks.md from measured results.')
    parser.add_argument('--build', default=str(run.ROOT / 'build'))
    parser.add_argument('--docs', default=str(run.ROOT / 'docs'))
    options = parser.parse_args()

    all_results = {}
    for arch in ('x64', 'x86'):
        path = pathlib.Path(options.build) / arch / 'bench-results.json'
        if path.exists():
            all_results[arch] = run.Results(json.loads(path.read_text()))
    if not all_results:
        sys.exit(f'report.py: no results in {options.build}; run bench/run.py first')
    docs = pathlib.Path(options.docs)
    plots = plot_all(all_results, docs / 'plots')
    write_page(all_results, plots, docs / 'benchmarks.md')
    print(f'{docs}/benchmarks.md')


if __name__ == '__main__':
    main()
