#!/usr/bin/env python3
"""Times hxhost replays, the fast_float reader and peer tools on the generated files.

Every case runs --runs times, interleaved (one round runs every case once, each
round starting one case later), after --warmup untimed rounds. Wall time is
taken around the process, peak RSS and minor page faults from /usr/bin/time -v.
Writes a markdown report (bench/data/latest.md by default). bench/run.sh installs
the tools, builds and calls this script; see the Benchmarks section of README.md.
"""
import argparse
import datetime
import json
import os
import platform
import re
import shlex
import statistics
import subprocess
import sys
import tempfile
import time

import gen

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
DEBIAN_PYTHON = "/usr/bin/python3"  # the one Debian's pandas and numpy belong to
TIME = "/usr/bin/time"

# Peer parameters per file: header row, fread fill and skip, named columns for
# ragged rows, text column (-1: none), whether numpy.loadtxt can read it.
PEER_ARGS = {
    "cloud": dict(header=1, fill=0, skip=0, ncols=0, textcol=-1, numpy=True),
    "cloud_text": dict(header=1, fill=0, skip=0, ncols=0, textcol=3, numpy=True),
    "lineset": dict(header=0, fill=1, skip=1, ncols=4, textcol=-1, numpy=False),
    "lattice": dict(header=0, fill=0, skip=0, ncols=0, textcol=-1, numpy=True),
}

HXHOST_OPTION = {
    "cloud": "point_cloud_csv",
    "cloud_text": "point_cloud_csv",
    "lineset": "line_set_csv",
    "lattice": "uniform_scalar_field_csv",
}


def load_command(kind, info):
    """The LoadCmd that an import of this file stores, ending in -dataOnly."""
    path = info["path"]
    if '"' in path or "\\" in path:
        raise SystemExit("bench: the data path must not hold quotes or backslashes: " + path)
    if kind == "cloud":
        # The point cloud reader takes its value type list from argument 7,
        # which is the header flag: 0 keeps both value columns numeric. The
        # header row is skipped by starting the data at line 2 instead.
        return ('load -point_cloud_csv "%s" CSVParams "%s" "5 0 1 2 3 4" "," "#" 2 0 0 "0 0 0 0" -dataOnly'
                % (path, path))
    if kind == "cloud_text":
        # Header flag 1 doubles as the type list "1": the first value column
        # (class) is text, the second (intensity) numeric.
        return ('load -point_cloud_csv "%s" CSVParams "%s" "5 0 1 2 3 4" "," "#" 1 1 0 "1 0 0 0" -dataOnly'
                % (path, path))
    if kind == "lineset":
        # A count line before each line's vertices.
        return ('load -line_set_csv "%s" CSVParams "%s" "4 0 1 2 3" "," "#" 1 0 0 -lineSetParams 0 none 1 0 -dataOnly'
                % (path, path))
    if kind == "lattice":
        nx, ny, nz = info["dims"]
        # float values, one variable, x fastest, voxel size 1 from the origin.
        settings = "CSVUniformScalarField # 1 , 4 0 %d %d %d 0 0 1 1 0 0 1 0 0 0 1 1 1" % (nx, ny, nz)
        return 'load -uniform_scalar_field_csv "%s" "%s" -dataOnly' % (path, settings)
    raise ValueError(kind)


class Case:
    def __init__(self, kind, tool, argv=None, missing=None):
        self.kind, self.tool, self.argv, self.missing = kind, tool, argv, missing
        self.walls, self.reads, self.rss_kb, self.faults = [], [], [], []
        self.failure = None
        self.note = None

    @property
    def runnable(self):
        return self.missing is None and self.failure is None


def tool_available(path):
    return os.path.isfile(path) and os.access(path, os.X_OK)


def dpkg_version(package):
    r = subprocess.run(["dpkg-query", "-W", "-f=${Version}", package], capture_output=True, text=True)
    return r.stdout.strip() if r.returncode == 0 and r.stdout.strip() else None


