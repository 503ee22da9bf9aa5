// Writes objects as VTK XML files with every array in one raw appended
// block: each array is a UInt64 byte count followed by its bytes, and the XML
// header gives the array's offset into that block. Arrays are streamed from
// the objects' memory, so a file never has to fit in memory.

#include "VtkWriter.h"

#include <QDir>
#include <QSaveFile>
#include <QSet>
#include <QSysInfo>
#include <QXmlStreamWriter>
#include <charconv>
#include <functional>

#include "ExportedClasses.h"

namespace hxhost {
namespace {

// Writes an array's bytes to the file; false when a write failed.
using ByteSource = std::function<bool(QIODevice&)>;

struct Array {
    QString element; // VTK writes string arrays as "Array", numbers as "DataArray"
    QString type;
    QString name;
    int components;
    quint64 bytes;
    ByteSource write;
};

// An XML element of the piece that holds arrays: PointData, Points, Verts, Lines.
struct Section {
    QString name;
    QXmlStreamAttributes attributes;
    std::vector<Array> arrays;
};

struct Dataset {
    QString type; // "PolyData" or "ImageData"
    QString extension;
    QXmlStreamAttributes attributes;
    QXmlStreamAttributes piece;
    std::vector<Section> sections;
};

// Thrown while a dataset is described when an object cannot be written.
struct Unexportable {
    QString reason;
};

const char* vtkType(McPrimType type)
{
    switch (type.getType()) {
    case McPrimType::MC_UINT8: return "UInt8";
    case McPrimType::MC_INT16: return "Int16";
    case McPrimType::MC_UINT16: return "UInt16";
    case McPrimType::MC_INT32: return "Int32";
    case McPrimType::MC_FLOAT: return "Float32";
    case McPrimType::MC_DOUBLE: return "Float64";
    default: return nullptr;
    }
}

// The shortest text that reads back as the same float.
QString floatText(float v)
{
    char buf[32];
    std::to_chars_result r = std::to_chars(buf, buf + sizeof buf, v);
    return QString::fromLatin1(buf, static_cast<int>(r.ptr - buf));
}

// wanted, or wanted with the first free number appended ("x2", "x3", ...);
// VTK keeps only one array of a name, and two objects must not share a file.
QString uniqueName(const QString& wanted, QSet<QString>& used)
{
    QString name = wanted;
    for (int n = 2; used.contains(name); ++n)
        name = wanted + QString::number(n);
    used.insert(name);
    return name;
}

QString safeFileName(const QString& name)
{
    QString s = name;
    for (QChar& c : s)
        if (c.unicode() < 0x20 || QStringLiteral("/\\:*?\"<>|").contains(c))
            c = QLatin1Char('_');
    return s.isEmpty() ? QStringLiteral("unnamed") : s;
}

Array rawArray(const QString& name, const char* type, int components, const void* data,
               quint64 bytes)
{
    const char* p = static_cast<const char*>(data);
    return {QStringLiteral("DataArray"), QString::fromLatin1(type), name, components, bytes,
            [p, bytes](QIODevice& out) {
                return bytes == 0 || out.write(p, static_cast<qint64>(bytes)) == static_cast<qint64>(bytes);
            }};
}

// An Int64 array of count values that produce passes, in order, to its sink.
Array int64Array(const QString& name, quint64 count,
                 std::function<void(const std::function<void(qint64)>&)> produce)
{
    return {QStringLiteral("DataArray"), QStringLiteral("Int64"), name, 1, count * 8,
            [produce](QIODevice& out) {
                std::vector<qint64> block;
                block.reserve(1 << 14);
                bool ok = true;
                auto flush = [&] {
                    const qint64 n = static_cast<qint64>(block.size() * sizeof(qint64));
                    ok = ok && out.write(reinterpret_cast<const char*>(block.data()), n) == n;
                    block.clear();
                };
                produce([&](qint64 v) {
                    block.push_back(v);
                    if (block.size() == block.capacity())
                        flush();
                });
                flush();
                return ok;
            }};
}

// Strings as VTK stores them: UTF-8, each ended by a NUL byte.
Array stringArray(const QString& name, const McDArray<QString>& labels)
{
    quint64 bytes = 0;
    for (const QString& s : labels)
        bytes += static_cast<quint64>(s.toUtf8().size()) + 1;
    return {QStringLiteral("Array"), QStringLiteral("String"), name, 1, bytes,
            [&labels](QIODevice& out) {
                for (const QString& s : labels) {
                    const QByteArray utf8 = s.toUtf8();
                    // QByteArray data ends in a NUL; it goes out with the text.
                    if (out.write(utf8.constData(), utf8.size() + 1) != utf8.size() + 1)
                        return false;
                }
                return true;
            }};
}

Section pointsSection(const McVec3f* points, quint64 n)
{
    static_assert(sizeof(McVec3f) == 3 * sizeof(float), "points must be packed xyz floats");
    return {QStringLiteral("Points"), {}, {rawArray({}, "Float32", 3, points, n * sizeof(McVec3f))}};
}

Dataset polyData(quint64 numPoints, quint64 numVerts, quint64 numLines)
{
    Dataset d{QStringLiteral("PolyData"), QStringLiteral(".vtp"), {}, {}, {}};
    d.piece.append(QStringLiteral("NumberOfPoints"), QString::number(numPoints));
    d.piece.append(QStringLiteral("NumberOfVerts"), QString::number(numVerts));
    d.piece.append(QStringLiteral("NumberOfLines"), QString::number(numLines));
    d.piece.append(QStringLiteral("NumberOfStrips"), QStringLiteral("0"));
    d.piece.append(QStringLiteral("NumberOfPolys"), QStringLiteral("0"));
    return d;
}

// Columns are public, so a package may have left one out of step with the points.
void checkClusterColumns(const HxCluster& c)
{
    const int n = c.points.size();
    auto check = [n](bool ok, const McString& column) {
        if (!ok)
            throw Unexportable{QStringLiteral("column \"%1\" does not have one value per point (%2 points)")
                                   .arg(column.toQString()).arg(n)};
    };
    check(c.ids.size() == n, "ids");
    for (const HxCluster::DataColumn& col : c.dataColumns)
        check(col.bytes.size() == static_cast<long long>(n) * col.primType.size(), col.name);
    for (const HxCluster::LabelColumn& col : c.labelColumns)
        check(col.labels.size() == n, col.name);
}

Dataset clusterDataset(const HxCluster& c)
{
    checkClusterColumns(c);
    const quint64 n = c.points.size();
    Section pointData{QStringLiteral("PointData"), {}, {}};
    QSet<QString> names;
    pointData.arrays.push_back(rawArray(uniqueName(QStringLiteral("Id"), names), "Int32", 1,
                                        c.ids.dataPtr(), n * sizeof(int)));
    for (const HxCluster::DataColumn& col : c.dataColumns) {
        const char* type = vtkType(col.primType);
        if (!type)
            throw Unexportable{QStringLiteral("column \"%1\" has the unknown primitive type %2")
                                   .arg(col.name.toQString()).arg(col.primType.getType())};
        pointData.arrays.push_back(rawArray(uniqueName(col.name.toQString(), names), type, 1,
                                            col.bytes.dataPtr(), col.bytes.size()));
    }
    for (const HxCluster::LabelColumn& col : c.labelColumns)
        pointData.arrays.push_back(stringArray(uniqueName(col.name.toQString(), names), col.labels));

    // One vertex cell per point, so the points show without a glyph filter.
    Section verts{QStringLiteral("Verts"), {}, {}};
    verts.arrays.push_back(int64Array(QStringLiteral("connectivity"), n, [n](const auto& put) {
        for (quint64 i = 0; i < n; ++i)
            put(static_cast<qint64>(i));
    }));
    verts.arrays.push_back(int64Array(QStringLiteral("offsets"), n, [n](const auto& put) {
        for (quint64 i = 1; i <= n; ++i)
            put(static_cast<qint64>(i));
    }));

    Dataset d = polyData(n, n, 0);
    d.sections = {pointData, pointsSection(c.points.dataPtr(), n), verts};
    return d;
}

// Total number of line vertices; a vertex outside the points would crash readers.
quint64 checkedLineVertices(const HxLineSet& s)
{
    quint64 total = 0;
    for (int l = 0; l < s.getNumLines(); ++l) {
        for (int v = 0; v < s.getLineLength(l); ++v) {
            const int p = s.getLineVertex(l, v);
            if (p < 0 || p >= s.getNumPoints())
                throw Unexportable{QStringLiteral("line %1 refers to point %2, but there are %3 points")
                                       .arg(l).arg(p).arg(s.getNumPoints())};
        }
        total += static_cast<quint64>(s.getLineLength(l));
    }
    return total;
}

Dataset lineSetDataset(const HxLineSet& s)
{
    const quint64 n = s.getNumPoints();
    const quint64 numLines = s.getNumLines();
    Section pointData{QStringLiteral("PointData"), {}, {}};
    for (int t = 0; t < s.getNumDataValues(); ++t)
        pointData.arrays.push_back(rawArray(QStringLiteral("Data%1").arg(t), "Float32", 1,
                                            s.getData(t), n * sizeof(float)));

    Section lines{QStringLiteral("Lines"), {}, {}};
    lines.arrays.push_back(int64Array(QStringLiteral("connectivity"), checkedLineVertices(s),
                                      [&s](const auto& put) {
        for (int l = 0; l < s.getNumLines(); ++l)
            for (int v = 0; v < s.getLineLength(l); ++v)
                put(s.getLineVertex(l, v));
    }));
    // VTK offsets are where each line ends in the connectivity.
    lines.arrays.push_back(int64Array(QStringLiteral("offsets"), numLines, [&s](const auto& put) {
        qint64 end = 0;
        for (int l = 0; l < s.getNumLines(); ++l)
            put(end += s.getLineLength(l));
    }));

    Dataset d = polyData(n, 0, numLines);
    d.sections = {pointData, pointsSection(s.getCoords(), n), lines};
    return d;
}

// Nodes sit at min + i * (max - min) / (n - 1). An axis with one node or a
// zero extent gets spacing 1: VTK filters divide by the spacing.
void latticeGeometry(const HxLattice3& lat, QString& origin, QString& spacing)
{
    float box[6];
    lat.coords()->getBoundingBox(box);
    QStringList o, s;
    for (int a = 0; a < 3; ++a) {
        const long long n = lat.getDims()[a];
        const double extent = static_cast<double>(box[2 * a + 1]) - box[2 * a];
        o << floatText(box[2 * a]);
        s << floatText(n > 1 && extent != 0 ? static_cast<float>(extent / (n - 1)) : 1.0f);
    }
    origin = o.join(QLatin1Char(' '));
    spacing = s.join(QLatin1Char(' '));
}

Dataset fieldDataset(const HxRegField3& f)
{
    const HxLattice3& lat = f.lattice();
    const char* type = vtkType(lat.primType());
    if (!type)
        throw Unexportable{QStringLiteral("the lattice has the unknown primitive type %1")
                               .arg(lat.primType().getType())};
    const McDim3l& dims = lat.getDims();
    const QString extent = QStringLiteral("0 %1 0 %2 0 %3").arg(dims.nx - 1).arg(dims.ny - 1).arg(dims.nz - 1);
    QString origin, spacing;
    latticeGeometry(lat, origin, spacing);

    Dataset d{QStringLiteral("ImageData"), QStringLiteral(".vti"), {}, {}, {}};
    d.attributes.append(QStringLiteral("WholeExtent"), extent);
    d.attributes.append(QStringLiteral("Origin"), origin);
    d.attributes.append(QStringLiteral("Spacing"), spacing);
    d.piece.append(QStringLiteral("Extent"), extent);

    Section pointData{QStringLiteral("PointData"), {}, {}};
    if (lat.nDataVar() > 0) {
        // Marked active so VTK filters and readers pick the values by default.
        if (lat.nDataVar() == 1 || lat.nDataVar() == 3)
            pointData.attributes.append(lat.nDataVar() == 1 ? QStringLiteral("Scalars") : QStringLiteral("Vectors"),
                                        QStringLiteral("values"));
        pointData.arrays.push_back(rawArray(QStringLiteral("values"), type, lat.nDataVar(),
                                            lat.dataPtr().getData(), static_cast<quint64>(lat.dataBytes())));
    }
    d.sections = {pointData};
    return d;
}

void writeHeader(QXmlStreamWriter& xml, const Dataset& d)
{
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("VTKFile"));
    xml.writeAttribute(QStringLiteral("type"), d.type);
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    xml.writeAttribute(QStringLiteral("byte_order"), QSysInfo::ByteOrder == QSysInfo::LittleEndian
                                                         ? QStringLiteral("LittleEndian")
                                                         : QStringLiteral("BigEndian"));
    xml.writeAttribute(QStringLiteral("header_type"), QStringLiteral("UInt64"));
    xml.writeStartElement(d.type);
    xml.writeAttributes(d.attributes);
    xml.writeStartElement(QStringLiteral("Piece"));
    xml.writeAttributes(d.piece);
    quint64 offset = 0;
    for (const Section& s : d.sections) {
        xml.writeStartElement(s.name);
        xml.writeAttributes(s.attributes);
        for (const Array& a : s.arrays) {
            xml.writeEmptyElement(a.element);
            xml.writeAttribute(QStringLiteral("type"), a.type);
            if (!a.name.isEmpty())
                xml.writeAttribute(QStringLiteral("Name"), a.name);
            if (a.components != 1)
                xml.writeAttribute(QStringLiteral("NumberOfComponents"), QString::number(a.components));
            xml.writeAttribute(QStringLiteral("format"), QStringLiteral("appended"));
            xml.writeAttribute(QStringLiteral("offset"), QString::number(offset));
            offset += sizeof(quint64) + a.bytes;
        }
        xml.writeEndElement();
    }
    xml.writeEndElement(); // Piece
    xml.writeEndElement(); // dataset
    xml.writeStartElement(QStringLiteral("AppendedData"));
    xml.writeAttribute(QStringLiteral("encoding"), QStringLiteral("raw"));
    xml.writeCharacters(QStringLiteral("_"));
}

// Each array as its byte count and bytes, in the order of the header's offsets.
bool writeAppended(QIODevice& out, const Dataset& d, QString& error)
{
    for (const Section& s : d.sections) {
        for (const Array& a : s.arrays) {
            const qint64 start = out.pos();
            const quint64 count = a.bytes;
            if (out.write(reinterpret_cast<const char*>(&count), sizeof count) != sizeof count || !a.write(out)) {
                error = out.errorString();
                return false;
            }
            // A wrong count would shift every later array.
            if (out.pos() - start != static_cast<qint64>(sizeof count + a.bytes)) {
                error = QStringLiteral("array %1 does not have the size announced").arg(a.name);
                return false;
            }
        }
    }
    return true;
}

// Writes to a temporary file first, so a failed write leaves no partial file.
bool writeDataset(const QString& path, const Dataset& d, QString& error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        error = file.errorString();
        return false;
    }
    QXmlStreamWriter xml(&file);
    writeHeader(xml, d);
    if (xml.hasError()) {
        error = file.errorString();
        return false;
    }
    if (!writeAppended(file, d, error))
        return false;
    xml.writeEndDocument();
    if (xml.hasError() || !file.commit()) {
        error = file.errorString();
        return false;
    }
    return true;
}

