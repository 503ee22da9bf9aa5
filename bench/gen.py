#!/usr/bin/env python3
"""Writes the benchmark input files, the same bytes for the same scale and seed.

  gen.py [--scale S] [--seed N] [--out DIR] [KIND...]

Kinds (all by default), at scale 1:
  cloud       5 M rows x,y,z,intensity,temperature with a header row
  cloud_text  5 M rows x,y,z,class,intensity, class being a text label
  lineset     2 M vertex rows x,y,z,v in lines, a count line before each line
  lattice     256^3 values, 256 a line (one x row of the lattice per line)

Writes DIR/manifest.json with what each file holds (rows, lines, dims), which
the harness uses to build its commands and to check imports.
"""
import argparse
import json
import math
import os
import random

FULL_CLOUD_ROWS = 5_000_000
FULL_LINESET_ROWS = 2_000_000
FULL_LATTICE_DIM = 256
CHUNK_ROWS = 20_000

CLASSES = ["ground", "low vegetation", "high vegetation", "building", "water",
           "rail", "road surface", "wire", "bridge deck", "noise"]


def scaled_rows(full, scale):
    return max(1, int(round(full * scale)))


def lattice_dim(scale):
    # The volume scales with the cube of the edge.
    return max(2, int(round(FULL_LATTICE_DIM * scale ** (1.0 / 3.0))))


def write_rows(path, header, rows):
    """Writes an iterable of text lines in large chunks."""
    with open(path, "w", encoding="ascii", newline="\n") as out:
        if header:
            out.write(header + "\n")
        chunk = []
        for line in rows:
            chunk.append(line)
            if len(chunk) == CHUNK_ROWS:
                out.write("\n".join(chunk) + "\n")
                chunk = []
        if chunk:
            out.write("\n".join(chunk) + "\n")


def survey_point(rnd):
    # Easting/northing of a site in metres, heights around sea level.
    x = -2000.0 + 10000.0 * rnd.random()
    y = -1500.0 + 6000.0 * rnd.random()
    z = -40.0 + 160.0 * rnd.random()
    return "%.4f,%.4f,%.4f" % (x, y, z)


def cloud_rows(rnd, n):
    for _ in range(n):
        intensity = rnd.random()
        temperature = -20.0 + 60.0 * rnd.random()
        yield "%s,%.6f,%.5f" % (survey_point(rnd), intensity, temperature)


def cloud_text_rows(rnd, n):
    for _ in range(n):
        label = CLASSES[int(rnd.random() * len(CLASSES))]
        yield "%s,%s,%.6f" % (survey_point(rnd), label, rnd.random())


def line_lengths(rnd, n):
    """Splits n vertices into lines of 20 to 2000 vertices."""
    left = n
    while left > 0:
        k = min(left, 20 + int(rnd.random() * 1981))
        yield k
        left -= k


def lineset_rows(rnd, lengths):
    # Drifter tracks: a random walk per line, a measured value per vertex.
    for k in lengths:
        yield str(k)
        x = -180.0 + 360.0 * rnd.random()
        y = -60.0 + 120.0 * rnd.random()
        z = 0.0
        for _ in range(k):
            x += 0.02 * (rnd.random() - 0.5)
            y += 0.02 * (rnd.random() - 0.5)
            z = max(-2000.0, min(0.0, z + 5.0 * (rnd.random() - 0.6)))
            yield "%.5f,%.5f,%.2f,%.4f" % (x, y, z, 4.0 + 25.0 * rnd.random())


def lattice_rows(rnd, n):
    # A smooth density with noise; about half of the values are negative.
    step = 2.0 * math.pi / n
    for k in range(n):
        for j in range(n):
            base = math.sin(j * step) * math.cos(k * step)
            yield ",".join("%.5f" % (base + math.sin(i * step) + 0.1 * rnd.random())
                           for i in range(n))


def generate(kind, out_dir, scale, seed):
    """Writes one file and returns its manifest entry."""
    rnd = random.Random("%s-%d" % (kind, seed))
    path = os.path.join(out_dir, kind + ".csv")
    entry = {"path": os.path.abspath(path)}
    if kind == "cloud":
        n = scaled_rows(FULL_CLOUD_ROWS, scale)
        write_rows(path, "x,y,z,intensity,temperature", cloud_rows(rnd, n))
        entry["rows"] = n
    elif kind == "cloud_text":
        n = scaled_rows(FULL_CLOUD_ROWS, scale)
        write_rows(path, "x,y,z,class,intensity", cloud_text_rows(rnd, n))
        entry["rows"] = n
    elif kind == "lineset":
        n = scaled_rows(FULL_LINESET_ROWS, scale)
        lengths = list(line_lengths(rnd, n))
        write_rows(path, None, lineset_rows(rnd, lengths))
        entry["rows"] = n
        entry["lines"] = len(lengths)
    elif kind == "lattice":
        n = lattice_dim(scale)
        write_rows(path, None, lattice_rows(rnd, n))
        entry["dims"] = [n, n, n]
        entry["rows"] = n * n
    else:
        raise ValueError("unknown kind " + kind)
    entry["bytes"] = os.path.getsize(path)
    return entry


KINDS = ["cloud", "cloud_text", "lineset", "lattice"]


def main():
    ap = argparse.ArgumentParser(description="Writes the benchmark input files.")
    ap.add_argument("--scale", type=float, default=1.0, help="size factor (1 = full size)")
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--out", default=os.path.join(os.path.dirname(os.path.abspath(__file__)), "data"))
    ap.add_argument("kinds", nargs="*", metavar="KIND", help=" ".join(KINDS))
    args = ap.parse_args()
    if args.scale <= 0:
        ap.error("--scale must be positive")
    for kind in args.kinds:
        if kind not in KINDS:
            ap.error("unknown kind %s (kinds: %s)" % (kind, " ".join(KINDS)))
    os.makedirs(args.out, exist_ok=True)
    manifest = {"scale": args.scale, "seed": args.seed, "files": {}}
    for kind in args.kinds or KINDS:
        manifest["files"][kind] = generate(kind, args.out, args.scale, args.seed)
        print("gen: wrote %s (%d bytes)" % (manifest["files"][kind]["path"], manifest["files"][kind]["bytes"]))
    with open(os.path.join(args.out, "manifest.json"), "w") as f:
        json.dump(manifest, f, indent=1)


if __name__ == "__main__":
    main()
