// Aliases and key binds: recording, arguments, aliases that call aliases,
// self-reference, name limits and key names, and binds fired by real key
// input through SendInput and the frame's poll.
#include "zynconsole_fixture.h"
#include "zynkernel.h"

typedef ConsoleTest ConsoleAlias;

TEST_F(ConsoleAlias, ArgumentsReplacePercentNumbers)
{
    Run({"Alias hello \"Print %1 there\""});
    EXPECT_EQ(Run({"hello you"}), "you there \n");
    EXPECT_EQ(Run({"hello"}), "%1 there \n") << "without arguments the slot runs as recorded";
    Run({"Alias swap \"Print %2 %1 %3\""});
    EXPECT_EQ(Run({"HELLO \"a b\"", "swap x y"}), "a b there \ny x  \n") << "a missing argument is empty";
}

TEST_F(ConsoleAlias, StatementsAreRecordedOnceAndQuotesGuardSemicolons)
{
    EXPECT_EQ(Run({"Alias two \"Print one; Print two\"", "two", "two"}), "one \ntwo \none \ntwo \n");
    EXPECT_EQ(Run({"AliasesList"}), "two\n");
    EXPECT_EQ(Run({"Alias bad \"Print x; nothing; Print y\""}), "Unknown command: 'nothing'\n")
        << "the unknown command is reported at definition";
    EXPECT_EQ(Run({"bad"}), "x \ny \n");
    EXPECT_EQ(Run({"Alias mod \"Kernelx:; Print z\""}), "No functions has been presented in module Kernelx.\n");
    EXPECT_EQ(Run({"Alias mod \"console:\""}), "You can't set module in alias or bind command.\n");
}

TEST_F(ConsoleAlias, AliasesCallAliasesByName)
{
    EXPECT_EQ(Run({"Alias outer \"Print begin; inner %1; Print end\"", "outer"}),
              "Unknown command: 'inner'\nbegin \nend \n") << "inner did not exist at definition";
    Run({"Alias inner \"Print inner1 %1\"", "Alias outer \"Print begin; inner %1; Print end\""});
    EXPECT_EQ(Run({"outer arg"}), "begin \ninner1 arg \nend \n");
    Run({"Alias inner \"Print inner2\""});
    EXPECT_EQ(Run({"outer"}), "begin \ninner2 \nend \n") << "a redefinition of inner is picked up";
}

TEST_F(ConsoleAlias, AliasCannotCallItself)
{
    Run({"Alias loop \"Print once\""});
    EXPECT_EQ(Run({"Alias loop \"Print again; loop\"", "loop"}), "again \n");
    Run({"Alias pong x", "Alias ping \"Print ping; pong\"", "Alias pong \"Print pong; ping\""});
    EXPECT_EQ(Run({"ping"}), "ping \npong \n") << "recursion through another alias ends too";
    // an alias that redefines itself while it runs
    EXPECT_EQ(Run({"Alias self \"Print old; Alias self z; Print still\"", "self", "self"}),
              "old \nUnknown command: 'z'\nstill \n") << "the running copy ends its slots";
}

static int s_nPausedFrames;
static void RecordPause(int bPaused) { s_nPausedFrames += bPaused != 0; }

TEST_F(ConsoleAlias, NamesAreLimited)
{
    EXPECT_EQ(Run({"Alias fifteenletters1 \"Print 15\"", "fifteenletters1"}), "15 \n");
    EXPECT_EQ(Run({"Alias sixteenletters12 x"}), "Error: sixteenletters12\nFor Aliases use less then 16 symbols.\n");
    EXPECT_EQ(Run({"Alias exec x"}), "Error: The name 'exec' was registered for command name.\n");
    // The kernel's Pause belongs to the module Kernel, so an alias may take its name, and hides it.
    EXPECT_HR(zynConsole_RegisterCommand("Kernel", "Pause", 0, TestCommandRoutine, 0x4000, 0, 0), E_FAIL);
    zynKernel_SetRenderRoutine(RecordPause);
    EXPECT_EQ(Run({"Alias Pause \"Print hidden\"", "Kernel:Pause"}), "hidden \n")
        << "an alias goes before a command of a module, prefix or not";
    zynKernel_Render();
    EXPECT_EQ(s_nPausedFrames, 0) << "Kernel:Pause reached the command behind the alias";
}

TEST_F(ConsoleAlias, BindsOfUnknownKeysAreRefused)
{
    EXPECT_EQ(Run({"Bind nokey \"Print x\""}), "Unknown key: nokey");
    EXPECT_EQ(Run({"Unbind \"\""}), "Unknown key: ");
    EXPECT_EQ(Run({"Bind \xE9 x"}), "Unknown key: \xE9");
    EXPECT_EQ(Run({"Bind pgup \"Print x\"", "Bind F24 \"Print x\"", "Unbind PGDN", "Unbind all"}), "");
    EXPECT_EQ(Run({"Bind k \"console:\""}), "You can't set module in alias or bind command.\n");
}

