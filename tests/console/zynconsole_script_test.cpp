// Scripts through zynFileIO: loose files and zip members, line ends, loading,
// reloading and unloading, the depth limit, and console.cfg at start.
#include "zynconsole_fixture.h"

#include <stdlib.h>

class ConsoleScript : public ConsoleTest {
protected:
    std::string Cfg(const std::string& szName) const { return Path(szName); }
};

TEST_F(ConsoleScript, LooseFileRunsLineByLine)
{
    WriteFile("lines.cfg", "Print one\r\nPrint two\r\n// comment; Print no\r\n\r\nPrint last");
    WriteFile("lf.cfg", "Print a\nPrint b\r\n");
    WriteFile("empty.cfg", "");
    EXPECT_EQ(Run({("Exec " + Path("lines")).c_str()}), "one \ntwo \nlast \n");
    EXPECT_HR(zynConsole_ExecuteFile(Path("lf.cfg").c_str()), S_OK);
    EXPECT_EQ(Flush(), "a\nPrint b \n") << "line feeds alone do not end a line";
    EXPECT_HR(zynConsole_ExecuteFile(Path("empty").c_str()), S_OK);
    EXPECT_EQ(Flush(), "");
}

TEST_F(ConsoleScript, ScriptInsideAZipArchiveRuns)
{
    const char* szData = getenv("ZYN_TESTDATA");
    ASSERT_TRUE(szData != NULL) << "ZYN_TESTDATA is not set";
    // the archive's dot means no ".cfg" is added
    std::string szMember = std::string(szData) + "\\console\\scripts.zip\\cfg\\zipped.cfg";
    for (char& ch : szMember)
        ch = (ch == '/') ? '\\' : ch;
    EXPECT_HR(zynConsole_ExecuteFile(szMember.c_str()), S_OK);
    EXPECT_EQ(Flush(), "zipped one \nzipped two \n");
    EXPECT_HR(zynConsole_LoadScript(szMember.c_str()), S_OK);
    EXPECT_EQ(Run({"Exec zipped", "UnloadScript zipped.cfg", "Exec zipped"}),
              "zipped one \nzipped two \nCan't find file: zipped\n") << "loaded, the key holds no folder";
}

TEST_F(ConsoleScript, LoadedScriptStaysUntilReload)
{
    WriteFile("a.cfg", "Print first");
    std::string szLoad = "LoadScript " + Path("a");
    EXPECT_EQ(Run({szLoad.c_str(), (szLoad + ".cfg").c_str()}), "Script " + Path("a") +
              ".cfg is existing. Loading was skipped.\n");
    EXPECT_HR(zynConsole_LoadScript(Path("a").c_str()), E_ABORT);
    WriteFile("a.cfg", "Print second");
    EXPECT_EQ(Run({"Exec a", "Exec A"}), "first \nCan't find file: A\n") << "keys compare with case";
    EXPECT_EQ(Run({("ReloadScript " + Path("a")).c_str(), "Exec a"}), "second \n");
    WriteFile("b.cfg", "Print b1");
    EXPECT_EQ(Run({("Exec " + Path("b")).c_str()}), "b1 \n");
    WriteFile("b.cfg", "Print b2");
    EXPECT_EQ(Run({("Exec " + Path("b")).c_str()}), "b2 \n") << "an unloaded script is read at each Exec";
    EXPECT_EQ(Run({("ReloadScript " + Path("b")).c_str(), "UnloadScript b", "UnloadScript b"}),
              "Script b hadn't been loaded.");
}

TEST_F(ConsoleScript, MissingScriptsAndBadCalls)
{
    EXPECT_HR(zynConsole_LoadScript(Path("missing").c_str()), E_HANDLE);
    EXPECT_HR(zynConsole_ExecuteFile(Path("missing").c_str()), E_HANDLE);
    EXPECT_HR(zynConsole_UnloadScript("missing"), E_FAIL);
    EXPECT_HR(zynConsole_UnloadScript("all"), S_OK);
    EXPECT_HR(zynConsole_LoadScript(NULL), E_FAIL);
    EXPECT_HR(zynConsole_ExecuteFile(NULL), E_FAIL);
    EXPECT_EQ(Run({"Exec x", "LoadScript x", "UnloadScript x"}),
              "Can't find file: x\nCan't find script x.\nScript x hadn't been loaded.");
    zynConsole_Finalize();
    EXPECT_HR(zynConsole_LoadScript(Path("missing").c_str()), E_FAIL);
    EXPECT_HR(zynConsole_UnloadScript("all"), E_FAIL);
    EXPECT_HR(zynConsole_ExecuteFile("x"), E_FAIL);
}

TEST_F(ConsoleScript, ScriptCallingItselfStopsAtTheSixthLevel)
{
    WriteFile("self.cfg", "Print in\r\nExec " + Path("self") + "\r\nPrint out");
    EXPECT_EQ(Run({("Exec " + Path("self")).c_str()}),
              "in \nin \nin \nin \nin \nToo many execs in one time.\nout \nout \nout \nout \nout \n");
}

TEST_F(ConsoleScript, OverlongLineInAScriptIsRefused)
{
    WriteFile("long.cfg", "Print a\r\nPrint " + std::string(300, 'x') + "\r\nPrint b");
    std::string szText = Run({("Exec " + Path("long")).c_str()});
    EXPECT_EQ(szText.substr(0, 4), "a \n\n");
    EXPECT_NE(szText.find("This command has more then 255 simbols\nb \n"), std::string::npos) << szText;
}

TEST_F(ConsoleScript, ConsoleCfgRunsAtStart)
{
    WriteFile("console.cfg", "Print from console.cfg\r\nAlias fromcfg \"Print alias\"\r\nExec missing\r\n");
    Restart(true);
    EXPECT_EQ(Flush(), "  Console:\nfrom console.cfg \nCan't find file: missing\n");
    EXPECT_EQ(Run({"fromcfg"}), "alias \n");
    Restart(false);
    EXPECT_EQ(Flush(), "  Console:\n") << "without console.cfg the start is silent";
}

TEST_F(ConsoleScript, ExecInsideABindLoadsTheScriptAtDefinition)
{
    WriteFile("held.cfg", "Print held1");
    EXPECT_EQ(Run({("Alias run \"Exec " + Path("held") + "\"").c_str()}), "");
    WriteFile("held.cfg", "Print held2");
    EXPECT_EQ(Run({"run"}), "held1 \n") << "the alias loaded the script when it was defined";
}
