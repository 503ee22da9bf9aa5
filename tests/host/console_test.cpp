// What hxhost shows on the console: escaped texts, repeats capped by kind,
// the line about each created object and the notice on a replay's LoadCmd.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "ConsoleText.h"
#include "HostRun.h"

namespace {

const QStringList kFake = {QStringLiteral("--packages"), QStringLiteral(HX_TEST_PACKAGES)};

QString replayOfLattice(const QString& file, int nodes)
{
    return QStringLiteral("load -uniform_scalar_field_csv \"%1\" \"CSVUniformScalarField # 1 , 4 0 %2 1 1 0 0 1 1 0 "
                          "0 1 0 0 0 1 1 1\" -dataOnly")
        .arg(file)
        .arg(nodes);
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly)) << path.toStdString();
    f.write(bytes);
}

} // namespace

TEST(ConsoleText, EscapesWhatDoesNotPrint)
{
    const std::pair<std::string, std::string> cases[] = {
        {"plain, \xc3\xbc, \xe6\x97\xa5, \xf0\x9f\x98\x80, back\\slash", "plain, \xc3\xbc, \xe6\x97\xa5, \xf0\x9f\x98\x80, back\\slash"},
        {"a\tb\r\n", "a\\tb\\r\\n"},
        {"\x1b[2J\x07", "\\x1b[2J\\x07"},
        {std::string("nul\0del\x7f", 8), "nul\\x00del\\x7f"},
        {"\xc2\x85", "\\u0085"},                 // a C1 control
        {"\xe2\x80\xae" "txt", "\\u202etxt"},     // right-to-left override
        {"\xe2\x80\xa8", "\\u2028"},             // line separator
        {"\xf3\xa0\x80\x81", "\\U000e0001"},     // a tag character
        {"\xff" "a", "\\xffa"},                  // no UTF-8 byte
        {"\xc3", "\\xc3"},                       // a sequence cut short
        {"\xc0\xaf", "\\xc0\\xaf"},              // overlong
        {"\xed\xa0\x80", "\\xed\\xa0\\x80"},     // a surrogate
        {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"}, // past U+10FFFF
    };
    for (const auto& [text, shown] : cases) {
        SCOPED_TRACE(shown);
        EXPECT_EQ(hxhost::escapeForConsole(text), shown);
    }
}

TEST(ConsoleText, KindsIgnoreDigitsAndQuotedStretches)
{
    const struct {
        const char *a, *b;
        bool sameKind;
    } cases[] = {
        {"Caution: Unable to convert 'x' to Double", "Caution: Unable to convert '1e9e' to Double", true},
        {"file \"a b.csv\" ends at line 12", "file \"c.csv\" ends at line 7", true},
        {"3 columns, 'a' and \"b\"", "41 columns, '' and \"it's\"", true},
        {"it's here", "its here", false}, // a lone quote is text
        {"cannot read 'a'", "cannot write 'a'", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.a);
        EXPECT_EQ(hxhost::messageKind(c.a) == hxhost::messageKind(c.b), c.sameKind);
    }
}

TEST(Console, ShowsTwentyMessagesOfAKindPerLoad)
{
    QTemporaryDir dir;
    QByteArray values;
    for (int i = 0; i < 50; ++i)
        values += (i % 2 ? "bad" + QByteArray::number(i) : QByteArray::number(i)) + (i % 10 == 9 ? "\n" : ",");
    writeFile(dir.filePath("bad.csv"), values);
    const struct {
        QStringList flags;
        int shown;
        bool counted;
    } cases[] = {{{}, 20, true}, {{"--all-messages"}, 25, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.flags.join(' ').toStdString());
        HostRun r = runHxhost(QStringList(c.flags) << "-c" << replayOfLattice(dir.filePath("bad.csv"), 50));
        EXPECT_EQ(r.exitCode, 0) << r.err.constData();
        EXPECT_EQ(("\n" + r.err).count("\nCaution: Unable to convert 'bad"), c.shown) << r.err.constData();
        EXPECT_EQ(r.err.contains("... and 5 more like this: \"Caution: Unable to convert 'bad1'"), c.counted);
        int kept = 0;
        for (const QJsonValue m : r.json.value("messages").toArray())
            kept += m.toObject().value("text").toString().startsWith("Caution");
        EXPECT_EQ(kept, 25);
    }
}

// Names, messages and errors reach the console escaped and the JSON as they
// are; --strict fails a load that printed an error; no arguments: the usage.
TEST(Console, EscapesEveryLineAndStrictFailsOnErrors)
{
    QTemporaryDir dir;
    const QString name = QString::fromUtf8("t\tab\x1b[2J.csv");
    writeFile(dir.filePath(name), "1,2,3\n");
    const QStringList strict = kFake + QStringList{"--strict", "-c"};
    const struct {
        QStringList args;
        int status;
        std::vector<const char*> shown;
        bool strictShown;
    } cases[] = {
        {{"-c", replayOfLattice(dir.filePath(name), 3)}, 0,
         {"created \"t\\tab\\x1b[2J.csv\"", "\\tab\\x1b[2J.csv\" \"CSVUniformScalarField"}, false}, // and the LoadCmd
        {kFake + QStringList{"-c", QString::fromUtf8("load -fake_echo \"\xc2\x85\r\" -dataOnly")}, 0, {"arg[0]=<\\u0085\\r>"}, false},
        {{"--frob\x1b"}, 2, {"unknown option --frob\\x1b"}, false},
        {kFake + QStringList{"-c", "load -fake_echo a.csv \"error: no luck\" -dataOnly"}, 0, {"error: no luck"}, false},
        {strict + QStringList{"load -fake_echo a.csv \"error: no luck\" -dataOnly"}, 1, {}, true},
        {strict + QStringList{"load -fake_echo a.csv -dataOnly"}, 0, {}, false},
        {strict + QStringList{"load -fake_echo a.csv fail -dataOnly"}, 1, {}, false},
        {{}, 2, {"usage: hxhost"}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
        HostRun r = runHxhost(c.args, !c.args.isEmpty());
        EXPECT_EQ(r.exitCode, c.status) << r.err.constData();
        for (const char* shown : c.shown)
            EXPECT_TRUE(r.err.contains(shown)) << shown << "\n" << r.err.constData();
        EXPECT_EQ(r.err.contains("(--strict)"), c.strictShown) << r.err.constData();
        EXPECT_FALSE(r.err.contains('\x1b') || r.err.contains('\t') || r.err.contains('\r')) << r.err.constData();
        EXPECT_TRUE(!c.args.isEmpty() || (r.err.startsWith("usage: hxhost") && r.out.isEmpty()));
        if (c.args.value(0) == "-c") {
            EXPECT_EQ(r.objects()[0].toObject().value("name").toString(), name);
        }
    }
}

// The examples' replays: a line about each object, and a notice where the
// object's LoadCmd is not the replayed command.
TEST(Console, SummarizesObjectsAndFlagsRebuiltLoadCommands)
{
    QFile script(QStringLiteral(HX_SOURCE_DIR "/examples/examples.hx"));
    ASSERT_TRUE(script.open(QIODevice::ReadOnly));
    QStringList args;
    for (QString line : QString::fromUtf8(script.readAll()).split('\n'))
        if (line.startsWith("load"))
            args << "-c" << line.replace("\"examples/", "\"" HX_SOURCE_DIR "/examples/");
    HostRun r = runHxhost(args);
    ASSERT_EQ(r.exitCode, 0) << r.err.constData();
    const struct {
        const char* summary;
        bool notice;
    } cases[] = {
        {"  HxUniformScalarField3: 32x24x16 nodes, 1 value per node, float; bounding box [0, 15.5] x [0, 11.5] x "
         "[0, 7.5]; ", false},
        {"  HxCluster: 3000 points, 2 data columns (intensity, return), 1 label column (class); bounds [", true},
        {"  HxLineSet: 6 lines, 315 vertices, 1 data value per vertex; bounds [", true},
    };
    const QStringList lines = QString::fromUtf8(r.err).split('\n');
    for (const auto& c : cases) {
        SCOPED_TRACE(c.summary);
        const int i = lines.indexOf(QRegularExpression(QRegularExpression::escape(c.summary) + ".*[0-9]+\\.[0-9]{3} s"));
        ASSERT_GT(i, 0) << r.err.constData();
        EXPECT_TRUE(lines[i - 1].startsWith("created")) << r.err.constData();
        EXPECT_TRUE(lines[i + 1].startsWith("  LoadCmd: load")) << r.err.constData();
        EXPECT_EQ(lines[i + 1].endsWith(" -dataOnly (differs from the command that was run: rebuilt from the "
                                        "importer's defaults, it may not replay this import)"),
                  c.notice);
    }
    // The JSON keeps the LoadCmd message without the notice.
    EXPECT_FALSE(QJsonDocument(r.json).toJson().contains("differs"));
}
