// The uniform field dialog: widget set-up, the size and resolution fields
// kept consistent while the user edits, and the accessors of the settings.
#include "QxCSVUniformScalarFieldImport.h"

#include <QFile>
#include <QFileInfo>
#include <QFontMetrics>
#include <climits>

#include "QxLineEdit.h"

namespace {

const int maxSpinValue = 2147483647;
const int boxFieldColumns = 8;

// McPrimType codes of the entries of dataTypeOpt: byte, short, ushort,
// int32, float, double.
const int primTypeCodes[] = {0, 1, 7, 2, 3, 4};
const int typeCount = sizeof primTypeCodes / sizeof primTypeCodes[0];

// Voxel size and extent of an axis with n nodes differ by this factor; a
// one-node axis uses 1 so that its extent is never empty.
float axisFactor(int n)
{
    return n > 1 ? static_cast<float>(n - 1) : 1.0f;
}

} // namespace

QxCSVUniformScalarFieldImport::QxCSVUniformScalarFieldImport(QWidget* parent, Qt::WindowFlags flags)
    : QxCSVImport(parent, flags)
{
    setWindowTitle(tr("Import Uniform Scalar Field"));

    // No column roles or line-set modes here; byte order, header and file
    // size stay hidden although the load command records the first two.
    for (QWidget* w : std::initializer_list<QWidget*>{
             frame, label, label_2, radioButtonOnlyOneLine, radioButtonNumberOfPoints, radioButtonLineDelimitor,
             lineEditVerticalDelimiter, checkBoxCheckShots, endianBox, textLabel4, textLabel5, headerTxt,
             textLabel7, filesizeTxt, textLabel16})
        w->setVisible(false);
    for (QWidget* w : std::initializer_list<QWidget*>{resModeBG, orderBox, inputBox})
        w->setVisible(true);

    for (QSpinBox* s : {dimsTxt0, dimsTxt1, dimsTxt2, headerTxt})
        s->setMaximum(maxSpinValue);

    voxelSizeBtn->setChecked(true);
    res2Lbl->setText(tr("Voxel size:"));
    fieldsHoldMaxima = false;
    xFastestBtn->setChecked(true);

    setUpBoxFields();
    connectSignals();
    sizeChanged();
}

void QxCSVUniformScalarFieldImport::setUpBoxFields()
{
    for (int i = 0; i < 6; ++i) {
        QxLineEdit* field = boxField(i);
        const QFontMetrics metrics(field->font());
        field->setMinimumWidth(metrics.horizontalAdvance(QString(boxFieldColumns, QLatin1Char('0'))) +
                               metrics.averageCharWidth() * 2);
        field->setText(QLatin1String(i % 2 == 0 ? "0" : "1"));
    }
}

void QxCSVUniformScalarFieldImport::connectSignals()
{
    for (QSpinBox* s : {dimsTxt0, dimsTxt1, dimsTxt2})
        connect(s, QOverload<int>::of(&QSpinBox::valueChanged), this, &QxCSVUniformScalarFieldImport::sizeChanged);
    connect(bBoxBtn, &QRadioButton::clicked, this, &QxCSVUniformScalarFieldImport::modeChanged);
    connect(voxelSizeBtn, &QRadioButton::clicked, this, &QxCSVUniformScalarFieldImport::modeChanged);
    for (QComboBox* c : {dataTypeOpt, nDataVarOpt})
        connect(c, QOverload<int>::of(&QComboBox::activated), this, &QxCSVUniformScalarFieldImport::sizeChanged);
    connect(radioButtonLineDelimitor, &QRadioButton::toggled, this,
            &QxCSVUniformScalarFieldImport::radioButtonLineDelimitorChecked);
}

bool QxCSVUniformScalarFieldImport::setFileName(const char* name)
{
    const bool opened = QxCSVImport::setFileName(name);
    const QFileInfo info(QFile::decodeName(name ? name : ""));
    fileSize = info.isFile() ? info.size() : 0;
    sizeChanged();
    return opened;
}

QxLineEdit* QxCSVUniformScalarFieldImport::boxField(int i) const
{
    QxLineEdit* const fields[6] = {bBoxTxt0, bBoxTxt1, bBoxTxt2, bBoxTxt3, bBoxTxt4, bBoxTxt5};
    return fields[i];
}

