#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# The listings of README.md and docs/*.md are true.
#
#   cpp      consecutive lines of one of examples/*.cpp, apart from a common indentation. After a
#            comment "<!-- This listing is FILE; ... -->" the whole file
#   console  each line "$ COMMAND" is run in SOURCE_DIR with the built programs; the lines after it
#            are all that it writes. A line "…" stands for any number of lines, "…" within a line
#            for any text. A status other than 0 is told by a last line "[status N]"
#
# A command whose program is neither built nor installed is reported as skipped.
set -euo pipefail
exec python3 - "$SOURCE_DIR" "$BUILD_DIR" <<'END'
import os, pathlib, re, shlex, shutil, subprocess, sys, textwrap

root, build = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
faults, counts = [], {'cpp': 0, 'console': 0, 'skipped': 0}


def blocks(page):
    """(language, number of the first line, lines, the line before) of each fenced block."""
    language, before = None, ''
    for number, line in enumerate(page.read_text().splitlines(), 1):
        if language is None:
            if line.startswith('```'):
                language, first, lines = line[3:], number + 1, []
            else:
                before = line
        elif line == '```':
            yield language, first, lines, before
            language = None
        else:
            lines.append(line)
    if language is not None:
        faults.append(f'{page.relative_to(root)}:{first - 1}: the block has no end')


def dedented(lines):
    return textwrap.dedent('\n'.join(lines)).split('\n')


sources = {path.relative_to(root).as_posix(): path.read_text().splitlines()
           for path in sorted(root.glob('examples/*.cpp'))}


def common(some, others):
    count = 0
    while count < min(len(some), len(others)) and some[count] == others[count]:
        count += 1
    return count


def check_cpp(page, first, lines, before):
    whole = re.match(r'<!-- This listing is ([^;]+);', before)
    wanted, best = dedented(lines), (-1, '', 0)
    for name, source in sources.items():
        if whole and name != whole[1]:
            continue
        for start in range(1 if whole else len(source)):
            part = dedented(source[start:] if whole else source[start:start + len(wanted)])
            if part == wanted:
                return
            best = max(best, (common(part, wanted), name, start))
    same, name, start = best
    if same == -1:
        faults.append(f'{page}:{first}: there is no {whole[1] if whole else "examples/*.cpp"}')
    elif same == 0:
        faults.append(f'{page}:{first}: not in examples/*.cpp: {lines[0].strip()}')
    else:
        here = lines[same].strip() if same < len(lines) else 'the end of the block'
        at = start + same
        there = sources[name][at].strip() if at < len(sources[name]) else 'the end of the file'
        faults.append(f'{page}:{first + same}: {here}\n  but {name}:{at + 1}: {there}')


def program(command):
    words = [word for word in shlex.split(command) if not re.match(r'\w+=', word)]
    return shutil.which(words[0], path=path)


path = os.pathsep.join([f'{build}/bin', f'{build}/examples', os.environ['PATH']])
environment = {name: value for name, value in os.environ.items()
               if name not in ('COLUMNS', 'KOR_TRACE') and not name.startswith('GTEST_')}
# The sanitizers intercept dlopen(), so the loader does not use the run path of a program.
environment |= {'PATH': path, 'NO_COLOR': '1', 'LD_LIBRARY_PATH': str(build)}


def outputOf(command):
    done = subprocess.run(['bash', '-c', command], cwd=root, env=environment, text=True,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=300)
    status = [f'[status {done.returncode}]'] if done.returncode else []
    return done.stdout.splitlines() + status


def same(wanted, line):
    pattern = '.*'.join(re.escape(part) for part in wanted.split('…'))
    return re.fullmatch(pattern, line) is not None


def difference(wanted, actual):
    """The numbers of wanted and of actual lines that agree; None if all do."""
    furthest, reached = (0, 0), {0}  # the numbers of actual lines that wanted[:i] may stand for
    for i, line in enumerate(wanted):
        if line == '…':
            reached = set(range(min(reached), len(actual) + 1))
        else:
            reached = {j + 1 for j in reached if j < len(actual) and same(line, actual[j])}
        if not reached:
            return furthest
        furthest = (i + 1, min(reached))
    return None if len(actual) in reached else furthest


def check_command(page, number, command, wanted):
    if program(command) is None:
        counts['skipped'] += 1
        print(f'{page}:{number}: skipped, its program is not there: {command}')
        return
    actual = outputOf(command)
    found = difference(wanted, actual)
    if found is not None:
        i, j = found
        here = wanted[i] if i < len(wanted) else 'the end of the output'
        there = actual[j] if j < len(actual) else 'the end of the output'
        faults.append(f'{page}:{number + 1 + i}: {here}\n  but {command}\n  writes: {there}')


def check_console(page, first, lines):
    starts = [i for i, line in enumerate(lines) if line.startswith('$ ')]
    if not starts or starts[0] != 0:
        faults.append(f'{page}:{first}: a console block begins with a command')
        return
    for start, end in zip(starts, [*starts[1:], len(lines)]):
        counts['console'] += 1
        check_command(page, first + start, lines[start][2:], lines[start + 1:end])


for path_of_page in [root / 'README.md', *sorted(root.glob('docs/*.md'))]:
    page = path_of_page.relative_to(root).as_posix()
    for language, first, lines, before in blocks(path_of_page):
        if language == 'cpp':
            counts['cpp'] += 1
            check_cpp(page, first, lines, before)
        elif language == 'console':
            check_console(page, first, lines)

for fault in faults:
    print(fault)
if counts['cpp'] == 0:
    sys.exit('no listing was found')
if faults:
    sys.exit(f'{len(faults)} listings are wrong')
print(f"{counts['cpp']} listings and {counts['console'] - counts['skipped']} commands are true, "
      f"{counts['skipped']} commands skipped")
END
