// hxhost as users run it: exit statuses, package loading and its JSON.
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QFile>
#include <cmath>

#include "HostRun.h"

namespace {

const QStringList kFake = {QStringLiteral("--packages"), QStringLiteral(HX_TEST_PACKAGES)};

HostRun fake(const QStringList& commands)
{
    QStringList args = kFake;
    for (const QString& c : commands)
        args << QStringLiteral("-c") << c;
    return runHxhost(args);
}

QStringList consoleLines(const HostRun& r)
{
    QStringList lines;
    for (const QJsonValue& m : r.json.value("messages").toArray())
        lines << m.toObject().value("text").toString();
    return lines;
}

} // namespace

TEST(Hxhost, EmptyRunPrintsEmptyJson)
{
    HostRun r = runHxhost({});
    EXPECT_EQ(r.exitCode, 0) << r.err.constData();
    EXPECT_TRUE(r.json.value("objects").toArray().isEmpty());
    EXPECT_TRUE(r.json.value("messages").toArray().isEmpty());
}

TEST(Hxhost, ExitStatuses)
{
    struct Case {
        const char* what;
        QStringList args;
        int status;
        const char* errorText;
    } cases[] = {
        {"unknown load option", {"-c", "load -no_such_option x.csv"}, 2, "unknown load option '-no_such_option'"},
        {"unknown command", {"-c", "import x.csv"}, 2, "unknown command 'import'"},
        {"missing file", QStringList(kFake) << "-c" << "load -fake_echo", 2, "needs a file name"},
        {"unknown hxhost option", {"--frobnicate"}, 2, "unknown option --frobnicate"},
        {"unterminated quote", {"-c", "load -x \"a"}, 2, "unterminated double quote"},
        {"missing script", {"/no/such/script.hx"}, 2, "cannot read the script"},
        {"reader returns 0", QStringList(kFake) << "-c" << "load -fake_echo a.csv fail -dataOnly" << "-c" << "load -fake_echo b.csv -dataOnly", 1, "created nothing"},
        {"reader not exported", QStringList(kFake) << "-c" << "load -fake_missing a.csv -dataOnly", 1, "does not export it"},
        {"dialog without display", QStringList(kFake) << "-c" << "load -fake_echo a.csv", 1, "needs a display"},
        {"replay without display", QStringList(kFake) << "-c" << "load -fake_echo a.csv -dataOnly", 0, ""},
    };
    for (const Case& c : cases) {
        HostRun r = runHxhost(c.args, false);
        EXPECT_EQ(r.exitCode, c.status) << c.what << "\n" << r.err.constData();
        EXPECT_TRUE(r.err.contains(c.errorText)) << c.what << "\n" << r.err.constData();
    }
}

TEST(Hxhost, PassesTheSplitWordsToTheReader)
{
    HostRun r = fake({"load -fake_echo \"my file.csv\" \"\\\\s\" \"\\\"\" \"\t\" -dataOnly"});
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    EXPECT_EQ(consoleLines(r), QStringList({"arg[0]=<my file.csv>", "arg[1]=<\\s>", "arg[2]=<\">",
                                            "arg[3]=<\t>", "arg[4]=<-dataOnly>"}));
}

TEST(Hxhost, RunsScriptsSkippingComments)
{
    QString script = QString::fromLatin1(HX_TEST_PACKAGES "/script.hx");
    QFile f(script);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("# a comment\n\nload -fake_lineset a.csv -dataOnly\n  load -fake_lineset a.csv -dataOnly\n");
    f.close();
    HostRun r = runHxhost(QStringList(kFake) << script);
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    ASSERT_EQ(r.objects().size(), 2);
    EXPECT_EQ(r.objects()[1].toObject().value("name").toString(), "a.csv2");
}

TEST(Hxhost, ListsOnlyLibrariesWithAPackageEntry)
{
    HostRun r = runHxhost(QStringList(kFake) << "--list", false);
    EXPECT_EQ(r.exitCode, 0) << r.err.constData();
    EXPECT_TRUE(r.out.contains("package fakepkg 0.1")) << r.out.constData();
    EXPECT_TRUE(r.out.contains("load -fake_cluster")) << r.out.constData();
    EXPECT_FALSE(r.out.contains("notapackage")) << r.out.constData();

    HostRun real = runHxhost({"--list"}, false);
    EXPECT_EQ(real.exitCode, 0) << real.err.constData();
    EXPECT_TRUE(real.out.contains("package hxcsv")) << real.out.constData();
}

