#!/usr/bin/env bash
# A seeded mutation run: how many small semantic faults the tests catch.
#
#   scripts/mutate.sh [FOLDER] [COUNT] [SEED]     (defaults: src 40 1)
#   scripts/mutate.sh --list [FOLDER] [COUNT] [SEED]   the mutants only, nothing built
#   scripts/mutate.sh --only 3,17 [FOLDER] [COUNT] [SEED]  only these of the same mutants
#                                 (say, the survivors of a run, once tests were added)
#
# Picks COUNT mutants over the .cpp files below FOLDER, spread by the files'
# sizes and chosen from SEED alone (the same commit, folder, count and seed
# give the same mutants): a comparison flipped, a number changed, a statement
# dropped, true and false swapped, an arithmetic or logical operator swapped.
# Each is applied alone to a copy of the committed HEAD (never this checkout),
# built incrementally, and run against the unit tests, then the scenarios,
# then the page tests, then the threaded tests, until one stage fails (the
# mutant is killed) or all pass (it survived). A mutant that does not build
# counts as neither. At the end it prints, per folder of src/, the mutants
# killed out of those that count: not build failures and not the equivalent
# ones listed in scripts/mutate-equivalent.txt (one key a line, as printed
# beside each mutant, then a comment saying why).
#
# Environment:
#   VELMORA_MUTATE_DIR      the copy and its build (default /tmp/velmora-mutate)
#   VELMORA_MUTATE_TIMEOUT  seconds one mutant may take to build and test (default 900)
#   VELMORA_MUTATE_JOBS     parallel jobs for building and ctest (default 2)
#
# The copy is a clone of this repository's HEAD; a run resets it to the
# current HEAD first, restores each file after its mutant, and writes a log of
# every mutant's diff and outcome to $VELMORA_MUTATE_DIR/mutate.log. This is a
# tool, not part of scripts/test.sh: a run over all of src/ takes hours here.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v python3 >/dev/null || { echo "mutate.sh needs python3 (apt-get install python3)" >&2; exit 2; }
exec python3 - "$PWD" "$@" <<'PY'
import hashlib, os, random, re, shutil, subprocess, sys, time

repo = sys.argv[1]
args = sys.argv[2:]
list_only = bool(args) and args[0] == '--list'
if list_only:
    args = args[1:]
only = None
if len(args) > 1 and args[0] == '--only':
    only = {int(n) for n in args[1].split(',') if n}
    args = args[2:]
folder = (args[0] if len(args) > 0 else 'src').rstrip('/')
count = int(args[1]) if len(args) > 1 else 40
seed = int(args[2]) if len(args) > 2 else 1
copy = os.environ.get('VELMORA_MUTATE_DIR', '/tmp/velmora-mutate')
limit = int(os.environ.get('VELMORA_MUTATE_TIMEOUT', '900'))
jobs = os.environ.get('VELMORA_MUTATE_JOBS', '2')
build = os.path.join(copy, 'build')

def run(cmd, cwd=None, timeout=None, env=None):
    return subprocess.run(cmd, cwd=cwd, timeout=timeout, env=env, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors='replace')

# --- the copy -------------------------------------------------------------------

head = run(['git', 'rev-parse', 'HEAD'], cwd=repo).stdout.strip()
if not os.path.isdir(os.path.join(copy, '.git')):
    shutil.rmtree(copy, ignore_errors=True)
    subprocess.run(['git', 'clone', '-q', '--shared', '--no-checkout', repo, copy], check=True)
subprocess.run(['git', 'fetch', '-q', repo, head], cwd=copy, check=True)
subprocess.run(['git', 'reset', '-q', '--hard', head], cwd=copy, check=True)
subprocess.run(['git', 'clean', '-q', '-fdx', '-e', 'build', '-e', 'mutate.log', '-e', 'node_modules'], cwd=copy, check=True)

if not os.path.isdir(os.path.join(copy, folder)):
    sys.exit(f'no folder {folder} in the repository')

# --- finding mutants ------------------------------------------------------------

