#!/usr/bin/env python3
"""Fault injection at every port.

Reruns each scenario of tests/scenarios and the tour with one fault at call
1, 2, 3 ... of each operation (velmora-host --fault PORT.OP:N) until the count
passes the last call, and checks every run:

- it ends as the fault-free run does, or stops at a scenario line (exit 2 with
  the line named): no crash, no signal, no sanitizer report, no hang;
- the fault shows in the transcript: the run logs a line the fault-free run
  does not, or the call fails in the fault-free run too, or the operation is
  one of the named silent paths below;
- a block run late still runs ("held back" and "runs late" markers pair up);
- every file of the sandbox (the slide library's metadata and thumbnails, the
  icon and template caches, the installed files) is in a state the fault-free
  run gave it: its end state, or one it had before or after one of the
  library's writes (the journal); or one the library wrote in this run that
  is whole and drops no saved slide from the metadata; or, in a cache, the
  answer of the very request that was cut; or a difference named below with
  its reason. A failed write that left half a file, or a record lost, is
  flagged.

First each target runs once without a fault (--count-calls --journal), which
gives the counts. An operation a run calls at most LIMIT times (default 4)
gets a fault at every call; one called more often gets LIMIT faults at an
even stride that keeps the first and the last call. --limit 0 runs every call.

Prints one line per port (faults injected, survived) and each failure; exits
1 on any failure. The sandbox of each run is removed unless --keep names a
folder for the failing ones.
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

# Fault point -> the counter whose calls it numbers.
POINTS = {
    "files.read": "files.read",
    "files.write": "files.write",
    "files.atomicWrite": "files.atomicWrite",
    "files.createDirectories": "files.createDirectories",
    "files.remove": "files.remove",
    "files.exists": "files.exists",
    "http.transport": "http.send",
    "http.status": "http.send",
    "http.truncated": "http.send",
    "script.run": "script.run",
    "process.run": "process.run",
    "dispatch.main": "dispatch.main",
    "dispatch.global": "dispatch.global",
}
PORTS = ["files", "http", "script", "process", "dispatch"]

# Operations whose failure the library lets pass without a line of its own,
# as it is meant to: (fault point, pattern of the marker's detail, pattern of
# the target, why). A fault that logs nothing new, on a call that does not
# fail in the fault-free run, and matches none of these fails the run.
SILENT = [
    (r"dispatch\.(main|global)", "", "", "a block run late is no failure: nothing to report; the markers show it ran"),
    (r"files\.read", r"/PowerPoint/(Icons|Tables)/", "",
     "a button image that cannot be loaded leaves a stand-in symbol or an empty frame, and no message"),
    (r"files\.read", r"/PowerPoint/Shortcuts\.xml$", "",
     "a catalogue that cannot be read shows \"Failed to load XML file\" in the pane, not in the log"),
    (r"files\.read", r"/SlideLibrary/Thumbnail/", "",
     "a saved slide's thumbnail that cannot be loaded shows \"Missing: NAME.png\" and \"Preview unavailable\""),
    (r"files\.read", r"/TemplateLibrary/Thumbnails/", "",
     "a template thumbnail that cannot be read shows \"Missing image\" or \"Preview unavailable\""),
    (r"files\.read", r"/SlideLibrary_Metadata\.json$", "",
     "the slide library's load stops without a word on a file it cannot read, and the tagging window "
     "takes such a file for one with no records"),
    (r"files\.exists", r"/User/(TemplateLibrary|Icons)/", "",
     "existence is the caches' only test: a file that seems absent is fetched again and written over"),
    (r"http\.(status|truncated)", r"/cdn/(thumbs|slides)/", "",
     "the template files' status is not looked at: an error page or a cut body is stored as it came"),
    (r"http\.(status|truncated)", r"/v2/icons/quota", "",
     "the quota reply is judged by its body alone, and one that is no JSON object logs nothing "
     "(the pane says \"Error: Unable to parse JSON\")"),
    (r"http\.truncated", r"/v2/icons/asset", "",
     "a cut SVG with status 200 is saved as it came, with the same \"SVG saved at\" line"),
    (r"http\.truncated", r"/get_trackDownload", "", "the download report's reply body is not read"),
    (r"http\.truncated", r"/cdn/manifest\.json$", r"^templates_manifest_half\.",
     "the cloud already cuts this manifest in half: cut again, it fails with the same \"Remote manifest failed\" line"),
]

# Files a fault may leave in a state the fault-free run never gives them:
# (fault point, pattern of the marker's detail, pattern of the file, why).
EXPLAINED = [
    (r"files\.read", r"/SlideLibrary_Metadata\.json$", r"/SlideLibrary_Metadata\.json$",
     "a delete rewrites the file from the pane's own list; a reload that failed without a word leaves that "
     "list stale, so the rewrite drops records the file gained since (a slide a failed delete left in it)"),
]

SANITIZER = re.compile(
    r"ERROR: (AddressSanitizer|LeakSanitizer)|runtime error:|WARNING: ThreadSanitizer|"
    r"SUMMARY: \w+Sanitizer|terminate called|Segmentation fault"
)
STOP = re.compile(r"^velmora-host: .*:\d+: ", re.M)
# Folders of downloads the library keeps by name.
CACHES = re.compile(r"/User/(TemplateLibrary|Icons)/")
MARKER = re.compile(r"^log: fault: (\S+) #(\d+)(?: (.*))?$")


def fnv(data):
    """The simulator journal's hash: 64-bit FNV-1a as 16 hex digits."""
    value = 0xCBF29CE484222325
    for byte in data:
        value = ((value ^ byte) * 0x100000001B3) & 0xFFFFFFFFFFFFFFFF
    return f"{value:016x}"


