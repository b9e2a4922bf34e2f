// The interpreter through zynConsole_ExecuteString: statements, module
// prefixes and the current module, quoting, argument checks, toggles, and
// lines that break every rule.
#include "zynconsole_fixture.h"

#include <random>

class ConsoleInterpreter : public ConsoleTest {
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        ASSERT_HR(zynConsole_RegisterCommand("Test", "Three", 3, TestCommandRoutine, 0x3001, 0, 0), S_OK);
        ASSERT_HR(zynConsole_RegisterCommand("Test", "Upto", 3, TestCommandRoutine, 0x3002, 3, 0), S_OK);
        ASSERT_HR(zynConsole_RegisterCommand("Test", "Flip", 0, TestCommandRoutine, 0x3003, 0, 1), S_OK);
        ASSERT_HR(zynConsole_RegisterCommand("Other", "Three", 3, TestCommandRoutine, 0x3004, 3, 0), S_OK);
        ASSERT_HR(zynConsole_RegisterCommand("Any", 14, TestCommandRoutine, 0x3005, 14, 0), S_OK);
    }
};

TEST_F(ConsoleInterpreter, StatementsRunInOrderAndCommentsEndTheLine)
{
    EXPECT_EQ(Run({"Print a; Print b;Print c"}), "a \nb \nc \n");
    EXPECT_EQ(Run({"// x; Print no"}), "");
    EXPECT_EQ(Run({"Print yes; // x; Print no"}), "yes \n");
    EXPECT_EQ(Run({"Clear // x"}), "Error: Command 'Clear' has 0 Argument(s).\n");
    EXPECT_EQ(Run({"  \t Print   spaced  \t "}), "spaced \n") << "leading and trailing blanks and tabs";
    EXPECT_EQ(Run({";;; ; "}), "") << "empty statements";
}

TEST_F(ConsoleInterpreter, QuotesGuardBlanksAndSemicolons)
{
    EXPECT_EQ(Run({"Print \"a;b\" c"}), "a;b c \n");
    EXPECT_EQ(Run({"Print \"one two\"   three"}), "one two three \n");
    ASSERT_EQ(Run({"Any \"\" x"}), "");
    ASSERT_EQ(ConsoleCalls().size(), 1u);
    EXPECT_EQ(ConsoleCalls()[0].args, std::vector<std::string>({"", "x"})) << "\"\" is an empty argument";
    ConsoleCalls().clear();
    Run({"Any a\tb c"});
    ASSERT_EQ(ConsoleCalls().size(), 1u);
    EXPECT_EQ(ConsoleCalls()[0].args, std::vector<std::string>({"a\tb", "c"})) << "a tab does not separate";
    EXPECT_EQ(ConsoleCalls()[0].szName, "Any") << "entry 15 holds the name";
}

TEST_F(ConsoleInterpreter, ModulePrefixRunsTheCommandAndKeepsTheCurrentModule)
{
    EXPECT_EQ(Run({"Test:Three 1 2 3", "test:  three 4 5 6", "Three 7 8 9"}), "Unknown command: 'Three'\n");
    ASSERT_EQ(ConsoleCalls().size(), 2u);
    EXPECT_EQ(ConsoleCalls()[0].dwID, 0x3001u);
    EXPECT_EQ(ConsoleCalls()[1].args, std::vector<std::string>({"4", "5", "6"}));
    ConsoleCalls().clear();
    // "Test:" makes Test current; global commands are still found, Other's are not
    EXPECT_EQ(Run({"Test:", "Three a b c", "Print global", "Upto"}), "global \n");
    EXPECT_EQ(ConsoleCalls().size(), 2u);
    EXPECT_EQ(Run({"Other:Three x"}), "");
    ASSERT_EQ(ConsoleCalls().size(), 3u);
    EXPECT_EQ(ConsoleCalls()[2].dwID, 0x3004u) << "the prefix wins over the current module";
    EXPECT_EQ(Run({"Three 1 2 3"}), "") << "Test is still current after Other:Three";
    EXPECT_EQ(Run({"..", "Three 1 2 3"}), "Unknown command: 'Three'\n") << ".. empties the current module";
    EXPECT_EQ(Run({"nomodule:", "nomodule:Print x"}),
              "No functions has been presented in module nomodule.\n"
              "No functions has been presented in module nomodule.\n");
    EXPECT_EQ(Run({"Show"}), "Unknown command: 'Show'\n");
    int bShow = 0;
    Run({"console:Show"});
    EXPECT_HR(zynConsole_IsShow(bShow), S_OK);
    EXPECT_EQ(bShow, 1) << "console:Show opens the console";
}

TEST_F(ConsoleInterpreter, ArgumentCountsAreChecked)
{
    static const struct {
        const char* szLine;
        const char* szText;
        size_t nCalls;
    } s_Cases[] = {
        {"Test:Three 1 2", "Error: Command 'Three' has 3 Argument(s).\n", 0},
        {"Test:Three 1 2 3 4", "Error: Command 'Three' has 3 Argument(s).\n", 0},
        {"Test:Three 1 2 3", "", 1},
        {"Test:Upto", "", 1},
        {"Test:Upto 1 2 3", "", 1},
        {"Test:Upto 1 2 3 4", "Error: Command 'Upto' has 3 Argument(s).\n", 0},
        {"Test:Flip x", "Error: Command 'Flip' has 0 Argument(s).\n", 0},
        {"Pause 1", "Unknown command: 'Pause'\n", 0},
        {"Any 1 2 3 4 5 6 7 8 9 10 11 12 13 14", "", 1},
        {"Any 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15", "", 0},
        {"Any 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21", "", 0},
    };
    for (const auto& c : s_Cases) {
        SCOPED_TRACE(c.szLine);
        ConsoleCalls().clear();
        EXPECT_EQ(Run({c.szLine}), c.szText);
        EXPECT_EQ(ConsoleCalls().size(), c.nCalls);
    }
}