def python_has(module):
    if not tool_available(DEBIAN_PYTHON):
        return False
    return subprocess.run([DEBIAN_PYTHON, "-c", "import " + module], capture_output=True).returncode == 0


def r_has_data_table():
    if not tool_available("/usr/bin/Rscript"):
        return False
    return subprocess.run(["/usr/bin/Rscript", "-e", "library(data.table)"], capture_output=True).returncode == 0


def hxhost_options(hxhost, packages):
    """Load options of the packages hxhost loads (from --list)."""
    if not tool_available(hxhost):
        return None
    r = subprocess.run([hxhost, "--list"] + (["--packages", packages] if packages else []),
                       capture_output=True, text=True)
    return set(re.findall(r"^\s+load -(\S+)", r.stdout, re.M)), r.stdout


def build_cases(manifest, args, options):
    cases = []
    have_r = r_has_data_table()
    have_pandas = python_has("pandas")
    have_numpy = python_has("numpy")
    for kind, info in manifest["files"].items():
        path, peer = info["path"], PEER_ARGS[kind]
        host = [args.hxhost] + (["--packages", args.packages] if args.packages else [])
        host += ["-c", load_command(kind, info)]
        if options is None:
            cases.append(Case(kind, "hxhost", host, missing="no hxhost at " + args.hxhost))
        elif HXHOST_OPTION[kind] not in options:
            cases.append(Case(kind, "hxhost", host,
                              missing="-%s not served by the loaded packages" % HXHOST_OPTION[kind]))
        else:
            cases.append(Case(kind, "hxhost", host))

        reader = [args.reader]
        if peer["header"]:
            reader += ["--skip", "1"]
        if peer["textcol"] >= 0:
            reader += ["--text", str(peer["textcol"])]
        cases.append(Case(kind, "fast_float reader", reader + [path]) if tool_available(args.reader)
                     else Case(kind, "fast_float reader", missing="no reader at " + args.reader))

        for threads in (1, 2):
            name = "fread, %d thread%s" % (threads, "s" if threads > 1 else "")
            argv = ["/usr/bin/Rscript", os.path.join(HERE, "peers", "fread.R"), path, str(threads),
                    str(peer["header"]), str(peer["fill"]), str(peer["skip"])]
            cases.append(Case(kind, name, argv) if have_r else Case(kind, name, missing="r-cran-data.table not installed"))

        py = [DEBIAN_PYTHON, os.path.join(HERE, "peers", "py_read.py")]
        tail = [path, str(peer["header"]), str(peer["ncols"]), str(peer["textcol"])]
        cases.append(Case(kind, "pandas.read_csv", py + ["pandas"] + tail) if have_pandas
                     else Case(kind, "pandas.read_csv", missing="python3-pandas not installed"))
        if not peer["numpy"]:
            cases.append(Case(kind, "numpy.loadtxt", missing="loadtxt needs the same field count on every row"))
        else:
            cases.append(Case(kind, "numpy.loadtxt", py + ["numpy"] + tail) if have_numpy
                         else Case(kind, "numpy.loadtxt", missing="python3-numpy not installed"))
    if args.only:
        pattern = re.compile(args.only)
        cases = [c for c in cases if pattern.search("%s %s" % (c.kind, c.tool))]
    return cases


def parse_time_report(path):
    fields = {}
    with open(path) as f:
        for line in f:
            key, _, value = line.strip().rpartition(": ")
            fields[key] = value
    return fields


def run_once(case, timeout):
    """Runs a case once; returns (wall, read seconds or None, rss kB, minor faults)."""
    with tempfile.NamedTemporaryFile(prefix="bench-time-", delete=False) as tf:
        report = tf.name
    try:
        start = time.perf_counter()
        r = subprocess.run([TIME, "-v", "-o", report] + case.argv, capture_output=True, text=True,
                           errors="replace", timeout=timeout)
        wall = time.perf_counter() - start
        if r.returncode != 0:
            tail = (r.stderr.strip().splitlines() or ["(no output)"])[-3:]
            raise RuntimeError("exit %d: %s" % (r.returncode, " / ".join(tail)))
        fields = parse_time_report(report)
    finally:
        os.unlink(report)
    m = re.search(r"^READ_SECONDS (\S+)", r.stdout, re.M)
    return (wall, float(m.group(1)) if m else None,
            int(fields["Maximum resident set size (kbytes)"]),
            int(fields["Minor (reclaiming a frame) page faults"]))


