// The command table through the registration calls and the interpreter: a
// test module with its own routine and IDs, names without case, automatic IDs,
// limits, and commands that go away while aliases still name them.
#include "zynconsole_fixture.h"

#include <string.h>

typedef ConsoleTest ConsoleTable;

static unsigned long IdOf(const char* szModule, const char* szName)
{
    unsigned long dwID = 0x12345678;
    EXPECT_HR(zynConsole_GetCommandID(szModule, szName, &dwID), S_OK) << szModule << ":" << szName;
    return dwID;
}

TEST_F(ConsoleTable, RoutineGetsItsIDAndArguments)
{
    ASSERT_HR(zynConsole_RegisterCommand("Test", "Two", 2, TestCommandRoutine, 0x4000, 1, 0), S_OK);
    ASSERT_HR(zynConsole_RegisterCommand("Test", "Other", 0, TestCommandRoutine, 0x4001, 0, 0), S_OK);
    Run({"Test:Two a", "Test:Other", "Test:Two a \"b c\""});
    ASSERT_EQ(ConsoleCalls().size(), 3u);
    EXPECT_EQ(ConsoleCalls()[0].dwID, 0x4000u);
    EXPECT_EQ(ConsoleCalls()[0].args, std::vector<std::string>({"a"}));
    EXPECT_EQ(ConsoleCalls()[1].dwID, 0x4001u);
    EXPECT_EQ(ConsoleCalls()[2].args, std::vector<std::string>({"a", "b c"}));
    EXPECT_EQ(IdOf("test", "TWO"), 0x4000u) << "names compare without case";
}

TEST_F(ConsoleTable, NameOrIDTakenOnlyWithinAModule)
{
    ASSERT_HR(zynConsole_RegisterCommand("Kern", "Pause", 0, TestCommandRoutine, 0x4000, 0, 0), S_OK);
    EXPECT_HR(zynConsole_RegisterCommand("kern", "PAUSE", 0, TestCommandRoutine, 0x4001, 0, 0), E_FAIL);
    EXPECT_HR(zynConsole_RegisterCommand("Kern", "Other", 0, TestCommandRoutine, 0x4000, 0, 0), E_FAIL);
    EXPECT_HR(zynConsole_RegisterCommand("Else", "Pause", 0, TestCommandRoutine, 0x4000, 0, 0), S_OK);
    EXPECT_HR(zynConsole_RegisterCommand("Pause", 0, TestCommandRoutine, 0x4000, 0, 0), S_OK);
    EXPECT_HR(zynConsole_RegisterCommand("Kern", "NoRoutine", 0, NULL, 0x4002, 0, 0), E_FAIL);
    EXPECT_HR(zynConsole_RegisterCommand("Kern", "Low", 0, TestCommandRoutine, 2047, 0, 0), E_FAIL);
    EXPECT_HR(zynConsole_RegisterCommand(NULL, "x", 0, TestCommandRoutine, 0, 0, 0), E_FAIL);
    EXPECT_HR(zynConsole_RegisterCommand("ModuleNameOfThirtyTwoCharacters!", "x", 0, TestCommandRoutine, 0, 0, 0),
              E_FAIL);
}

TEST_F(ConsoleTable, AutomaticIDsFollowTheLargestBelow2048)
{
    ASSERT_HR(zynConsole_RegisterCommand("A", "One", 0, TestCommandRoutine, 0, 0, 0), S_OK);
    ASSERT_HR(zynConsole_RegisterCommand("B", "Two", 0, TestCommandRoutine, 0, 0, 0), S_OK);
    ASSERT_HR(zynConsole_RegisterCommand("B", "Big", 0, TestCommandRoutine, 5000, 0, 0), S_OK);
    ASSERT_HR(zynConsole_RegisterCommand("C", "Three", 0, TestCommandRoutine, 0, 0, 0), S_OK);
    EXPECT_EQ(IdOf("A", "One"), 1u);
    EXPECT_EQ(IdOf("B", "Two"), 2u);
    EXPECT_EQ(IdOf("C", "Three"), 3u) << "an ID of 2048 or more does not count";
    EXPECT_EQ(IdOf("C", "Missing"), 0xFFFFFFFFu);
    EXPECT_EQ(IdOf("", "One"), 0xFFFFFFFFu) << "no fall-back to the global module";
    EXPECT_EQ(IdOf("", "Exec"), 0x1510u);
    unsigned long dwID = 7;
    EXPECT_HR(zynConsole_GetCommandID(NULL, "x", &dwID), E_FAIL);
    EXPECT_EQ(dwID, 7u) << "a null name leaves the output alone";
}

TEST_F(ConsoleTable, LongNameIsCutAt63)
{
    char szName[80];
    memset(szName, 'n', 64);
    szName[64] = 0;
    ASSERT_HR(zynConsole_RegisterCommand("T", szName, 0, TestCommandRoutine, 0x4000, 0, 0), S_OK);
    EXPECT_EQ(IdOf("T", szName), 0xFFFFFFFFu) << "the full name finds nothing";
    szName[63] = 0;
    EXPECT_EQ(IdOf("T", szName), 0x4000u);
}

