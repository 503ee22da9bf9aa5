// The steps the importers share, and the parameter record read from a
// dialog.
#include "ImportCourse.h"

#include <cstring>

#include "HxCSV.h"
#include "HxCSVParseParameters.h"
#include "HxData.h"
#include "HxMessage.h"
#include "HxCSVUtils.h"
#include "HxParameter.h"
#include "ImportProgress.h"
#include "ImportNotices.h"
#include "QxCSVImport.h"

namespace hxcsv {

namespace {
const char replayOption[] = "-dataOnly";
const char* const coordinateNames[coordinateCount] = {"X", "Y", "Z"};
} // namespace

bool isReplay(int argc, const char** argv)
{
    return argc > 0 && std::strcmp(argumentOrEmpty(argc, argv, argc - 1), replayOption) == 0;
}

void attachLoadCommand(HxData* data, const McString& command)
{
    if (!data)
        return;
    auto* parameter = new HxParameter(QStringLiteral("LoadCmd"), command.toQString(), 0);
    parameter->setFlag(1, true);
    parameter->setFlag(2, true);
    data->parameters().insert(parameter, 1);
}

namespace {

bool parseShowingProgress(HxCSV& csv, const McString& fileName, bool ignoreColumnCount)
{
    ImportProgress reading(fileName, 0);
    csv.progress = [&reading](double share) { return reading.shareDone(share); };
    try {
        csv.parse(ignoreColumnCount, false);
        reading.finish();
        return true;
    } catch (const CSVException& e) {
        if (e.code == CSVException::Stopped)
            reading.reportStopped();
        else
            reportImportError(fileName, e.message.toQString());
        return false;
    }
}

} // namespace

// The notices follow the progress display's end, so they are not printed
// over it.
bool parseReportingErrors(HxCSV& csv, const McString& fileName, bool ignoreColumnCount)
{
    const bool parsed = parseShowingProgress(csv, fileName, ignoreColumnCount);
    if (parsed)
        warnAboutNotices(csv, fileName);
    else
        explainParseError(csv, fileName);
    return parsed;
}

void reportImportError(const McString& fileName, const QString& text)
{
    theMsg->error(fileName.toQString() + QStringLiteral(": ") + text);
}

bool coordinatesGiven(const HxCSVParseParameters& p)
{
    const McDArray<int>& indices = *p.columnIndices;
    for (int a = 0; a < coordinateCount; ++a) {
        if (a >= indices.size() || indices[a] < 0) {
            reportImportError(p.fileName, QObject::tr("no file column is given for \"%1\"").arg(coordinateNames[a]));
            return false;
        }
    }
    return true;
}

void warnUnusedColumns(const HxCSVParseParameters& p, int columnCount)
{
    const McDArray<int>& indices = *p.columnIndices;
    for (int c = columnCount; c < indices.size(); ++c) {
        if (indices[c] >= 0) {
            theMsg->warning(QObject::tr("%1: the load command names %2 columns; only the first %3 are imported")
                                .arg(p.fileName.toQString())
                                .arg(indices.size())
                                .arg(columnCount));
            return;
        }
    }
}

void configureParser(HxCSV& csv, const HxCSVParseParameters& p, const QxCSVImport& dialog, bool useHeaderFlag,
                     bool noLineBreaks)
{
    csv.setFileName(p.fileName.getString());
    csv.setCommentMarker(*p.commentMarker);
    // Before the start line, which moves past a header only when the flag is set.
    if (useHeaderFlag)
        csv.setFirstRowContainsColumnNames(p.firstRowContainsColumnNames);
    csv.setDataStartLineNum(p.dataStartLineNum);
    csv.setColumnDelimiter(*p.columnDelimiter);
    if (dialog.radioButtonLineDelimitor->isChecked())
        csv.setVerticalDelimiter(McString::fromQString(dialog.lineEditVerticalDelimiter->text()));
    csv.setNoLineBreaks(noLineBreaks);
}

void addCoordinateColumns(QxCSVImport& dialog)
{
    for (const char* name : coordinateNames)
        dialog.addColumn(name, true);
}

int addValueColumn(QxCSVImport& dialog, int& counter)
{
    if (counter > maxValueColumns)
        return -1;
    McString name;
    name.printf("Value%d", counter++);
    dialog.addColumn(name, false);
    const int c = dialog.getColumnsCount() - 1;
    // Value columns start unread; the user picks the ones wanted.
    dialog.setPhysicalColumnIndex(c, -1);
    return c;
}

} // namespace hxcsv

// Reads the dialog's widgets, so it lives with the dialogs.
HxCSVParseParameters* HxCSVUtils::getParseParameters(QxCSVImport* dialog)
{
    auto* params = new HxCSVParseParameters;
    if (!dialog)
        return params;
    const int count = dialog->getColumnsCount();
    params->columnIndices->resize(count);
    for (int i = 0; i < count; ++i)
        (*params->columnIndices)[i] = dialog->getPhysicalColumnIndex(i);
    params->fileName.printf("%s", dialog->getFileName().getString());
    *params->columnDelimiter = dialog->getColumnDelimiter();
    *params->commentMarker = dialog->getCommentMarker();
    params->dataStartLineNum = dialog->getDataStartLineNum();
    // Read even while a subclass keeps the boxes hidden: hidden means unchecked.
    params->firstRowContainsColumnNames = dialog->firstLineColumnLabels->isChecked();
    params->noLineBreaks = dialog->noLineBreaks->isChecked();
    return params;
}
