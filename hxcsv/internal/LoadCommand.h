#pragma once
// Pieces the CSV importers share: the replay test, safe access to the host's
// arguments, the "LoadCmd" parameter, console reports, the X, Y, Z and
// value columns of the dialogs, the parser set-up and the common course of
// the point cloud and line set reader entries.
#include <QDialog>

#include "HxCSVUtils.h"
#include "McString.h"

class HxCSV;
class HxCSVParseParameters;
class HxData;
class QxCSVImport;

namespace hxcsv {

// Value columns an importer offers at most ("Value1" to "Value10").
constexpr int maxValueColumns = 10;
// X, Y and Z come first among an importer's logical columns.
constexpr int coordinateCount = 3;

// True when the last argument is exactly "-dataOnly": the import is a replay
// and shows no dialog. A longer argument that merely begins with it is not.
bool isReplay(int argc, const char** argv);

// Argument i, or "" when it is null or past the end. Readers take options at
// fixed positions; a shorter command gives empty options instead of reading
// outside the vector.
const char* argumentOrEmpty(int argc, const char** argv, int i);

// Attaches command to data as its "LoadCmd" parameter, replacing an older
// one. Nothing happens without data.
void attachLoadCommand(HxData* data, const McString& command);

// Runs the parse and keeps its result. False after a parse error, which
// goes to the console as "<file>: <parser message>".
bool parseReportingErrors(HxCSV& csv, const McString& fileName, bool ignoreColumnCount, int& result);

// Puts an import failure on the console as "<file>: <text>".
void reportImportError(const McString& fileName, const QString& text);

// True when the record gives X, Y and Z (logical columns 0-2) a file column;
// otherwise says which one is missing on the console. The dialogs never let
// them go missing, a hand-written replay can.
bool coordinatesGiven(const HxCSVParseParameters& p);

// Warns when the record chooses file columns for logical columns beyond the
// dialog's count: those columns are not imported.
void warnUnusedColumns(const HxCSVParseParameters& p, int columnCount);

// Hands the record's settings to the parser, the header flag only when
// useHeaderFlag is set, and the vertical delimiter field's text when the
// dialog's "Line delimeter" mode is checked.
void configureParser(HxCSV& csv, const HxCSVParseParameters& p, const QxCSVImport& dialog, bool useHeaderFlag,
                     bool noLineBreaks);

// Adds the mandatory logical columns "X", "Y" and "Z".
void addCoordinateColumns(QxCSVImport& dialog);

// Appends the next unread "Value%d" column (counter numbers it) while fewer
// than ten exist. Returns its logical column, or -1 when ten are there.
int addValueColumn(QxCSVImport& dialog, int& counter);

// The common course of the point cloud and line set reader entries. Dialog
// provides setFileName, exec, parseFile, setParseParameters (taking
// ownership), setupLoadCommand and takeReplayArguments, which reads the
// importer's choices from a replay's arguments. The dialog is left alive on
// every path: it keeps the parameter record and the created object.
template <class Dialog>
int readCSV(int argc, const char** argv)
{
    auto* dialog = new Dialog(nullptr, Qt::WindowFlags());
    dialog->setFileName(argumentOrEmpty(argc, argv, 0));
    if (isReplay(argc, argv)) {
        dialog->takeReplayArguments(argc, argv);
    } else if (dialog->exec() != QDialog::Accepted) {
        return 0;
    }
    const int result = dialog->parseFile();
    if (result == 1) {
        dialog->setParseParameters(HxCSVUtils::getParseParameters(dialog));
        dialog->setupLoadCommand();
    }
    return result;
}

} // namespace hxcsv
