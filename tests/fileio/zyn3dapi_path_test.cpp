// The texture search path. The path only grows and outlives the module's stop,
// so one test walks through its life in order; the look-ups add folders of
// testdata/search that no earlier step has added.
#include "zyntest.h"
#include "zyn3dapi.h"

#include <stdlib.h>

#include <string>

static std::string SearchData(const std::string& szRelative)
{
    const char* szRoot = getenv("ZYN_TESTDATA");
    std::string s = std::string(szRoot && *szRoot ? szRoot : "testdata") + "\\search\\" + szRelative;
    for (char& c : s)
        if (c == '/')
            c = '\\';
    // as the search writes it: the full name
    char szFull[MAX_PATH];
    DWORD n = GetFullPathNameA(s.c_str(), sizeof(szFull), szFull, NULL);
    return std::string(szFull, n);
}

static std::string Path()
{
    static char szBuffer[8192];
    zyn3DAPI_GetTexturePath(szBuffer);
    return szBuffer;
}

static std::string Find(const char* szName, HRESULT* pHr)
{
    char szName2[256], szResult[256] = {};
    lstrcpynA(szName2, szName, sizeof(szName2));
    *pHr = zyn3DAPI_FindTextureFile(szName2, szResult);
    return szResult;
}

TEST(TexturePath, LifeOfThePathFromStartToLookUps)
{
    char szFolder[64] = "C:\\game\\";
    EXPECT_HR(zyn3DAPI_AddTexturePath(szFolder), E_FAIL) << "not started";
    char szBuffer[16];
    EXPECT_HR(zyn3DAPI_GetTexturePath(szBuffer), E_FAIL);

    ASSERT_HR(zyn3DAPI_Initialize(), S_OK);
    // the program's folder, then base\ and base\models\ behind it
    std::string szLine = GetCommandLineA();
    size_t nStart = szLine.find_first_not_of('"');
    std::string szProgram = szLine.substr(nStart, szLine.rfind('\\') + 1 - nStart);
    std::string szDefault = szProgram + ";" + szProgram + "base\\;" + szProgram + "base\\models\\";
    EXPECT_EQ(Path(), szDefault);
    EXPECT_HR(zyn3DAPI_Initialize(), S_OK);
    EXPECT_EQ(Path(), szDefault) << "a second start touches nothing";

    char szGame[] = "C:\\game\\base\\", szGameRoot[] = "C:\\game\\";
    EXPECT_HR(zyn3DAPI_AddTexturePath(szGame), S_OK);
    EXPECT_HR(zyn3DAPI_SetTexturePath(szGameRoot), S_OK);
    EXPECT_EQ(Path(), szDefault + ";C:\\game\\base\\") << "a piece of the path is not added";

    HRESULT hr;
    std::string szA = SearchData("a"), szB = SearchData("b"), szC = SearchData("c"), szD = SearchData("d");
    for (std::string* p : {&szA, &szB, &szC, &szD})
        zyn3DAPI_AddTexturePath(&(*p)[0]);
    EXPECT_EQ(Find("wall.tga", &hr), szA + "\\wall.jpeg") << "found at the .jpeg pass";
    EXPECT_HR(hr, S_OK);
    EXPECT_EQ(Find("textures\\stone.tga", &hr), szB + "\\maps\\stone.tga") << "found behind maps\\";
    EXPECT_EQ(Find("base\\foo\\wall2.tga", &hr), szD + "\\foo\\wall2.tga") << "found with base\\ taken off";
    // the caller's own folders and case, with an extension from the table, inside an archive
    EXPECT_EQ(Find("Textures\\MARBLE", &hr), szC + "\\pak0.zip\\Textures\\MARBLE.tga");
    EXPECT_EQ(Find("granite.bmp", &hr), szC + "\\pak0.zip\\maps\\granite.bmp") << "behind maps\\";
    Find("granite", &hr);
    EXPECT_HR(hr, E_FAIL) << "the maps\\ prefix is tried without extensions";
    Find("nothing.tga", &hr);
    EXPECT_HR(hr, E_FAIL);
    std::string szLong(300, 'x');
    Find(szLong.c_str(), &hr);
    EXPECT_HR(hr, E_FAIL) << "a name of 300 characters";

    // a name that exists as it stands comes back lowered, with no folder added
    char szCurrent[MAX_PATH];
    GetCurrentDirectoryA(sizeof(szCurrent), szCurrent);
    ASSERT_TRUE(SetCurrentDirectoryA(SearchData("").c_str()));
    EXPECT_EQ(Find("Base\\Wall.TGA", &hr), "base\\wall.tga");
    SetCurrentDirectoryA(szCurrent);

    EXPECT_HR(zyn3DAPI_Finalize(), S_OK);
    EXPECT_HR(zyn3DAPI_Finalize(), E_FAIL);
    Find("wall.tga", &hr);
    EXPECT_HR(hr, E_FAIL) << "stopped";
    ASSERT_HR(zyn3DAPI_Initialize(), S_OK);
    EXPECT_EQ(Path().substr(0, szDefault.size()), szDefault) << "the path outlives the stop";
    zyn3DAPI_Finalize();
}
