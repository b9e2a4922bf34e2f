// Test main: binary stdout (Wine would turn "\n" into "\r\n" and spoil the test
// listing ctest reads), no error dialogs, and the message box guard in place
// before any test runs.
#include "zyntest.h"

#include <fcntl.h>
#include <io.h>
#include <stdio.h>

int main(int argc, char** argv)
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    InstallMessageBoxGuard();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
