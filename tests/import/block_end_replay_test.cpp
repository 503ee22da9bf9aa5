// Files that once made the point cloud and line set replays read past the
// end of the parser's input block, replayed through hxhost. In the sanitizer
// build such a read ends hxhost with a report on stderr.
#include "ImportSupport.h"

TEST_F(ImportTest, SignedDecimalAtTheBlockEndReplaysCleanly)
{
    // 16-byte records with a signed 8-digit decimal ending exactly at the end
    // of the first 1 MiB block; 65538 rows, so that a line set takes all of them.
    QByteArray blockEnd = QByteArray("123456789012345\n").repeated(65538);
    blockEnd.replace(16 * 65535, 16, "-12345678.12345\n");
    const struct {
        const char* what;
        QByteArray content;
        int signedRow, vertices; // vertices: of the one line
    } cases[] = {
        {"field ends at the 1 MiB block end", blockEnd, 65535, 65538 / 3},
        {"field ends at the end of a small file", "1234\r\n-12345678.12345\n", 1, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const QString file = write("blockend.csv", c.content);
        const HostRun cloud = runHxhost(
            {"-c", QString("load -point_cloud_csv %1 CSVParams %1 \"3 0 0 0\" \",\" \"\" 1 0 0 \"\" -dataOnly").arg(file)});
        const HostRun set = runHxhost({"-c", QString("load -line_set_csv %1 CSVParams %1 \"3 0 1 2\" \",\" \"\" 1 0 0 "
                                                     "-lineSetParams 0 none 0 1 -dataOnly").arg(file)});
        for (const HostRun* r : {&cloud, &set}) {
            EXPECT_FALSE(r->err.contains("Sanitizer")) << r->err.constData();
            EXPECT_EQ(r->objects().size(), 1);
        }
        const QJsonArray points = cloud.objects()[0].toObject().value("points").toArray();
        EXPECT_EQ(points.size(), c.content.count('\n'));
        EXPECT_EQ(points[c.signedRow].toArray()[0].toDouble(), static_cast<double>(-12345678.12345f));
        EXPECT_EQ(set.objects()[0].toObject().value("points").toArray().size(), c.vertices);
    }
}
