// The README's examples script imports the bundled examples sensibly; the
// tests of each importer check that its script line is what its dialog writes.
#include <QSet>

#include "ImportSupport.h"

TEST(Examples, ScriptImportsEveryExample)
{
    HostRun r = runHxhost({"examples/examples.hx"}, true, HX_SOURCE_DIR);
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    ASSERT_EQ(r.objects().size(), 2);

    const QJsonObject survey = r.objects()[0].toObject();
    EXPECT_EQ(survey.value("ids").toArray().size(), 3000);
    EXPECT_EQ(survey.value("dataColumns").toArray()[1].toObject().value("name").toString(), "return");
    QSet<QString> classes;
    for (const QJsonValue& v : survey.value("labelColumns").toArray()[0].toObject().value("values").toArray())
        classes << v.toString();
    EXPECT_EQ(classes, QSet<QString>({"ground", "vegetation", "building"}));

    const QJsonObject drifters = r.objects()[1].toObject();
    QList<int> lengths;
    for (const QJsonValue& line : drifters.value("lines").toArray())
        lengths << line.toArray().size();
    EXPECT_EQ(lengths, QList<int>({62, 40, 47, 57, 44, 65}));
    EXPECT_EQ(drifters.value("data").toArray()[0].toArray()[0].toDouble(), 15.4);
}