def select_calls(count, limit):
    """The call numbers that get a fault: all of 1..count, or `limit` of them
    at an even stride from the first to the last."""
    if count <= 0:
        return []
    if limit <= 0 or count <= limit:
        return list(range(1, count + 1))
    if limit == 1:
        return [1]
    return sorted({1 + round(i * (count - 1) / (limit - 1)) for i in range(limit)})


def log_lines(lines):
    return [line for line in lines if line.startswith("log: ") and not line.startswith("log: fault: ")]


def new_log_lines(baseline, faulted):
    """Log lines of the faulted run beyond those of the fault-free one, as a
    multiset: the order of lines from different threads does not matter."""
    extra = collections.Counter(log_lines(faulted)) - collections.Counter(log_lines(baseline))
    fresh = []
    for line in log_lines(faulted):
        if extra[line] > 0:
            extra[line] -= 1
            fresh.append(line)
    return fresh


def silent_reason(point, detail, target):
    for point_pattern, detail_pattern, target_pattern, reason in SILENT:
        if re.fullmatch(point_pattern, point) and re.search(detail_pattern, detail or "") and re.search(
                target_pattern, target):
            return reason
    return None


def markers(lines, point):
    """(detail of the injection, held-back count, runs-late count), detail None when it never struck."""
    detail, held, late = None, 0, 0
    for line in lines:
        match = MARKER.match(line)
        if not match or match.group(1) != point:
            continue
        rest = match.group(3) or ""
        if rest == "held back":
            held += 1
        elif rest == "runs late":
            late += 1
        elif detail is None:
            detail = rest
    return detail, held, late


def judge_exit(rc, stderr, expected_rc, timed_out, timeout):
    """(problem or None, whether the run stopped at a scenario line)."""
    if timed_out:
        return f"no end within {timeout:g} s", False
    found = SANITIZER.search(stderr)
    if found:
        line = stderr[stderr.rfind("\n", 0, found.start()) + 1 :].split("\n", 1)[0]
        return f"sanitizer report: {line.strip()}", False
    if rc < 0:
        return f"killed by signal {-rc}", False
    if rc == expected_rc:
        return None, False
    if rc == 2 and STOP.search(stderr):
        return None, True
    return f"exit {rc}, fault-free {expected_rc}", False


