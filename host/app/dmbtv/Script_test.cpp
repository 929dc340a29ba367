#include "host/app/dmbtv/Script.h"

#include <gtest/gtest.h>

using namespace dmbtv;

TEST(Script, EveryLineIsRead) {
    const Script script =
        ReadScript("# comment\n\nwait 500\npress 20\nkey 34\nclick 10 20\nanswer 1011 ok\nanswer 5 cancel\n"
                   "pick 1 0\nshot a.png\nexpect mode 4\nexpect type -1\nexpect text 43 \"\"\n"
                   "expect title \"[CH12] \\\"A\\\\B\\\"\"\nexpect box 1001\ndialog 22 -1 b.png\nquit\r\n");
    ASSERT_EQ(script.error, "");
    ASSERT_EQ(script.lines.size(), 16u);
    EXPECT_EQ(script.lines[0].verb, Verb::Remark);
    EXPECT_EQ(script.lines[0].text, "comment");
    EXPECT_EQ(script.lines[1].verb, Verb::Wait);
    EXPECT_EQ(script.lines[1].first, 500);
    EXPECT_EQ(script.lines[1].line, 3);
    EXPECT_EQ(script.lines[4].second, 20);
    EXPECT_EQ(script.lines[5].second, 1);
    EXPECT_EQ(script.lines[6].second, 0);
    EXPECT_EQ(script.lines[10].first, -1);
    EXPECT_EQ(script.lines[12].text, "[CH12] \"A\\B\"");
    EXPECT_EQ(script.lines[14].second, -1);
    EXPECT_EQ(script.lines[14].text, "b.png");
    EXPECT_EQ(script.lines[15].verb, Verb::Quit);
}

TEST(Script, ErrorsNameLineAndReason) {
    EXPECT_EQ(ReadScript("wait 5\njump 3\n").error, "line 2: unknown line 'jump'");
    EXPECT_EQ(ReadScript("wait\n").error, "line 1: 'wait' takes 1 argument(s)");
    EXPECT_EQ(ReadScript("wait five\n").error, "line 1: expected a number, got 'five'");
    EXPECT_EQ(ReadScript("answer 5 maybe\n").error, "line 1: expected ok or cancel, got 'maybe'");
    EXPECT_EQ(ReadScript("expect title \"open\n").error, "line 1: a quote is not closed");
    EXPECT_EQ(ReadScript("expect nothing 1\n").error, "line 1: unknown line 'expect nothing'");
    EXPECT_EQ(ReadScript("wait 99999999999\n").error, "line 1: expected a number, got '99999999999'");
}
