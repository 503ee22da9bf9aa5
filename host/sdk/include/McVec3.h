#pragma once

// The host's three-component vector.
template <class T>
class McVec3 {
public:
    McVec3() = default;
    McVec3(T x, T y, T z) : v{x, y, z} {}
    T& operator[](int i) { return v[i]; }
    const T& operator[](int i) const { return v[i]; }
    T& x() { return v[0]; }
    T& y() { return v[1]; }
    T& z() { return v[2]; }
    bool operator==(const McVec3& o) const { return v[0] == o.v[0] && v[1] == o.v[1] && v[2] == o.v[2]; }

    T v[3];
};

typedef McVec3<float> McVec3f;
typedef McVec3<double> McVec3d;
