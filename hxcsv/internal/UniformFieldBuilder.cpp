// Building a uniform field: a lattice of the dialog's settings, filled from
// the file (in place, or through the value arrays and a copy in either index
// order), checked against the requested size, then wrapped in the field
// class of its variable count and registered with its LoadCmd.
#include <QString>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

#include "HxLattice3.h"
#include "HxMessage.h"
#include "LargeArrays.h"
#include "LatticeFileReader.h"
#include "LineInput.h"
#include "ImportCourse.h"
#include "QxCSVUniformScalarFieldImport.h"

namespace {

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
    if (nDataVar < 1 || nDataVar > 6 || typeIndex < 0 || typeIndex > 5) {
        theMsg->error(QStringLiteral("Cannot import \"%1\": the settings select no data type (0 to 5) or no "
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
    theMsg->error(QStringLiteral("Cannot import \"%1\": no memory for a %2 x %3 x %4 lattice of %5 %6 values a node.")
                   .arg(file.toQString())
                   .arg(dims[0])
                   .arg(dims[1])
                   .arg(dims[2])
                   .arg(nDataVar)
                   .arg(QLatin1String(type.getName())));
    return nullptr;
}

// Reads the file into the array, or into the block when there is one;
// stopped tells whether the user stopped it first.
template <class T>
int readInto(FILE* file, const hxcsv::LatticeFileSettings& settings, McDArray<T>& values, void* block,
             long long room, hxcsv::ImportProgress* progress, bool& stopped)
{
    std::unique_ptr<hxcsv::ValueSink<T>> sink(block ? new hxcsv::ValueSink<T>(static_cast<T*>(block), room)
                                                    : new hxcsv::ValueSink<T>(values));
    stopped = !hxcsv::readLatticeFile(file, settings, *sink, progress);
    return sink->size();
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
    hxcsv::ImportProgress reading(file, fileSize);
    progress = &reading;
    stopped = false;
    getParseResult(lattice.get());
    progress = nullptr;
    if (stopped) {
        reading.reportStopped();
        return 0;
    }
    reading.finish();

    std::unique_ptr<HxRegField3> field(createField(nDataVar, lattice.release()));
    hxcsv::attachLoadCommand(field.get(), getLoadCommandFromDialog());
    HxData::registerData(field.release(), file.toQString());
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
        theMsg->ioError(name.toQString(), QString::fromLocal8Bit(std::strerror(errno)));
        // The field is still created, so say plainly what it holds.
        theMsg->printf(QStringLiteral("%1: the field holds no data from the file; every value is 0.")
                           .arg(name.toQString()));
        return;
    }
    const int typeIndex = dataTypeOpt->currentIndex();
    const long long latticeValues = lattice->numNodes() * lattice->nDataVar();
    void* block = lattice->dataPtr().getData();
    if (singleParse && isXFastest() && arraySize(typeIndex) == 0 && block && lattice->nDataVar() > 0) {
        // Nothing will read the value array again: the values need no stop
        // there on their way into the lattice.
        hxcsv::adviseHugePages(block, static_cast<size_t>(latticeValues) * lattice->primType().size());
        const int count = readValues(file, typeIndex, block, latticeValues);
        std::fclose(file);
        if (count > 0 && !stopped)
            finishLatticeFilledInPlace(lattice, count);
        return;
    }
    reserveValues(typeIndex, latticeValues);
    readValues(file, typeIndex, nullptr, 0);
    std::fclose(file);

    if (getArraySize() < 1 || stopped)
        return;
    putDataIntoLattice(lattice, const_cast<void*>(arrayData(typeIndex)));
}

int QxCSVUniformScalarFieldImport::readValues(FILE* file, int typeIndex, void* block, long long room)
{
    const hxcsv::LatticeFileSettings settings{firstLatin1(delimiterText), firstLatin1(commentText), firstLineNum};
    return withValues(values, typeIndex,
                      [&](auto& array) { return readInto(file, settings, array, block, room, progress, stopped); });
}

// The lattice holds the first of the count values read: what
// putDataIntoLattice leaves there in x-fastest order, but for the values of
// a last, incomplete node.
void QxCSVUniformScalarFieldImport::finishLatticeFilledInPlace(HxLattice3* lattice, int count)
{
    const int nDataVar = lattice->nDataVar();
    const long long elementSize = lattice->primType().size();
    int warned = 0;
    long long nodesToCopy = 0;
    checkSizes(warned, nodesToCopy, getFileName().getString(), elementSize, lattice->numNodes(), count / nDataVar);
    const long long kept = std::min(static_cast<long long>(count), lattice->numNodes() * nDataVar);
    const long long complete = nodesToCopy * nDataVar;
    if (kept > complete)
        std::memset(static_cast<char*>(lattice->dataPtr().getData()) + complete * elementSize, 0,
                    static_cast<size_t>((kept - complete) * elementSize));
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
    const int n = static_cast<int>(std::min(count, static_cast<long long>(INT_MAX - arraySize(typeIndex))));
    withValues(values, typeIndex, [n](auto& array) {
        hxcsv::reserveFinalSize(array, array.size() + n);
        return 0;
    });
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
    hxcsv::adviseHugePages(dest, static_cast<size_t>(nodes) * bytesPerNode);
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
    theMsg->warning(text.toQString(), QString(), QString(), QString(), -1, -1,
                                                  false, -1);
    warned = 1;
}