def whole(relpath, data):
    """Whether a file of this kind is complete, with a reason when not."""
    name = relpath.lower()
    if name.endswith(".json"):
        try:
            json.loads(data.decode("utf-8"))
        except (UnicodeDecodeError, ValueError) as error:
            return False, f"not whole JSON ({error.__class__.__name__})"
    elif name.endswith(".png"):
        if not data.startswith(b"\x89PNG\r\n\x1a\n") or not data.endswith(b"IEND\xaeB`\x82"):
            return False, "not a whole PNG"
    elif name.endswith(".svg"):
        if not data.rstrip().endswith(b"</svg>"):
            return False, "not a whole SVG"
    return True, ""


@dataclasses.dataclass
class Journal:
    """The states the fault-free run gave each file: path -> set of hashes ('-' for none)."""

    states: dict = dataclasses.field(default_factory=dict)
    removed: list = dataclasses.field(default_factory=list)  # paths removed whole (folders)
    failures: set = dataclasses.field(default_factory=set)  # (counter, number) of calls that failed by themselves

    @staticmethod
    def parse(lines):
        journal = Journal()
        for line in lines:
            if not line.startswith("journal: "):
                continue
            operation, before, after, path = line[len("journal: ") :].split(" ", 3)
            if operation == "failed":
                counter, number = path.split(" #")
                journal.failures.add((counter, int(number)))
                continue
            relpath = os.path.normpath(path).lstrip("/")
            journal.states.setdefault(relpath, set()).update({before, after})
            if operation == "remove":
                journal.removed.append(relpath)
        return journal

    def allows(self, relpath, state):
        if state in self.states.get(relpath, ()):
            return True
        return state == "-" and any(relpath.startswith(folder + "/") for folder in self.removed)

    def touches(self, relpath):
        return relpath in self.states or any(relpath.startswith(folder + "/") for folder in self.removed)


def record_names(data):
    """The saved slides a metadata file names, as a multiset; None when it is no array of records."""
    try:
        records = json.loads(data.decode("utf-8"))
    except (UnicodeDecodeError, ValueError):
        return None
    if not isinstance(records, list):
        return None
    return collections.Counter(
        str(r.get("FullSlideName", r.get("SlidesFileName"))) if isinstance(r, dict) else json.dumps(r) for r in records)


def explained(point, detail, relpath):
    for point_pattern, detail_pattern, file_pattern, reason in EXPLAINED:
        if (re.fullmatch(point_pattern, point) and re.search(detail_pattern, detail or "")
                and re.search(file_pattern, relpath)):
            return reason
    return None


def judge_sandbox(baseline, faulted, journal, written, read, read_baseline, stopped, point, detail):
    """Problems and notes for the files that differ from the fault-free run.

    `baseline`, `faulted`: relpath -> sha1 of the end states; `read(relpath)`
    and `read_baseline(relpath)` give the bytes; `journal` holds the fault-free
    run's states and `written` the faulted run's own.
    """
    problems, notes = [], []
    for relpath in sorted(set(baseline) | set(faulted)):
        if baseline.get(relpath) == faulted.get(relpath):
            continue
        data = read(relpath) if relpath in faulted else None
        state = fnv(data) if data is not None else "-"
        if journal.allows(relpath, state):
            continue  # a state the fault-free run passed through
        if stopped and not written.touches(relpath):
            continue  # as the simulator left it at the line where the run stopped
        ok, why = whole(relpath, data) if data is not None else (True, "")
        mine = data is not None and written.allows(relpath, state)
        lost = ""
        if mine and ok and CACHES.search("/" + relpath):
            continue  # another download of the same name, when the order of downloads changed
        if mine and ok and relpath.endswith(".json"):
            names, before = record_names(data), record_names(read_baseline(relpath)) if relpath in baseline else None
            if names is not None and before is not None:
                gone = before - names
                if not gone:
                    continue  # a later edit made on an earlier state: no record lost
                lost = "; loses " + ", ".join(sorted(gone))
        # The faulted request named this file: "tpl-0003.png" by its path,
        # "lineart-bold-star.svg" by provider=lineart&iconId=bold-star.
        words = os.path.splitext(os.path.basename(relpath))[0].split("-")
        if mine and point in ("http.status", "http.truncated") and all(w and w in (detail or "") for w in words):
            notes.append(f"{relpath} keeps the answer the faulted request got" + (f" ({why})" if not ok else ""))
            continue
        reason = explained(point, detail, relpath)
        if reason and (data is None or mine):
            notes.append(f"{relpath}: {reason}")
            continue
        what = "missing" if data is None else ("changed" if relpath in baseline else "added")
        problems.append(f"{relpath}: {what}, a state the fault-free run never gave it"
                        + (f"; {why}" if not ok else "") + lost)
    return problems, notes


