#pragma once
// Pieces every CSV reader entry shares: the replay test, safe access to the
// host's arguments, the "LoadCmd" parameter and the entry's common course.
#include <QDialog>

#include "HxCSVUtils.h"
#include "McString.h"

class CSVException;
class HxData;

namespace hxcsv {

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

// Puts a parse failure on the host console as "<file>: <parser message>".
void reportParseError(const McString& fileName, const CSVException& e);

// Puts another import failure on the console, again naming the file.
void reportImportError(const McString& fileName, const QString& text);

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
