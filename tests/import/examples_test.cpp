// The bundled examples: the README's script imports them sensibly, and its
// replay commands are the ones the dialogs write.
#include <QComboBox>
#include <QDir>
#include <QSet>
#include <gtest/gtest.h>

#include "HostRun.h"
#include "ImportSupport.h"
#include "QxCSVPointClusterImport.h"

namespace {

QJsonObject objectNamed(const HostRun& r, const QString& name)
{
    for (const QJsonValue& o : r.objects())
        if (o.toObject().value("name").toString() == name)
            return o.toObject();
    return QJsonObject();
}

QStringList scriptLines()
{
    QFile f(HX_SOURCE_DIR "/examples/examples.hx");
    f.open(QIODevice::ReadOnly);
    return QString::fromLatin1(f.readAll()).split('\n');
}

} // namespace

TEST(Examples, ScriptImportsEveryExample)
{
    HostRun r = runHxhost({"examples/examples.hx"}, true, HX_SOURCE_DIR);
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();

    const QJsonObject survey = objectNamed(r, "survey_points.csv");
    EXPECT_EQ(survey.value("points").toArray().size(), 3000);
    EXPECT_EQ(survey.value("ids").toArray().last().toInt(), 3000);
    const QJsonArray data = survey.value("dataColumns").toArray();
    ASSERT_EQ(data.size(), 2);
    EXPECT_EQ(data[0].toObject().value("name").toString(), "intensity");
    EXPECT_EQ(data[1].toObject().value("name").toString(), "return");
    const QJsonObject classes = survey.value("labelColumns").toArray()[0].toObject();
    EXPECT_EQ(classes.value("name").toString(), "class");
    QSet<QString> kinds;
    for (const QJsonValue& v : classes.value("values").toArray())
        kinds << v.toString();
    EXPECT_EQ(kinds, QSet<QString>({"ground", "vegetation", "building"}));
}

TEST(Examples, ScriptCommandsAreWhatTheDialogsWrite)
{
    const QString before = QDir::currentPath();
    QDir::setCurrent(HX_SOURCE_DIR);
    HxObjectPool::instance()->clear();
    driveDialog<QxCSVPointClusterImport>(
        [](QxCSVPointClusterImport& d) {
            d.comboBoxColumnDelimiter->setCurrentIndex(1);
            d.firstLineColumnLabels->setChecked(true);
            const int picks[][2] = {{3, 4}, {4, 3}, {5, 5}};
            for (const auto& p : picks)
                d.setPhysicalColumnIndex(p[0], p[1]);
            d.dataTypePicker(3)->setCurrentIndex(QxCSVPointClusterImport::StringValues);
            QTest::mouseClick(d.pushButtonOK, Qt::LeftButton);
        },
        [] { callReader(hxReadCSVPointCluster, "load -point_cloud_csv examples/survey_points.csv"); });
    EXPECT_TRUE(scriptLines().contains(loadCommandOf(lastObject()))) << loadCommandOf(lastObject()).toStdString();
    QDir::setCurrent(before);
}
