#include "LatticeFileReader.h"

#include <QCoreApplication>
#include <QString>
#include <algorithm>
#include <cstring>
#include <memory>

#include "HxCSVInput.h"
#include "HxCSVNumbers.h"
#include "HxMessage.h"
#include "LatticeValueConversion.h"

namespace hxcsv {

namespace {

// The lines of a file as fgets into a buffer of latticeLineBytes gives them,
// up to their first NUL and without trailing CR and LF. Each is taken where
// it lies in the input's block, and copied only when it runs past the
// block's end.
class Pieces {
public:
    explicit Pieces(FILE* file) : input(file) {}

    // Bytes of the file taken so far.
    long long consumed() const { return input.offset(); }

    // The next piece as [begin, end); false at the end of the file.
    bool next(const char*& begin, const char*& end)
    {
        if (!take(begin, end))
            return false;
        if (const void* nul = std::memchr(begin, '\0', static_cast<size_t>(end - begin)))
            end = static_cast<const char*>(nul);
        while (end > begin && (end[-1] == '\n' || end[-1] == '\r'))
            --end;
        return true;
    }

private:
    // The piece with its line feed, if it has one.
    bool take(const char*& begin, const char*& end)
    {
        const size_t most = latticeLineBytes - 1;
        const char* from = input.available();
        const size_t have = static_cast<size_t>(input.availableEnd() - from);
        const char* lineEnd = static_cast<const char*>(std::memchr(from, '\n', std::min(have, most)));
        if (lineEnd || have >= most) {
            begin = from;
            end = lineEnd ? lineEnd + 1 : from + most;
            input.skipTo(end);
            return true;
        }
        if (!spare)
            spare.reset(new char[latticeLineBytes]);
        if (!input.getPiece(spare.get(), latticeLineBytes))
            return false;
        begin = spare.get();
        end = begin + std::strlen(begin);
        return true;
    }

    HxCSVInput input;
    std::unique_ptr<char[]> spare;
};

// A token as QString::toDouble reads it; 0, after a note on the console,
// for one it cannot read.
double tokenValue(const char* token, size_t length)
{
    if (HxCSVNumbers::isShortDecimal(token, length))
        return HxCSVNumbers::shortDecimalToDouble(token, length);
    bool ok = false;
    const double value = HxCSVNumbers::toDouble(token, length, ok);
    if (ok)
        return value;
    theMsg->printf(
        QCoreApplication::translate("QxCSVUniformScalarFieldImport",
                                    "Caution: Unable to convert '%1' to Double, set default value to zero.\n")
            .arg(QString::fromLatin1(token, static_cast<int>(length))));
    return 0;
}

template <class T>
void readTokens(const char* p, const char* end, char delimiter, ValueSink<T>& sink)
{
    while (p < end) {
        if (*p == delimiter) {
            ++p;
            continue;
        }
        const char* tokenEnd = static_cast<const char*>(std::memchr(p, delimiter, static_cast<size_t>(end - p)));
        if (!tokenEnd)
            tokenEnd = end;
        sink.add(convertTo<T>(tokenValue(p, static_cast<size_t>(tokenEnd - p))));
        p = tokenEnd;
    }
}

} // namespace

void reportTooManyValues(bool& reported)
{
    if (!reported)
        theMsg->error(
            QStringLiteral("The file holds more than %1 values; the rest are ignored.").arg(INT_MAX));
    reported = true;
}

template <class T>
bool readLatticeFile(FILE* file, const LatticeFileSettings& settings, ValueSink<T>& sink, ImportProgress* progress)
{
    Pieces pieces(file);
    int skip = settings.firstLine;
    const char* begin = nullptr;
    const char* end = nullptr;
    while (pieces.next(begin, end)) {
        if (progress && !progress->step(pieces.consumed()))
            return false;
        if (skip > 1) {
            --skip;
            continue;
        }
        if (begin < end && *begin == settings.comment)
            continue;
        readTokens(begin, end, settings.delimiter, sink);
    }
    return true;
}

template bool readLatticeFile(FILE*, const LatticeFileSettings&, ValueSink<std::uint8_t>&, ImportProgress*);
template bool readLatticeFile(FILE*, const LatticeFileSettings&, ValueSink<std::int16_t>&, ImportProgress*);
template bool readLatticeFile(FILE*, const LatticeFileSettings&, ValueSink<std::uint16_t>&, ImportProgress*);
template bool readLatticeFile(FILE*, const LatticeFileSettings&, ValueSink<std::int32_t>&, ImportProgress*);
template bool readLatticeFile(FILE*, const LatticeFileSettings&, ValueSink<float>&, ImportProgress*);
template bool readLatticeFile(FILE*, const LatticeFileSettings&, ValueSink<double>&, ImportProgress*);

} // namespace hxcsv