# --- running ---------------------------------------------------------------


@dataclasses.dataclass
class Target:
    name: str  # scenario file name, or "tour"
    folder: str  # where the scenario lies; empty for the tour
    expected_rc: int


@dataclasses.dataclass
class Outcome:
    rc: int
    timed_out: bool
    stdout: list
    stderr: str
    files: dict  # relpath -> sha1
    read: object  # relpath -> bytes, while the sandbox exists


def sanitizer_environment():
    env = dict(os.environ)
    env.setdefault("ASAN_OPTIONS", "detect_leaks=1:abort_on_error=1")
    env.setdefault("UBSAN_OPTIONS", "print_stacktrace=1:halt_on_error=1")
    return env


def remove_tree(path):
    def writable(function, target, _):
        os.chmod(os.path.dirname(target), 0o755)
        os.chmod(target, 0o755) if os.path.isdir(target) else os.chmod(target, 0o644)
        function(target)

    # A run that died with the library folder read-only (or immutable, as root) leaves it so.
    subprocess.run(["chattr", "-R", "-i", path], capture_output=True)
    shutil.rmtree(path, onerror=writable)


def execute(host, target, extra, timeout, inspect, keep=None):
    """Runs the simulator with its sandbox in a folder of its own; calls
    inspect(Outcome) while the sandbox exists and gives its result."""
    work = tempfile.mkdtemp(prefix="velmora-faults-")
    try:
        env = sanitizer_environment()
        env["TMPDIR"] = work  # the simulator makes its sandbox there
        if target.folder:
            cwd, args = target.folder, [host, *extra, "--keep-sandbox", "run", target.name]
        else:
            cwd, args = os.path.join(work, "tour"), [host, *extra, "--keep-sandbox"]
            os.mkdir(cwd)
        timed_out = False
        try:
            proc = subprocess.run(args, cwd=cwd, env=env, capture_output=True, timeout=timeout)
            rc, out, err = proc.returncode, proc.stdout, proc.stderr
        except subprocess.TimeoutExpired as expired:
            rc, out, err, timed_out = -9, expired.stdout or b"", expired.stderr or b"", True
        sandboxes = [name for name in os.listdir(work) if name.startswith("velmora-host-")]
        root = os.path.join(work, sandboxes[0]) if sandboxes else None
        files = {}
        if root:
            for folder, dirs, names in os.walk(root):
                if folder == root and "cloud" in dirs:
                    dirs.remove("cloud")  # the cloud's fixtures, not the library's
                for name in names:
                    full = os.path.join(folder, name)
                    if os.path.isfile(full):
                        with open(full, "rb") as file:
                            files[os.path.relpath(full, root)] = hashlib.sha1(file.read()).hexdigest()

        def read(relpath):
            with open(os.path.join(root, relpath), "rb") as file:
                return file.read()

        outcome = Outcome(rc, timed_out, out.decode("utf-8", "replace").splitlines(),
                          err.decode("utf-8", "replace"), files, read)
        result = inspect(outcome)
        if keep and result and result.problems:
            destination = os.path.join(keep, f"{target.name}-{result.point}-{result.nth}")
            shutil.rmtree(destination, ignore_errors=True)
            shutil.copytree(work, destination, symlinks=True)
            with open(os.path.join(destination, "stdout.txt"), "w") as file:
                file.write("\n".join(outcome.stdout) + "\n")
            with open(os.path.join(destination, "stderr.txt"), "w") as file:
                file.write(outcome.stderr)
        return result
    finally:
        remove_tree(work)


