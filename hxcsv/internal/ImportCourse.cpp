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
#include "QxCSVImport.h"
#include "Utf8.h"

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

bool parseReportingErrors(HxCSV& csv, const McString& fileName, bool ignoreColumnCount)
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

namespace {

// Bytes as the parser read them (Latin-1), control and invisible ones
// escaped.
QString shown(const McString& text)
{
    static const char hex[] = "0123456789ABCDEF";
    QString out;
    for (int i = 0; i < text.length(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        const char* named = c == '\t' ? "\\t" : c == '\r' ? "\\r" : c == '\n' ? "\\n" : c == '\\' ? "\\\\" : nullptr;
        if (named)
            out += QLatin1String(named);
        else if (c < 0x20 || (c >= 0x7F && c <= 0xA0) || c == 0xAD)
            out += QLatin1String("\\x") + QLatin1Char(hex[c >> 4]) + QLatin1Char(hex[c & 15]);
        else
            out += QLatin1Char(static_cast<char>(c));
    }
    return out;
}

QString number(long long n)
{
    return QString::number(n);
}

// "1 record", "2 records".
QString counted(int n, const char* one, const char* many)
{
    return QString::number(n) + QLatin1Char(' ') + QLatin1String(n == 1 ? one : many);
}

bool startsWithMark(const McString& text)
{
    return std::strncmp(text.getString(), utf8ByteOrderMark, 3) == 0;
}

// Header names are texts too; the mark, if the file has one, opens the
// first.
QString utf8HeaderName(const HxCSV& csv)
{
    for (int i = 0; i < csv.columnNames.size(); ++i) {
        const McString& name = csv.columnNames[i];
        const int skip = i == 0 && startsWithMark(name) ? 3 : 0;
        if (holdsMultiByteUtf8(name.getString() + skip, static_cast<size_t>(name.length() - skip)))
            return QObject::tr("; the header name \"%1\" is read as \"%2\"")
                .arg(QString::fromUtf8(name.getString() + skip, name.length() - skip), shown(name));
    }
    return QString();
}

// What reading texts as Latin-1 did; empty when nothing.
QString latin1Notice(const HxCSV& csv)
{
    const HxCSV::Notices& n = csv.notices;
    QString text;
    if (n.byteOrderMark)
        text = QObject::tr("the file starts with a UTF-8 byte-order mark, which is read as part of the first value on "
                           "line 1, so that value is no number; ");
    else if (!csv.columnNames.isEmpty() && startsWithMark(csv.columnNames[0]))
        text = QObject::tr("the file starts with a UTF-8 byte-order mark, which is read as part of the first header "
                           "name; ");
    const HxCSV::Notice& t = n.utf8Texts;
    const QString name = utf8HeaderName(csv);
    if (text.isEmpty() && t.count == 0 && name.isEmpty())
        return text;
    text += QObject::tr("texts are read as Latin-1, so UTF-8 text looks garbled");
    if (t.count > 0)
        text += QObject::tr("; line %1 holds \"%2\", read as \"%3\" (%4 like this)")
                    .arg(number(t.line), QString::fromUtf8(t.text.getString(), t.text.length()), shown(t.text),
                         counted(t.count, "text", "texts"));
    return text + name;
}

void warn(const McString& fileName, const QString& text)
{
    theMsg->warning(fileName.toQString() + QStringLiteral(": ") + text);
}

} // namespace

void warnAboutNotices(const HxCSV& csv, const McString& fileName)
{
    const HxCSV::Notices& n = csv.notices;
    if (const HxCSV::Notice& c = n.continuedRecords; c.count > 0)
        warn(fileName, QObject::tr("line %1 (\"%2\") has %3 fields where %4 are read; the record continued on line "
                                   "%5, so later rows may be shifted (%6 like this)")
                           .arg(number(c.line), shown(c.text), number(n.fieldsOnLine), number(n.fieldsNeeded),
                                number(n.continuedOnLine), counted(c.count, "record", "records")));
    if (const HxCSV::Notice& e = n.collapsedFields; e.count > 0)
        warn(fileName, QObject::tr("line %1 (\"%2\") has an empty field, which is dropped: a run of delimiters "
                                   "counts as one and a delimiter before the first field as none, so the fields after "
                                   "it move left (%3 like this)")
                           .arg(number(e.line), shown(e.text), counted(e.count, "record", "records")));
    const QString latin1 = latin1Notice(csv);
    if (!latin1.isEmpty())
        warn(fileName, latin1);
    if (const HxCSV::Notice& t = n.cutTexts; t.count > 0)
        warn(fileName, QObject::tr("line %1 is longer than a record may be (%2 bytes), so its text is cut there and "
                                   "the rest is read as the next record; later rows may be shifted (%3 like this): "
                                   "\"%4...\"")
                           .arg(number(t.line), number(HxCSV::lineBufferSize - 1), counted(t.count, "text", "texts"),
                                shown(t.text)));
}

void explainParseError(const HxCSV& csv, const McString& fileName)
{
    const HxCSV::Notices& n = csv.notices;
    const QString file = fileName.toQString();
    if (const HxCSV::Notice& f = n.failedRecord; f.count > 0 && f.line > 0)
        theMsg->printf((n.endOfFile ? QObject::tr("%1: the line number above counts data records; the file ends with "
                                                  "line %2: \"%3\"")
                                    : QObject::tr("%1: the line number above counts data records; the record starts on "
                                                  "line %2 of the file: \"%3\""))
                           .arg(file, number(f.line), shown(f.text)));
    if (n.byteOrderMark)
        theMsg->printf(QObject::tr("%1: the file starts with a UTF-8 byte-order mark, which is read as part of the "
                                   "first value on line 1; texts are read as Latin-1")
                           .arg(file));
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
