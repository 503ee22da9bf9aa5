// The parts of the SDK stand-in whose behaviour the package relies on.
#include <gtest/gtest.h>

#include "HxParameter.h"
#include "McDArray.h"
#include "McString.h"

TEST(Sdk, ArraysStringsAndParameters)
{
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

    EXPECT_EQ(McString("caf\xe9").toQString(), QString::fromUtf8("café"));
    EXPECT_EQ(McString::fromQString(QString::fromUtf8("café")), "caf\xe9");
    McString m;
    EXPECT_EQ(m.printf("%s!", std::string(1000, 'z').c_str()).length(), 1001);
    EXPECT_STREQ(m.setInt64(-9000000000LL).getString(), "-9000000000"); // byte counts past 32 bits
    for (const auto& [text, expected] : {std::pair<const char*, std::vector<std::string>>{"a,,b", {"a", "", "b"}},
                                         {"", {""}}, {",", {"", ""}}}) {
        SCOPED_TRACE(text);
        McDArray<McString> parts;
        McString(text).explode(',', parts);
        EXPECT_EQ(std::vector<std::string>(parts.begin(), parts.end()), expected);
    }

    // Insert mode 1 replaces a parameter of the same name.
    HxParamBundle b;
    b.insert(new HxParameter("LoadCmd", "first"), 1);
    b.insert(new HxParameter("Other", "x"), 1);
    b.insert(new HxParameter("LoadCmd", "second"), 1);
    ASSERT_EQ(b.size(), 2);
    EXPECT_EQ(static_cast<HxParameter*>(b.find("LoadCmd"))->getString(), "second");
    b.insert(new HxParameter("LoadCmd", "third"), 0);
    EXPECT_EQ(b.size(), 3);
}
