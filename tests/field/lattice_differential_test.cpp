// The uniform field reader against the oracle of its rules
// (tests/oracle/LatticeOracle.h): one to three reads in a row of random files
// by one dialog, whose value arrays keep what earlier reads left, in blocks of
// every size. CI reads 400 files; HX_DIFFERENTIAL_FILES=50000
// build/bin/field_tests --gtest_filter='LatticeDifferential.*' reads more.
#include <QFile>
#include <QTemporaryDir>

#include "Differential.h"
#include "FieldImport.h"
#include "LatticeOracle.h"

namespace {

char firstByte(const QString& text)
{
    return text.isEmpty() || text[0].unicode() > 0xff ? '\0' : static_cast<char>(text[0].unicode());
}

TEST(LatticeDifferential, RandomFiles)
{
    static const char* delimiters[] = {",", " ", "\t", ";", "", "e", ".", "-", "0", "\xa0", "ab", "\r"};
    static const char* comments[] = {"", "#", "%", "1", "-", ",", "\xa0"};
    static const char* levels[] = {"info ", "warning ", "error "};
    // The ends of each type's range and past them: integers wrap, floats
    // round to infinity from half an ulp past FLT_MAX on.
    static const char* rangeEnds[] = {"300", "-1", "2.9", "-2.9", "40000", "32767", "-32769", "70000", "65535", "3e9",
                                      "nan", "-2147483648.9", "2147483647.5", "1e300", "-1e-300", "-0", "3.4028235e38",
                                      "3.4028235677973366e38", "-3.4028235677973362e38", "inf", "-inf"};
    FileMaker m(20240917);
    QTemporaryDir dir;
    int failures = 0;
    for (long long i = runCount("HX_DIFFERENTIAL_FILES", 400); i > 0 && failures < 5;) {
        QxCSVUniformScalarFieldImport dialog;
        oracle::LatticeReader expected;
        const int reads = m.pick(3) ? 1 : 2 + m.pick(2);
        const bool once = reads == 1 && m.pick(2); // no value arrays to compare then
        dialog.setSingleParse(once);
        oracle::LatticeSettings s;
        s.type = m.pick(6);
        for (int r = 0; r < reads; ++r, --i) {
            const std::string path = dir.filePath(QString("data%1.csv").arg(r)).toStdString();
            const size_t block = m.pick(4) == 0 ? 1 << 20 : m.pick(2) ? 1 + m.pick(64) : 64 + m.pick(20000);
            s.type = m.pick(3) ? s.type : m.pick(6);
            s.nDataVar = m.pick(2) ? 1 : 1 + m.pick(6);
            s.xFastest = m.pick(2);
            s.quiet = m.pick(4) == 0;
            const QString delimiter = QString::fromLatin1(delimiters[m.pick(3) ? m.pick(4) : m.pick(12)]);
            dialog.lineEditColumnDelimiter->setText(m.pick(30) ? delimiter : QString(QChar(0x100))); // or no Latin-1
            dialog.lineEditCommentMarker->setText(QString::fromLatin1(comments[m.pick(7)]));
            dialog.setDataStartLineNum(m.pick(3) ? 1 : m.pick(7) - 1);
            s.delimiter = firstByte(dialog.lineEditColumnDelimiter->text());
            s.comment = firstByte(dialog.lineEditCommentMarker->text());
            s.firstLine = dialog.lineEditDataLineNum->text().toInt();
            const std::string d(s.delimiter ? 1 : 0, s.delimiter);
            std::string content = m.file({d, std::string(s.comment ? 1 : 0, s.comment), "",
                                          1 + m.pick(m.pick(4) ? 12 : 60), block, 9999});
            for (const char* value : rangeEnds)
                content += m.pick(4) ? "" : value + d;
            // About as many nodes as the file has values: now as many, now a few more or fewer.
            oracle::LatticeReader counter;
            std::string scratch;
            counter.read(content, path, s, scratch);
            const int values = int(counter.values[s.type].size()) / oracle::elementSizes[s.type] / s.nDataVar;
            s.dims[2] = m.pick(3) ? 1 : 1 + m.pick(3);
            s.dims[1] = m.pick(2) ? 1 : 1 + m.pick(4);
            s.dims[0] = std::max(1, (values + (m.pick(3) ? 0 : m.pick(7) - 3)) / (s.dims[1] * s.dims[2]));

            QFile file(QString::fromStdString(path));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(content.data(), static_cast<qint64>(content.size()));
            file.close();
            const BlockSize blocks(block);
            dialog.setFileName(path.c_str());
            applyLayout(dialog, s);
            dialog.setQuiet(s.quiet);
            dialog.getParseParameters();
            HxLattice3 lattice(McDim3l(s.dims[0], s.dims[1], s.dims[2]), s.nDataVar, dialog.getPrimType(), C_UNIFORM,
                               nullptr);
            theMsg->clearEntries();
            dialog.getParseResult(&lattice);

            std::string got, expectedLattice;
            for (const HxMessage::Entry& e : theMsg->entries()) // as the oracle writes them
                got += levels[e.level] + e.text.mid(e.level == HxMessage::Warning ? 9 : 0).toStdString() + "\n";
            got += "lattice " + std::string(static_cast<const char*>(lattice.dataPtr().getData()), lattice.dataBytes());
            std::string wanted = expected.read(content, path, s, expectedLattice) + "lattice " + expectedLattice;
            if (!once && dialog.getArraySize() > 0)
                got += "\nvalues " + std::string(static_cast<const char*>(dialog.getArrayData()),
                                                 dialog.getArraySize() * dialog.getPrimType().size());
            if (!once && !expected.values[s.type].empty())
                wanted += "\nvalues " + expected.values[s.type];
            char settings[300]; // a delimiter or comment of 0 is written as a NUL, which visible shows
            const int n = std::snprintf(settings, sizeof settings, "delimiter '%c' comment '%c' first line %d type %d "
                                        "nDataVar %d dims %dx%dx%d %c fastest, quiet %d block %zu single parse %d",
                                        s.delimiter, s.comment, s.firstLine, s.type, s.nDataVar, s.dims[0], s.dims[1],
                                        s.dims[2], s.xFastest ? 'x' : 'z', s.quiet, block, once);
            EXPECT_TRUE(got == wanted) << visible(std::string(settings, std::min<size_t>(n, sizeof settings - 1)))
                                       << ", read " << r << "\nfile:\n" << visible(content.substr(0, 3000)) << "\n"
                                       << firstDifference(got, wanted);
            failures += got != wanted;
        }
    }
}

} // namespace