def run_rounds(cases, runs, warmup, timeout):
    runnable = [c for c in cases if c.runnable]
    for round_no in range(warmup + runs):
        timed = round_no >= warmup
        shift = round_no % max(1, len(runnable))
        for case in runnable[shift:] + runnable[:shift]:
            if not case.runnable:
                continue
            try:
                wall, read, rss, faults = run_once(case, timeout)
            except subprocess.TimeoutExpired:
                case.failure = "timed out after %d s" % timeout
                continue
            except RuntimeError as e:
                case.failure = str(e)
                continue
            if timed:
                case.walls.append(wall)
                case.rss_kb.append(rss)
                case.faults.append(faults)
                if read is not None:
                    case.reads.append(read)
            print("bench: %s %-12s %-20s %7.3f s %8.1f MB" % ("run " if timed else "warm", case.kind, case.tool,
                                                              wall, rss / 1024.0), flush=True)


def verify_hxhost(case, info, timeout):
    """Checks that a replay imported everything the file holds; returns a problem or None."""
    with tempfile.NamedTemporaryFile(prefix="bench-", suffix=".json", delete=False) as tf:
        out = tf.name
    try:
        r = subprocess.run(case.argv + ["--json", out], capture_output=True, text=True, timeout=timeout)
        if r.returncode != 0:
            return "replay failed (exit %d)" % r.returncode
        with open(out) as f:
            objects = json.load(f)["objects"]
    finally:
        os.unlink(out)
    if len(objects) != 1:
        return "replay created %d objects" % len(objects)
    o = objects[0]
    got, want = {}, {}
    if case.kind.startswith("cloud"):
        got = {"points": len(o.get("points", [])), "data columns": len(o.get("dataColumns", [])),
               "label columns": len(o.get("labelColumns", []))}
        text = case.kind == "cloud_text"
        want = {"points": info["rows"], "data columns": 1 if text else 2, "label columns": 1 if text else 0}
    elif case.kind == "lineset":
        got = {"points": len(o.get("points", [])), "lines": len(o.get("lines", []))}
        want = {"points": info["rows"], "lines": info["lines"]}
    elif case.kind == "lattice":
        nx, ny, nz = info["dims"]
        got = {"dims": o.get("dims"), "values": len(o.get("values", []))}
        want = {"dims": info["dims"], "values": nx * ny * nz}
    wrong = ["%s %s (expected %s)" % (k, got[k], want[k]) for k in want if got[k] != want[k]]
    return "replay imported " + ", ".join(wrong) if wrong else None


def ensure_data(args):
    """Generates the files unless the data folder already holds them at this scale and seed."""
    path = os.path.join(args.data, "manifest.json")
    try:
        with open(path) as f:
            manifest = json.load(f)
        if (manifest["scale"] == args.scale and manifest["seed"] == args.seed
                and all(os.path.isfile(manifest["files"][k]["path"]) for k in gen.KINDS)):
            return manifest
    except (OSError, ValueError, KeyError):
        pass
    os.makedirs(args.data, exist_ok=True)
    manifest = {"scale": args.scale, "seed": args.seed, "files": {}}
    for kind in gen.KINDS:
        print("bench: generating %s at scale %g" % (kind, args.scale), flush=True)
        manifest["files"][kind] = gen.generate(kind, args.data, args.scale, args.seed)
    with open(path, "w") as f:
        json.dump(manifest, f, indent=1)
    return manifest


def remove_data(manifest, folder):
    """Deletes the generated files and the folder when nothing else is in it."""
    for info in manifest["files"].values():
        os.remove(info["path"])
    os.remove(os.path.join(folder, "manifest.json"))
    if not os.listdir(folder):
        os.rmdir(folder)


