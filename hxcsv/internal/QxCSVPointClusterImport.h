#pragma once
#include "HxCSV.h"
#include "HxCSVParseParameters.h"
#include "HxCluster.h"
#include "ImportCourse.h"
#include "QxCSVParsedImport.h"
#include "api.h"

class QComboBox;

// Import dialog and builder of point clouds: mandatory X, Y and Z columns
// and up to ten value columns, each read as numbers ("Real") or as text
// ("String"). Table column 0-2 are X, Y, Z; 3 and up the value columns, with
// their type pickers in row 1.
class HXCSV_API QxCSVPointClusterImport : public QxCSVParsedImport {
    Q_OBJECT

public:
    static constexpr int maxValueColumns = hxcsv::maxValueColumns;
    static constexpr int firstValueColumn = hxcsv::coordinateCount;
    enum ValueType { RealValues = 0, StringValues = 1 };

    explicit QxCSVPointClusterImport(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~QxCSVPointClusterImport() override;

    QComboBox* createColumnDataTypePicker();
    // The type picker of a value column (table column c >= 3), or null.
    QComboBox* dataTypePicker(int c) const;
    int valueColumnCount() const;

    // The value types of the current dialog state, e.g. "0 1 0 0".
    McString getPointClusterParamsFromDialog();
    // The argument at index 8 of a replay command, or "" when there is none.
    McString getPointClusterParamsFromLoadCommand(int argc, const char** argv);

    // Replay: the parse parameters and value types from a load command.
    void takeReplayArguments(int argc, const char** argv);

    // Parses the file and registers the cluster. 1 on success, 0 after a
    // parse error (reported on the console; nothing is registered).
    int parseFile();
    HxCluster* createdCluster() const { return static_cast<HxCluster*>(createdData); }

public slots:
    void addValuesClicked();

private:
    struct ValueBinding {
        int valueColumn; // 0-based among the value columns
        int fileColumn;
    };

    McString loadCommand() override;
    void applyReplayChoices(const HxCSVParseParameters& p);
    // The rows of the columns the parser writes straight into the cluster.
    struct ClusterRows {
        HxCSV::FloatRows xyz[3];
        HxCSV::FloatRows values[maxValueColumns];
        HxCSV::TextRows labels[maxValueColumns];
    };

    void bindValueColumns(HxCSV& csv, ClusterRows& rows, McDArray<ValueBinding>& data,
                          McDArray<ValueBinding>& labels);
    static void sizeCluster(HxCluster& cluster, int n, ClusterRows& rows, const McDArray<ValueBinding>& data,
                            const McDArray<ValueBinding>& labels);
    void finishCluster(HxCluster& cluster, HxCSV& csv, const McDArray<ValueBinding>& data,
                       const McDArray<ValueBinding>& labels);
    void warnTextInNumbers(const ValueBinding& b);

    // Value types to apply on a replay; empty otherwise.
    McString valueTypeList;
    int valueColumnCounter = 1;
    HxCSV::TextNumberMisses numberMisses[maxValueColumns];
};

extern "C" HXCSV_API int hxReadCSVPointCluster(int argc, const char** argv);
