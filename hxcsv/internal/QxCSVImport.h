#pragma once
#include <QDialog>

#include "McDArray.h"
#include "McString.h"
#include "api.h"
// Under internal/ so that the path matches what CMake expects from the form
// and Ninja rebuilds every user of it after the form changes.
#include "internal/ui_QxCSVImportBase.h"

class QComboBox;
class QFile;

// The import dialog that every CSV importer derives from. It previews the
// file, holds the parse settings and one picker per logical column of the
// importer, which chooses the file column (or "Missing") that feeds it.
// Importer-specific widgets of the form start hidden; subclasses show the
// ones they use and reach every widget directly through the form base.
class HXCSV_API QxCSVImport : public QDialog, public Ui::QxCSVImportBase {
    Q_OBJECT

public:
    struct CSVDataColumn {
        McString name;
        bool mandatory = false;
        // The picker entry last accepted; restores a mandatory column whose
        // "Missing" choice is refused.
        int lastPickerIndex = 0;
        // Set by importers with typed value columns: 0 numeric, 1 text.
        int dataType = 0;
    };

    explicit QxCSVImport(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~QxCSVImport() override;

    // Stores a copy of the name and reloads the preview; false when the file
    // cannot be opened (the preview is then empty). Importers that need more
    // from the file extend it.
    virtual bool setFileName(const char* name);
    bool loadFilePreview();
    // Takes effect at the next loadFilePreview().
    void setMaxPreviewLines(int n);

    // Appends a logical column whose picker starts at the file column with
    // the same position.
    void addColumn(McString name, bool mandatory);
    int getColumnsCount() const;
    // 0-based file column of a logical column, -1 for "Missing" (and for a
    // picker without a valid choice).
    int getPhysicalColumnIndex(int logical) const;
    // Acts like the user's choice, including the mandatory-column refusal.
    void setPhysicalColumnIndex(int logical, int physical);

    McString getFileName() const;
    McString getCommentMarker() const;
    // The text of the delimiter field, whatever entry the list shows.
    McString getColumnDelimiter() const;
    // 0 when the field does not hold a number.
    int getDataStartLineNum() const;
    void setDataStartLineNum(int line);
    // These write the fields only; the delimiter list keeps its entry.
    void setColumnDelimiter(McString delimiter);
    void setCommentMarker(McString marker);
    void setVerticalDelimiter(McString delimiter);

    // 1 when the dialog may close accepted, -1 after warning the user.
    int checkConstraints();

    // Steps of the reader course (ImportCourse.h) that an importer may
    // leave out: set-up before the dialog runs or replays, and the
    // "LoadCmd" of the created object once parseFile succeeded.
    void prepareReaderImport() {}
    void recordLoadCommand() {}

public slots:
    void acceptClicked();
    void rejectClicked();
    void columnDelimiterChanged(int index);
    void physicalColumnIndexChanged(int index);

protected:
    // The column-index picker of a logical column, or null.
    QComboBox* columnPicker(int logical) const;
    // A new picker: "Missing", then the file columns "1" to "99".
    QComboBox* createColumnPicker();
    // Puts a widget of the column table next in the keyboard focus order,
    // after the table's earlier widgets and before the settings row.
    void addToTabOrder(QWidget* cellWidget);

    McDArray<CSVDataColumn> columns;
    McString* fileName = nullptr; // owned
    int maxPreviewLines = 200;
    QWidget* lastTableTabStop = nullptr;

private:
    void fillPreviewRows(QFile& file);
    void warn(const QString& title, const QString& text);
    void warnMandatory(const CSVDataColumn& column);
};
