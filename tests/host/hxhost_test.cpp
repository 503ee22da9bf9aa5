// hxhost as users run it: exit statuses, package loading and its JSON.
#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>

#include "HostRun.h"

namespace {

const QStringList kFake = {QStringLiteral("--packages"), QStringLiteral(HX_TEST_PACKAGES)};

} // namespace

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
        SCOPED_TRACE(c.what);
        HostRun r = runHxhost(c.args, false);
        EXPECT_EQ(r.exitCode, c.status) << r.err.constData();
        EXPECT_TRUE(r.err.contains(c.errorText)) << r.err.constData();
    }
}

TEST(Hxhost, RunsScriptsAndNamesObjectsUniquely)
{
    EXPECT_EQ(runHxhost({}).json, QJsonObject({{"objects", QJsonArray()}, {"messages", QJsonArray()}}));

    const QString script = QString::fromLatin1(HX_TEST_PACKAGES "/script.hx");
    QFile f(script);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("# a comment\n\nload -fake_lineset a.csv -dataOnly\n  load -fake_lineset a.csv -dataOnly\n");
    f.close();
    HostRun r = runHxhost(QStringList(kFake) << script);
    EXPECT_EQ(r.exitCode, 0) << r.err.constData();
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
    EXPECT_TRUE(runHxhost({"--list"}, false).out.contains("package hxcsv"));
}

TEST(Hxhost, JsonRoundTripsEveryNumberAndText)
{
    HostRun r = runHxhost(QStringList(kFake) << "-c" << "load -fake_cluster /tmp/c.csv -dataOnly" << "-c"
                                             << "load -fake_echo \"a\tb\nc\\\\\" fail -dataOnly");
    ASSERT_EQ(r.objects().size(), 1) << r.out.constData();
    QJsonObject c = r.objects()[0].toObject();
    EXPECT_EQ(c.value("class").toString(), "HxCluster");
    QJsonArray pts = c.value("points").toArray();
    const float xs[3] = {0.1f, -1e-38f, 3.4028235e38f};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(static_cast<float>(pts[i].toArray()[0].toDouble()), xs[i]) << i;
    // Floats are written in their own shortest form, not as widened doubles.
    EXPECT_TRUE(r.out.contains("[0.1,0,-0.3]")) << r.out.left(400).constData();
    EXPECT_EQ(c.value("dataColumns").toArray()[0].toObject().value("values").toArray(), QJsonArray({"nan", "inf", "-inf"}));
    EXPECT_EQ(c.value("labelColumns").toArray()[0].toObject().value("values").toArray()[2].toString(),
              QString::fromUtf8("läbel \"2\""));
    const QJsonArray messages = r.json.value("messages").toArray();
    EXPECT_TRUE(messages.contains(QJsonObject({{"level", "info"}, {"text", "arg[0]=<a\tb\nc\\>"}}))) << r.out.constData();
    EXPECT_TRUE(messages.last().toObject().value("level") == "error") << r.out.constData();
}
