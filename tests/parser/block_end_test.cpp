// Numbers that end right at the end of a read block. The record reader
// converts plain short decimals where they lie in the block, reading many
// bytes at once; these files put every such field shape at each of the last
// 32 offsets of a block. Values must come out as QString::toFloat/toDouble
// give them, and the sanitizer builds must see no read past the block.
#include <gtest/gtest.h>

#include <QString>
#include <QTemporaryDir>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "Differential.h"
#include "HxCSV.h"

namespace {

// Every shape the fast path takes (a sign or none, 1 to 8 integer digits,
// no point or a point and 0 to 8 fraction digits), and each with an
// exponent, which it must leave to the general conversion.
std::vector<std::string> fieldShapes()
{
    std::vector<std::string> shapes;
    for (const char* sign : {"", "-", "+"})
        for (int whole = 1; whole <= 8; ++whole)
            for (int fraction = -1; fraction <= 8; ++fraction)
                for (const char* exponent : {"", "e-3"}) {
                    std::string s = sign + std::string("98765432").substr(0, whole);
                    if (fraction >= 0)
                        s += "." + std::string("12345678").substr(0, fraction);
                    shapes.push_back(s + exponent);
                }
    return shapes;
}

// Records "7,FIELD" whose line end finishes exactly `offset` bytes before the
// end of a block, one site a block, each after filler records "1,DIGITS" of
// the lengths that land it on the byte; then a few more records so that the
// block end is not the end of the file.
struct SweepFile {
    std::string bytes;
    std::vector<std::string> fields; // the second field of each data row
};

void addRecord(SweepFile& f, const std::string& second, const std::string& lineEnd)
{
    f.bytes += "1," + second + lineEnd;
    f.fields.push_back(second);
}

SweepFile sweepFile(const std::vector<std::string>& sites, size_t block, const std::string& lineEnd,
                    const std::string& longFiller = std::string())
{
    SweepFile f;
    const size_t shortest = 3 + lineEnd.size(); // "1,1" and the line end
    for (size_t i = 0; i < sites.size(); ++i) {
        const size_t offset = i % 32;
        const size_t length = 2 + sites[i].size() + lineEnd.size();
        size_t end = (f.bytes.size() / block + 1) * block - offset;
        while (end < f.bytes.size() + length + shortest)
            end += block;
        const auto gap = [&] { return end - length - f.bytes.size(); };
        // Long records, whose fields past the second are skipped, then
        // short ones.
        while (!longFiller.empty() && gap() > longFiller.size() + 2 * shortest)
            addRecord(f, longFiller, lineEnd);
        while (gap() > shortest + 8)
            addRecord(f, "1", lineEnd);
        addRecord(f, std::string(gap() - shortest, '0') + "1", lineEnd);
        addRecord(f, sites[i], lineEnd);
    }
    for (int i = 0; i < 3; ++i)
        addRecord(f, "-1.5", lineEnd);
    return f;
}

enum Binding { FloatColumn, DoubleColumn, PointCloudColumn };

// The file parsed with column 1 bound as given, one value per data row.
std::vector<double> parseSecondColumn(const QString& path, Binding binding)
{
    HxCSV csv;
    csv.setFileName(path.toLocal8Bit().constData());
    csv.setColumnDelimiter(",");
    csv.setNoLineBreaks(false);
    McDArray<float> first;
    McDArray<float> floats;
    McDArray<double> doubles;
    std::vector<float> rows;
    HxCSV::FloatRows floatRows;
    csv.addColumn(0, &first);
    if (binding == FloatColumn)
        csv.addColumn(1, &floats);
    else if (binding == DoubleColumn)
        csv.addColumn(1, &doubles);
    else
        csv.addTextNumberColumn(1, &floatRows);
    csv.rowsCounted = [&](int n) {
        rows.assign(static_cast<size_t>(n), -999.0f);
        floatRows.first = rows.data();
    };
    csv.parse(false, false);
    std::vector<double> values;
    for (int i = 0; i < first.size(); ++i)
        values.push_back(binding == FloatColumn ? floats[i] : binding == DoubleColumn ? doubles[i] : rows[i]);
    return values;
}

// What the rules give for a field of the file: toFloat or toDouble of its
// text, or strtod as a float for the point cloud's text-number columns.
double expectedValue(const std::string& field, Binding binding)
{
    const QString text = QString::fromLatin1(field.c_str()).section(',', 0, 0);
    if (binding == DoubleColumn)
        return text.toDouble();
    if (binding == FloatColumn)
        return text.toFloat();
    return static_cast<float>(std::strtod(text.toLatin1().constData(), nullptr));
}

void expectSweep(const SweepFile& f, const QString& path, const std::string& what)
{
    for (Binding binding : {FloatColumn, DoubleColumn, PointCloudColumn}) {
        SCOPED_TRACE(what + " binding " + std::to_string(binding));
        const std::vector<double> values = parseSecondColumn(path, binding);
        ASSERT_EQ(values.size(), f.fields.size());
        std::map<std::string, double> expected; // the fillers repeat
        int wrong = 0;
        for (size_t i = 0; i < values.size(); ++i) {
            auto found = expected.find(f.fields[i]);
            if (found == expected.end())
                found = expected.emplace(f.fields[i], expectedValue(f.fields[i], binding)).first;
            if (values[i] != found->second && ++wrong <= 5)
                ADD_FAILURE() << "row " << i << " field \"" << f.fields[i] << "\" read as " << values[i];
        }
    }
}

QString writeFile(const QTemporaryDir& dir, const std::string& bytes)
{
    const QString path = dir.filePath(QStringLiteral("sweep.csv"));
    std::FILE* file = std::fopen(path.toLocal8Bit().constData(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    return path;
}

} // namespace

// Small blocks through the test seam: every shape at every offset, with LF
// and CRLF line ends.
TEST(BlockEnd, EveryShapeAtEachOfTheLast32OffsetsOfSmallBlocks)
{
    QTemporaryDir dir;
    std::vector<std::string> sites;
    for (const std::string& shape : fieldShapes())
        sites.insert(sites.end(), 32, shape);
    for (size_t block : {64u, 1000u}) {
        const BlockSize blocks(block);
        for (const char* lineEnd : {"\n", "\r\n"}) {
            const SweepFile f = sweepFile(sites, block, lineEnd, "2," + std::string(200, 'x'));
            expectSweep(f, writeFile(dir, f.bytes),
                        "block " + std::to_string(block) + (lineEnd[0] == '\r' ? " CRLF" : " LF"));
        }
    }
}

// The real block size: each of the last 32 offsets once, cycling through the
// shapes whose loads reach furthest past their end.
TEST(BlockEnd, WidestShapesAtEachOfTheLast32OffsetsOfRealBlocks)
{
    QTemporaryDir dir;
    const std::vector<std::string> widest = {"-1", "-12345678.12345", "+9.87654321", "1", "-98765432.12345678",
                                             "5.", "-1e-3", "12345678"};
    std::vector<std::string> sites;
    for (size_t i = 0; i < 32; ++i)
        sites.push_back(widest[i % widest.size()]);
    const std::string longFiller = "2," + std::string(65000, 'x');
    const SweepFile f = sweepFile(sites, HxCSVInput::largestBlock, "\n", longFiller);
    expectSweep(f, writeFile(dir, f.bytes), "1 MiB blocks");
}
