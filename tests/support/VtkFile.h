#pragma once
// Reads a VTK XML file that hxhost --export wrote: the attributes of its
// elements by tag and of its arrays by "Section/Name" (plus "tag"), and the
// raw appended block after its '_'.
#include <gtest/gtest.h>

#include <QFile>
#include <QMap>
#include <QXmlStreamReader>
#include <cstring>
#include <vector>

struct VtkFile {
    QMap<QString, QXmlStreamAttributes> elements, arrays;
    QByteArray block;

    QString attr(const QString& element, const QString& name) const
    {
        return (elements.contains(element) ? elements : arrays).value(element).value(name).toString();
    }
    // The array's bytes, as many as its UInt64 byte count announces.
    QByteArray bytes(const QString& array) const
    {
        const int offset = attr(array, "offset").toInt();
        quint64 n = 0;
        if (arrays.contains(array) && offset + 8 <= block.size())
            std::memcpy(&n, block.constData() + offset, 8);
        EXPECT_LE(offset + 8 + static_cast<qint64>(n), block.size()) << array.toStdString();
        return block.mid(offset + 8, static_cast<int>(n));
    }
    template <class T>
    std::vector<T> values(const QString& array) const
    {
        const QByteArray b = bytes(array);
        std::vector<T> v(b.size() / sizeof(T));
        std::memcpy(v.data(), b.constData(), v.size() * sizeof(T));
        return v;
    }
};

inline VtkFile readVtk(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    const QByteArray all = file.readAll();
    const int tag = all.indexOf("<AppendedData encoding=\"raw\">");
    EXPECT_GT(tag, 0) << path.toStdString();
    VtkFile f;
    f.block = all.mid(all.indexOf('_', tag) + 1);
    QXmlStreamReader xml(all.left(tag)); // plain XML up to the binary block
    QStringList open;
    while (xml.readNext() != QXmlStreamReader::Invalid) {
        if (xml.isEndElement())
            open.removeLast();
        if (!xml.isStartElement())
            continue;
        const QString name = xml.name().toString();
        QXmlStreamAttributes attributes = xml.attributes();
        attributes.append("tag", name);
        if (name == "DataArray" || name == "Array")
            f.arrays[open.last() + "/" + attributes.value("Name").toString()] = attributes;
        else
            f.elements[name] = attributes;
        open << name;
    }
    return f;
}