@dataclasses.dataclass
class Baseline:
    target: Target
    counts: dict
    stdout: list
    files: dict
    journal: Journal
    documents: dict  # relpath -> bytes of the JSON files, for record comparisons
    problem: str = None


@dataclasses.dataclass
class Result:
    target: str
    point: str
    nth: int
    struck: bool = False
    problems: list = dataclasses.field(default_factory=list)
    logged: str = None  # the first new log line
    silent: str = None  # the silent path's reason
    absorbed: bool = False  # the call fails in the fault-free run too, and logs the same
    stopped: bool = False
    notes: list = dataclasses.field(default_factory=list)


def run_baseline(host, target, timeout):
    def inspect(outcome):
        counts = {}
        for line in outcome.stdout:
            if line.startswith("calls: "):
                name, value = line[len("calls: ") :].rsplit(" ", 1)
                counts[name] = int(value)
        problem, stopped = judge_exit(outcome.rc, outcome.stderr, target.expected_rc, outcome.timed_out, timeout)
        if stopped:
            problem = f"exit {outcome.rc}, expected {target.expected_rc}"
        stdout = [line for line in outcome.stdout if not line.startswith(("calls: ", "journal: "))]
        documents = {relpath: outcome.read(relpath) for relpath in outcome.files if relpath.endswith(".json")}
        return Baseline(target, counts, stdout, outcome.files, Journal.parse(outcome.stdout), documents, problem)

    return execute(host, target, ["--count-calls", "--journal"], timeout, inspect)


def run_fault(host, baseline, point, nth, timeout, keep):
    def inspect(outcome):
        result = Result(baseline.target.name, point, nth)
        problem, result.stopped = judge_exit(outcome.rc, outcome.stderr, baseline.target.expected_rc,
                                             outcome.timed_out, timeout)
        if problem:
            result.problems.append(problem)
        detail, held, late = markers(outcome.stdout, point)
        result.struck = detail is not None
        if not result.struck:
            return result
        if held != late:
            result.problems.append(f"a block held back {held} time(s) ran late {late} time(s)")
        fresh = new_log_lines(baseline.stdout, outcome.stdout)
        if fresh:
            result.logged = fresh[0]
        elif (POINTS[point], nth) in baseline.journal.failures:
            result.absorbed = True
        else:
            result.silent = silent_reason(point, detail, baseline.target.name)
            if result.silent is None:
                result.problems.append(f"nothing logged after the fault ({detail}) and no named silent path")
        problems, result.notes = judge_sandbox(baseline.files, outcome.files, baseline.journal,
                                               Journal.parse(outcome.stdout), outcome.read,
                                               lambda relpath: baseline.documents.get(relpath, b""),
                                               result.stopped, point, detail)
        result.problems += problems
        return result

    return execute(host, baseline.target, ["--fault", f"{point}:{nth}", "--journal"], timeout, inspect, keep)


def expected_exit(scenario):
    """The exit code the scenario's .expected transcript ends with."""
    try:
        with open(scenario[: -len(".scenario")] + ".expected", encoding="utf-8", errors="replace") as file:
            last = [line for line in file.read().splitlines() if line.startswith("exit: ")]
        return int(last[-1].split()[1]) if last else 0
    except (OSError, ValueError):
        return 0