TEST_F(ConsoleTable, UnregisterRemovesOneOrAllOfAModule)
{
    for (unsigned long i = 0; i < 25; i++) {
        std::string szName = "C" + std::to_string(i);
        ASSERT_HR(zynConsole_RegisterCommand(i % 2 ? "Odd" : "Even", szName.c_str(), 0, TestCommandRoutine,
                                             0x4000 + i, 0, 0), S_OK);
    }
    EXPECT_HR(zynConsole_UnregisterCommand("Odd", "C1"), S_OK);
    EXPECT_HR(zynConsole_UnregisterCommand("Odd", "C1"), E_FAIL);
    EXPECT_HR(zynConsole_UnregisterCommand("Even", "C1"), E_FAIL);
    EXPECT_HR(zynConsole_UnregisterCommand("even"), S_OK);
    EXPECT_HR(zynConsole_UnregisterCommand("Nobody"), S_OK);
    EXPECT_HR(zynConsole_UnregisterCommand(NULL), E_FAIL);
    EXPECT_EQ(IdOf("Even", "C0"), 0xFFFFFFFFu);
    EXPECT_EQ(IdOf("Odd", "C3"), 0x4003u);
    EXPECT_EQ(Run({"Odd:UnregCommand C3", "Odd:UnregCommand C3", "Odd:C5"}), "Command failed.");
    ASSERT_EQ(ConsoleCalls().size(), 1u);
    EXPECT_EQ(ConsoleCalls()[0].dwID, 0x4005u);
    EXPECT_HR(zynConsole_EnableCommand("Odd", "C5", 0), S_OK);
    EXPECT_HR(zynConsole_EnableCommand("Odd", "C3", 0), E_FAIL);
    EXPECT_EQ(Run({"Odd:C5"}), "Command 'C5' unable.\n");
}

TEST_F(ConsoleTable, AtMost2048Commands)
{
    int nOk = 0;
    for (int i = 0; i < 2100; i++) {
        std::string szName = "c" + std::to_string(i);
        nOk += SUCCEEDED(zynConsole_RegisterCommand("Many", szName.c_str(), 0, TestCommandRoutine, 0, 0, 0));
    }
    EXPECT_EQ(nOk, 2048 - 25 - 6) << "the console's own 25 commands and the kernel's 6 count";
    EXPECT_EQ(Run({"Many:c2016", "Many:c2017"}), "Unknown command: 'c2017'\n");
    EXPECT_HR(zynConsole_UnregisterCommand("Many"), S_OK);
    EXPECT_EQ(Run({"Print after"}), "after \n");
}

TEST_F(ConsoleTable, CommandGoneUnderAnAliasOrBindIsNotCalled)
{
    ASSERT_HR(zynConsole_RegisterCommand("Test", "Go", 0, TestCommandRoutine, 0x4000, 0, 0), S_OK);
    ASSERT_HR(zynConsole_RegisterCommand("Test", "Drop", 0, TestCommandRoutine, 0x4001, 0, 0), S_OK);
    Run({"Alias run1 \"Test:Go; Test:UnregCommand Go; Test:Go; Print end\"", "Bind F9 Test:Go"});
    // UnregCommand works on the current module
    EXPECT_EQ(Run({"Test:", "run1", ".."}), "end \n") << "the slot after the removal does nothing";
    ASSERT_EQ(ConsoleCalls().size(), 1u);
    EXPECT_EQ(Run({"Test:", "run1", ".."}), "Command failed.end \n");
    EXPECT_EQ(ConsoleCalls().size(), 1u);
    // a new command in the freed place is not picked up by the old slots either
    ASSERT_HR(zynConsole_RegisterCommand("Test", "Go", 0, TestCommandRoutine, 0x4002, 0, 0), S_OK);
    Run({"run1"});
    EXPECT_EQ(ConsoleCalls().size(), 1u);
}

TEST_F(ConsoleTable, CallsFailBeforeTheStart)
{
    zynConsole_Finalize();
    EXPECT_HR(zynConsole_RegisterCommand("T", "x", 0, TestCommandRoutine, 0, 0, 0), E_FAIL);
    EXPECT_HR(zynConsole_UnregisterCommand("T", "x"), E_FAIL);
    EXPECT_HR(zynConsole_UnregisterCommand("T"), E_FAIL);
    EXPECT_HR(zynConsole_EnableCommand("", "Exec", 1), E_FAIL);
    unsigned long dwID = 7;
    EXPECT_HR(zynConsole_GetCommandID("", "Exec", &dwID), E_FAIL);
    EXPECT_EQ(dwID, 0xFFFFFFFFu);
}
