#pragma once
// Uniform field imports set up the way a user sets up the dialog, and the
// numbers of its JSON.
#include <vector>

#include "HxLattice3.h"
#include "ImportSupport.h"
#include "QxCSVUniformScalarFieldImport.h"

struct FieldSettings {
    int type = 5; // dataTypeOpt entry: byte, short, ushort, int32, float, double
    int nDataVar = 1;
    int dims[3] = {2, 2, 2};
    bool xFastest = true;
    const char *delimiter = ",", *comment = "#";
    int firstLine = 1;
};

// The lattice part of the dialog, from any settings record that has it.
template <class Settings>
void applyLayout(QxCSVUniformScalarFieldImport& dialog, const Settings& s)
{
    dialog.dataTypeOpt->setCurrentIndex(s.type);
    dialog.nDataVarOpt->setCurrentIndex(s.nDataVar - 1);
    dialog.dimsTxt0->setValue(s.dims[0]);
    dialog.dimsTxt1->setValue(s.dims[1]);
    dialog.dimsTxt2->setValue(s.dims[2]);
    (s.xFastest ? dialog.xFastestBtn : dialog.zFastestBtn)->setChecked(true);
}

inline void applySettings(QxCSVUniformScalarFieldImport& dialog, const FieldSettings& s)
{
    applyLayout(dialog, s);
    dialog.setColumnDelimiter(s.delimiter);
    dialog.setCommentMarker(s.comment);
    dialog.setDataStartLineNum(s.firstLine);
}

inline std::vector<double> jsonNumbers(const QJsonArray& a)
{
    std::vector<double> v;
    for (const QJsonValue& x : a)
        v.push_back(x.toDouble());
    return v;
}

inline HxRegField3* lastField() { return dynamic_cast<HxRegField3*>(lastObject()); }

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
