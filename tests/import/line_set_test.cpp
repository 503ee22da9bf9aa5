// Line set import: the three line-forming modes, "-lineSetParams" and
// replays through hxhost.
#include <QRadioButton>

#include "HxLineSet.h"
#include "ImportSupport.h"
#include "QxCSVLineSetImport.h"

namespace {

enum Mode { OneLine, Count, Delimiter };

QRadioButton* modeButton(QxCSVLineSetImport& d, Mode m)
{
    QRadioButton* buttons[] = {d.radioButtonOnlyOneLine, d.radioButtonNumberOfPoints, d.radioButtonLineDelimitor};
    return buttons[m];
}

using LineSet = ImportTest;

} // namespace

TEST_F(LineSet, ModesWrittenAndReadBack)
{
    const struct {
        Mode mode;
        const char* option;
    } written[] = {{Delimiter, "-lineSetParams 1 END 0 0"}, {Count, "-lineSetParams 0 none 1 0"},
                   {OneLine, "-lineSetParams 0 none 0 1"}};
    for (const auto& w : written) {
        SCOPED_TRACE(w.option);
        QxCSVLineSetImport d;
        d.lineEditVerticalDelimiter->setText("END");
        modeButton(d, w.mode)->setChecked(true);
        EXPECT_EQ(d.getLineSetParams(), w.option);
        EXPECT_EQ(d.lineEditVerticalDelimiter->isEnabled(), w.mode == Delimiter);
    }

    // Modes as one-line, count, delimiter; only the value 1 switches one on.
    const struct {
        const char *args, *modes, *delimiter;
    } read[] = {
        {"-lineSetParams 1 END 0 0", "001", "END"}, {"-lineSetParams 2 x 0 0", "000", ""},
        {"-lineSetParams 0 none 1 0", "010", ""},   {"x -dataOnly", "000", ""},
        {"-lineSetParams 1", "001", ""},
    };
    for (const auto& r : read) {
        SCOPED_TRACE(r.args);
        QxCSVLineSetImport d;
        Args a(QString("load -line_set_csv f.csv ") + r.args);
        d.takeReplayArguments(a.argc(), a.argv.data());
        QString modes;
        for (Mode m : {OneLine, Count, Delimiter})
            modes += modeButton(d, m)->isChecked() ? "1" : "0";
        EXPECT_EQ(modes, r.modes);
        EXPECT_EQ(d.lineEditVerticalDelimiter->text(), r.delimiter);
    }
}

TEST_F(LineSet, BuilderFormsLinesInEachMode)
{
    using A = QJsonArray;
    struct Case {
        const char* what;
        Mode mode;
        int values; // per vertex
        const char* csv;
        A lines, data; // no lines: the data end inside a vertex
        bool checkShots = false;
    } cases[] = {
        {"counts", Count, 0, "2 0 0 0 1 1 1\n1 5 5 5\n", {A{0, 1}, A{2}}, {}},
        {"counts with values", Count, 1, "1 0 0 0 7\n2 1 1 1 8 2 2 2 9\n", {A{0}, A{1, 2}}, {A{7, 8, 9}}},
        {"one line", OneLine, 1, "0 0 0 7\n1 1 1 8\n", {A{0, 1}}, {A{7, 8}}},
        {"one spare value is ignored", OneLine, 1, "0 0 0 7\n1 1 1 8 9\n", {A{0, 1}}, {A{7, 8}}},
        {"the check-shot box changes nothing", OneLine, 1, "0 0 0 7\n1 1 1 8\n", {A{0, 1}}, {A{7, 8}}, true},
        {"a break on a vertex's x ends a line", Delimiter, 1, "0 0 0 7\n1 1 1 8\nEND\n2 2 2 9\n", {A{0, 1}, A{2}},
         {A{7, 8, 9}}},
        {"a break on a y ends none", Delimiter, 1, "0 0 0 7\n1\nEND\n1 1 8\n2 2 2 9\n", {A{0, 1, 2}}, {A{7, 8, 9}}},
        {"a break on a z ends none", Delimiter, 1, "0 0 0 7\n1 1\nEND\n1 8\n2 2 2 9\n", {A{0, 1, 2}}, {A{7, 8, 9}}},
        {"a break on a value ends none", Delimiter, 1, "0 0 0 7\n1 1 1\nEND\n8\n2 2 2 9\n", {A{0, 1, 2}},
         {A{7, 8, 9}}},
        {"a break that ended none holds back the next", Delimiter, 1, "0 0 0 7\n1 1\nEND\n1 8\nEND\n2 2 2 9\n",
         {A{0, 1, 2}}, {A{7, 8, 9}}},
        {"two spare values start a pass that runs out", OneLine, 1, "0 0 0 7\n1 1 1 8 9 9\n", {}, {}},
        {"a count beyond the data", Count, 0, "3 0 0 0 1 1 1\n", {}, {}},
        {"the data end inside the last vertex", Count, 0, "3 0 0 0 1 1 1 2 2\n", {}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        QxCSVLineSetImport d;
        d.setFileName(write("l.csv", c.csv).toLatin1());
        d.lineEditVerticalDelimiter->setText("END");
        d.checkBoxCheckShots->setChecked(c.checkShots);
        modeButton(d, c.mode)->setChecked(true);
        for (int v = 0; v < c.values; ++v)
            d.setPhysicalColumnIndex(3 + v, 3 + v);
        const bool complete = !c.lines.isEmpty();
        EXPECT_EQ(d.parseFile(), complete ? 1 : 0);
        if (!complete) {
            EXPECT_TRUE(HxObjectPool::instance()->objects().empty());
            EXPECT_TRUE(consoleTexts(HxMessage::Error).join('|').endsWith("l.csv: Unexpected end of file"));
        } else if (d.createdLineSet()) {
            const QJsonObject set = jsonOf(d.createdLineSet());
            EXPECT_EQ(set.value("lines").toArray(), c.lines);
            EXPECT_EQ(set.value("data").toArray(), c.data);
            EXPECT_EQ(set.value("points").toArray().size(), c.lines.last().toArray().last().toInt() + 1);
        }
    }
}

TEST_F(LineSet, InteractiveImportOfTheDriftersReplaysToTheSameLineSet)
{
    ModalDriver<QxCSVLineSetImport> driver([](QxCSVLineSetImport& d) {
        d.comboBoxColumnDelimiter->setCurrentIndex(1);
        d.radioButtonLineDelimitor->setChecked(true);
        d.lineEditVerticalDelimiter->setText("END");
        d.setPhysicalColumnIndex(3, 3);
        d.pushButtonOK->click();
    });
    EXPECT_EQ(callReader(hxReadCSVLineSet, "load -line_set_csv examples/drifter_tracks.csv"), 1);
    ASSERT_TRUE(lastObject());
    const QJsonObject drifters = jsonOf(lastObject());
    QList<int> lengths;
    for (const QJsonValue& line : drifters.value("lines").toArray())
        lengths << line.toArray().size();
    EXPECT_EQ(lengths, QList<int>({62, 40, 47, 57, 44, 65}));
    EXPECT_EQ(drifters.value("data").toArray()[0].toArray()[0].toDouble(), 15.4);
    // The replayed object's own command is written from the replay's unseen
    // dialog, whose delimiter field kept its default.
    const QString command = loadCommandOf(lastObject());
    EXPECT_EQ(expectExampleReplaysToTheSameObject(), QString(command).replace("\",\"", "\" \""));
}