def code_mask(lines):
    """Per line, the text with comments, string and character literals blanked
    (same length), or None for lines that are no code to mutate: preprocessor
    lines, raw strings, comments."""
    out, in_block, in_raw = [], False, None
    for line in lines:
        if in_raw:
            if in_raw in line:
                in_raw = None
            out.append(None)
            continue
        stripped = line.strip()
        if stripped.startswith('#'):
            out.append(None)
            continue
        masked, i = [], 0
        while i < len(line):
            if in_block:
                end = line.find('*/', i)
                if end < 0:
                    masked.append(' ' * (len(line) - i)); i = len(line); break
                masked.append(' ' * (end + 2 - i)); i = end + 2; in_block = False
                continue
            c = line[i]
            if line.startswith('//', i):
                masked.append(' ' * (len(line) - i)); break
            if line.startswith('/*', i):
                in_block = True; masked.append('  '); i += 2; continue
            raw = re.match(r'R"([^(\s]*)\(', line[i:])
            if raw and (i == 0 or not (line[i - 1].isalnum() or line[i - 1] == '_')):
                close = ')' + raw.group(1) + '"'
                end = line.find(close, i + raw.end())
                if end < 0:
                    in_raw = close
                    masked.append(' ' * (len(line) - i)); i = len(line); break
                masked.append(' ' * (end + len(close) - i)); i = end + len(close); continue
            if c in '"\'':
                j = i + 1
                while j < len(line) and line[j] != c:
                    j += 2 if line[j] == '\\' else 1
                masked.append(c + ' ' * (min(j, len(line)) - i - 1) + (c if j < len(line) else ''))
                i = j + 1
                continue
            masked.append(c); i += 1
        text = ''.join(masked)
        out.append(text if text.strip() else None)
    return out

FLIP = {'<': '>=', '>': '<=', '<=': '>', '>=': '<', '==': '!=', '!=': '=='}
NOT_STATEMENT = re.compile(r'^\s*(return|break|continue|case|default|goto|co_return|throw|using|typedef|'
                           r'const|constexpr|static|auto|int|bool|double|float|char|long|unsigned|std::\w+\s+\w|'
                           r'struct|class|enum|namespace|template|public|private|protected)\b')
STATEMENT = re.compile(r'^\s*[\w:.\->\[\]()*]+?\s*(\(|[-+*/|&]?=[^=]|\+\+|--|<<)')

def sites(path, lines):
    mask = code_mask(lines)
    found = []
    for n, text in enumerate(mask):
        if text is None:
            continue
        line = lines[n]
        def add(op, start, end, replacement):
            found.append((n, start, end, op, replacement))
        for m in re.finditer(r'(?<=[\s)\w])(<=|>=|==|!=)(?=[\s(\w!-])', text):
            if text[:m.start()].rstrip().endswith('operator'):
                continue
            add('compare', m.start(), m.end(), FLIP[m.group(1)])
        for m in re.finditer(r'(?<= )(<|>)(?= )', text):
            add('compare', m.start(), m.end(), FLIP[m.group(1)])
        for m in re.finditer(r'(?<= )(&&|\|\|)(?= )', text):
            add('logical', m.start(), m.end(), '||' if m.group(1) == '&&' else '&&')
        for m in re.finditer(r'\b(true|false)\b', text):
            add('boolean', m.start(), m.end(), 'false' if m.group(1) == 'true' else 'true')
        if '"' not in text and "'" not in text:
            for m in re.finditer(r'(?<=[\w)\]] )([-+*/])(?= [\w(.])', text):
                add('arithmetic', m.start(), m.end(), {'+': '-', '-': '+', '*': '/', '/': '*'}[m.group(1)])
        for m in re.finditer(r'(?<![\w.])(\d+\.\d+|\d+)(?![\w.])', text):
            if re.search(r'\[\s*$', text[:m.start()]):
                continue  # array sizes and indices rarely build when changed
            value = m.group(1)
            if '.' in value:
                number = float(value)
                replacement = '1.0' if number == 0 else repr(number * 2)
            else:
                number = int(value)
                replacement = '1' if number == 0 else '0' if number == 1 else str(number + 1)
            add('number', m.start(), m.end(), replacement)
        stripped = text.strip()
        if (stripped.endswith(';') and STATEMENT.match(text) and not NOT_STATEMENT.match(text)
                and text.count('(') == text.count(')') and text.count('{') == text.count('}')
                and not stripped.startswith(('}', '{', ')', '.', '<<', '+', '-', '?', ':', '&&', '||'))):
            prev = next((mask[k] for k in range(n - 1, -1, -1) if mask[k] is not None), '') or ''
            # A statement continued from the line before is not one to drop.
            if prev.rstrip().endswith((';', '{', '}', ')', 'else', ':')) and not prev.rstrip().endswith(('=', ',')):
                indent = len(line) - len(line.lstrip())
                add('drop', indent, len(line.rstrip('\n')), ';')
    return found

