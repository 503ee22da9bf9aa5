#include "JsonWriter.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string>

#include "HxCluster.h"
#include "HxLattice3.h"
#include "HxLineSet.h"

namespace hxhost {
namespace {

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

    template <class T>
    void numbers(const T* v, long long n)
    {
        raw('[');
        for (long long i = 0; i < n; ++i) {
            if (i)
                raw(',');
            number(v[i]);
        }
        raw(']');
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
    o.raw('[');
    for (int i = 0; i < n; ++i) {
        if (i)
            o.raw(',');
        o.numbers(p[i].v, 3);
    }
    o.raw(']');
}

void writeCluster(Out& o, const HxCluster& c)
{
    o.raw(",\n     ");
    o.key("points");
    writePoints(o, c.points.dataPtr(), c.points.size());
    o.raw(",\n     ");
    o.key("ids");
    o.numbers(c.ids.dataPtr(), c.ids.size());
    o.raw(",\n     ");
    o.key("dataColumns");
    o.raw('[');
    for (int d = 0; d < c.dataColumns.size(); ++d) {
        const HxCluster::DataColumn& col = c.dataColumns[d];
        o.raw(d ? ", {" : "{");
        o.key("name");
        o.string(col.name);
        o.raw(", ");
        o.key("values");
        if (col.primType.getType() == McPrimType::MC_FLOAT) {
            o.numbers(col.floatData(), c.points.size());
        } else {
            o.raw('[');
            for (int i = 0; i < c.points.size(); ++i) {
                if (i)
                    o.raw(',');
                o.number(col.value(i));
            }
            o.raw(']');
        }
        o.raw('}');
    }
    o.raw("],\n     ");
    o.key("labelColumns");
    o.raw('[');
    for (int l = 0; l < c.labelColumns.size(); ++l) {
        const HxCluster::LabelColumn& col = c.labelColumns[l];
        o.raw(l ? ", {" : "{");
        o.key("name");
        o.string(col.name);
        o.raw(", ");
        o.key("values");
        o.raw('[');
        for (int i = 0; i < col.labels.size(); ++i) {
            if (i)
                o.raw(',');
            o.string(col.labels[i]);
        }
        o.raw("]}");
    }
    o.raw("],\n     ");
    float box[6];
    c.getBoundingBox(box);
    o.key("bounds");
    o.numbers(box, 6);
}

void writeLineSet(Out& o, const HxLineSet& s)
{
    o.raw(",\n     ");
    o.key("points");
    writePoints(o, s.getCoords(), s.getNumPoints());
    o.raw(",\n     ");
    o.key("lines");
    o.raw('[');
    for (int l = 0; l < s.getNumLines(); ++l) {
        if (l)
            o.raw(',');
        o.raw('[');
        for (int v = 0; v < s.getLineLength(l); ++v) {
            if (v)
                o.raw(',');
            o.number(s.getLineVertex(l, v));
        }
        o.raw(']');
    }
    o.raw("],\n     ");
    o.key("data");
    o.raw('[');
    for (int t = 0; t < s.getNumDataValues(); ++t) {
        if (t)
            o.raw(',');
        o.numbers(s.getData(t), s.getNumPoints());
    }
    o.raw(']');
}

void writeField(Out& o, const HxRegField3& f)
{
    const HxLattice3& lat = f.lattice();
    const McDim3l& dims = lat.getDims();
    o.raw(",\n     ");
    o.key("primType");
    o.string(QString::fromLatin1(lat.primType().getName()));
    o.raw(", ");
    o.key("nDataVar");
    o.number(lat.nDataVar());
    o.raw(", ");
    o.key("dims");
    long long d[3] = {dims.nx, dims.ny, dims.nz};
    o.numbers(d, 3);
    o.raw(", ");
    float box[6];
    lat.coords()->getBoundingBox(box);
    o.key("bbox");
    o.numbers(box, 6);
    o.raw(",\n     ");
    o.key("values");
    long long n = lat.numNodes() * lat.nDataVar();
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
    {
        o.raw("{\"objects\": [");
        for (size_t i = 0; i < objects.size(); ++i) {
            const HxData* obj = objects[i];
            o.raw(i ? ",\n    {" : "\n    {");
            o.key("name");
            o.string(obj->getName());
            o.raw(", ");
            o.key("class");
            o.string(QString::fromLatin1(obj->getClassName()));
            o.raw(",\n     ");
            o.key("parameters");
            o.raw('{');
            const HxParamBundle& params = obj->parameters();
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
            if (auto* c = dynamic_cast<const HxCluster*>(obj))
                writeCluster(o, *c);
            else if (auto* s = dynamic_cast<const HxLineSet*>(obj))
                writeLineSet(o, *s);
            else if (auto* fld = dynamic_cast<const HxRegField3*>(obj))
                writeField(o, *fld);
            o.raw('}');
        }
        o.raw(objects.empty() ? "],\n \"messages\": [" : "\n  ],\n \"messages\": [");
        for (size_t i = 0; i < messages.size(); ++i) {
            o.raw(i ? ",\n    {" : "\n    {");
            o.key("level");
            o.raw('"');
            o.raw(levelName(messages[i].level));
            o.raw("\", ");
            o.key("text");
            o.string(messages[i].text);
            o.raw('}');
        }
        o.raw(messages.empty() ? "]}\n" : "\n  ]}\n");
    }
    bool ok = o.finish();
    return std::fflush(f) == 0 && ok;
}

} // namespace hxhost
