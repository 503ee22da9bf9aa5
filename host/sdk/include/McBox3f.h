#pragma once

// Axis-aligned box as six floats: xmin, xmax, ymin, ymax, zmin, zmax.
class McBox3f {
public:
    McBox3f() : b{0, 0, 0, 0, 0, 0} {}
    explicit McBox3f(const float* box) : b{box[0], box[1], box[2], box[3], box[4], box[5]} {}
    McBox3f(float xmin, float xmax, float ymin, float ymax, float zmin, float zmax)
        : b{xmin, xmax, ymin, ymax, zmin, zmax} {}
    float& operator[](int i) { return b[i]; }
    const float& operator[](int i) const { return b[i]; }

    float b[6];
};
