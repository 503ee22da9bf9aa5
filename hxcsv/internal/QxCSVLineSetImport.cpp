// The line set dialog: its line modes, the replay arguments and the
// "-lineSetParams" option of its LoadCmd.
#include "QxCSVLineSetImport.h"

#include <QComboBox>
#include <cstring>

#include "HxCSVUtils.h"
#include "HxLineSet.h"
#include "HxMessage.h"
#include "ImportCourse.h"

namespace {

const char lineSetOption[] = "-lineSetParams";
// Positions of the option's fields after "-lineSetParams".
enum LineSetField { DelimiterModeField = 1, DelimiterField, CountModeField, OneLineField };
} // namespace

QxCSVLineSetImport::QxCSVLineSetImport(QWidget* parent, Qt::WindowFlags flags)
    : QxCSVParsedImport(parent, flags)
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
    return createColumnPicker();
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

void QxCSVLineSetImport::takeReplayArguments(int argc, const char** argv)
{
    setParseParameters(HxCSVUtils::getParseParameters(argc, argv, 0));
    bool delimiterMode = false, countMode = false, oneLine = false;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(hxcsv::argumentOrEmpty(argc, argv, i), lineSetOption) != 0)
            continue;
        // Fields missing at the end of the command read as empty: off.
        auto field = [&](int f) { return hxcsv::argumentOrEmpty(argc, argv, i + f); };
        delimiterMode = hxcsv::readFlag(field(DelimiterModeField));
        countMode = hxcsv::readFlag(field(CountModeField));
        oneLine = hxcsv::readFlag(field(OneLineField));
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

McString QxCSVLineSetImport::loadCommand()
{
    McString command;
    command.printf("load -line_set_csv \"%s\" %s %s -dataOnly", params->fileName.getString(),
                   HxCSVUtils::getLoadCommandString(params.get()).getString(), getLineSetParams().getString());
    return command;
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
    warnColumnsNotUsed(p.fileName);
    return perVertex;
}

// The numbers are taken in the file's order whatever the pickers say; a
// user who chose other file columns is told once, at the first of them.
void QxCSVLineSetImport::warnColumnsNotUsed(const McString& fileName)
{
    int position = 0;
    for (int c = 0; c < getColumnsCount(); ++c) {
        const int chosen = getPhysicalColumnIndex(c);
        if (chosen < 0)
            continue;
        if (chosen != position) {
            theMsg->warning(tr("%1: a line set takes the numbers of a row in the file's order (x, y, z, then one "
                               "per value column), so the chosen file columns are not used: \"%2\" is set to "
                               "file column %3 but takes number %4 of the row")
                                .arg(fileName.toQString(), columns[c].name.toQString())
                                .arg(chosen + 1)
                                .arg(position + 1));
            return;
        }
        ++position;
    }
}
