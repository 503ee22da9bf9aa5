// The parts of the SDK stand-in whose behaviour the package relies on.
#include <gtest/gtest.h>

#include "HxParameter.h"
#include "McDArray.h"
#include "McString.h"

TEST(McDArray, GrowsToNeededOrOneAndAHalfTimesTheSizeAndKeepsItsElements)
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

    // Non-trivial elements survive growth, even when the source of an
    // append lives inside the array being grown.
    McDArray<McString> s;
    s.append("a long text that does not fit inline in the string object");
    for (int i = 0; i < 20; ++i)
        s.append(s[0]);
    McDArray<McString> copy = s;
    s.clear();
    ASSERT_EQ(copy.size(), 21);
    EXPECT_EQ(copy[20], "a long text that does not fit inline in the string object");
}

TEST(McString, FormatsExplodesAndConvertsAsLatin1)
{
    McString s;
    EXPECT_STREQ(s.printf("%s-%d-%g", "x", -3, 0.1).getString(), "x--3-0.1");
    EXPECT_EQ(s.printf("%s!", std::string(1000, 'z').c_str()).length(), 1001);
    EXPECT_STREQ(s.setInt64(-9000000000LL).getString(), "-9000000000");
    EXPECT_EQ(McString("caf\xe9").toQString(), QString::fromUtf8("café"));
    EXPECT_EQ(McString::fromQString(QString::fromUtf8("café")), "caf\xe9");

    // Every separator splits, also at either end.
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"a,,b", {"a", "", "b"}}, {"", {""}}, {",", {"", ""}}};
    for (const auto& [text, expected] : cases) {
        McDArray<McString> parts;
        McString(text).explode(',', parts);
        std::vector<std::string> got;
        for (const McString& p : parts)
            got.push_back(p.getString());
        EXPECT_EQ(got, expected) << "text: " << text;
    }
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
}
