// What hxhost shows on the console: escaped texts, repeats capped by kind.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
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

// Names, messages and errors reach the console escaped and the JSON as they are.
TEST(Console, EscapesEveryLine)
{
    QTemporaryDir dir;
    const QString name = QString::fromUtf8("t\tab\x1b[2J.csv");
    writeFile(dir.filePath(name), "1,2,3\n");
    const struct {
        QStringList args;
        std::vector<const char*> shown;
    } cases[] = {
        {{"-c", replayOfLattice(dir.filePath(name), 3)},
         {"created \"t\\tab\\x1b[2J.csv\"", "\\tab\\x1b[2J.csv\" \"CSVUniformScalarField"}}, // and the LoadCmd
        {QStringList(kFake) << "-c" << QString::fromUtf8("load -fake_echo \"\xc2\x85\r\" -dataOnly"), {"arg[0]=<\\u0085\\r>"}},
        {{"--frob\x1b"}, {"unknown option --frob\\x1b"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shown[0]);
        HostRun r = runHxhost(c.args);
        for (const char* shown : c.shown)
            EXPECT_TRUE(r.err.contains(shown)) << shown << "\n" << r.err.constData();
        EXPECT_FALSE(r.err.contains('\x1b') || r.err.contains('\t') || r.err.contains('\r')) << r.err.constData();
        if (!r.objects().isEmpty()) {
            EXPECT_EQ(r.objects()[0].toObject().value("name").toString(), name);
        }
    }
}