// The object as a dataset; false for classes VTK files are not written for.
bool describe(const HxData* obj, Dataset& d)
{
    return visitExported(obj, [&](const HxCluster& c) { d = clusterDataset(c); },
                         [&](const HxLineSet& s) { d = lineSetDataset(s); },
                         [&](const HxRegField3& f) { d = fieldDataset(f); });
}

} // namespace

bool exportVtk(const std::string& dir, const std::vector<HxData*>& objects, std::vector<std::string>& errors)
{
    const QString folder = QString::fromStdString(dir);
    if (!QDir().mkpath(folder)) {
        errors.push_back("cannot create the folder " + dir);
        return false;
    }
    bool ok = true;
    QSet<QString> stems;
    for (const HxData* obj : objects) {
        Dataset d;
        try {
            if (!describe(obj, d))
                continue;
        } catch (const Unexportable& e) {
            errors.push_back(QStringLiteral("cannot export %1: %2").arg(obj->getName(), e.reason).toStdString());
            ok = false;
            continue;
        }
        const QString path = QDir(folder).filePath(uniqueName(safeFileName(obj->getName()), stems) + d.extension);
        QString error;
        if (!writeDataset(path, d, error)) {
            errors.push_back(QStringLiteral("cannot write %1: %2").arg(path, error).toStdString());
            ok = false;
        }
    }
    return ok;
}

} // namespace hxhost