def key_of(path, lines, site):
    n, start, end, op, replacement = site
    line = lines[n]
    same = [s for s in all_sites[path] if lines[s[0]] == line and s[3] == op]
    index = same.index(site)
    digest = hashlib.sha1(line.strip().encode()).hexdigest()[:10]
    return f'{path}:{op}:{digest}:{index}'

files = []
for root, dirs, names in os.walk(os.path.join(copy, folder)):
    dirs.sort()
    for name in sorted(names):
        if name.endswith('.cpp'):
            full = os.path.join(root, name)
            files.append(os.path.relpath(full, copy))
contents, all_sites = {}, {}
for path in files:
    with open(os.path.join(copy, path), encoding='utf-8') as f:
        contents[path] = f.read().splitlines(keepends=True)
    all_sites[path] = sites(path, contents[path])
files = [p for p in files if all_sites[p]]
if not files:
    sys.exit(f'nothing to mutate below {folder}')

# Spread COUNT over the files by their lines (largest remainders), at most
# as many as a file has sites.
sizes = {p: len(contents[p]) for p in files}
total = sum(sizes.values())
share = {p: count * sizes[p] / total for p in files}
quota = {p: min(int(share[p]), len(all_sites[p])) for p in files}
for p in sorted(files, key=lambda p: (-(share[p] - int(share[p])), p)):
    if sum(quota.values()) >= count:
        break
    if quota[p] < len(all_sites[p]):
        quota[p] += 1
rng = random.Random(seed)
mutants = []
for p in files:
    for site in sorted(rng.sample(all_sites[p], quota[p])):
        mutants.append((p, site))
rng.shuffle(mutants)

def folder_of(path):
    parts = path.split('/')
    return '/'.join(parts[:2]) if len(parts) > 2 else parts[0]

equivalent = {}
equivalent_file = os.path.join(repo, 'scripts', 'mutate-equivalent.txt')
if os.path.exists(equivalent_file):
    for raw in open(equivalent_file, encoding='utf-8'):
        raw = raw.strip()
        if raw and not raw.startswith('#'):
            key, _, why = raw.partition(' ')
            equivalent[key] = why.strip().lstrip('#').strip()

def describe(path, site):
    n, start, end, op, replacement = site
    lines = contents[path]
    before = lines[n][start:end]
    return f'{path}:{n + 1} {op} {before.strip()!r} -> {replacement!r}'

print(f'mutation run: {folder}, {len(mutants)} mutants, seed {seed}, commit {head[:10]}', flush=True)
if list_only:
    for i, (path, site) in enumerate(mutants, 1):
        print(f'[{i}] {describe(path, site)}  key {key_of(path, contents[path], site)}')
    sys.exit(0)

# --- the build ------------------------------------------------------------------

log = open(os.path.join(copy, 'mutate.log'), 'a', encoding='utf-8')
log.write(f'\n=== {time.strftime("%Y-%m-%d %H:%M:%S")} {folder} {count} {seed} {head}\n')
env = dict(os.environ)
env.update({'VELMORA_HOST': os.path.join(build, 'tools/velmora-host/velmora-host'),
            'VELMORA_CLOUD': os.path.join(build, 'tools/velmora-cloud/velmora-cloud'),
            'VELMORA_ARTIFACTS': os.path.join(build, 'pages')})
os.makedirs(env['VELMORA_ARTIFACTS'], exist_ok=True)
if not os.path.exists(os.path.join(build, 'build.ninja')):
    # Unoptimised enough to build fast, optimised enough to run the tests fast.
    configured = run(['cmake', '-S', copy, '-B', build, '-G', 'Ninja', '-DCMAKE_BUILD_TYPE=None',
                      '-DCMAKE_CXX_FLAGS=-O1 -g0', '-DVELMORA_BENCH=OFF'])
    if configured.returncode:
        sys.exit('configuring the copy failed:\n' + configured.stdout)
pages = os.path.join(copy, 'tests/pages')
if os.path.exists(os.path.join(pages, 'package.json')) and not os.path.exists(os.path.join(pages, 'node_modules')):
    mine = os.path.join(repo, 'tests/pages/node_modules')
    if os.path.isdir(mine):
        os.symlink(mine, os.path.join(pages, 'node_modules'))
    else:
        run(['npm', 'ci', '--no-audit', '--no-fund', '--silent'], cwd=pages)
print('building the unmutated copy ...', flush=True)
first = run(['cmake', '--build', build, '-j', jobs])
if first.returncode:
    sys.exit('the unmutated copy does not build:\n' + first.stdout[-3000:])

