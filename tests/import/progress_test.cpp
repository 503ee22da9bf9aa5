// Long imports report their progress to the host and stop when asked: for
// each data kind an import left alone reports a rising share that reaches 1,
// a few times per 4 MiB read; a stop at about 30 % leaves no object and says
// where it stopped.
#include "HxProgress.h"
#include "ImportSupport.h"
#include "QxCSVLineSetImport.h"
#include "QxCSVPointClusterImport.h"
#include "QxCSVUniformScalarFieldImport.h"

namespace {

// What the host's display saw; asks to stop once the share passes stopAt.
struct FakeDisplay : HxProgress::Display {
    double stopAt = 2;
    int begins = 0, ends = 0;
    std::vector<double> shares;
    void begun(const QString&) override { ++begins; }
    void progressed(double share) override
    {
        shares.push_back(share);
        if (share >= stopAt)
            theProgress->requestStop();
    }
    void ended() override { ++ends; }
};

struct Kind {
    const char* name;
    int (*entry)(int, const char**);
    const char* arguments; // after the file name
};

// 16 MiB of "1.5,2.5,3.5" lines: four reports a pass.
const long long fileBytes = 16 << 20;

const Kind kinds[] = {
    {"point cloud", hxReadCSVPointCluster, "CSVParams \"%1\" \"3 0 1 2\" \",\" \"#\" 1 0 0 \"\" -dataOnly"},
    {"line set", hxReadCSVLineSet,
     "CSVParams \"%1\" \"3 0 1 2\" \",\" \"#\" 1 0 0 -lineSetParams 0 none 0 1 -dataOnly"},
    {"uniform field", hxReadCSVUniformScalarField,
     "\"CSVUniformScalarField # 1 , 4 0 4194304 1 1 0 0 1 1 0 0 1 0 0 0 1 1 1\" -dataOnly"},
};

class Progress : public ImportTest {
protected:
    void SetUp() override
    {
        ImportTest::SetUp();
        QByteArray content;
        const QByteArray line = "1.5,2.5,3.5\n";
        content.reserve(fileBytes);
        while (content.size() + line.size() <= fileBytes)
            content += line;
        path = write("big.csv", content);
        theProgress->setDisplay(&display);
    }
    void TearDown() override
    {
        theProgress->setDisplay(nullptr);
        ImportTest::TearDown();
    }
    int import(const Kind& kind)
    {
        return callReader(kind.entry, QString("load -x \"%1\" ").arg(path) + QString(kind.arguments).arg(path));
    }
    FakeDisplay display;
    QString path;
};

} // namespace

TEST_F(Progress, RisesToOneOrStopsWhereAsked)
{
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        display = FakeDisplay();
        EXPECT_EQ(import(kind), 1);
        ASSERT_FALSE(display.shares.empty());
        EXPECT_EQ(display.shares.back(), 1.0);
        for (size_t i = 1; i < display.shares.size(); ++i)
            EXPECT_GT(display.shares[i], display.shares[i - 1]);
        // Two passes at most, one report per 4 MiB each, and the end.
        EXPECT_LE(display.shares.size(), size_t(2 * fileBytes / (4 << 20) + 3));
        HxObjectPool::instance()->clear();

        display = FakeDisplay();
        display.stopAt = 0.3;
        theMsg->clearEntries();
        EXPECT_EQ(import(kind), 0);
        EXPECT_EQ(lastObject(), nullptr);
        EXPECT_EQ(consoleTexts(HxMessage::Error).filter("import of " + path + " stopped at ").size(), 1);
        EXPECT_EQ(display.begins + display.ends, 2);
        EXPECT_FALSE(theProgress->stopRequested()); // the next import starts afresh
    }
}
