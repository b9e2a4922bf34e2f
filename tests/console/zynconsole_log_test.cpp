// Console output and the log: formatting, backspaces, colour escapes, urgent
// lines, hidden output, and the log written in blocks through the mark.
#include "zynconsole_fixture.h"

typedef ConsoleTest ConsoleLog;

// "aaab" as "3a1b": long texts compared and printed in short
static std::string Runs(const std::string& s)
{
    std::string szOut;
    for (size_t i = 0; i < s.size();) {
        size_t k = i;
        while (k < s.size() && s[k] == s[i])
            k++;
        szOut += std::to_string(k - i) + s[i];
        i = k;
    }
    return szOut;
}

// Prints n copies of ch with no conversion (one conversion holds 255 characters).
static void PrintRun(size_t n, char ch) { zynConsole_Print(std::string(n, ch).c_str()); }

static ULONGLONG FileSize(const std::string& szPath)
{
    WIN32_FILE_ATTRIBUTE_DATA fa;
    if (!GetFileAttributesExA(szPath.c_str(), GetFileExInfoStandard, &fa))
        return ~0ull;
    return ((ULONGLONG)fa.nFileSizeHigh << 32) | fa.nFileSizeLow;
}

TEST_F(ConsoleLog, PrintFormatsEachConversion)
{
    zynConsole_ExecuteCommand("Clear");
    EXPECT_HR(zynConsole_Print("%d%%", 5), S_OK);
    EXPECT_HR(zynConsole_Print("|%s|%5.2f|%x|%c|%-3d|%u", "str", 2.5, 255, 'q', 7, 42u), S_OK);
    EXPECT_HR(zynConsole_Print("%"), E_FAIL);
    EXPECT_HR(zynConsole_Print("abc%5"), E_FAIL);
    EXPECT_HR(zynConsole_Print(NULL), E_FAIL);
    int n = -1;
    EXPECT_HR(zynConsole_Print("|1234%n", &n), S_OK);
    EXPECT_EQ(n, 5) << "%n stores the characters so far";
    EXPECT_EQ(Flush(), "5%|str| 2.50|ff|q|7  |42|1234") << "the failed formats add nothing";
}

TEST_F(ConsoleLog, BackspacesRemoveTheCharacterInFront)
{
    zynConsole_ExecuteCommand("Clear");
    zynConsole_Print("abc\b\bd");
    zynConsole_Print("xyz");
    zynConsole_Print("\b\b!");
    EXPECT_EQ(Flush(), "adx!");
    zynConsole_Print("Performing:     ");
    for (int i = 0; i <= 100; i += 50)
        zynConsole_Print("\b\b\b\b%3d%%", i);
    EXPECT_EQ(Flush(), "Performing: 100%");
}

TEST_F(ConsoleLog, ColourEscapesNeverReachTheLog)
{
    std::string szText = Run({"console:Color 255 0 0", "Print red", "console:BgColor 1 2 3", "console:Color", "Print black",
                              "UrgentPrint alarm", "Print after", "nomodule:"});
    EXPECT_EQ(szText, "red \nblack \nalarm\nafter \nNo functions has been presented in module nomodule.\n");
    EXPECT_EQ(szText.find('~'), std::string::npos);
    EXPECT_EQ(szText.find('\x9C'), std::string::npos) << "nor the log mark";
    zynConsole_SetFontColor(0xFF000A08);
    zynConsole_Print("a");
    EXPECT_EQ(Flush(), "a") << "a colour with bytes 0, 8 and 10 is still one whole escape";
}

TEST_F(ConsoleLog, UrgentPrintGivesOneLineOfItsOwn)
{
    zynConsole_ExecuteCommand("Clear");
    zynConsole_Print("partial");
    EXPECT_HR(zynConsole_UrgentPrint("x%d\n", 1), S_OK);
    EXPECT_HR(zynConsole_UrgentPrint("x%d", 2), S_OK);
    zynConsole_Print("next");
    EXPECT_EQ(Flush(), "partial\nx1\nx2\nnext");
}

