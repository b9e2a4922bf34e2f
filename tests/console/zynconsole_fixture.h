// The console tests' fixture: a console started for each test, a private
// folder for logs and scripts, and the text that lines print, read back from
// a log file that an independent Win32 read opens after the log is closed.
#ifndef ZYNCONSOLE_FIXTURE_H
#define ZYNCONSOLE_FIXTURE_H

#include "zyntest.h"
#include "zynconsole.h"

#include <initializer_list>
#include <string>

// What a test module's command routine saw, call by call.
struct ConsoleCall {
    unsigned long dwID;
    int nArgs;
    std::vector<std::string> args;   // empty for a toggle call (null vector)
    std::string szName;              // entry 15
};
std::vector<ConsoleCall>& ConsoleCalls();
// The test module's ZYNCONSOLE_CALLBACK: records each call in ConsoleCalls().
void TestCommandRoutine(unsigned long dwID, int nArgs, char** ppArgs);

class ConsoleTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // Starts the console again (the folder's console.cfg runs when bInFolder).
    void Restart(bool bInFolder = false);
    // Runs the lines and returns all that they printed, colour escapes left out by the log.
    std::string Run(std::initializer_list<const char*> lines);
    // Writes what has gathered in the buffer since the last read to the log and returns it.
    std::string Flush();
    std::string Path(const std::string& szName) const { return m_szFolder + "\\" + szName; }
    void WriteFile(const std::string& szName, const std::string& szBytes) const;
    static std::string ReadFile(const std::string& szPath);
    std::string m_szFolder;
    ZynTestWindow* m_pWindow = NULL;
};

#endif
