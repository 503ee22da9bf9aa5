// Reading the file into a lattice: the tokenizer, the value conversions,
// the copy in either index order and the size check.
#include <QFile>
#include <QString>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

#include "HxCSVNumbers.h"
#include "HxLattice3.h"
#include "HxMessage.h"
#include "LatticeValueConversion.h"
#include "LineInput.h"
#include "LoadCommand.h"
#include "QxCSVUniformScalarFieldImport.h"

namespace {

// fgets reads at most this minus one bytes; a longer line comes in pieces,
// each of which counts as a line of its own.
const int lineBufferBytes = 10000;

// The first character of a text as a byte; 0 for an empty text or one
// beyond Latin-1.
char firstLatin1(const QString& text)
{
    if (text.isEmpty() || text[0].unicode() > 0xff)
        return '\0';
    return static_cast<char>(text[0].unicode());
}

McString baseName(const char* path)
{
    const char* slash = std::strrchr(path, '/');
    return McString(slash ? slash + 1 : path);
}

// The field class that the host expects for a number of data variables.
HxRegField3* createField(int nDataVar, HxLattice3* lattice)
{
    switch (nDataVar) {
    case 1: return new HxUniformScalarField3(lattice);
    case 2: return new HxUniformComplexScalarField3(lattice);
    case 3: return new HxUniformVectorField3(lattice);
    case 4: return new HxUniformColorField3(lattice);
    case 5: return new HxRegField3(lattice);
    case 6: return new HxUniformComplexVectorField3(lattice);
    default: return nullptr;
    }
}

// Bytes of a lattice, false when they do not fit in 64 bits.
bool latticeBytes(const int dims[3], int nDataVar, McPrimType type, long long& bytes)
{
    bytes = static_cast<long long>(nDataVar) * type.size();
    for (int a = 0; a < 3; ++a)
        if (__builtin_mul_overflow(bytes, static_cast<long long>(dims[a]), &bytes))
            return false;
    return true;
}

// A lattice of the dialog's settings, or null (after telling the user) when
// they name none: a type or variable count that the lists do not offer (a
// hand-edited replay), or more bytes than can be held.
HxLattice3* createLattice(const int dims[3], int nDataVar, McPrimType type, int typeIndex, const McString& file)
{
    HxMessage* msg = HxApplication::instance()->message();
    if (nDataVar < 1 || nDataVar > 6 || typeIndex < 0 || typeIndex > 5) {
        msg->error(QStringLiteral("Cannot import \"%1\": the settings select no data type (0 to 5) or no "
                                  "number of data variables (1 to 6).")
                       .arg(file.toQString()));
        return nullptr;
    }
    long long bytes = 0;
    try {
        if (latticeBytes(dims, nDataVar, type, bytes))
            return new HxLattice3(McDim3l(dims[0], dims[1], dims[2]), nDataVar, type, C_UNIFORM, nullptr);
    } catch (const std::bad_alloc&) {
    }
    msg->error(QStringLiteral("Cannot import \"%1\": no memory for a %2 x %3 x %4 lattice of %5 %6 values a node.")
                   .arg(file.toQString())
                   .arg(dims[0])
                   .arg(dims[1])
                   .arg(dims[2])
                   .arg(nDataVar)
                   .arg(QLatin1String(type.getName())));
    return nullptr;
}

} // namespace

int QxCSVUniformScalarFieldImport::parseFile()
{
    int dims[3];
    float box[6];
    getDims(dims);
    getMinMax(box);
    getParseParameters();

    const int nDataVar = getNDataVar();
    const McString file = getFileName();
    std::unique_ptr<HxLattice3> lattice(
        createLattice(dims, nDataVar, getPrimType(), dataTypeOpt->currentIndex(), file));
    if (!lattice)
        return 0;
    lattice->coords()->setBoundingBox(McBox3f(box));
    getParseResult(lattice.get());

    HxRegField3* field = createField(nDataVar, lattice.release());
    HxData::registerData(field, file.toQString());
    hxcsv::attachLoadCommand(field, getLoadCommandFromDialog());
    return 1;
}

int QxCSVUniformScalarFieldImport::fgetline(char* buffer, int size, FILE* file)
{
    return hxcsv::fgetline(buffer, size, file);
}

void QxCSVUniformScalarFieldImport::getParseResult(HxLattice3* lattice)
{
    const McString name = getFileName();
    FILE* file = std::fopen(name.getString(), "r");
    if (!file) {
        HxApplication::instance()->message()->ioError(name.toQString(),
                                                      QString::fromLocal8Bit(std::strerror(errno)));
        return;
    }
    const int typeIndex = dataTypeOpt->currentIndex();
    reserveValues(typeIndex, lattice->numNodes() * lattice->nDataVar());
    readValues(file, typeIndex);
    std::fclose(file);

    if (getArraySize() < 1)
        return;
    putDataIntoLattice(lattice, arrayData(typeIndex));
}

void QxCSVUniformScalarFieldImport::readValues(FILE* file, int typeIndex)
{
    const char delimiter = firstLatin1(delimiterText);
    const char comment = firstLatin1(commentText);
    int skip = firstLineNum;
    std::unique_ptr<char[]> line(new char[lineBufferBytes]);
    while (fgetline(line.get(), lineBufferBytes, file)) {
        // First line N ignores lines 1 to N-1.
        if (skip > 1) {
            --skip;
            continue;
        }
        if (line[0] == comment)
            continue;
        readLineValues(line.get(), delimiter, typeIndex);
    }
}

