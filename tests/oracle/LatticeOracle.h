#pragma once
// The uniform field reader's rules over a whole file held in memory: the
// oracle of its differential test. fgets pieces, strtok, Qt's toDouble, and
// conversions into the value types that wrap and never clamp.
#include <QString>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

namespace oracle {

struct LatticeSettings {
    char delimiter = ',', comment = '#'; // 0: none
    int firstLine = 1;
    int type = 5; // byte, short, ushort, int32, float, double
    int nDataVar = 1;
    int dims[3] = {1, 1, 1};
    bool xFastest = true, quiet = false;
};

constexpr int elementSizes[] = {1, 2, 2, 4, 4, 8};

struct LatticeReader {
    // The values of each type read so far, as bytes: the dialog keeps them
    // from one read to the next.
    std::string values[6];

    // Appends the file's values, then fills the lattice (x fastest, zeros
    // where values are missing) when there are any. Returns the console,
    // lines of "info TEXT" and "warning TEXT".
    std::string read(const std::string& file, const std::string& path, const LatticeSettings& s, std::string& lattice)
    {
        std::string console;
        int skip = s.firstLine;
        for (size_t at = 0, n; at < file.size(); at += n) { // fgets into 10000 bytes
            const size_t lf = file.find('\n', at);
            n = std::min<size_t>(9999, (lf == std::string::npos ? file.size() : lf + 1) - at);
            std::string line = file.substr(at, n).c_str(); // up to a NUL
            while (!line.empty() && (line.back() == '\r' || line.back() == '\n'))
                line.pop_back();
            if (skip > 1) {
                --skip;
                continue;
            }
            const char delimiters[2] = {s.delimiter, 0};
            char* t = line[0] == s.comment ? nullptr : std::strtok(&line[0], delimiters);
            for (; t; t = std::strtok(nullptr, delimiters)) {
                bool ok = false;
                const double v = QString::fromLatin1(t).toDouble(&ok);
                if (!ok)
                    console += "info Caution: Unable to convert '" + QString::fromLatin1(t).toStdString()
                               + "' to Double, set default value to zero.\n";
                append(s.type, ok ? v : 0);
            }
        }
        const std::string& kept = values[s.type];
        const long long bytesPerNode = s.nDataVar * elementSizes[s.type];
        const long long nodes = 1LL * s.dims[0] * s.dims[1] * s.dims[2];
        const long long available = static_cast<long long>(kept.size()) / bytesPerNode;
        lattice.assign(static_cast<size_t>(nodes * bytesPerNode), '\0');
        if (kept.empty())
            return console;
        const std::string base = path.substr(path.rfind('/') + 1), requested = std::to_string(nodes * bytesPerNode),
                          has = std::to_string(available * bytesPerNode);
        if (nodes > available && !s.quiet)
            console += "warning Requested to read " + requested + " bytes, but file\n'" + base + "' contains only "
                       + has + " bytes!\nMissing data will be padded with zero.\n";
        if (nodes < available && !s.quiet)
            console += "warning File '" + base + "' contains " + has + " bytes,\nbut only " + requested
                       + " bytes should be read!\n";
        // The file runs x fastest, or z fastest, then y, then x.
        for (long long i = 0, input = 0; i < s.dims[0]; ++i)
            for (long long j = 0; j < s.dims[1]; ++j)
                for (long long k = 0; k < s.dims[2] && input < std::min(nodes, available); ++k, ++input) {
                    const long long node = s.xFastest ? input : (k * s.dims[1] + j) * s.dims[0] + i;
                    lattice.replace(node * bytesPerNode, bytesPerNode, kept, input * bytesPerNode, bytesPerNode);
                }
        return console;
    }

    // Integers keep the low bits of the value truncated to 32 bits (NaN and
    // values past 32 bits give INT_MIN); floats round to nearest, to
    // infinity from half an ulp past FLT_MAX on.
    void append(int type, double v)
    {
        const double t = std::trunc(v);
        const bool beyond = std::isnan(t) || t < INT_MIN || t > INT_MAX;
        const uint32_t bits = beyond ? 0x80000000u : static_cast<uint32_t>(static_cast<int32_t>(t));
        const float huge = std::fabs(v) >= 0x1.ffffffp127 ? INFINITY : FLT_MAX;
        const float f = std::isfinite(v) && std::fabs(v) > FLT_MAX ? std::copysign(huge, float(v > 0 ? 1 : -1))
                                                                   : static_cast<float>(v);
        const uint8_t byte = static_cast<uint8_t>(bits);
        const uint16_t low = static_cast<uint16_t>(bits);
        const void* value[] = {&byte, &low, &low, &bits, &f, &v};
        values[type].append(static_cast<const char*>(value[type]), elementSizes[type]);
    }
};

} // namespace oracle
