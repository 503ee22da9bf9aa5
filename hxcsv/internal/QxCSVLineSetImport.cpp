#include "QxCSVLineSetImport.h"

#include <QComboBox>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "HxCSV.h"
#include "HxCSVUtils.h"
#include "HxLineSet.h"
#include "HxMessage.h"
#include "LargeArrays.h"

namespace {

const char lineSetOption[] = "-lineSetParams";
// Positions of the option's fields after "-lineSetParams".
enum LineSetField { DelimiterModeField = 1, DelimiterField, CountModeField, OneLineField };
const int pickerFileColumns = 99;
const int pickerMaxWidth = 80;

enum class LineMode { None, OneLine, Count, Delimiter };

// Only the value 1 switches a mode on.
bool readSwitch(const char* text)
{
    return std::strtol(text, nullptr, 10) == 1;
}

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

QxCSVLineSetImport::QxCSVLineSetImport(QWidget* parent, Qt::WindowFlags flags)
    : QxCSVImport(parent, flags)
{
    setWindowTitle(tr("Import Line Set with Values"));
    hxcsv::addCoordinateColumns(*this);
    addValuesClicked();

    for (QWidget* w : std::initializer_list<QWidget*>{radioButtonOnlyOneLine, radioButtonNumberOfPoints,
                                                      radioButtonLineDelimitor, lineEditVerticalDelimiter,
                                                      pushButtonAddValues})
        w->show();
    checkBoxCheckShots->hide();
    label->setText(tr("Data Name"));
    // Lines are always read across line breaks; the choice would only confuse.
    noLineBreaks->hide();
    connect(pushButtonAddValues, &QPushButton::clicked, this, &QxCSVLineSetImport::addValuesClicked);
    connect(radioButtonLineDelimitor, &QRadioButton::toggled, this,
            &QxCSVLineSetImport::radioButtonLineDelimitorChecked);
}

QxCSVLineSetImport::~QxCSVLineSetImport() = default;

void QxCSVLineSetImport::radioButtonLineDelimitorChecked(bool checked)
{
    lineEditVerticalDelimiter->setEnabled(checked);
}

QComboBox* QxCSVLineSetImport::createColumnDataTypePicker()
{
    auto* picker = new QComboBox;
    picker->setMaximumWidth(pickerMaxWidth);
    picker->addItem(tr("Missing"));
    for (int k = 1; k <= pickerFileColumns; ++k)
        picker->addItem(QString::number(k));
    return picker;
}

void QxCSVLineSetImport::addValuesClicked()
{
    hxcsv::addValueColumn(*this, valueColumnCounter);
}

McString QxCSVLineSetImport::getLineSetParams()
{
    const bool delimiterMode = radioButtonLineDelimitor->isChecked();
    const McString delimiter = delimiterMode ? McString::fromQString(lineEditVerticalDelimiter->text()) : "none";
    McString option;
    // The delimiter goes unquoted: one with a blank does not survive a replay.
    option.printf("%s %d %s %d %d", lineSetOption, delimiterMode ? 1 : 0, delimiter.getString(),
                  radioButtonNumberOfPoints->isChecked() ? 1 : 0, radioButtonOnlyOneLine->isChecked() ? 1 : 0);
    return option;
}

void QxCSVLineSetImport::setParseParameters(HxCSVParseParameters* p)
{
    if (p != params.get())
        params.reset(p);
}

void QxCSVLineSetImport::takeReplayArguments(int argc, const char** argv)
{
    setParseParameters(HxCSVUtils::getParseParameters(argc, argv, 0));
    bool delimiterMode = false, countMode = false, oneLine = false;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(hxcsv::argumentOrEmpty(argc, argv, i), lineSetOption) != 0)
            continue;
        // Fields missing at the end of the command read as empty: off.
        auto field = [&](int f) { return hxcsv::argumentOrEmpty(argc, argv, i + f); };
        delimiterMode = readSwitch(field(DelimiterModeField));
        countMode = readSwitch(field(CountModeField));
        oneLine = readSwitch(field(OneLineField));
        if (delimiterMode)
            lineEditVerticalDelimiter->setText(QString::fromLatin1(field(DelimiterField)));
        break;
    }
    checkLineMode(radioButtonNumberOfPoints, countMode);
    checkLineMode(radioButtonOnlyOneLine, oneLine);
    checkLineMode(radioButtonLineDelimitor, delimiterMode);
}

// Checked in turn, a later mode wins as with any radio buttons; but a
// command without modes must leave all three off, and Qt refuses to
// uncheck the checked button of an exclusive group.
void QxCSVLineSetImport::checkLineMode(QRadioButton* button, bool on)
{
    button->setAutoExclusive(on);
    button->setChecked(on);
    button->setAutoExclusive(true);
}

void QxCSVLineSetImport::setupLoadCommand()
{
    if (!createdData || !params)
        return;
    McString command;
    command.printf("load -line_set_csv \"%s\" %s %s -dataOnly", params->fileName.getString(),
                   HxCSVUtils::getLoadCommandString(params.get()).getString(), getLineSetParams().getString());
    hxcsv::attachLoadCommand(createdData, command);
}

HxCSVParseParameters* QxCSVLineSetImport::currentParseParameters()
{
    if (!params)
        params.reset(HxCSVUtils::getParseParameters(this));
    return params.get();
}

// Sets the pickers from the record, adding value columns as it names them,
// and returns the number of values per vertex: the value columns given a
// file column. Which file column does not matter, since the values of a
// vertex follow its coordinates in the file.
int QxCSVLineSetImport::applyColumnChoices(const HxCSVParseParameters& p)
{
    const McDArray<int>& indices = *p.columnIndices;
    while (getColumnsCount() < indices.size() && valueColumnCounter <= hxcsv::maxValueColumns)
        addValuesClicked();
    hxcsv::warnUnusedColumns(p, getColumnsCount());
    for (int c = 0; c < getColumnsCount() && c < indices.size(); ++c)
        setPhysicalColumnIndex(c, indices[c]);
    int perVertex = 0;
    for (int c = firstValueColumn; c < getColumnsCount(); ++c)
        perVertex += getPhysicalColumnIndex(c) >= 0 ? 1 : 0;
    return perVertex;
}

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

    int result = 0;
    if (!hxcsv::parseReportingErrors(csv, p->fileName, radioButtonNumberOfPoints->isChecked(), result))
        return 0;
    const LineMode mode = radioButtonNumberOfPoints->isChecked() ? LineMode::Count
                        : radioButtonOnlyOneLine->isChecked()    ? LineMode::OneLine
                        : radioButtonLineDelimitor->isChecked()  ? LineMode::Delimiter
                                                                 : LineMode::None;
    HxLineSet* lineSet = HxLineSet::createInstance();
    if (!LineForming(*lineSet, values, perVertex, mode, csv.verticalDelimiterRows).run()) {
        hxcsv::reportImportError(p->fileName, tr("Unexpected end of file"));
        delete lineSet; // never registered, so it is still ours
        return 0;
    }
    HxData::registerData(lineSet, p->fileName.toQString());
    createdData = lineSet;
    return result;
}

extern "C" HXCSV_API int hxReadCSVLineSet(int argc, const char** argv)
{
    return hxcsv::readCSV<QxCSVLineSetImport>(argc, argv);
}