void QxCSVUniformScalarFieldImport::readLineValues(char* line, char delimiter, int typeIndex)
{
    // strtok's splitting on one character (runs of delimiters, and delimiters
    // at either end, give no value), without hidden state shared with other
    // users of strtok, and knowing each token's length.
    for (char* p = line; *p;) {
        if (*p == delimiter) {
            ++p;
            continue;
        }
        char* end = delimiter ? strchrnul(p, delimiter) : p + std::strlen(p);
        const size_t length = static_cast<size_t>(end - p);
        bool ok = false;
        // Qt's toDouble results, without a QString per value.
        double value = HxCSVNumbers::toDouble(p, length, ok);
        if (!ok) {
            HxApplication::instance()->message()->printf(
                tr("Caution: Unable to convert '%1' to Double, set default value to zero.\n")
                    .arg(QString::fromLatin1(p, static_cast<int>(length))));
            value = 0;
        }
        appendValue(typeIndex, value);
        p = end;
    }
}

// Makes room for the values once instead of growing step by step: as many
// as the lattice holds, but no more than the file can (a value and its
// delimiter take two bytes at least).
void QxCSVUniformScalarFieldImport::reserveValues(int typeIndex, long long wanted)
{
    const long long fileCanHold = fileSize / 2 + 1;
    const long long count = std::min({wanted, fileCanHold, static_cast<long long>(INT_MAX)});
    if (count < 1)
        return;
    const int n = static_cast<int>(count);
    switch (typeIndex) {
    case 0: byteValues.remax(byteValues.size() + n); break;
    case 1: shortValues.remax(shortValues.size() + n); break;
    case 2: ushortValues.remax(ushortValues.size() + n); break;
    case 3: int32Values.remax(int32Values.size() + n); break;
    case 4: floatValues.remax(floatValues.size() + n); break;
    case 5: doubleValues.remax(doubleValues.size() + n); break;
    default: break;
    }
}

void QxCSVUniformScalarFieldImport::appendValue(int typeIndex, double value)
{
    switch (typeIndex) {
    case 0: byteValues.append(hxcsv::wrapToByte(value)); break;
    case 1: shortValues.append(hxcsv::wrapToShort(value)); break;
    case 2: ushortValues.append(hxcsv::wrapToUShort(value)); break;
    case 3: int32Values.append(hxcsv::truncateToInt32(value)); break;
    case 4: floatValues.append(hxcsv::roundToFloat(value)); break;
    case 5: doubleValues.append(value); break;
    default: break;
    }
}

void QxCSVUniformScalarFieldImport::putDataIntoLattice(HxLattice3* lattice, void* values)
{
    // The lattice's own shape bounds every write into its block.
    const McDim3l& latticeDims = lattice->getDims();
    const long long dims[3] = {latticeDims[0], latticeDims[1], latticeDims[2]};
    const int nDataVar = lattice->nDataVar();
    const int bytesPerNode = nDataVar * lattice->primType().size();
    if (nDataVar < 1 || bytesPerNode < 1)
        return;
    const long long nodes = lattice->numNodes();
    const long long available = getArraySize() / nDataVar;

    int warned = 0;
    long long nodesToCopy = 0;
    checkSizes(warned, nodesToCopy, getFileName().getString(), lattice->primType().size(), nodes, available);

    char* dest = static_cast<char*>(lattice->dataPtr().getData());
    if (!dest)
        return;
    if (isXFastest())
        copyXFastest(dest, static_cast<const char*>(values), nodes, nodesToCopy, bytesPerNode);
    else
        copyZFastest(dest, static_cast<const char*>(values), dims, nodesToCopy, bytesPerNode);
}

void QxCSVUniformScalarFieldImport::copyXFastest(char* dest, const char* values, long long nodes,
                                                 long long nodesToCopy, int bytesPerNode)
{
    const size_t copied = static_cast<size_t>(nodesToCopy) * bytesPerNode;
    std::memcpy(dest, values, copied);
    std::memset(dest + copied, 0, static_cast<size_t>(nodes - nodesToCopy) * bytesPerNode);
}

// The file runs z fastest, then y, then x; the lattice is x fastest.
void QxCSVUniformScalarFieldImport::copyZFastest(char* dest, const char* values, const long long dims[3],
                                                 long long nodesToCopy, int bytesPerNode)
{
    long long input = 0;
    for (long long i = 0; i < dims[0]; ++i)
        for (long long j = 0; j < dims[1]; ++j)
            for (long long k = 0; k < dims[2]; ++k, ++input) {
                char* node = dest + ((k * dims[1] + j) * dims[0] + i) * bytesPerNode;
                if (input < nodesToCopy)
                    std::memcpy(node, values + input * bytesPerNode, bytesPerNode);
                else
                    std::memset(node, 0, bytesPerNode);
            }
}

void QxCSVUniformScalarFieldImport::checkSizes(int& warned, long long& nodesToCopy, const char* path, long long,
                                               long long requested, long long available)
{
    const McString base = baseName(path);
    nodesToCopy = requested;
    const long long bytesPerNode = static_cast<long long>(getPrimType().size()) * getNDataVar();
    McString requestedBytes, availableBytes;
    requestedBytes.setInt64(bytesPerNode * requested);
    availableBytes.setInt64(bytesPerNode * available);

    McString text;
    if (requested > available) {
        text.printf("Requested to read %s bytes, but file\n'%s' contains only %s bytes!\n"
                    "Missing data will be padded with zero.",
                    requestedBytes.getString(), base.getString(), availableBytes.getString());
        nodesToCopy = available;
    } else if (requested < available) {
        text.printf("File '%s' contains %s bytes,\nbut only %s bytes should be read!", base.getString(),
                    availableBytes.getString(), requestedBytes.getString());
    }
    if (text.isEmpty() || warned || quiet)
        return;
    HxApplication::instance()->message()->warning(text.toQString(), QString(), QString(), QString(), -1, -1,
                                                  false, -1);
    warned = 1;
}
