#include "QxCSVImport.h"

#include <QComboBox>
#include <QFile>
#include <QHeaderView>
#include <QIntValidator>
#include <QMessageBox>
#include <QSignalBlocker>
#include <QTableWidgetItem>

#include "HxMessage.h"

namespace {

// Pickers offer "Missing" and then the file columns 1 to 99.
const int pickerFileColumns = 99;
const int pickerMaxWidth = 80;
// One preview row holds at most this many bytes; a longer line goes on in
// the next row.
const int previewPieceBytes = 1023;
const int maxDataStartLine = 2000000000;

struct DelimiterEntry {
    const char* delimiter;
    bool editable;
};

// Indexed like the entries of comboBoxColumnDelimiter: Space, Comma, Tab,
// Semicolon, Other.
const DelimiterEntry delimiterEntries[] = {
    {" ", false}, {",", false}, {"\t", false}, {";", false}, {"", true},
};
const int delimiterEntryCount = sizeof delimiterEntries / sizeof delimiterEntries[0];
const int otherDelimiterEntry = delimiterEntryCount - 1;

QByteArray withoutLineBreak(const char* text, qint64 length)
{
    while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r'))
        --length;
    return QByteArray(text, static_cast<int>(length));
}

} // namespace

QxCSVImport::QxCSVImport(QWidget* parent, Qt::WindowFlags flags)
    : QDialog(parent, flags)
{
    setupUi(this);

    // Importer-specific widgets; each importer shows the ones it uses.
    for (QWidget* w : std::initializer_list<QWidget*>{
             pushButtonAddValues, radioButtonOnlyOneLine, radioButtonNumberOfPoints, radioButtonLineDelimitor,
             lineEditVerticalDelimiter, orderBox, resModeBG, inputBox, firstLineColumnLabels})
        w->hide();

    connect(pushButtonOK, &QPushButton::clicked, this, &QxCSVImport::acceptClicked);
    connect(pushButtonCancel, &QPushButton::clicked, this, &QxCSVImport::rejectClicked);
    connect(comboBoxColumnDelimiter, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &QxCSVImport::columnDelimiterChanged);

    tableWidgetColumnIndexes->setRowCount(1);
    tableWidgetColumnIndexes->verticalHeader()->hide();
    // Tab goes from picker to picker (addToTabOrder) and on to the settings;
    // the tables themselves would keep it cycling through their cells.
    tableWidgetColumnIndexes->setTabKeyNavigation(false);
    tableWidgetColumnIndexes->setFocusPolicy(Qt::NoFocus);
    tableWidgetDataPvw->setTabKeyNavigation(false);

    // The field must match the list's first entry ("Space") from the start.
    columnDelimiterChanged(comboBoxColumnDelimiter->currentIndex());
    lineEditDataLineNum->setValidator(new QIntValidator(1, maxDataStartLine, this));
}

QxCSVImport::~QxCSVImport()
{
    delete fileName;
}

bool QxCSVImport::setFileName(const char* name)
{
    delete fileName;
    fileName = new McString(name);
    return loadFilePreview();
}

bool QxCSVImport::loadFilePreview()
{
    tableWidgetDataPvw->clear();
    tableWidgetDataPvw->setRowCount(0);
    tableWidgetDataPvw->setColumnCount(1);
    tableWidgetDataPvw->horizontalHeader()->hide();

    // File names are the file system's bytes, not Latin-1 text.
    const QString name = QFile::decodeName(getFileName().getString());
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        theMsg->ioError(name, QString());
        return false;
    }
    fillPreviewRows(file);
    return true;
}

void QxCSVImport::fillPreviewRows(QFile& file)
{
    char buffer[previewPieceBytes + 1];
    int rows = 0;
    bool lineGoesOn = false;
    for (;;) {
        const qint64 n = file.readLine(buffer, sizeof buffer);
        if (n <= 0)
            break;
        const bool pieceOfLongerLine = buffer[n - 1] != '\n';
        const QByteArray text = withoutLineBreak(buffer, n);
        // A line that exactly filled the previous row leaves only its line
        // break behind, which is no row of its own.
        const bool onlyTheBreak = lineGoesOn && text.isEmpty();
        lineGoesOn = pieceOfLongerLine;
        if (onlyTheBreak)
            continue;
        if (rows >= maxPreviewLines)
            break;
        auto* item = new QTableWidgetItem(QString::fromLatin1(text));
        item->setFlags(Qt::ItemIsEnabled);
        tableWidgetDataPvw->setRowCount(rows + 1);
        tableWidgetDataPvw->setItem(rows++, 0, item);
    }
    tableWidgetDataPvw->resizeColumnsToContents();
    tableWidgetDataPvw->resizeRowsToContents();
}

void QxCSVImport::setMaxPreviewLines(int n)
{
    maxPreviewLines = n;
}