void QxCSVUniformScalarFieldImport::writeBoxField(int i, float value)
{
    boxField(i)->setText(QString::asprintf("%g", static_cast<double>(value)));
}

void QxCSVUniformScalarFieldImport::getDims(int* dims) const
{
    dims[0] = dimsTxt0->value();
    dims[1] = dimsTxt1->value();
    dims[2] = dimsTxt2->value();
}

int QxCSVUniformScalarFieldImport::getNDataVar() const
{
    return nDataVarOpt->currentIndex() + 1;
}

McPrimType QxCSVUniformScalarFieldImport::getPrimType() const
{
    const int index = dataTypeOpt->currentIndex();
    return McPrimType(index >= 0 && index < typeCount ? primTypeCodes[index] : 0);
}

bool QxCSVUniformScalarFieldImport::isXFastest() const
{
    return xFastestBtn->isChecked();
}

int QxCSVUniformScalarFieldImport::getArraySize() const
{
    return arraySize(dataTypeOpt->currentIndex());
}

int QxCSVUniformScalarFieldImport::arraySize(int typeIndex) const
{
    return withValues(values, typeIndex, [](const auto& array) { return array.size(); });
}

const void* QxCSVUniformScalarFieldImport::getArrayData() const
{
    return arrayData(dataTypeOpt->currentIndex());
}

const void* QxCSVUniformScalarFieldImport::arrayData(int typeIndex) const
{
    return withValues(values, typeIndex, [](const auto& array) -> const void* { return array.dataPtr(); });
}

void QxCSVUniformScalarFieldImport::getMinMax(float* box) const
{
    getMinMax(box, bBoxBtn->isChecked());
}

void QxCSVUniformScalarFieldImport::getMinMax(float* box, int boundingBoxMode) const
{
    for (int i = 0; i < 6; ++i)
        box[i] = boxField(i)->text().toFloat();
    if (boundingBoxMode)
        return;
    int dims[3];
    getDims(dims);
    for (int a = 0; a < 3; ++a)
        box[2 * a + 1] = axisFactor(dims[a]) * box[2 * a + 1] + box[2 * a];
}

void QxCSVUniformScalarFieldImport::getParseParameters()
{
    commentText = lineEditCommentMarker->text();
    delimiterText = lineEditColumnDelimiter->text();
    firstLineNum = lineEditDataLineNum->text().toInt(nullptr, 10);
}

bool QxCSVUniformScalarFieldImport::requestedBytes(long long nodes, long long& bytes) const
{
    const long long perNode = static_cast<long long>(getPrimType().size()) * getNDataVar();
    return !__builtin_mul_overflow(nodes, perNode, &bytes);
}

void QxCSVUniformScalarFieldImport::sizeChanged()
{
    int dims[3];
    getDims(dims);
    long long nodes = static_cast<long long>(dims[0]) * dims[1];
    long long bytes = 0;
    const bool fits = (!dimsTxt2->isEnabled() || !__builtin_mul_overflow(nodes, dims[2], &nodes)) &&
                      requestedBytes(nodes, bytes);

    // The header is what remains of the file beyond the requested bytes.
    if (sender() != headerTxt) {
        const long long header = fits ? fileSize - bytes : 0;
        headerTxt->setValue(static_cast<int>(qBound<long long>(0, header, INT_MAX)));
    }
    requestedTxt->setText(fits ? QString::number(bytes) : tr("too large"));
}

void QxCSVUniformScalarFieldImport::modeChanged()
{
    const bool toMaxima = bBoxBtn->isChecked();
    // A click on the mode already selected leaves the fields as they are.
    if (toMaxima == fieldsHoldMaxima)
        return;
    float box[6];
    getMinMax(box, fieldsHoldMaxima);
    fieldsHoldMaxima = toMaxima;

    int dims[3];
    getDims(dims);
    res2Lbl->setText(toMaxima ? tr("Max coord:") : tr("Voxel size:"));
    for (int a = 0; a < 3; ++a) {
        const float max = box[2 * a + 1];
        writeBoxField(2 * a + 1, toMaxima ? max : (max - box[2 * a]) / axisFactor(dims[a]));
    }
}

void QxCSVUniformScalarFieldImport::radioButtonLineDelimitorChecked(bool checked)
{
    lineEditVerticalDelimiter->setEnabled(checked);
}
