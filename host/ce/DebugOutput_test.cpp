#include "host/ce/DebugOutput.h"

#include <gtest/gtest.h>

namespace ce {
namespace {

TEST(DebugOutput, KeepsTextsAsWritten) {
    DebugOutput debug;
    debug.Write(u"[MES_ParseJPEG] failed!\n");
    debug.Write(u"한글\r\n");
    EXPECT_EQ(debug.Lines(), (std::vector<WString>{u"[MES_ParseJPEG] failed!\n", u"한글\r\n"}));
    debug.Clear();
    EXPECT_TRUE(debug.Lines().empty());
}

TEST(DebugOutput, KeepsTheLatestThousand) {
    DebugOutput debug;
    for (int i = 0; i < 1003; ++i)
        debug.Write(WString(1, static_cast<WCHAR>(0x1000 + i)));
    ASSERT_EQ(debug.Lines().size(), 1000u);
    EXPECT_EQ(debug.Lines().front(), WString(1, WCHAR{0x1003}));
}

TEST(DebugOutput, PassesThemOn) {
    DebugOutput debug;
    WString passed;
    debug.SetSink([&](WStringView text) { passed += text; });
    debug.Write(u"a");
    debug.SetSink({});
    debug.Write(u"b");
    EXPECT_EQ(passed, u"a");
}

} // namespace
} // namespace ce