void QxCSVImport::addColumn(McString name, bool mandatory)
{
    const int c = tableWidgetColumnIndexes->columnCount();
    tableWidgetColumnIndexes->setColumnCount(c + 1);
    tableWidgetColumnIndexes->setHorizontalHeaderItem(c, new QTableWidgetItem(name.toQString()));

    QComboBox* picker = createColumnPicker();
    // By default logical column c reads file column c; past the last file
    // column this leaves the picker without a choice.
    picker->setCurrentIndex(c + 1);
    // The picker's slot finds its logical column here.
    picker->setItemData(0, c, Qt::UserRole);

    CSVDataColumn column;
    column.name = name;
    column.mandatory = mandatory;
    column.lastPickerIndex = c + 1;
    columns.append(column);

    connect(picker, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &QxCSVImport::physicalColumnIndexChanged);
    tableWidgetColumnIndexes->setCellWidget(0, c, picker);
    addToTabOrder(picker);
    tableWidgetColumnIndexes->resizeRowsToContents();
    tableWidgetColumnIndexes->setMinimumWidth(tableWidgetColumnIndexes->columnWidth(0) * columns.size() + 1);
}

QComboBox* QxCSVImport::createColumnPicker()
{
    auto* picker = new QComboBox;
    picker->setMaximumWidth(pickerMaxWidth);
    picker->addItem(tr("Missing"));
    for (int k = 1; k <= pickerFileColumns; ++k)
        picker->addItem(QString::number(k));
    return picker;
}

void QxCSVImport::addToTabOrder(QWidget* cellWidget)
{
    setTabOrder(lastTableTabStop ? lastTableTabStop : tableWidgetColumnIndexes, cellWidget);
    lastTableTabStop = cellWidget;
}

int QxCSVImport::getColumnsCount() const
{
    return columns.size();
}

QComboBox* QxCSVImport::columnPicker(int logical) const
{
    if (logical < 0 || logical >= tableWidgetColumnIndexes->columnCount())
        return nullptr;
    return qobject_cast<QComboBox*>(tableWidgetColumnIndexes->cellWidget(0, logical));
}

int QxCSVImport::getPhysicalColumnIndex(int logical) const
{
    const QComboBox* picker = columnPicker(logical);
    if (!picker || picker->currentIndex() < 0)
        return -1;
    return picker->currentIndex() - 1;
}

void QxCSVImport::setPhysicalColumnIndex(int logical, int physical)
{
    QComboBox* picker = columnPicker(logical);
    if (!picker)
        return;
    const bool offered = physical >= -1 && physical < picker->count() - 1;
    picker->setCurrentIndex(offered ? physical + 1 : -1);
}

McString QxCSVImport::getFileName() const
{
    return fileName ? *fileName : McString();
}

McString QxCSVImport::getCommentMarker() const
{
    return McString::fromQString(lineEditCommentMarker->text());
}

McString QxCSVImport::getColumnDelimiter() const
{
    return McString::fromQString(lineEditColumnDelimiter->text());
}

int QxCSVImport::getDataStartLineNum() const
{
    return lineEditDataLineNum->text().toInt(nullptr, 10);
}

void QxCSVImport::setDataStartLineNum(int line)
{
    lineEditDataLineNum->setText(QString::number(line));
}

void QxCSVImport::setColumnDelimiter(McString delimiter)
{
    lineEditColumnDelimiter->setText(delimiter.toQString());
}

void QxCSVImport::setCommentMarker(McString marker)
{
    lineEditCommentMarker->setText(marker.toQString());
}

void QxCSVImport::setVerticalDelimiter(McString delimiter)
{
    lineEditVerticalDelimiter->setText(delimiter.toQString());
}

int QxCSVImport::checkConstraints()
{
    if (comboBoxColumnDelimiter->currentIndex() == otherDelimiterEntry && lineEditColumnDelimiter->text().isEmpty()) {
        warn(tr("Missing Column Delimiter"), tr("Column delimiter must be specified"));
        return -1;
    }
    // The pickers refuse "Missing" for mandatory columns, but a picker can
    // still be left without any valid choice.
    for (int i = 0; i < columns.size(); ++i) {
        if (columns[i].mandatory && getPhysicalColumnIndex(i) < 0) {
            warnMandatory(columns[i]);
            return -1;
        }
    }
    return 1;
}

void QxCSVImport::acceptClicked()
{
    if (checkConstraints() < 0)
        return;
    done(QDialog::Accepted);
}

void QxCSVImport::rejectClicked()
{
    done(QDialog::Rejected);
}

void QxCSVImport::columnDelimiterChanged(int index)
{
    if (index < 0 || index >= delimiterEntryCount)
        return;
    lineEditColumnDelimiter->setText(QString::fromLatin1(delimiterEntries[index].delimiter));
    lineEditColumnDelimiter->setEnabled(delimiterEntries[index].editable);
}

void QxCSVImport::physicalColumnIndexChanged(int index)
{
    auto* picker = qobject_cast<QComboBox*>(sender());
    if (!picker)
        return;
    bool known = false;
    const int c = picker->itemData(0, Qt::UserRole).toInt(&known);
    if (!known || c < 0 || c >= columns.size())
        return;
    CSVDataColumn& column = columns[c];
    if (index > 0) {
        column.lastPickerIndex = index;
        return;
    }
    if (index < 0 || !column.mandatory)
        return;
    warnMandatory(column);
    const QSignalBlocker blocker(picker);
    picker->setCurrentIndex(column.lastPickerIndex);
}

void QxCSVImport::warn(const QString& title, const QString& text)
{
    QMessageBox::warning(this, title, text, QMessageBox::Ok);
}

void QxCSVImport::warnMandatory(const CSVDataColumn& column)
{
    warn(tr("Mandatory Column"), tr("Column \"%1\" is mandatory.").arg(column.name.toQString()));
}
