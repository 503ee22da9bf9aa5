// Writes the created objects and the console messages as one JSON document.
#include "JsonWriter.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string>

#include "ExportedClasses.h"

namespace hxhost {
namespace {

// JSON text, buffered in blocks: value-by-value writes to the file would
// dominate the time for large objects. A failed write is kept for finish().
class Out {
public:
    explicit Out(std::FILE* f) : mFile(f) { mBuf.reserve(1 << 16); }
    // Writes what is buffered; false when any write failed.
    bool finish()
    {
        flush();
        return mOk;
    }

    void raw(const char* s) { mBuf.append(s); maybeFlush(); }
    void raw(char c) { mBuf.push_back(c); maybeFlush(); }

    void string(const QString& s)
    {
        QByteArray utf8 = s.toUtf8();
        mBuf.push_back('"');
        for (unsigned char c : utf8) {
            switch (c) {
            case '"': mBuf.append("\\\""); break;
            case '\\': mBuf.append("\\\\"); break;
            case '\n': mBuf.append("\\n"); break;
            case '\r': mBuf.append("\\r"); break;
            case '\t': mBuf.append("\\t"); break;
            default:
                if (c < 0x20) {
                    char esc[8];
                    std::snprintf(esc, sizeof esc, "\\u%04x", c);
                    mBuf.append(esc);
                } else {
                    mBuf.push_back(static_cast<char>(c));
                }
            }
        }
        mBuf.push_back('"');
        maybeFlush();
    }
    void string(const McString& s) { string(s.toQString()); }
    void key(const char* k)
    {
        mBuf.push_back('"');
        mBuf.append(k);
        mBuf.append("\": ");
    }

    // NaN and the infinities have no JSON number form; they go out as strings.
    template <class T>
    void number(T v)
    {
        if constexpr (std::is_floating_point<T>::value) {
            if (std::isnan(v)) {
                raw("\"nan\"");
                return;
            }
            if (std::isinf(v)) {
                raw(v > 0 ? "\"inf\"" : "\"-inf\"");
                return;
            }
        }
        char tmp[40];
        std::to_chars_result res;
        if constexpr (std::is_integral<T>::value)
            res = std::to_chars(tmp, tmp + sizeof tmp, static_cast<long long>(v));
        else
            res = std::to_chars(tmp, tmp + sizeof tmp, v);
        mBuf.append(tmp, res.ptr);
        maybeFlush();
    }

    // The key of a member after the first, on the same line or a line of
    // its own (for members that may hold long lists).
    void nextKey(const char* k)
    {
        raw(", ");
        key(k);
    }
    void nextLineKey(const char* k)
    {
        raw(",\n     ");
        key(k);
    }

    // [item(0)<sep>item(1)<sep>...]
    template <class Index, class Item>
    void array(Index n, Item item, const char* sep = ",")
    {
        raw('[');
        for (Index i = 0; i < n; ++i) {
            if (i)
                raw(sep);
            item(i);
        }
        raw(']');
    }

    template <class T>
    void numbers(const T* v, long long n)
    {
        array(n, [&](long long i) { number(v[i]); });
    }

