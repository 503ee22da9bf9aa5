#include "RefLatticeReader.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "HxMessage.h"
#include "McString.h"

namespace ref {

namespace {

int fgetline(char* buffer, int size, FILE* file)
{
    if (!std::fgets(buffer, size, file))
        return 0;
    int n = static_cast<int>(std::strlen(buffer));
    while (n > 0 && (buffer[n - 1] == '\r' || buffer[n - 1] == '\n'))
        buffer[--n] = '\0';
    return 1;
}

char firstChar(const QString& text)
{
    return text.isEmpty() || text[0].unicode() > 255 ? '\0' : static_cast<char>(text[0].unicode());
}

// What the processor's truncating conversion gives: out of range and NaN
// give the most negative int.
int truncated(double value)
{
    const double t = std::trunc(value);
    if (std::isnan(t) || t < INT_MIN || t > INT_MAX)
        return INT_MIN;
    return static_cast<int>(t);
}

int elementSize(int type)
{
    static const int sizes[] = {1, 2, 2, 4, 4, 8};
    return sizes[type];
}

} // namespace

void LatticeReader::parse(const char* path, const LatticeSettings& s, void* lattice)
{
    FILE* file = std::fopen(path, "r");
    if (!file) {
        HxApplication::instance()->message()->ioError(QString::fromLatin1(path),
                                                      QString::fromLocal8Bit(std::strerror(errno)));
        return;
    }
    const char delimiter[2] = {firstChar(s.delimiter), '\0'};
    const char comment = firstChar(s.comment);
    int skip = s.firstLine;
    char line[10000];
    while (fgetline(line, sizeof line, file)) {
        if (skip > 1) {
            skip--;
            continue;
        }
        if (line[0] == comment)
            continue;
        for (char* token = std::strtok(line, delimiter); token; token = std::strtok(nullptr, delimiter)) {
            bool ok = false;
            double value = QString::fromLatin1(token).toDouble(&ok);
            if (!ok) {
                HxApplication::instance()->message()->printf(
                    QString("Caution: Unable to convert '%1' to Double, set default value to zero.\n")
                        .arg(QString::fromLatin1(token)));
                value = 0;
            }
            append(s.type, value);
        }
    }
    std::fclose(file);
    if (arraySize(s.type) < 1)
        return;
    fill(path, s, static_cast<char*>(lattice));
}

void LatticeReader::append(int type, double value)
{
    switch (type) {
    case 0: byteValues.append(static_cast<unsigned char>(truncated(value) & 0xff)); break;
    case 1: shortValues.append(static_cast<short>(static_cast<unsigned short>(truncated(value) & 0xffff))); break;
    case 2: ushortValues.append(static_cast<unsigned short>(truncated(value) & 0xffff)); break;
    case 3: int32Values.append(truncated(value)); break;
    case 4: floatValues.append(static_cast<float>(value)); break;
    default: doubleValues.append(value); break;
    }
}

void LatticeReader::fill(const char* path, const LatticeSettings& s, char* lattice)
{
    const int bytesPerNode = s.nDataVar * elementSize(s.type);
    const long long nodes = static_cast<long long>(s.dims[0]) * s.dims[1] * s.dims[2];
    const long long available = arraySize(s.type) / s.nDataVar;

    const char* slash = std::strrchr(path, '/');
    const char* base = slash ? slash + 1 : path;
    McString requestedBytes, availableBytes, text;
    requestedBytes.setInt64(bytesPerNode * nodes);
    availableBytes.setInt64(bytesPerNode * available);
    long long nodesToCopy = nodes;
    if (nodes > available) {
        text.printf("Requested to read %s bytes, but file\n'%s' contains only %s bytes!\n"
                    "Missing data will be padded with zero.",
                    requestedBytes.getString(), base, availableBytes.getString());
        nodesToCopy = available;
    } else if (nodes < available) {
        text.printf("File '%s' contains %s bytes,\nbut only %s bytes should be read!", base,
                    availableBytes.getString(), requestedBytes.getString());
    }
    if (!text.isEmpty() && !s.quiet)
        HxApplication::instance()->message()->warning(text.toQString(), QString(), QString(), QString(), -1, -1,
                                                      false, -1);

    const char* values = static_cast<const char*>(arrayData(s.type));
    if (s.xFastest) {
        std::memcpy(lattice, values, nodesToCopy * bytesPerNode);
        std::memset(lattice + nodesToCopy * bytesPerNode, 0, (nodes - nodesToCopy) * bytesPerNode);
        return;
    }
    long long input = 0;
    for (int i = 0; i < s.dims[0]; i++)
        for (int j = 0; j < s.dims[1]; j++)
            for (int k = 0; k < s.dims[2]; k++) {
                char* node = lattice + ((static_cast<long long>(k) * s.dims[1] + j) * s.dims[0] + i) * bytesPerNode;
                if (input < nodesToCopy)
                    std::memcpy(node, values + input++ * bytesPerNode, bytesPerNode);
                else
                    std::memset(node, 0, bytesPerNode);
            }
}

int LatticeReader::arraySize(int type) const
{
    switch (type) {
    case 0: return byteValues.size();
    case 1: return shortValues.size();
    case 2: return ushortValues.size();
    case 3: return int32Values.size();
    case 4: return floatValues.size();
    default: return doubleValues.size();
    }
}

const void* LatticeReader::arrayData(int type) const
{
    switch (type) {
    case 0: return byteValues.dataPtr();
    case 1: return shortValues.dataPtr();
    case 2: return ushortValues.dataPtr();
    case 3: return int32Values.dataPtr();
    case 4: return floatValues.dataPtr();
    default: return doubleValues.dataPtr();
    }
}

} // namespace ref
