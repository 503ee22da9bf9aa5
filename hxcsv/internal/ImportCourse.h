#pragma once
// The course every reader entry follows, and the steps the importers share:
//
//   replay test -> dialog (shown, or set from the replay's arguments)
//   -> parseFile (parse, build into an owner, register last)
//   -> recordLoadCommand ("LoadCmd" on the registered object)
//
// The point cloud and line set parse with HxCSV and write their LoadCmd
// from a record taken afresh from the dialog; the uniform field reads its
// file with its own tokenizer and attaches its LoadCmd inside parseFile.
#include <QDialog>

#include "HxCSVArguments.h"
#include "HxMessage.h"
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

// The one reader course. Dialog provides setFileName, exec, parseFile and
// takeReplayArguments (the importer's choices from a replay's arguments);
// QxCSVImport gives empty defaults for prepareReaderImport and
// recordLoadCommand. The dialog is never deleted: it keeps the
// parameter record and points to the created object, which outlive the
// call; as a top-level widget it stays reachable until the host quits.
template <class Dialog>
int readCSV(const char* entry, int argc, const char** argv)
{
    if (argc < 1 || !argv) {
        theMsg->error(QStringLiteral("%1: no file name given").arg(QLatin1String(entry)));
        return 0;
    }
    auto* dialog = new Dialog(nullptr, Qt::WindowFlags());
    dialog->setFileName(argumentOrEmpty(argc, argv, 0));
    dialog->prepareReaderImport();
    if (isReplay(argc, argv))
        dialog->takeReplayArguments(argc, argv);
    else if (dialog->exec() != QDialog::Accepted)
        return 0;
    const int result = dialog->parseFile();
    if (result == 1)
        dialog->recordLoadCommand();
    return result;
}

// Attaches command to data as its "LoadCmd" parameter, replacing an older
// one. Nothing happens without data.
void attachLoadCommand(HxData* data, const McString& command);

// Runs the parse, its progress shown by the host. False after a parse
// error, which goes to the console as "<file>: <parser message>" with the
// line of the file it means, or when the user stopped it ("import of <file>
// stopped at N %"). After a parse, warns where the rules changed the data.
bool parseReportingErrors(HxCSV& csv, const McString& fileName, bool ignoreColumnCount);

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

} // namespace hxcsv
