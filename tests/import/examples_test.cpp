// The README's examples script imports the bundled examples sensibly; the
// tests of each importer check that its script line is what its dialog writes.
#include <QSet>

#include "ImportSupport.h"

namespace {

QJsonObject objectNamed(const HostRun& r, const QString& name)
{
    for (const QJsonValue& o : r.objects())
        if (o.toObject().value("name").toString() == name)
            return o.toObject();
    return QJsonObject();
}

} // namespace

TEST(Examples, ScriptImportsEveryExample)
{
    HostRun r = runHxhost({"examples/examples.hx"}, true, HX_SOURCE_DIR);
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();

    const QJsonObject survey = objectNamed(r, "survey_points.csv");
    EXPECT_EQ(survey.value("ids").toArray().size(), 3000);
    EXPECT_EQ(survey.value("dataColumns").toArray()[1].toObject().value("name").toString(), "return");
    QSet<QString> classes;
    for (const QJsonValue& v : survey.value("labelColumns").toArray()[0].toObject().value("values").toArray())
        classes << v.toString();
    EXPECT_EQ(classes, QSet<QString>({"ground", "vegetation", "building"}));

    const QJsonObject drifters = objectNamed(r, "drifter_tracks.csv");
    QList<int> lengths;
    for (const QJsonValue& line : drifters.value("lines").toArray())
        lengths << line.toArray().size();
    EXPECT_EQ(lengths, QList<int>({62, 40, 47, 57, 44, 65}));
    EXPECT_EQ(drifters.value("data").toArray()[0].toArray()[0].toDouble(), 15.4);
}
