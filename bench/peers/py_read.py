"""pandas.read_csv (C engine) or numpy.loadtxt on a benchmark file.

  python3 py_read.py pandas|numpy FILE HEADER(0|1) NCOLS TEXTCOL

NCOLS > 0 names that many columns, so that rows with fewer fields (the count
lines of a line set) are read NaN-padded; TEXTCOL >= 0 is a text column.
"""
import sys
import time


def read_pandas(path, header, ncols, textcol):
    import pandas
    names = list(range(ncols)) if ncols > 0 else None
    frame = pandas.read_csv(path, sep=",", engine="c", header=0 if header else None, names=names)
    return frame.shape


def read_numpy(path, header, ncols, textcol):
    import numpy
    dtype = float
    if textcol >= 0:
        with open(path) as f:
            width = len(f.readline().split(",")) if header else ncols
        dtype = [("c%d" % i, "U32" if i == textcol else "f8") for i in range(width)]
    data = numpy.loadtxt(path, delimiter=",", skiprows=1 if header else 0, dtype=dtype)
    return data.shape


def main():
    tool, path, header, ncols, textcol = sys.argv[1], sys.argv[2], sys.argv[3] == "1", int(sys.argv[4]), int(sys.argv[5])
    read = {"pandas": read_pandas, "numpy": read_numpy}[tool]
    # The library import is startup, not reading.
    __import__(tool)
    start = time.perf_counter()
    shape = read(path, header, ncols, textcol)
    seconds = time.perf_counter() - start
    print("shape", shape)
    print("READ_SECONDS %.4f" % seconds)


if __name__ == "__main__":
    main()