    // The top-level lists hold one {entry} a line.
    template <class Entry>
    void entryLines(size_t n, Entry entry)
    {
        raw('[');
        for (size_t i = 0; i < n; ++i) {
            raw(i ? ",\n    {" : "\n    {");
            entry(i);
            raw('}');
        }
        raw(n ? "\n  ]" : "]");
    }

private:
    void maybeFlush()
    {
        if (mBuf.size() > (1 << 16) - 64)
            flush();
    }
    void flush()
    {
        if (!mBuf.empty() && std::fwrite(mBuf.data(), 1, mBuf.size(), mFile) != mBuf.size())
            mOk = false;
        mBuf.clear();
    }
    std::FILE* mFile;
    std::string mBuf;
    bool mOk = true;
};

void writePoints(Out& o, const McVec3f* p, int n)
{
    o.array(n, [&](int i) { o.numbers(p[i].v, 3); });
}

// Every cluster column is {"name": ..., "values": [...]}; values writes the list.
template <class Values>
void writeColumn(Out& o, const McString& name, Values values)
{
    o.raw('{');
    o.key("name");
    o.string(name);
    o.nextKey("values");
    values();
    o.raw('}');
}

// Floats go out as they are stored; other types as their value widened to
// double, which is exact for all of them.
void writeDataColumn(Out& o, const HxCluster::DataColumn& col, int numPoints)
{
    writeColumn(o, col.name, [&] {
        if (col.primType.getType() == McPrimType::MC_FLOAT)
            o.numbers(col.floatData(), numPoints);
        else
            o.array(numPoints, [&](int i) { o.number(col.value(i)); });
    });
}

void writeLabelColumn(Out& o, const HxCluster::LabelColumn& col)
{
    writeColumn(o, col.name, [&] { o.array(col.labels.size(), [&](int i) { o.string(col.labels[i]); }); });
}

void writeCluster(Out& o, const HxCluster& c)
{
    o.nextLineKey("points");
    writePoints(o, c.points.dataPtr(), c.points.size());
    o.nextLineKey("ids");
    o.numbers(c.ids.dataPtr(), c.ids.size());
    o.nextLineKey("dataColumns");
    o.array(c.dataColumns.size(), [&](int d) { writeDataColumn(o, c.dataColumns[d], c.points.size()); }, ", ");
    o.nextLineKey("labelColumns");
    o.array(c.labelColumns.size(), [&](int l) { writeLabelColumn(o, c.labelColumns[l]); }, ", ");
    float box[6];
    c.getBoundingBox(box);
    o.nextLineKey("bounds");
    o.numbers(box, 6);
}

void writeLineSet(Out& o, const HxLineSet& s)
{
    o.nextLineKey("points");
    writePoints(o, s.getCoords(), s.getNumPoints());
    o.nextLineKey("lines");
    o.array(s.getNumLines(), [&](int l) {
        o.array(s.getLineLength(l), [&](int v) { o.number(s.getLineVertex(l, v)); });
    });
    o.nextLineKey("data");
    o.array(s.getNumDataValues(), [&](int t) { o.numbers(s.getData(t), s.getNumPoints()); });
}

// The values in the lattice's own type, so integers print without a fraction.
void writeLatticeValues(Out& o, const HxLattice3& lat)
{
    const long long n = lat.numNodes() * lat.nDataVar();
    void* p = lat.dataPtr().getData();
    switch (lat.primType().getType()) {
    case McPrimType::MC_UINT8: o.numbers(static_cast<const unsigned char*>(p), n); break;
    case McPrimType::MC_INT16: o.numbers(static_cast<const short*>(p), n); break;
    case McPrimType::MC_UINT16: o.numbers(static_cast<const unsigned short*>(p), n); break;
    case McPrimType::MC_INT32: o.numbers(static_cast<const int*>(p), n); break;
    case McPrimType::MC_FLOAT: o.numbers(static_cast<const float*>(p), n); break;
    case McPrimType::MC_DOUBLE: o.numbers(static_cast<const double*>(p), n); break;
    default: o.raw("[]");
    }
}

void writeField(Out& o, const HxRegField3& f)
{
    const HxLattice3& lat = f.lattice();
    const McDim3l& dims = lat.getDims();
    o.nextLineKey("primType");
    o.string(QString::fromLatin1(lat.primType().getName()));
    o.nextKey("nDataVar");
    o.number(lat.nDataVar());
    o.nextKey("dims");
    long long d[3] = {dims.nx, dims.ny, dims.nz};
    o.numbers(d, 3);
    float box[6];
    lat.coords()->getBoundingBox(box);
    o.nextKey("bbox");
    o.numbers(box, 6);
    o.nextLineKey("values");
    writeLatticeValues(o, lat);
}

// Only the parameters that carry a value; others are groups or buttons.
void writeParameters(Out& o, const HxParamBundle& params)
{
    o.raw('{');
    bool first = true;
    for (int p = 0; p < params.size(); ++p) {
        auto* param = dynamic_cast<const HxParameter*>(params.at(p));
        if (!param)
            continue;
        if (!first)
            o.raw(", ");
        first = false;
        o.string(param->getName());
        o.raw(": ");
        o.string(param->getString());
    }
    o.raw('}');
}

void writeObject(Out& o, const HxData& obj)
{
    o.key("name");
    o.string(obj.getName());
    o.nextKey("class");
    o.string(QString::fromLatin1(obj.getClassName()));
    o.nextLineKey("parameters");
    writeParameters(o, obj.parameters());
    visitExported(&obj, [&](const HxCluster& c) { writeCluster(o, c); },
                  [&](const HxLineSet& s) { writeLineSet(o, s); },
                  [&](const HxRegField3& f) { writeField(o, f); });
}

const char* levelName(HxMessage::Level level)
{
    switch (level) {
    case HxMessage::Warning: return "warning";
    case HxMessage::Error: return "error";
    default: return "info";
    }
}

} // namespace

bool writeJson(std::FILE* f, const std::vector<HxData*>& objects,
               const std::vector<HxMessage::Entry>& messages)
{
    Out o(f);
    o.raw("{\"objects\": ");
    o.entryLines(objects.size(), [&](size_t i) { writeObject(o, *objects[i]); });
    o.raw(",\n \"messages\": ");
    o.entryLines(messages.size(), [&](size_t i) {
        o.key("level");
        o.raw('"');
        o.raw(levelName(messages[i].level));
        o.raw('"');
        o.nextKey("text");
        o.string(messages[i].text);
    });
    o.raw("}\n");
    bool ok = o.finish();
    return std::fflush(f) == 0 && ok;
}

} // namespace hxhost