def first_line(argv):
    try:
        r = subprocess.run(argv, capture_output=True, text=True)
    except OSError:
        return None
    text = (r.stdout or r.stderr).strip()
    return text.splitlines()[0] if text else None


def machine_lines():
    model = "unknown"
    with open("/proc/cpuinfo") as f:
        for line in f:
            if line.startswith("model name"):
                model = line.split(":", 1)[1].strip()
                break
    mem_kb = 0
    with open("/proc/meminfo") as f:
        for line in f:
            if line.startswith("MemTotal:"):
                mem_kb = int(line.split()[1])
    distro = "Linux"
    if os.path.exists("/etc/os-release"):
        with open("/etc/os-release") as f:
            m = re.search(r'^PRETTY_NAME="?([^"\n]*)', f.read(), re.M)
            distro = m.group(1) if m else distro
    return ["- CPU: %s, %d cores" % (model, os.cpu_count() or 0),
            "- memory: %.1f GiB" % (mem_kb / 1024.0 / 1024.0),
            "- system: %s, kernel %s" % (distro, platform.release())]


def cmake_cache(name):
    try:
        with open(os.path.join(ROOT, "build", "CMakeCache.txt")) as f:
            m = re.search(r"^%s:[A-Z]+=(.*)$" % re.escape(name), f.read(), re.M)
            return m.group(1) if m else None
    except OSError:
        return None


def version_lines(list_text):
    commit = first_line(["git", "-C", ROOT, "describe", "--always", "--dirty"])
    package = next((l for l in (list_text or "").splitlines() if l.startswith("package ")), "no package loaded")
    compiler = cmake_cache("CMAKE_CXX_COMPILER") or "c++"
    # An empty cached build type means the project's default.
    build_type = cmake_cache("CMAKE_BUILD_TYPE") or "RelWithDebInfo"
    lines = [
        "- hxhost and hxcsv: commit %s, build type %s; %s" % (commit, build_type, package),
        "- C++ compiler: %s" % first_line([compiler, "--version"]),
        "- fast_float (libfast-float-dev): %s" % dpkg_version("libfast-float-dev"),
        "- R: %s; data.table (r-cran-data.table): %s" % (first_line(["/usr/bin/Rscript", "--version"]),
                                                         dpkg_version("r-cran-data.table")),
        "- Python: %s; pandas (python3-pandas): %s; numpy (python3-numpy): %s" % (
            first_line([DEBIAN_PYTHON, "--version"]), dpkg_version("python3-pandas"), dpkg_version("python3-numpy")),
        "- GNU time (time): %s" % dpkg_version("time"),
    ]
    return lines


def fmt(value, pattern):
    return pattern % value if value is not None else "n/a"


