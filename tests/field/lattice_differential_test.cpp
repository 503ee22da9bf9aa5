// The uniform field importer against the reference reader
// (tests/reference/RefLatticeReader): random files and settings, read by
// both, one to three files in a row to one dialog, whose value arrays keep
// what the earlier reads left. The value array, the lattice bytes and every
// console message must be the same.
//
// CI reads 400 random files, most of them in blocks of a few bytes or a few
// kilobytes; set HX_DIFFERENTIAL_FILES for more (e.g.
// HX_DIFFERENTIAL_FILES=50000 build/bin/field_tests --gtest_filter='LatticeDifferential.*').
#include <QByteArray>
#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "Differential.h"
#include "FieldImport.h"
#include "NumberSpellings.h"
#include "RefLatticeReader.h"

namespace {

const int elementSizes[] = {1, 2, 2, 4, 4, 8};

std::string describe(const ref::LatticeSettings& s)
{
    return "delimiter \"" + visible(s.delimiter.toLatin1().toStdString()) + "\" comment \""
           + visible(s.comment.toLatin1().toStdString())
           + "\" first " + std::to_string(s.firstLine) + " type " + std::to_string(s.type) + " vars "
           + std::to_string(s.nDataVar) + " dims " + std::to_string(s.dims[0]) + "x" + std::to_string(s.dims[1]) + "x"
           + std::to_string(s.dims[2]) + (s.xFastest ? " x" : " z") + " fastest" + (s.quiet ? " quiet" : "");
}

std::string console()
{
    std::string out;
    for (const HxMessage::Entry& e : theMsg->entries())
        out += std::to_string(e.level) + " " + e.text.toStdString() + "\n";
    return out;
}

size_t latticeBytes(const ref::LatticeSettings& s)
{
    return static_cast<size_t>(s.dims[0]) * s.dims[1] * s.dims[2] * s.nDataVar * elementSizes[s.type];
}

// Random settings and files made of what matters to the reader: delimiters
// alone, in runs and at the ends of lines; comment, blank and junk lines;
// every line end; lines around and past the 10000-byte pieces; numbers in
// every spelling.
class FileMaker {
public:
    explicit FileMaker(uint64_t seed) : rng(seed), numbers(seed + 1) {}

    int pick(int n) { return static_cast<int>(rng() % static_cast<uint64_t>(n)); }

    ref::LatticeSettings settings(int type)
    {
        static const char* delimiters[] = {",", " ", "\t", ";", "", "e", ".", "-", "0", "\xa0", "ab", "\r"};
        static const char* comments[] = {"", "#", "%", "1", "-", ",", "\xa0"};
        ref::LatticeSettings s;
        s.delimiter = QString::fromLatin1(delimiters[pick(3) ? pick(4) : pick(12)]);
        if (pick(30) == 0)
            s.delimiter = QString(QChar(0x100)); // beyond Latin-1: no delimiter
        s.comment = QString::fromLatin1(comments[pick(7)]);
        s.firstLine = pick(3) ? 1 : pick(7) - 1;
        s.type = type;
        s.nDataVar = pick(2) ? 1 : 1 + pick(6);
        s.xFastest = pick(2);
        s.quiet = pick(4) == 0;
        return s;
    }

    // A file for the settings; its lattice is sized to about as many nodes
    // as the file has values.
    std::string file(ref::LatticeSettings& s)
    {
        messy = pick(4) == 0;
        delimiter = firstByte(s.delimiter);
        comment = firstByte(s.comment);
        values = 0;
        std::string out;
        const int lines = pick(10) == 0 ? 0 : pick(4) == 0 ? pick(60) : pick(12);
        for (int i = 0; i < lines; ++i)
            out += line() + lineEnd();
        if (pick(4) == 0 && !out.empty())
            out.pop_back(); // no line end after the last line
        size(s);
        return out;
    }

private:
    std::string line()
    {
        switch (pick(messy ? 12 : 40)) {
        case 0: return comment + words();
        case 1: return "";
        case 2: return junk();
        case 3: return pieceSized();
        case 4: return longLine();
        default: return row(1 + pick(pick(4) ? 12 : 60));
        }
    }

    std::string row(int fields)
    {
        const bool ends = pick(8) == 0;
        std::string out = ends ? separator() : "";
        for (int i = 0; i < fields; ++i)
            out += (i > 0 ? separator() : "") + field();
        return ends ? out + separator() : out;
    }

    // Lines that end a few bytes either side of a piece of 9999 bytes, with
    // or without a line end of their own.
    std::string pieceSized()
    {
        std::string out = row(1 + pick(30));
        const size_t wanted = 9996 * static_cast<size_t>(1 + pick(2)) + static_cast<size_t>(pick(8));
        if (out.size() < wanted)
            out.insert(0, std::string(wanted - out.size(), pick(2) ? '0' : delimiterOrBlank()));
        return out;
    }

    // More than one piece: piece boundaries fall inside numbers and
    // between a number and its delimiter.
    std::string longLine()
    {
        std::string out;
        const size_t length = 10000 + static_cast<size_t>(pick(pick(3) ? 3000 : 25000));
        while (out.size() < length)
            out += field() + separator();
        return out;
    }

    std::string field()
    {
        ++values;
        if (!messy && pick(10))
            return plainNumber();
        switch (pick(8)) {
        case 0: return numbers.junk();
        case 1: return std::string(1, "\0\r\n\x85"[pick(4)]);
        case 2: case 3: case 4: return plainNumber();
        default: return numbers.next();
        }
    }

    std::string plainNumber()
    {
        char text[40];
        std::snprintf(text, sizeof text, pick(8) ? "%.*f" : "%.*e", pick(8),
                      (static_cast<double>(rng() % 2000000) - 1000000) / (pick(2) ? 1000 : 1));
        return text;
    }

