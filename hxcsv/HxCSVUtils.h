#pragma once
#include "McString.h"
#include "api.h"

class HxCSVParseParameters;
class QxCSVImport;

// Producers of parse parameter records and the writer of their load-command
// form, the "CSVParams" block:
//   CSVParams "FILE" "N C1 ... CN" "DELIMITER" "COMMENT" START HEADER NOBREAKS
// Delimiter and comment marker are escaped for the host's command-line
// splitting (\ becomes \\, " becomes \"); the file name is written as is.
class HXCSV_API HxCSVUtils {
public:
    // A new record from the dialog's current state; never null. Defined with
    // the dialogs (internal/ImportCourse.cpp), since it reads their widgets.
    static HxCSVParseParameters* getParseParameters(QxCSVImport* dialog);

    // A new record from the occurrence-th (0 = first) "CSVParams" block of a
    // split argument vector, or null when there is no such block. A command
    // without the trailing line-break flag leaves it false.
    static HxCSVParseParameters* getParseParameters(int argc, const char** argv, int occurrence);

    // The block for a record, without leading or trailing blank.
    static McString getLoadCommandString(HxCSVParseParameters* params);
};