def report(cases, manifest, args, list_text, started):
    reference = {c.kind: statistics.median(c.walls) for c in cases
                 if c.tool == "fast_float reader" and c.walls and c.failure is None}
    out = ["# Import benchmark", "",
           "Measured %s with `bench/run.sh --scale %g --runs %d` (median of %d timed runs after %d warm-up "
           "round%s, cases interleaved)." % (started, args.scale, args.runs, args.runs, args.warmup,
                                             "" if args.warmup == 1 else "s"),
           "", "## Machine", ""] + machine_lines() + ["", "## Versions", ""] + version_lines(list_text)
    out += ["", "## Files", "", "| file | rows | size |", "| --- | ---: | ---: |"]
    for kind, info in manifest["files"].items():
        rows = "%d³ values" % info["dims"][0] if "dims" in info else "%d" % info["rows"]
        if "lines" in info:
            rows += " in %d lines" % info["lines"]
        out.append("| %s | %s | %.1f MB |" % (kind, rows, info["bytes"] / 1e6))
    out += ["", "## Results", "",
            "Wall time is the whole process (start-up included); *read* is the time the tool "
            "reports for the read call alone, where it can. Ratio: wall time over the fast_float "
            "reader's on the same file.", "",
            "| file | tool | wall s | range s | × fast_float | read s | peak RSS MB | minor faults |",
            "| --- | --- | ---: | ---: | ---: | ---: | ---: | ---: |"]
    notes = []
    for c in cases:
        if c.walls and c.failure is None:
            wall = statistics.median(c.walls)
            ratio = wall / reference[c.kind] if c.kind in reference else None
            cells = [fmt(wall, "%.3f"), "%.3f–%.3f" % (min(c.walls), max(c.walls)), fmt(ratio, "%.2f"),
                     fmt(statistics.median(c.reads) if c.reads else None, "%.3f"),
                     "%.0f" % (statistics.median(c.rss_kb) / 1024.0), "%d" % statistics.median(c.faults)]
        else:
            cells = ["n/a"] * 6
            notes.append("- %s, %s: %s" % (c.kind, c.tool, c.missing or c.failure or "no timed run"))
        if c.note:
            notes.append("- %s, %s: %s" % (c.kind, c.tool, c.note))
        out.append("| %s | %s | %s |" % (c.kind, c.tool, " | ".join(cells)))
    if notes:
        out += ["", "## Notes", ""] + notes
    out += ["", "## Commands", "", "Data in `%s`; hxhost replays the `LoadCmd` that the import of each "
            "file stores." % os.path.relpath(args.data, ROOT), "", "```"]
    for c in cases:
        if c.argv:
            out.append(shlex.join([os.path.relpath(a, ROOT) if a.startswith(ROOT + os.sep) else a
                                   for a in c.argv]))
    out += ["```", ""]
    os.makedirs(os.path.dirname(os.path.abspath(args.out)), exist_ok=True)
    with open(args.out, "w") as f:
        f.write("\n".join(out))


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--scale", type=float, default=1.0, help="file size factor, 1 = full size (default)")
    ap.add_argument("--runs", type=int, default=5, help="timed runs per case (default 5)")
    ap.add_argument("--warmup", type=int, default=1, help="untimed rounds first (default 1)")
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--data", default=os.path.join(HERE, "data"), help="folder of the generated files")
    ap.add_argument("--out", default=os.path.join(HERE, "data", "latest.md"), help="markdown report to write")
    ap.add_argument("--hxhost", default=os.path.join(ROOT, "build", "bin", "hxhost"))
    ap.add_argument("--packages", help="package folder for hxhost (default: its own)")
    ap.add_argument("--reader", default=os.path.join(ROOT, "build", "bin", "fastfloat_reader"))
    ap.add_argument("--only", help="regular expression on 'FILE TOOL' choosing the cases")
    ap.add_argument("--timeout", type=int, default=900, help="seconds one run may take")
    ap.add_argument("--clean", action="store_true", help="delete the generated files afterwards")
    ap.add_argument("--verify", action="store_true",
                    help="check once, through --json, that each hxhost replay imported the whole file")
    args = ap.parse_args()
    if args.runs < 1 or args.scale <= 0:
        ap.error("--runs must be at least 1 and --scale positive")
    if not tool_available(TIME):
        raise SystemExit("bench: %s is missing (Debian package time)" % TIME)
    args.data, args.out = os.path.abspath(args.data), os.path.abspath(args.out)
    started = datetime.datetime.now().strftime("%Y-%m-%d %H:%M")

    manifest = ensure_data(args)
    listed = hxhost_options(args.hxhost, args.packages)
    options, list_text = listed if listed else (None, None)
    cases = build_cases(manifest, args, options)
    if args.verify:
        for c in cases:
            if c.tool == "hxhost" and c.runnable:
                c.note = verify_hxhost(c, manifest["files"][c.kind], args.timeout)
                print("bench: verify %s: %s" % (c.kind, c.note or "ok"), flush=True)
    run_rounds(cases, args.runs, args.warmup, args.timeout)
    report(cases, manifest, args, list_text, started)
    print("bench: wrote %s" % args.out)
    if args.clean:
        remove_data(manifest, args.data)
    return 0


if __name__ == "__main__":
    sys.exit(main())