def summary_lines(baselines, results, limit):
    lines = []
    for port in PORTS:
        counters = sorted({counter for point, counter in POINTS.items() if point.startswith(port + ".")})
        calls = sum(b.counts.get(counter, 0) for b in baselines for counter in counters)
        mine = [r for r in results if r.point.startswith(port + ".")]
        injected = [r for r in mine if r.struck]
        survived = [r for r in injected if not r.problems]
        crashed = [r for r in mine if not r.struck and r.problems]
        logged = sum(1 for r in survived if r.logged)
        silent = sum(1 for r in survived if r.silent)
        absorbed = sum(1 for r in survived if r.absorbed)
        stopped = sum(1 for r in survived if r.stopped)
        skipped = sum(max(0, b.counts.get(POINTS[p], 0) - len(select_calls(b.counts.get(POINTS[p], 0), limit)))
                      for b in baselines for p in POINTS if p.startswith(port + "."))
        how = "every call" if skipped == 0 else f"every call up to {limit} a run, else {limit} at an even stride"
        kinds = sum(1 for p in POINTS if p.startswith(port + "."))
        line = (f"{port}: {calls} calls{f' x {kinds} kinds' if kinds > 1 and port == 'http' else ''}, "
                f"{len(injected)} faults injected ({how}), {len(survived)} survived "
                f"[{logged} logged, {absorbed} failing anyway, {silent} silent by design; "
                f"{stopped} stopped at a scenario line]")
        unreached = len(mine) - len(injected)
        if unreached:
            line += f"; {unreached} planned past the run's last call"
        if crashed:
            line += f"; {len(crashed)} failed before the fault"
        lines.append(line)
    return lines


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--host", required=True, help="velmora-host of the build to test")
    parser.add_argument("--scenarios", default=os.path.join(here, "..", "scenarios"))
    parser.add_argument("--only", default="", help="regular expression: the targets to run ('tour' for the tour)")
    parser.add_argument("--points", default="", help="regular expression: the fault points to use")
    parser.add_argument("--no-tour", action="store_true")
    parser.add_argument("--limit", type=int, default=4, help="faults per run and operation; 0: every call")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--timeout", type=float, default=120)
    parser.add_argument("--report", help="write one line per run to this file")
    parser.add_argument("--keep", help="copy the folders of failing runs (sandbox, transcript) here")
    parser.add_argument("--dry-run", action="store_true", help="count the calls and print the plan, run no fault")
    options = parser.parse_args()
    host = os.path.abspath(options.host)
    folder = os.path.abspath(options.scenarios)

    targets = [Target(name, folder, expected_exit(os.path.join(folder, name)))
               for name in sorted(os.listdir(folder)) if name.endswith(".scenario")]
    if not options.no_tour:
        targets.append(Target("tour", "", 0))
    targets = [t for t in targets if re.search(options.only, t.name)]
    points = [p for p in POINTS if re.search(options.points, p)]

    started = time.monotonic()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        baselines = list(pool.map(lambda t: run_baseline(host, t, options.timeout), targets))
        failures = [f"{b.target.name} without a fault: {b.problem}" for b in baselines if b.problem]
        plan = [(b, p, n) for b in baselines if not b.problem for p in points
                for n in select_calls(b.counts.get(POINTS[p], 0), options.limit)]
        print(f"fault injection: {len(targets)} targets, {len(plan)} faulted runs planned "
              f"(limit {options.limit or 'none'} a run and operation, {options.jobs} at a time)", flush=True)
        if options.dry_run:
            for port in PORTS:
                planned = sum(1 for _, p, _ in plan if p.startswith(port + "."))
                print(f"{port}: {planned} faults planned")
            for failure in failures:
                print("FAILED " + failure)
            return 1 if failures else 0
        results = []
        for done, result in enumerate(pool.map(lambda job: run_fault(host, *job, options.timeout, options.keep), plan), 1):
            results.append(result)
            if done % 500 == 0:
                print(f"  {done} of {len(plan)} runs, {time.monotonic() - started:.0f} s", file=sys.stderr, flush=True)

    for result in results:
        for problem in result.problems:
            failures.append(f"{result.target} {result.point}:{result.nth}: {problem}")
    if options.report:
        with open(options.report, "w", encoding="utf-8") as report:
            for r in results:
                verdict = "FAILED: " + "; ".join(r.problems) if r.problems else (
                    "not reached" if not r.struck else
                    f"logged: {r.logged}" if r.logged else
                    "fails in the fault-free run too" if r.absorbed else f"silent: {r.silent}")
                extra = (" [stopped at a scenario line]" if r.stopped else "") + "".join(f" [{n}]" for n in r.notes)
                report.write(f"{r.target} {r.point}:{r.nth}: {verdict}{extra}\n")
    for line in summary_lines([b for b in baselines if not b.problem], results, options.limit):
        print(line)
    print(f"fault injection: {len(results)} runs in {time.monotonic() - started:.0f} s, {len(failures)} failed")
    for failure in failures:
        print("FAILED " + failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
