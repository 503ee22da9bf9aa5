#pragma once
#include <QString>
#include <cstdint>
#include <cstdio>
#include <tuple>
#include <type_traits>

#include "McDArray.h"
#include "McPrimType.h"
#include "McString.h"
#include "ImportProgress.h"
#include "QxCSVImport.h"
#include "api.h"

class HxLattice3;
class HxRegField3;
class QxLineEdit;

// Import dialog for fields on a uniform lattice. It shows the lattice
// settings of the form (type, data variables, dimensions, index order,
// bounding box or voxel size) and reads the file itself with a plain
// one-character tokenizer: all numbers of the file form one flat sequence,
// nDataVar values to a node.
//
// Its settings travel in a replay command as one text of 22 blank-separated
// tokens starting with "CSVUniformScalarField" (getLoadCommandFromDialog,
// loadSettingsFromLoadCommand).
class HXCSV_API QxCSVUniformScalarFieldImport : public QxCSVImport {
    Q_OBJECT

public:
    explicit QxCSVUniformScalarFieldImport(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());

    // Also records the file's size, against which the requested byte count
    // is measured.
    bool setFileName(const char* name) override;
    long long getFileSize() const { return fileSize; }

    // Lattice settings, each read from its widget at the moment of the call.
    void getDims(int* dims) const;
    // 1 to 6; 0 when the list has no current entry.
    int getNDataVar() const;
    // Byte (code 0) when the type list has no valid entry.
    McPrimType getPrimType() const;
    bool isXFastest() const;
    // Values read so far into the array of the selected type (0 for no valid
    // type).
    int getArraySize() const;
    // Those values, getArraySize() of them (null for no valid type).
    const void* getArrayData() const;
    // xmin, xmax, ymin, ymax, zmin, zmax; voxel sizes are turned into maxima
    // unless boundingBoxMode says the fields already hold maxima.
    void getMinMax(float* box) const;
    void getMinMax(float* box, int boundingBoxMode) const;
    // Takes comment, delimiter and first line from their fields.
    void getParseParameters();

    // Suppresses the size warnings (replays).
    void setQuiet(bool on) { quiet = on; }
    bool isQuiet() const { return quiet; }
    // Tells that parseFile runs once and the dialog is then discarded (the
    // reader entry): values in x-fastest order may then go straight into the
    // lattice, leaving the value arrays, which nothing reads again, empty.
    void setSingleParse(bool on) { singleParse = on; }

    // Builds, fills and registers the field and attaches its LoadCmd.
    // Returns 1, also when the file could not be read (the field is then all
    // zeros); 0 only when the settings name no lattice this host can hold.
    int parseFile();
    // Reads the file into the value array of the selected type and, if it
    // holds any value, copies them into the lattice.
    void getParseResult(HxLattice3* lattice);
    // Copies the values in the selected index order; missing nodes are zero.
    void putDataIntoLattice(HxLattice3* lattice, void* values);
    // Decides how many nodes to copy and warns (once, unless quiet) when the
    // file holds more or fewer than requested. elementSize is not used: the
    // byte counts follow the dialog's current type and variable count.
    void checkSizes(int& warned, long long& nodesToCopy, const char* path, long long elementSize,
                    long long requestedNodes, long long availableNodes);
    // One line (or a piece of size-1 bytes of a longer one) without its
    // trailing CR/LF; 0 at end of file.
    static int fgetline(char* buffer, int size, FILE* file);

    // "load -uniform_scalar_field_csv "FILE" "SETTINGS" -dataOnly"
    McString getLoadCommandFromDialog() const;
    McString getSettingsText() const;
    // Sets the widgets from a settings text; 0 (and nothing changed) when it
    // has fewer than 22 tokens.
    int loadSettingsFromLoadCommand(McString settings);

    // The reader course (ImportCourse.h): the reader parses once, and a
    // replay takes every setting from the settings text and warns nothing.
    void prepareReaderImport();
    void takeReplayArguments(int argc, const char** argv);

public slots:
    void sizeChanged();
    void modeChanged();
    void radioButtonLineDelimitorChecked(bool checked);

private:
    // The six fields in the order xmin, xmax-or-size, ymin, ..., zmax-or-size.
    QxLineEdit* boxField(int i) const;
    void writeBoxField(int i, float value);
    void connectSignals();
    void setUpBoxFields();
    // Requested bytes for the current settings; false when they do not fit
    // in 64 bits.
    bool requestedBytes(long long nodes, long long& bytes) const;

    // Into the value array of the type, or into the block (room values)
    // when there is one; returns the count of values read.
    int readValues(FILE* file, int typeIndex, void* block, long long room);
    void finishLatticeFilledInPlace(HxLattice3* lattice, int count);
    void reserveValues(int typeIndex, long long wanted);
    int arraySize(int typeIndex) const;
    const void* arrayData(int typeIndex) const;
    void copyXFastest(char* dest, const char* values, long long nodes, long long nodesToCopy, int bytesPerNode);
    void copyZFastest(char* dest, const char* values, const long long dims[3], long long nodesToCopy,
                      int bytesPerNode);

    // One growable array per value type, in the order of dataTypeOpt's
    // entries (byte, short, ushort, int32, float, double); values are
    // appended to the array of the type selected at parse time.
    std::tuple<McDArray<std::uint8_t>, McDArray<std::int16_t>, McDArray<std::uint16_t>, McDArray<std::int32_t>,
               McDArray<float>, McDArray<double>>
        values;

    // Calls f with the value array of a dataTypeOpt index (of values, this
    // dialog's or a const view of them) and returns what it returns; an
    // index outside the list gives a value-initialised result.
    template <size_t I = 0, class Values, class F>
    static auto withValues(Values& values, int typeIndex, F&& f) -> decltype(f(std::get<0>(values)))
    {
        if (typeIndex == static_cast<int>(I))
            return f(std::get<I>(values));
        if constexpr (I + 1 < std::tuple_size_v<std::remove_const_t<Values>>)
            return withValues<I + 1>(values, typeIndex, f);
        else
            return {};
    }

    QString commentText;
    QString delimiterText;
    int firstLineNum = 0;
    bool quiet = false;
    bool singleParse = false;
    // While parseFile reads: where the reading reports, and whether the user
    // stopped it.
    hxcsv::ImportProgress* progress = nullptr;
    bool stopped = false;
    long long fileSize = 0;
    // Which meaning the second row of box fields has now, so that clicking
    // the mode that is already selected converts nothing.
    bool fieldsHoldMaxima = false;
};

// The host's reader entry: argv[0] is the file, a last argument
// "-dataOnly" makes it a replay of the settings text in argv[1].
extern "C" HXCSV_API int hxReadCSVUniformScalarField(int argc, const char** argv);