    std::string separator()
    {
        if (pick(messy ? 10 : 200) == 0)
            return std::string(1, " ,;\t.-"[pick(6)]);
        const std::string d = delimiter.empty() ? std::string(1, ' ') : delimiter;
        return pick(messy ? 5 : 40) == 0 ? d + d : d;
    }

    static std::string firstByte(const QString& text)
    {
        return text.isEmpty() || text[0].unicode() > 0xff ? std::string() : std::string(1, text[0].toLatin1());
    }

    char delimiterOrBlank() { return delimiter.empty() ? ' ' : delimiter[0]; }

    std::string junk()
    {
        std::string out;
        for (int i = pick(30); i > 0; --i)
            out += static_cast<char>(pick(256));
        return out;
    }

    std::string words()
    {
        static const char* words[] = {"a", "x y", "1,2", " 3 ", "nan", "-"};
        std::string out;
        for (int i = pick(3); i >= 0; --i)
            out += words[pick(6)];
        return out;
    }

    std::string lineEnd()
    {
        switch (pick(10)) {
        case 0: return "\r\n";
        case 1: return "\r";
        case 2: return "\n\n";
        default: return "\n";
        }
    }

    // Dimensions for about as many nodes as the file has fields: now the
    // same, now a few more or fewer.
    void size(ref::LatticeSettings& s)
    {
        const int nodes = std::max(1, values / s.nDataVar + (pick(3) ? 0 : pick(7) - 3));
        s.dims[2] = pick(3) ? 1 : 1 + pick(3);
        s.dims[1] = pick(2) ? 1 : 1 + pick(4);
        s.dims[0] = std::max(1, nodes / (s.dims[1] * s.dims[2]));
    }

    std::mt19937_64 rng;
    NumberSpellings numbers;
    bool messy = false;
    std::string delimiter, comment;
    int values = 0;
};

class LatticeDifferential : public FieldTest {
protected:
    // The settings, as the dialog holds them, into the dialog.
    static void apply(QxCSVUniformScalarFieldImport& dialog, ref::LatticeSettings& s)
    {
        FieldSettings f{s.type, s.nDataVar, {s.dims[0], s.dims[1], s.dims[2]}, s.xFastest, "", "", s.firstLine};
        applySettings(dialog, f);
        dialog.lineEditColumnDelimiter->setText(s.delimiter);
        dialog.lineEditCommentMarker->setText(s.comment);
        dialog.setQuiet(s.quiet);
        s.delimiter = dialog.lineEditColumnDelimiter->text();
        s.comment = dialog.lineEditCommentMarker->text();
    }

    // Everything one read leaves behind, as text: the console, the lattice
    // and, unless the dialog was told it reads once, the value array.
    std::string ours(QxCSVUniformScalarFieldImport& dialog, const QString& path, bool keepsValues)
    {
        theMsg->clearEntries();
        dialog.setFileName(path.toLocal8Bit());
        EXPECT_EQ(dialog.parseFile(), 1);
        const HxRegField3* field = lastField();
        std::string out = console() + "lattice ";
        if (field) {
            const HxLattice3& lattice = field->lattice();
            out += hex(lattice.dataPtr().getData(),
                       static_cast<size_t>(lattice.numNodes() * lattice.nDataVar() * lattice.primType().size()));
        }
        if (keepsValues)
            out += "\nvalues "
                   + hex(dialog.getArrayData(),
                         static_cast<size_t>(dialog.getArraySize()) * dialog.getPrimType().size());
        HxObjectPool::instance()->clear();
        return out;
    }

    static std::string theirs(ref::LatticeReader& reader, const QString& path, const ref::LatticeSettings& s,
                              bool keepsValues)
    {
        theMsg->clearEntries();
        std::vector<char> lattice(latticeBytes(s));
        reader.parse(path.toLocal8Bit().constData(), s, lattice.data());
        std::string out = console() + "lattice " + hex(lattice.data(), latticeBytes(s));
        if (keepsValues)
            out += "\nvalues " + hex(reader.arrayData(s.type),
                                     static_cast<size_t>(reader.arraySize(s.type)) * elementSizes[s.type]);
        return out;
    }
};

TEST_F(LatticeDifferential, RandomFilesGiveTheSameResults)
{
    FileMaker maker(20240917);
    const long long n = differentialFileCount(400);
    int failures = 0;
    for (long long i = 0; i < n && failures < 5;) {
        // One dialog for a few files in a row; a dialog told that it reads
        // once keeps no values to compare.
        QxCSVUniformScalarFieldImport dialog;
        ref::LatticeReader reader;
        const int reads = maker.pick(3) ? 1 : 2 + maker.pick(2);
        const bool once = reads == 1 && maker.pick(2);
        dialog.setSingleParse(once);
        int type = maker.pick(6);
        for (int r = 0; r < reads; ++r, ++i) {
            if (maker.pick(3) == 0)
                type = maker.pick(6);
            ref::LatticeSettings s = maker.settings(type);
            const std::string content = maker.file(s);
            const QString path =
                write(QString("data%1.csv").arg(r), QByteArray(content.data(), static_cast<int>(content.size())));
            const BlockSize blocks(maker.pick(4) == 0 ? 1 << 20
                                   : maker.pick(2)    ? 1 + maker.pick(64)
                                                      : 64 + maker.pick(20000));
            apply(dialog, s);
            const std::string a = ours(dialog, path, !once);
            const std::string b = theirs(reader, path, s, !once);
            if (a != b) {
                ++failures;
                ADD_FAILURE() << describe(s) << " read " << r << "\nfile:\n" << visible(content.substr(0, 2000))
                              << "\n" << visible(firstDifference(a, b));
            }
        }
    }
}

} // namespace
