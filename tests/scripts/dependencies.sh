#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# The structure of the libraries, from their #include lines: no circle of files, where X.h and X.cpp
# are one, no arrow up between folders, and no file of the core or the test doubles over 350 lines.
# SOURCE_DIR may be any tree with the same folders.
set -euo pipefail
exec python3 - "$SOURCE_DIR" <<'END'
import collections, pathlib, re, sys

root = pathlib.Path(sys.argv[1])

# What each folder may include besides itself. docs/architecture.md draws it.
values = ['Acl', 'Ip', 'Ip6', 'Lag', 'Routing', 'Routing6', 'Vorel', 'Zub']
platform = ['Kor', *values, 'PolicyMap', 'PolicyMapExport']
below = {
    'Kor': [],
    'PolicyMapExport': [],
    'PolicyMap': ['Kor', *values, 'PolicyMapExport'],
    'records': platform,
    'machines': [*platform, 'records'],
    'helper': [*platform, 'records', 'machines'],
    'reflect': [*platform, 'records', 'machines', 'helper'],
    'testkit': [*platform, 'records', 'machines', 'helper'],
    'packets': [*platform, 'records', 'machines', 'testkit'],
    'lab': [*platform, 'records', 'machines', 'helper', 'testkit', 'packets'],
} | {name: ['Kor', 'PolicyMapExport', *values] for name in values}
only = {
    ('helper', 'machines'): {'machines/TestClassCommonData'},
    ('machines', 'records'): {'records/Export', 'records/TestActionKinds', 'records/Trace'},
}

# What a folder may not use, so that it checks these files and does not repeat them.
never = {'packets': {f'PolicyMap/{name}' for name in (
    'RuleCompiler', 'RuleIntersection', 'ClassRules', 'SubRules', 'CompiledRules')}}

# The rooms of a folder, and what each may include besides itself: two that are compared share no code.
# Files outside the rooms may include all.
rooms = {
    'packets/space': [],
    'packets/engine': ['packets/space'],
    'packets/hardware': ['packets/space', 'packets/engine'],
    'packets/configuration': ['packets/space', 'packets/engine'],
}

most = 350
limited = ('PolicyMap/', 'records/', 'helper/', 'machines/', 'reflect/', 'packets/')

faults = []
files = {}  # name as it is included -> path
for top in ('platform', 'records', 'helper', 'machines', 'reflect', 'testkit', 'packets', 'lab'):
    base = root / top if top == 'platform' else root
    for path in sorted((root / top).rglob('*')):
        if path.suffix in ('.h', '.cpp'):
            files[path.relative_to(base).as_posix()] = path


def node(name):
    return name.rsplit('.', 1)[0]


def folder(name):
    return node(name).split('/')[0]


includes = collections.defaultdict(dict)  # node -> included node -> where
for name, path in files.items():
    for number, line in enumerate(path.read_text().splitlines(), 1):
        found = re.match(r'\s*#\s*include\s*["<]([^">]+)[">]', line)
        if not found:
            continue
        included, here = found[1], f'{path.relative_to(root)}:{number}'
        if included not in files:
            if folder(included) in below or '"' in line:
                faults.append(f'{here}: {included} is no file of the libraries')
            continue
        if node(included) != node(name):
            includes[node(name)].setdefault(node(included), here)
        a, b = folder(name), folder(included)
        if a != b and (b not in below[a] or node(included) not in only.get((a, b), [node(included)])):
            faults.append(f'{here}: {a} must not include {included}')
        room, other = (node(each).rpartition('/')[0] for each in (name, included))
        allowed = [room, *rooms.get(room, ())]
        if room in rooms and a == b and other not in allowed and node(included) != f'{a}/Export':
            faults.append(f'{here}: {room} must not include {included}')
        if node(included) in never.get(a, ()):
            faults.append(f'{here}: {a} must not use {included}, which it checks')


def circles(edges):
    """The shortest circle through each node that is on one, without repetition."""
    seen = set()
    for start in sorted(edges):
        if start in seen:
            continue
        came = {}
        waiting = collections.deque([start])
        while waiting and start not in came:
            at = waiting.popleft()
            for to in edges.get(at, ()):
                if to not in came:
                    came[to] = at
                    waiting.append(to)
        if start in came:
            circle = [start]
            while len(circle) == 1 or circle[-1] != start:
                circle.append(came[circle[-1]])
            circle.reverse()
            seen.update(circle)
            yield circle


for circle in circles(includes):
    faults.append('circle of files: ' + ' -> '.join(circle))
    faults += [f'    {includes[a][b]} includes {b}' for a, b in zip(circle, circle[1:])]

folders = collections.defaultdict(dict)
for a, to in includes.items():
    for b, here in to.items():
        if folder(a) != folder(b):
            folders[folder(a)].setdefault(folder(b), here)
for circle in circles(folders):
    faults.append('circle of folders: ' + ' -> '.join(circle))
    faults += [f'    {folders[a][b]}' for a, b in zip(circle, circle[1:])]

for name, path in files.items():
    if name.startswith(limited):
        lines = len(path.read_text().splitlines())
        if lines > most:
            faults.append(f'{path.relative_to(root)}: {lines} lines, more than {most}')

if len(files) < 200:
    faults.append(f'only {len(files)} files found: are the folders elsewhere?')
if faults:
    sys.exit('\n'.join(faults))
print(f'{len(files)} files, {sum(map(len, includes.values()))} arrows, no circle')
END
