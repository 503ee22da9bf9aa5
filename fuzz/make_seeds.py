#!/usr/bin/env python3
"""Writes the seed corpus of the fuzz targets into fuzz/corpus/<target>/.

Seeds are small: hand-made files for the parser's rules, the heads of the
bundled examples with the settings of their load commands, and the file
that once made the record reader read past a block. Findings of fuzzing
runs are added to fuzz/corpus/ by hand, as run.sh says.
"""
import pathlib

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLES = HERE.parent / "examples"

# Indices into the parser target's tables (fuzz/parser_fuzzer.cpp).
DELIMITER = {" ": 0, ",": 1, "\\s": 2, ".": 3, "\t": 4, ";": 5, '"': 6, "": 7, "ab": 8, ",,": 9, "\n": 10, "|": 11}
COMMENT = {"": 0, "#": 1, "//": 2, "%": 3}
BREAK = {"": 0, "END": 1, "-": 2, "--": 3}
KIND = {"rawFloat": 0, "rawInt": 1, "vec3f": 4, "vec3d": 5, "text": 6, "float": 7, "double": 8,
        "textNumber": 9, "floatRows": 10, "textNumberRows": 11, "textRows": 12}
HEADER, HEADER_FLAG_FIRST, NO_LINE_BREAKS, IGNORE_COUNT, PLAIN_LINES = 1, 2, 4, 8, 16


def head(name, lines):
    with open(EXAMPLES / name, "rb") as f:
        return b"".join(f.readlines()[:lines])


def parser_seed(content, delimiter=",", comment="", brk="", flags=HEADER_FLAG_FIRST, start=1, block=0,
                bindings=(("float", 0),)):
    header = bytes([DELIMITER[delimiter], COMMENT[comment], BREAK[brk], flags, start + 1, block,
                    len(bindings)])
    for kind, column in bindings:
        header += bytes([KIND[kind], column + 1])
    return header + content


def reader_seed(reader, args, content):
    return bytes([reader, len(args)]) + b"".join(a.encode("latin-1") + b"\0" for a in args) + content


OVER_READ = b"1234\r\n-12345678.12345\n"
XYZ = (("vec3f", 0), ("vec3f", 1), ("vec3f", 2))

SEEDS = {
    "parser": {
        "survey": parser_seed(head("survey_points.csv", 30), comment="#", flags=HEADER | HEADER_FLAG_FIRST,
                              bindings=XYZ + (("textRows", 4), ("textNumberRows", 3), ("floatRows", 5))),
        "drifters": parser_seed(head("drifter_tracks.csv", 40), comment="#", brk="END",
                                flags=HEADER_FLAG_FIRST | NO_LINE_BREAKS),
        "density": parser_seed(head("density_32x24x16.csv", 6), comment="#", bindings=(("double", 3),)),
        "quotes": parser_seed(b'"a,b",3,x\n"c""d",4,y\n', bindings=(("text", 0), ("float", 1), ("text", 2))),
        "white-space": parser_seed(b"  1.5\t 2.5  \r\n3 4\n\n5\n6\n", delimiter="\\s",
                                   bindings=(("float", 0), ("double", 1))),
        "wrapped": parser_seed(b"1 2\n3\n4 5 6 7 8 9\n-- block\n1e3 -2.5 +.5\n", delimiter=" ", brk="--",
                               flags=HEADER_FLAG_FIRST | NO_LINE_BREAKS, bindings=XYZ),
        "count-mode": parser_seed(b"2 0 0 0 1 1 1 1 5 5 5\n", delimiter=" ", flags=IGNORE_COUNT,
                                  bindings=(("float", 0), ("rawInt", 2))),
        "plain-lines": parser_seed(b"# c\n1;2\nEND\n3;4\n", delimiter=";", comment="#", brk="END",
                                   flags=PLAIN_LINES, bindings=(("rawFloat", 1), ("vec3d", 0))),
        "bad-number": parser_seed(b"1,2\nx,3\n", bindings=(("float", 0), ("float", 1))),
        "over-read": parser_seed(OVER_READ, bindings=XYZ),
        "over-read-small-blocks": parser_seed(OVER_READ * 8, block=3, bindings=(("textNumberRows", 0),) * 3),
    },
    "readers": {
        "survey": reader_seed(0, ["CSVParams", "@", "7 0 1 2 4 3 5 -1", ",", "#", "1", "1", "0", "1 0 0 0"],
                              head("survey_points.csv", 30)),
        "drifters": reader_seed(1, ["CSVParams", "@", "4 0 1 2 3", ",", "#", "1", "0", "0", "-lineSetParams", "1",
                                    "END", "0", "0"], head("drifter_tracks.csv", 40)),
        "count-mode": reader_seed(1, ["CSVParams", "@", "3 0 1 2", " ", "#", "1", "0", "0", "-lineSetParams", "0",
                                      "none", "1", "0"], b"2 0 0 0 1 1 1 1 5 5 5\n"),
        "density": reader_seed(2, ["CSVUniformScalarField # 1 , 3 0 4 4 2 0 0 1 1 0 0 1 0 0 0 0.5 0.5 0.5"],
                               head("density_32x24x16.csv", 3)),
        "density-bytes": reader_seed(2, ["CSVUniformScalarField # 1 Space 0 2 2 2 1 0 0 1 0 1 0 0 0 0 1 1 1"],
                                     b"1 2 300 -4 x 5.5\n"),
        "over-read-cloud": reader_seed(0, ["CSVParams", "@", "3 0 0 0", ",", "", "1", "0", "0", ""], OVER_READ),
        "over-read-lines": reader_seed(1, ["CSVParams", "@", "3 0 1 2", ",", "", "1", "0", "0"], OVER_READ),
    },
    "commands": {
        "example-lines": b"\0" + [l for l in (EXAMPLES / "examples.hx").read_bytes().splitlines()
                                  if b"-point_cloud_csv" in l][0],
        "quotes": b"\0" + b"load -x 'a b' \"c\\\"d\\$e\\`f\\\\g\" h\\ i \"\\q\"",
        "block": b"\2" + b"\0".join([b"x", b"CSVParams", b"f.csv", b"3 0  1", b",", b"#", b"2", b"1", b"1",
                                     b"CSVParams", b"g.csv", b"0", b"\t", b"", b"1", b"0"]),
        "round-trip": b"\1" + b"/data/w\xe4lls.csv\\\t\"#\\\\\x02\x00\x00\x00\x01\x07",
    },
}

for target, seeds in SEEDS.items():
    folder = HERE / "corpus" / target
    folder.mkdir(parents=True, exist_ok=True)
    for name, data in seeds.items():
        (folder / name).write_bytes(data)