TEST(Hxhost, ClusterJsonRoundTripsEveryNumber)
{
    HostRun r = fake({"load -fake_cluster /tmp/c.csv -dataOnly"});
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    ASSERT_EQ(r.objects().size(), 1);
    QJsonObject c = r.objects()[0].toObject();
    EXPECT_EQ(c.value("name").toString(), "c.csv");
    EXPECT_EQ(c.value("class").toString(), "HxCluster");
    EXPECT_EQ(c.value("parameters").toObject().value("LoadCmd").toString(), "load -fake_cluster x");
    QJsonArray pts = c.value("points").toArray();
    ASSERT_EQ(pts.size(), 3);
    const float xs[3] = {0.1f, -1e-38f, 3.4028235e38f};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(static_cast<float>(pts[i].toArray()[0].toDouble()), xs[i]) << i;
    // Floats are written in their own shortest form, not as widened doubles.
    EXPECT_TRUE(r.out.contains("[0.1,0,-0.3]")) << r.out.left(400).constData();
    EXPECT_EQ(c.value("ids").toArray(), QJsonArray({1, 2, 3}));
    QJsonObject data = c.value("dataColumns").toArray()[0].toObject();
    EXPECT_EQ(data.value("name").toString(), "Data0");
    EXPECT_EQ(data.value("values").toArray(), QJsonArray({"nan", "inf", "-inf"}));
    QJsonObject label = c.value("labelColumns").toArray()[0].toObject();
    EXPECT_EQ(label.value("values").toArray()[2].toString(), QString::fromUtf8("läbel \"2\""));
    EXPECT_EQ(c.value("bounds").toArray().size(), 6);
}

TEST(Hxhost, LineSetJson)
{
    HostRun r = fake({"load -fake_lineset l.csv -dataOnly"});
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    QJsonObject s = r.objects()[0].toObject();
    EXPECT_EQ(s.value("class").toString(), "HxLineSet");
    EXPECT_EQ(s.value("lines").toArray(), QJsonArray({QJsonArray({0, 1}), QJsonArray({2})}));
    EXPECT_EQ(s.value("data").toArray(), QJsonArray({QJsonArray({0, 0.5, 1})}));
    EXPECT_EQ(s.value("points").toArray()[2].toArray(), QJsonArray({5, 5, 5}));
}

TEST(Hxhost, FieldJsonForEveryPrimitiveType)
{
    // The fake field holds the bytes 0x81, 0x82, ... read as the given type.
    struct Case {
        int code;
        const char* name;
        double first;
    } cases[] = {
        {0, "byte", 0x81},
        {1, "short", static_cast<short>(0x8281)},
        {7, "ushort", 0x8281},
        {2, "int32", static_cast<int>(0x84838281u)},
    };
    for (const Case& c : cases) {
        HostRun r = fake({QString("load -fake_field f.csv %1 1 -dataOnly").arg(c.code)});
        ASSERT_EQ(r.exitCode, 0) << r.err.constData();
        QJsonObject f = r.objects()[0].toObject();
        EXPECT_EQ(f.value("class").toString(), "HxUniformScalarField3");
        EXPECT_EQ(f.value("primType").toString(), c.name);
        EXPECT_EQ(f.value("dims").toArray(), QJsonArray({2, 1, 1}));
        EXPECT_EQ(f.value("bbox").toArray(), QJsonArray({0, 1, 0, 0, 0, 0}));
        ASSERT_EQ(f.value("values").toArray().size(), 2);
        EXPECT_EQ(f.value("values").toArray()[0].toDouble(), c.first) << c.name;
    }
    HostRun r = fake({"load -fake_field f.csv 4 3 -dataOnly"});
    QJsonObject f = r.objects()[0].toObject();
    EXPECT_EQ(f.value("class").toString(), "HxUniformVectorField3");
    EXPECT_EQ(f.value("nDataVar").toInt(), 3);
    EXPECT_EQ(f.value("values").toArray().size(), 6);
}
