// Where the import rules change a user's data, the console says so once per
// import, and the data stay exactly as the rules make them.
#include "HxLattice3.h"
#include "HxLineSet.h"
#include "ImportSupport.h"
#include "QxCSVLineSetImport.h"
#include "QxCSVPointClusterImport.h"
#include "QxCSVUniformScalarFieldImport.h"

namespace {

using Warnings = ImportTest;

// Console texts of every level that contain part.
int countContaining(const QString& part)
{
    int n = 0;
    for (const HxMessage::Entry& e : theMsg->entries())
        n += e.text.contains(part);
    return n;
}

} // namespace

TEST_F(Warnings, LineSetSaysChosenColumnsAreNotUsed)
{
    const QString file = write("lines.csv", "1 2 3 4\n5 6 7 8\n");
    const struct {
        const char* columns;
        const char* warning; // empty: none
    } rows[] = {
        {"4 0 1 2 3", ""},                                                // the file's order
        {"5 0 1 2 3 -1", ""},                                             // a value left out
        {"4 1 0 2 3", "\"X\" is set to file column 2 but takes number 1"}, // swapped x and y
        {"4 0 1 2 5", "\"Value1\" is set to file column 6 but takes number 4"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.columns);
        theMsg->clearEntries();
        const QString command = QString("load -line_set_csv \"%1\" CSVParams \"%1\" \"%2\" \" \" \"#\" 1 0 0 "
                                        "-lineSetParams 0 none 0 1 -dataOnly")
                                    .arg(file, r.columns);
        ASSERT_EQ(callReader(hxReadCSVLineSet, command), 1);
        EXPECT_EQ(countContaining("the chosen file columns are not used"), *r.warning ? 1 : 0);
        EXPECT_EQ(countContaining(r.warning), *r.warning ? 1 : int(theMsg->entries().size()));
        // The numbers are still read in the file's order.
        const auto* set = dynamic_cast<HxLineSet*>(lastObject());
        ASSERT_TRUE(set);
        ASSERT_EQ(set->getNumPoints(), 2);
        EXPECT_EQ(set->getCoords()[1][0], 5.0f);
    }
}

TEST_F(Warnings, UnreadableLatticeFileSaysTheFieldIsEmpty)
{
    const QString missing = dir.filePath("missing.csv");
    ASSERT_EQ(callReader(hxReadCSVUniformScalarField,
                         QString("load -uniform_scalar_field_csv \"%1\" \"CSVUniformScalarField # 1 , 5 0 2 1 1 0 0 1 "
                                 "1 0 0 1 0 0 0 1 1 1\" -dataOnly")
                             .arg(missing)),
              1);
    EXPECT_EQ(countContaining("the field holds no data from the file"), 1);
    const auto* field = dynamic_cast<HxRegField3*>(lastObject());
    ASSERT_TRUE(field);
    EXPECT_EQ(jsonOf(lastObject())["values"].toArray(), QJsonArray({0, 0}));
}
