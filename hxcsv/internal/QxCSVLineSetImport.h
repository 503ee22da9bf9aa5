#pragma once
#include "HxCSVParseParameters.h"
#include "HxLineSet.h"
#include "ImportCourse.h"
#include "QxCSVParsedImport.h"
#include "api.h"

class QComboBox;
class QRadioButton;

// Import dialog and builder of line sets. Every vertex takes x, y, z and one
// value per chosen value column from consecutive numbers of the file; the
// checked radio button decides where lines end: "Only one line", "1st value
// is # of points per line" (each line starts with its vertex count) or
// "Line delimeter" (lines starting with the delimiter text end a line).
class HXCSV_API QxCSVLineSetImport : public QxCSVParsedImport {
    Q_OBJECT

public:
    static constexpr int firstValueColumn = hxcsv::coordinateCount;

    explicit QxCSVLineSetImport(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~QxCSVLineSetImport() override;

    // A column picker like the base dialog's; this dialog places none.
    QComboBox* createColumnDataTypePicker();

    // "-lineSetParams DELIMITER-MODE DELIMITER COUNT-MODE ONE-LINE", the
    // delimiter unquoted and "none" outside the delimiter mode.
    McString getLineSetParams();

    // Replay: the parse parameters and the line mode from a load command.
    void takeReplayArguments(int argc, const char** argv);

    // Parses the file, forms the lines and registers the line set. 1 on
    // success; 0 after an error on the console, with nothing registered.
    int parseFile();
    HxLineSet* createdLineSet() const { return static_cast<HxLineSet*>(createdData); }

public slots:
    void radioButtonLineDelimitorChecked(bool checked);
    void addValuesClicked();

private:
    McString loadCommand() override;
    int applyColumnChoices(const HxCSVParseParameters& p);
    void warnColumnsNotUsed(const McString& fileName);
    void checkLineMode(QRadioButton* button, bool on);

    int valueColumnCounter = 1;
};

extern "C" HXCSV_API int hxReadCSVLineSet(int argc, const char** argv);