def stages(deadline):
    """Test commands in order, cheapest and most telling first."""
    ctest = ['ctest', '--test-dir', build, '-j', jobs, '--timeout', '120', '--stop-on-failure']
    yield 'unit', ctest + ['-L', 'unit'], build
    yield 'scenario', ctest + ['-L', 'scenario'], build
    if os.path.isdir(os.path.join(pages, 'node_modules')):
        yield 'pages', ['node', '--test', '--test-concurrency=1', '.'], pages
    yield 'threaded', ctest + ['-L', 'threaded'], build

def first_failure(output):
    for pattern in (r'^\s*\d+ - (\S+) \(', r'^not ok \d+ - (.+)$', r'^# Subtest: (.+)$'):
        hit = re.search(pattern, output, re.M)
        if hit:
            return hit.group(1).strip()
    return ''

# A mutant counts as killed only if the tests pass without it.
print('running the tests on the unmutated copy ...', flush=True)
for stage, cmd, cwd in stages(time.time() + limit):
    baseline = run(cmd, cwd=cwd, env=env)
    if baseline.returncode:
        log.write(f'unmutated copy, {stage} tests:\n{baseline.stdout}\n')
        log.flush()
        sys.exit(f'the unmutated copy fails its {stage} tests ({first_failure(baseline.stdout)}): '
                 'fix that first, or no mutant can be told apart')

results = []
started = time.time()
for i, (path, site) in enumerate(mutants, 1):
    if only is not None and i not in only:
        continue
    key = key_of(path, contents[path], site)
    n, start, end, op, replacement = site
    original = contents[path]
    mutated = list(original)
    mutated[n] = original[n][:start] + replacement + original[n][end:]
    target = os.path.join(copy, path)
    label = describe(path, site)
    print(f'[{i}/{len(mutants)}] {label}', end=' ... ', flush=True)
    log.write(f'\n[{i}] {label}\nkey {key}\n- {original[n].rstrip()}\n+ {mutated[n].rstrip()}\n')
    if key in equivalent:
        outcome, detail = 'equivalent', equivalent[key]
    else:
        with open(target, 'w', encoding='utf-8') as f:
            f.writelines(mutated)
        deadline = time.time() + limit
        outcome, detail = 'survived', ''
        try:
            built = run(['cmake', '--build', build, '-j', jobs], timeout=limit)
            if built.returncode:
                outcome, detail = 'build-failed', ''
                log.write(built.stdout[-2000:])
            else:
                for stage, cmd, cwd in stages(deadline):
                    left = deadline - time.time()
                    if left <= 0:
                        outcome, detail = 'killed', 'time limit'
                        break
                    try:
                        result = run(cmd, cwd=cwd, timeout=left, env=env)
                    except subprocess.TimeoutExpired:
                        outcome, detail = 'killed', f'{stage}: time limit'
                        break
                    if result.returncode:
                        outcome, detail = 'killed', f'{stage}: {first_failure(result.stdout)}'
                        log.write(result.stdout[-3000:])
                        break
        except subprocess.TimeoutExpired:
            outcome, detail = 'build-failed', 'build time limit'
        finally:
            with open(target, 'w', encoding='utf-8') as f:
                f.writelines(original)
    results.append((path, key, outcome, i))
    print(f'{outcome}{" (" + detail + ")" if detail else ""}  [{key}]', flush=True)
    log.write(f'=> {outcome} {detail}\n')
    log.flush()

# Leave the copy's binaries unmutated for the next run.
run(['cmake', '--build', build, '-j', jobs])

print(f'\nscore by folder ({(time.time() - started) / 60:.0f} min, seed {seed}, commit {head[:10]}):')
print(f'{"folder":<24} {"killed":>6} {"survived":>8} {"equivalent":>10} {"no build":>8}  score')
folders = sorted({folder_of(r[0]) for r in results})
def line(name, rows):
    k = sum(1 for r in rows if r[2] == 'killed')
    s = sum(1 for r in rows if r[2] == 'survived')
    e = sum(1 for r in rows if r[2] == 'equivalent')
    b = sum(1 for r in rows if r[2] == 'build-failed')
    score = f'{100 * k / (k + s):.0f} %' if k + s else '-'
    print(f'{name:<24} {k:>6} {s:>8} {e:>10} {b:>8}  {score}')
for name in folders:
    line(name, [r for r in results if folder_of(r[0]) == name])
line('all', results)
survivors = [r for r in results if r[2] == 'survived']
if survivors:
    print('\nsurvivors (mark the equivalent ones in scripts/mutate-equivalent.txt):')
    for path, key, _, i in survivors:
        print(f'  [{i}] {key}')
PY
