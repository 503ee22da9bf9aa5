#pragma once

// Lattice dimensions as 64-bit node counts.
class McDim3l {
public:
    McDim3l() : nx(0), ny(0), nz(0) {}
    McDim3l(long long x, long long y, long long z) : nx(x), ny(y), nz(z) {}
    long long& operator[](int i) { return i == 0 ? nx : (i == 1 ? ny : nz); }
    long long operator[](int i) const { return i == 0 ? nx : (i == 1 ? ny : nz); }
    long long nbVoxel() const { return nx * ny * nz; }

    long long nx, ny, nz;
};
