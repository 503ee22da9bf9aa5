#pragma once
// Uniform field imports set up the way a user sets up the dialog, and the
// lattice read back as doubles.
#include <vector>

#include "HxLattice3.h"
#include "ImportSupport.h"
#include "QxCSVUniformScalarFieldImport.h"

struct FieldSettings {
    int type = 5; // dataTypeOpt entry: byte, short, ushort, int32, float, double
    int nDataVar = 1;
    int dims[3] = {2, 2, 2};
    bool xFastest = true;
    const char* delimiter = ",";
    const char* comment = "#";
    int firstLine = 1;
};

inline void applySettings(QxCSVUniformScalarFieldImport& dialog, const FieldSettings& s)
{
    dialog.dataTypeOpt->setCurrentIndex(s.type);
    dialog.nDataVarOpt->setCurrentIndex(s.nDataVar - 1);
    dialog.dimsTxt0->setValue(s.dims[0]);
    dialog.dimsTxt1->setValue(s.dims[1]);
    dialog.dimsTxt2->setValue(s.dims[2]);
    (s.xFastest ? dialog.xFastestBtn : dialog.zFastestBtn)->setChecked(true);
    dialog.setColumnDelimiter(s.delimiter);
    dialog.setCommentMarker(s.comment);
    dialog.setDataStartLineNum(s.firstLine);
}

template <class T>
std::vector<double> asDoubles(const HxLattice3& lattice)
{
    const T* data = static_cast<const T*>(lattice.dataPtr().getData());
    return std::vector<double>(data, data + lattice.numNodes() * lattice.nDataVar());
}

inline std::vector<double> latticeValues(const HxLattice3& lattice)
{
    switch (lattice.primType().getType()) {
    case McPrimType::MC_UINT8: return asDoubles<unsigned char>(lattice);
    case McPrimType::MC_INT16: return asDoubles<short>(lattice);
    case McPrimType::MC_UINT16: return asDoubles<unsigned short>(lattice);
    case McPrimType::MC_INT32: return asDoubles<int>(lattice);
    case McPrimType::MC_FLOAT: return asDoubles<float>(lattice);
    default: return asDoubles<double>(lattice);
    }
}

// The field that the last import registered, or null.
inline HxRegField3* lastField()
{
    return dynamic_cast<HxRegField3*>(lastObject());
}

class FieldTest : public ImportTest {
protected:
    // Imports content from the file name through a dialog set up with s
    // and then by adjust; the field, or null when none came.
    HxRegField3* importField(const QString& name, const QByteArray& content, const FieldSettings& s,
                             const std::function<void(QxCSVUniformScalarFieldImport&)>& adjust = {})
    {
        QxCSVUniformScalarFieldImport dialog;
        dialog.setFileName(write(name, content).toLocal8Bit());
        applySettings(dialog, s);
        if (adjust)
            adjust(dialog);
        EXPECT_EQ(dialog.parseFile(), 1);
        return lastField();
    }
};
