// The console tests' fixture and the test module's command routine.
#include "zynconsole_fixture.h"
#include "zynkernel.h"

#include <stdio.h>

std::vector<ConsoleCall>& ConsoleCalls()
{
    static std::vector<ConsoleCall> s_Calls;
    return s_Calls;
}

void TestCommandRoutine(unsigned long dwID, int nArgs, char** ppArgs)
{
    ConsoleCall call;
    call.dwID = dwID;
    call.nArgs = nArgs;
    if (ppArgs != NULL) {
        for (int i = 0; i < nArgs && i < 16; i++)
            call.args.push_back(ppArgs[i] ? ppArgs[i] : "(null)");
        call.szName = ppArgs[15] ? ppArgs[15] : "";
    }
    ConsoleCalls().push_back(call);
}

static void RemoveTree(const std::string& szFolder)
{
    WIN32_FIND_DATAA fd;
    HANDLE h = FindFirstFileA((szFolder + "\\*").c_str(), &fd);
    if (h != INVALID_HANDLE_VALUE) {
        do {
            std::string szName = fd.cFileName;
            if (szName == "." || szName == "..")
                continue;
            std::string szPath = szFolder + "\\" + szName;
            if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                RemoveTree(szPath);
            else
                DeleteFileA(szPath.c_str());
        } while (FindNextFileA(h, &fd));
        FindClose(h);
    }
    RemoveDirectoryA(szFolder.c_str());
}

void ConsoleTest::SetUp()
{
    static int s_nFolder;
    char szTemp[MAX_PATH];
    GetTempPathA(sizeof(szTemp), szTemp);
    char szFolder[MAX_PATH + 64];
    snprintf(szFolder, sizeof(szFolder), "%szyncon_%lu_%d", szTemp, GetCurrentProcessId(), ++s_nFolder);
    m_szFolder = szFolder;
    RemoveTree(m_szFolder);
    ASSERT_TRUE(CreateDirectoryA(m_szFolder.c_str(), NULL)) << "cannot make " << m_szFolder;
    ConsoleCalls().clear();
    m_pWindow = new ZynTestWindow(640, 480);
    Restart();
    zynConsole_ExecuteCommand("Clear");   // the start's text is not the test's
}

// The console starts inside the kernel's start, after the window and the
// context, and runs console.cfg from the current folder there.
void ConsoleTest::Restart(bool bInFolder)
{
    zynKernel_Finalize();
    char szOld[MAX_PATH] = "";
    GetCurrentDirectoryA(sizeof(szOld), szOld);
    if (bInFolder)
        SetCurrentDirectoryA(m_szFolder.c_str());
    HRESULT hr = zynKernel_Initialize(m_pWindow->Handle(), 1, D3DX_DEFAULT, 0, 0, 16, 16, 0, 0);
    SetCurrentDirectoryA(szOld);
    ASSERT_HR(hr, S_OK);
}

void ConsoleTest::TearDown()
{
    zynKernel_Finalize();
    delete m_pWindow;
    m_pWindow = NULL;
    RemoveTree(m_szFolder);
}

void ConsoleTest::WriteFile(const std::string& szName, const std::string& szBytes) const
{
    FILE* f = fopen(Path(szName).c_str(), "wb");
    ASSERT_TRUE(f != NULL) << "cannot write " << Path(szName);
    fwrite(szBytes.data(), 1, szBytes.size(), f);
    fclose(f);
}

std::string ConsoleTest::ReadFile(const std::string& szPath)
{
    std::string szBytes;
    FILE* f = fopen(szPath.c_str(), "rb");
    if (f == NULL)
        return "(cannot open " + szPath + ")";
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof(buf), f)) > 0)
        szBytes.append(buf, n);
    fclose(f);
    return szBytes;
}

std::string ConsoleTest::Flush()
{
    std::string szLog = Path("capture.log");
    if (FAILED(zynConsole_EnableLog(szLog.c_str())))
        return "(cannot open the log)";
    zynConsole_ExecuteCommand("Clear");
    zynConsole_EnableLog(NULL);
    return ReadFile(szLog);
}

std::string ConsoleTest::Run(std::initializer_list<const char*> lines)
{
    zynConsole_EnableLog(NULL);
    zynConsole_ExecuteCommand("Clear");
    for (const char* szLine : lines)
        zynConsole_ExecuteString(szLine);
    return Flush();
}