TEST_F(ConsoleInterpreter, ToggleCommandsGetTheSign)
{
    EXPECT_EQ(Run({"-Move", "+Move", "Move"}), "\nMove\nStop\nStop\n") << "an urgent line starts a line";
    Run({"-Test:Flip", "Test:+Flip", "+Test:-Flip"});
    ASSERT_EQ(ConsoleCalls().size(), 3u);
    static const int s_States[] = {0, 1, 0};
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(ConsoleCalls()[i].nArgs, s_States[i]) << "call " << i;
        EXPECT_TRUE(ConsoleCalls()[i].args.empty()) << "a toggle gets no vector, call " << i;
    }
}

TEST_F(ConsoleInterpreter, DisabledCommandIsRefused)
{
    EXPECT_EQ(Run({"Test:EnableCommand Three 0", "Test:Three 1 2 3"}), "Command 'Three' unable.\n");
    EXPECT_EQ(Run({"EnableCommand Nothing 0"}), "Command failed.");
    EXPECT_EQ(Run({"Test:EnableCommand Three 1", "Test:Three 1 2 3"}), "");
    EXPECT_EQ(ConsoleCalls().size(), 1u);
}

TEST_F(ConsoleInterpreter, OverlongLineIsRefusedWithItsText)
{
    std::string szLong = "Print " + std::string(250, 'x');
    EXPECT_HR(zynConsole_ExecuteString(szLong.c_str()), E_FAIL);
    // the line goes through one conversion, which holds 255 characters
    EXPECT_EQ(Flush(), "\n" + szLong.substr(0, 255) + "\nThis command has more then 255 simbols\n");
    std::string szMax = "Print " + std::string(249, 'y');
    EXPECT_HR(zynConsole_ExecuteString(szMax.c_str()), S_OK);
    EXPECT_EQ(Flush(), std::string(249, 'y') + " \n") << "255 characters are a line";
    EXPECT_HR(zynConsole_ExecuteString(NULL), E_FAIL);
}

TEST_F(ConsoleInterpreter, ExecuteCommandCallsDirectly)
{
    char a[] = "a b", b[] = "", c[] = "c";
    EXPECT_HR(zynConsole_ExecuteCommand("Test:Three", a, b, c), S_OK);
    EXPECT_HR(zynConsole_ExecuteCommand("Test:Nothing", a), S_OK);
    EXPECT_HR(zynConsole_ExecuteCommand("-Test:Flip"), S_OK);
    ASSERT_EQ(ConsoleCalls().size(), 2u);
    EXPECT_EQ(ConsoleCalls()[0].args, std::vector<std::string>({"a b", "", "c"}));
    EXPECT_EQ(ConsoleCalls()[1].nArgs, 0);
    EXPECT_HR(zynConsole_ExecuteCommand("Test:"), S_OK);
    EXPECT_EQ(Run({"Three 1 2 3"}), "") << "\"Test:\" made Test current";
    zynConsole_Finalize();
    EXPECT_HR(zynConsole_ExecuteCommand("Test:Three", a, b, c), E_FAIL);
    EXPECT_HR(zynConsole_ExecuteString("Print x"), E_FAIL);
}

// Random lines of tokens, quotes and separators: nothing crashes, and the text
// buffer and the log stay within their bounds.
TEST_F(ConsoleInterpreter, RandomLinesCrashNothing)
{
    static const char* s_Tokens[] = {"Print", "Any", "Test:", "Test:Three", "Other:", "..", "\"", "\"\"", ";", ":",
                                     " ", "  ", "\t", "+", "-", "//", "%1", "x", "Move", "nomodule:", "Upto",
                                     "Alias", "r", "EnableCommand", "Flip", "UnloadScript", "AliasesList",
                                     "\b", "~", "%", "%s", "%d", "Color", "1", "255"};
    const int nTokens = sizeof(s_Tokens) / sizeof(s_Tokens[0]);
    std::mt19937 rng(20240607);
    ASSERT_HR(zynConsole_EnableLog(Path("random.log").c_str()), S_OK);
    for (int i = 0; i < 100000; i++) {
        std::string szLine;
        int nWords = rng() % 40;
        for (int k = 0; k < nWords; k++)
            szLine += s_Tokens[rng() % nTokens];
        HRESULT hr = zynConsole_ExecuteString(szLine.c_str());
        ASSERT_TRUE(hr == S_OK || (hr == E_FAIL && szLine.size() > 255)) << HrText(hr) << " for line " << i;
    }
    EXPECT_HR(zynConsole_Print("%s", "still alive\n"), S_OK);
    std::string szTail = Flush();
    EXPECT_LE(szTail.size(), 5119u);
    EXPECT_EQ(szTail.substr(szTail.size() - 12), "still alive\n");
}
