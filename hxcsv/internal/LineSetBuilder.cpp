// Building a line set: the file's numbers, read in order, walked vertex by
// vertex into points, per-vertex values and lines.
#include <memory>

#include "HxCSV.h"
#include "HxLineSet.h"
#include "ImportCourse.h"
#include "LargeArrays.h"
#include "QxCSVLineSetImport.h"

namespace {

enum class LineMode { None, OneLine, Count, Delimiter };

// Walks the parsed numbers vertex by vertex, x, y, z and then the vertex's
// values, and hands points, lines and per-vertex values to the line set.
class LineForming {
public:
    LineForming(HxLineSet& set, const McDArray<float>& values, int valuesPerVertex, LineMode mode,
                const McDArray<int>& breakRows)
        : set(set), values(values), n(values.size()), perVertex(valuesPerVertex), mode(mode), breakRows(breakRows)
    {
        hxcsv::reserveFinalSize(pointIndex, n);
        pointIndex.resize(n);
    }

    // False when the data end inside a vertex.
    bool run()
    {
        int k = 0;
        while (p < n) {
            k = passLength();
            passValues.resize(k * perVertex);
            if (mode == LineMode::Count)
                ++p; // past the count
            for (int j = 0; j < k; ++j) {
                if (mode == LineMode::Count && j >= 1)
                    ++p;
                if (mode == LineMode::Delimiter)
                    breakLineBefore(j);
                if (p + perVertex + 2 >= n)
                    return false;
                addVertex(j);
            }
            endPass(k);
            ++p;
        }
        finish(k);
        flushPoints();
        return true;
    }

private:
    // Vertices of this pass: the count in front of the line, or in the other
    // modes as many whole vertices as the data hold. A count that is not a
    // number or below 0 gives none; one beyond the data cannot be met and
    // is cut to the number of values, so it still ends at the data's end.
    int passLength() const
    {
        if (mode != LineMode::Count)
            return n / (perVertex + 3);
        const float count = values[p];
        if (!(count > 0))
            return 0;
        return count >= n ? n : static_cast<int>(count);
    }

    // A break row on this vertex's x ends the current line before it. The
    // breaks are met in order: one that falls elsewhere stays the next.
    void breakLineBefore(int j)
    {
        if (nextBreak >= breakRows.size() || breakRows[nextBreak] != p)
            return;
        lineStarts.append(lineFirst);
        addLine(j - lineFirst, lineFirst);
        lineFirst = j;
        ++nextBreak;
    }

    // Points go to the line set a batch at a time; a line is handed over
    // only once all its points are there.
    void addPoint(const McVec3f& point)
    {
        if (pendingPoints == pointBatch)
            flushPoints();
        pending[pendingPoints++] = point;
    }

    void flushPoints()
    {
        set.addPoints(pending, pendingPoints);
        pendingPoints = 0;
    }

    void addVertex(int j)
    {
        addPoint(McVec3f(values[p], values[p + 1], values[p + 2]));
        p += 2;
        pointIndex[vertex] = vertex;
        for (int t = 0; t < perVertex; ++t)
            passValues[j * perVertex + t] = values[p + 1 + t];
        p += perVertex;
        if (mode == LineMode::OneLine || mode == LineMode::Delimiter)
            ++p; // to the next vertex's x
        ++vertex;
    }

    void endPass(int k)
    {
        if (mode == LineMode::OneLine)
            addLine(k, 0);
        if (mode == LineMode::Count) {
            setNumDataValues();
            addLine(k, vertex - k);
            writeValues(lineCounter++, 0, k);
        }
    }

    // The delimiter and one-line modes make one pass; its values go to the
    // lines once all are formed.
    void finish(int k)
    {
        if (mode == LineMode::Delimiter) {
            lineStarts.append(lineFirst);
            addLine(k - lineFirst, lineFirst);
            setNumDataValues();
            for (int line = 0; line < lineStarts.size(); ++line) {
                const int end = line + 1 < lineStarts.size() ? lineStarts[line + 1] : k;
                writeValues(line, lineStarts[line], end - lineStarts[line]);
            }
        }
        if (mode == LineMode::OneLine) {
            setNumDataValues();
            writeValues(0, 0, k);
        }
    }

    // The data arrays take the size of the points there are.
    void setNumDataValues()
    {
        flushPoints();
        set.setNumDataValues(perVertex);
    }

    void addLine(int count, int first)
    {
        flushPoints();
        set.addLine(count > 0 ? count : 0, pointIndex.dataPtr() + first, -1);
    }

    // Values of the pass's vertices first .. first+count-1, which the line
    // holds from its start, go to the line set's points.
    void writeValues(int line, int first, int count)
    {
        for (int i = 0; i < count; ++i)
            for (int t = 0; t < perVertex; ++t)
                set.getData(t)[set.getLineVertex(line, i)] = passValues[(first + i) * perVertex + t];
    }

    HxLineSet& set;
    const McDArray<float>& values;
    const int n;
    const int perVertex;
    const LineMode mode;
    const McDArray<int>& breakRows;
    static constexpr int pointBatch = 4096;
    McVec3f pending[pointBatch];
    int pendingPoints = 0;
    McDArray<int> pointIndex; // point index of every vertex
    McDArray<float> passValues; // the values of this pass's vertices
    McDArray<int> lineStarts;   // first vertex of each line (delimiter mode)
    int p = 0;                  // read position
    int vertex = 0;
    int lineCounter = 0;
    int lineFirst = 0;
    int nextBreak = 0;
};

} // namespace

int QxCSVLineSetImport::parseFile()
{
    HxCSVParseParameters* p = currentParseParameters();
    if (!hxcsv::coordinatesGiven(*p))
        return 0;
    HxCSV csv;
    // All numbers of the file in reading order, one record each.
    hxcsv::configureParser(csv, *p, *this, false, true);
    firstLineColumnLabels->setChecked(p->firstRowContainsColumnNames);
    McDArray<float> values;
    csv.addColumn(0, &values);
    const int perVertex = applyColumnChoices(*p);

    if (!hxcsv::parseReportingErrors(csv, p->fileName, radioButtonNumberOfPoints->isChecked()))
        return 0;
    const LineMode mode = radioButtonNumberOfPoints->isChecked() ? LineMode::Count
                        : radioButtonOnlyOneLine->isChecked()    ? LineMode::OneLine
                        : radioButtonLineDelimitor->isChecked()  ? LineMode::Delimiter
                                                                 : LineMode::None;
    std::unique_ptr<HxLineSet> lineSet(HxLineSet::createInstance());
    if (!LineForming(*lineSet, values, perVertex, mode, csv.verticalDelimiterRows).run()) {
        hxcsv::reportImportError(p->fileName, tr("Unexpected end of file"));
        return 0;
    }
    createdData = lineSet.release();
    HxData::registerData(createdData, p->fileName.toQString());
    return 1;
}
