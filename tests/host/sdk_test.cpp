#include <gtest/gtest.h>

#include "HxData.h"
#include "HxLattice3.h"
#include "HxLineSet.h"
#include "HxParameter.h"
#include "McDArray.h"
#include "McString.h"

TEST(McDArray, GrowsToNeededOrOneAndAHalfTimesTheSize)
{
    McDArray<int> a;
    std::vector<int> caps;
    for (int i = 0; i < 7; ++i) {
        a.append(i);
        caps.push_back(a.capacity());
    }
    EXPECT_EQ(caps, (std::vector<int>{1, 2, 3, 4, 6, 6, 9}));
    a.resize(100); // more than 1.5 × 7: exactly what was asked
    EXPECT_EQ(a.capacity(), 100);
    a.resize(101);
    EXPECT_EQ(a.capacity(), 150);
    a.resize(-5);
    EXPECT_EQ(a.size(), 0);
}

TEST(McDArray, KeepsNonTrivialElementsAcrossGrowthAndSelfAppend)
{
    McDArray<McString> a;
    a.append("a long text that does not fit inline in the string object");
    for (int i = 0; i < 20; ++i)
        a.append(a[0]); // the source lives inside the array being grown
    ASSERT_EQ(a.size(), 21);
    EXPECT_EQ(a[20], a[0]);
    McDArray<McString> b = a;
    a.clear();
    EXPECT_EQ(b.size(), 21);
    EXPECT_EQ(b[3], "a long text that does not fit inline in the string object");
}

TEST(McString, FormatsAndExplodes)
{
    McString s;
    EXPECT_STREQ(s.printf("%s-%d-%g", "x", -3, 0.1).getString(), "x--3-0.1");
    std::string big(1000, 'z');
    EXPECT_EQ(s.printf("%s!", big.c_str()).length(), 1001);
    EXPECT_STREQ(s.setInt64(-9000000000LL).getString(), "-9000000000");

    struct Case {
        const char* text;
        char sep;
        std::vector<std::string> parts;
    } cases[] = {
        {"a,,b", ',', {"a", "", "b"}},
        {"", ',', {""}},
        {",", ',', {"", ""}},
        {"CSVUniformScalarField # 1", ' ', {"CSVUniformScalarField", "#", "1"}},
    };
    for (const Case& c : cases) {
        McDArray<McString> parts;
        McString(c.text).explode(c.sep, parts);
        std::vector<std::string> got;
        for (const McString& p : parts)
            got.push_back(p.getString());
        EXPECT_EQ(got, c.parts) << "text: " << c.text;
    }
}

TEST(McString, ConvertsToAndFromQStringAsLatin1)
{
    McString s("caf\xe9");
    QString q = s.toQString();
    EXPECT_EQ(q, QString::fromUtf8("café"));
    EXPECT_EQ(McString::fromQString(q), s);
}

TEST(HxParamBundle, InsertModeOneReplacesByName)
{
    HxParamBundle b;
    b.insert(new HxParameter("LoadCmd", "first"), 1);
    b.insert(new HxParameter("Other", "x"), 1);
    b.insert(new HxParameter("LoadCmd", "second"), 1);
    ASSERT_EQ(b.size(), 2);
    EXPECT_EQ(static_cast<HxParameter*>(b.find("LoadCmd"))->getString(), "second");
    b.insert(new HxParameter("LoadCmd", "third"), 0);
    EXPECT_EQ(b.size(), 3);

    HxParameter p("p", "v");
    p.setFlag(1, true);
    p.setFlag(2, true);
    p.setFlag(1, false);
    EXPECT_FALSE(p.getFlag(1));
    EXPECT_TRUE(p.getFlag(2));
}

TEST(HxObjectPool, NamesObjectsAfterTheFileUniquely)
{
    HxObjectPool::instance()->clear();
    for (int i = 0; i < 3; ++i)
        HxData::registerData(HxLineSet::createInstance(), "/some/dir/wells.csv");
    const auto& objs = HxObjectPool::instance()->objects();
    ASSERT_EQ(objs.size(), 3u);
    EXPECT_EQ(objs[0]->getName(), "wells.csv");
    EXPECT_EQ(objs[1]->getName(), "wells.csv2");
    EXPECT_EQ(objs[2]->getName(), "wells.csv3");
    HxObjectPool::instance()->clear();
}

TEST(HxLineSet, DataArraysFollowThePoints)
{
    HxLineSet* s = HxLineSet::createInstance();
    McVec3f p(1, 2, 3);
    s->addPoints(&p, 1);
    s->setNumDataValues(2);
    s->getData(1)[0] = 7;
    EXPECT_EQ(s->addPoints(&p, 1), 1);
    EXPECT_EQ(s->getData(1)[0], 7);
    EXPECT_EQ(s->getData(1)[1], 0);
    const int idx[2] = {1, 0};
    s->addLine(2, idx, -1);
    s->addLine(1, idx, 0); // inserted before the first
    EXPECT_EQ(s->getLineLength(0), 1);
    EXPECT_EQ(s->getLineVertex(1, 0), 1);
    delete s;
}

TEST(HxLattice3, AllocatesAZeroedBlockOfTheRightSize)
{
    HxLattice3 lat(McDim3l(3, 2, 1), 2, McPrimType(McPrimType::MC_UINT16), C_UNIFORM, nullptr);
    ASSERT_EQ(lat.dataBytes(), 3 * 2 * 1 * 2 * 2);
    const unsigned char* p = static_cast<const unsigned char*>(lat.dataPtr().getData());
    for (long long i = 0; i < lat.dataBytes(); ++i)
        ASSERT_EQ(p[i], 0);
    lat.coords()->setBoundingBox(McBox3f(1, 2, 3, 4, 5, 6));
    float box[6];
    lat.coords()->getBoundingBox(box);
    EXPECT_EQ(box[5], 6);
}