TEST_F(ConsoleLog, HiddenOutputIsDroppedWhileClosed)
{
    EXPECT_EQ(Run({"console:VisibleOutput 0", "Print hidden", "console:VisibleOutput 1", "Print shown"}), "shown \n");
    zynConsole_EnableInvisibleOutput(0);
    EXPECT_HR(zynConsole_Print("dropped"), S_OK);
    zynConsole_EnableInvisibleOutput(1);
    EXPECT_EQ(Flush(), "");
}

TEST_F(ConsoleLog, LogIsWrittenInBlocksThroughTheMark)
{
    std::string szLog = Path("blocks.log");
    zynConsole_ExecuteCommand("Clear");   // no log: discarded; leaves a 5-byte colour escape
    ASSERT_HR(zynConsole_EnableLog(szLog.c_str()), S_OK);
    for (int i = 0; i < 4; i++)
        PrintRun(1000, 'a' + i);
    PrintRun(602, 'e');
    EXPECT_EQ(FileSize(szLog), 0u) << "4607 characters behind the mark write nothing";
    zynConsole_Print("f");
    EXPECT_EQ(FileSize(szLog), 4091u) << "4096 characters less the escape";
    PrintRun(100, 'g');
    ASSERT_HR(zynConsole_Finalize(), S_OK);
    EXPECT_EQ(Runs(ReadFile(szLog)), "1000a1000b1000c1000d602e1f100g") << "the stop writes the rest";
    Restart();
}

TEST_F(ConsoleLog, TextPushedOutOfTheBufferNeverReachesTheLog)
{
    zynConsole_ExecuteCommand("Clear");
    zynConsole_EnableLog(Path("push.log").c_str());
    PrintRun(2000, 'A');
    PrintRun(2000, 'B');
    PrintRun(2000, 'C');
    zynConsole_ExecuteCommand("Clear");
    zynConsole_EnableLog(NULL);
    // 887 bytes went out (mark, escape, 881 A) and the mark took the next A's place
    EXPECT_EQ(Runs(ReadFile(Path("push.log"))), "1118A2000B2000C");
}

TEST_F(ConsoleLog, FailedLogReportsAndTheTextWaits)
{
    std::string szBad = Path("no\\such\\folder.log");
    EXPECT_HR(zynConsole_EnableLog(szBad.c_str()), E_FAIL);
    zynConsole_Print("kept\n");
    zynConsole_ExecuteCommand("Clear");   // the block is lost, with a report
    zynConsole_Print("later\n");
    EXPECT_EQ(Flush(), "later\n") << "Clear empties the buffer after the report";
    EXPECT_EQ(Run({"console:SetLogFile \"\"", "console:SetLogFile no\\such\\folder.log"}),
              "\nConsole EnableLog: Invalid Handle Value\nCommand failed.");
}

TEST_F(ConsoleLog, CallsBeforeTheStartAreRefused)
{
    zynConsole_Finalize();
    EXPECT_HR(zynConsole_Finalize(), E_FAIL);
    EXPECT_HR(zynConsole_Print("x"), E_FAIL);
    EXPECT_HR(zynConsole_SetFontColor(0), E_FAIL);
    EXPECT_HR(zynConsole_EnableLog("x.log"), E_FAIL);
    EXPECT_HR(zynConsole_Echo(1), E_FAIL);
    EXPECT_HR(zynConsole_UrgentPrint("x"), S_OK);
    EXPECT_HR(zynConsole_Initialize(), S_OK);
    EXPECT_HR(zynConsole_Initialize(), E_FAIL);
}

TEST_F(ConsoleLog, StartAndStopLeaveNoHeapBlocks)
{
    zynConsole_Finalize();
    for (int nRound = 0; nRound < 2; nRound++) {
        long nBefore = CountHeapBlocks();
        for (int i = 0; i < 3; i++) {
            ASSERT_HR(zynConsole_Initialize(), S_OK);
            zynConsole_RegisterCommand("Test", "X", 0, TestCommandRoutine, 0, 0, 0);
            zynConsole_ExecuteString("Alias a \"Print 1; Test:X\"; Bind F5 a; UrgentPrint u; a");
            zynConsole_ExecuteString("LoadScript nothing; Exec nothing");
            zynConsole_Finalize();
        }
        long nAfter = CountHeapBlocks();
        if (nRound == 1) {
            EXPECT_LE(nAfter, nBefore) << "heap blocks before " << nBefore << ", after " << nAfter;
        }
    }
    Restart();
}
