// zynFileIO over loose files and zip archives made by Python's zipfile:
// stored and deflated members, names in both cases, refused and damaged archives.
#include "zyntest.h"
#include "zynfileio.h"
#include "zynimage.h"

#include <stdlib.h>

#include <string>
#include <vector>

static std::string Data(const std::string& szRelative)
{
    const char* szRoot = getenv("ZYN_TESTDATA");
    std::string s = std::string(szRoot && *szRoot ? szRoot : "testdata") + "\\" + szRelative;
    for (char& c : s)
        if (c == '/')
            c = '\\';
    return s;
}

// The full name, as the search writes it.
static std::string Full(const std::string& szName)
{
    char szBuffer[MAX_PATH];
    DWORD n = GetFullPathNameA(szName.c_str(), sizeof(szBuffer), szBuffer, NULL);
    return std::string(szBuffer, n);
}

static void* Open(const std::string& szName)
{
    return zynCreateFile(szName.c_str(), GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
}

static std::vector<BYTE> ReadAll(void* h)
{
    std::vector<BYTE> data(zynGetFileSize(h, NULL));
    DWORD nRead = 0;
    zynReadFile(h, data.data(), (DWORD)data.size(), &nRead, NULL);
    data.resize(nRead);
    return data;
}

static std::vector<BYTE> ReadLoose(const std::string& szName)
{
    void* h = Open(szName);
    std::vector<BYTE> data;
    if (h != INVALID_HANDLE_VALUE) {
        data = ReadAll(h);
        zynCloseHandle(h);
    }
    return data;
}

TEST(FileIOZip, StoredAndDeflatedMembersReadAsTheLooseFiles)
{
    static const char* s_Archives[] = {"zip/pak_stored.zip", "zip/pak_deflated.zip"};
    struct Member {
        const char* szInside;
        const char* szLoose;
    };
    static const Member s_Members[] = {
        {"maps\\wall.tga", "image/tga24.tga"}, {"MAPS/WALL.TGA", "image/tga24.tga"},
        {"Textures\\Sub\\deep\\brick.BMP", "image/bmp24.bmp"}, {"photo.jpg", "image/jpg_color.jpg"},
    };
    for (const char* szArchive : s_Archives) {
        for (const Member& m : s_Members) {
            std::string szName = Data(szArchive) + "\\" + m.szInside;
            SCOPED_TRACE(szName);
            EXPECT_EQ(zynGetFileAttributes(szName.c_str()), (DWORD)FILE_ATTRIBUTE_READONLY);
            void* h = Open(szName);
            ASSERT_NE(h, INVALID_HANDLE_VALUE);
            EXPECT_TRUE(zynFileIO_IsZip(h));
            std::vector<BYTE> got = ReadAll(h);
            EXPECT_TRUE(got == ReadLoose(Data(m.szLoose))) << "member differs from the loose file";
            EXPECT_TRUE(got.data() && memcmp(h, got.data(), got.size()) == 0) << "the handle is not the contents";
            EXPECT_TRUE(zynCloseHandle(h));
        }
    }
}

TEST(FileIOZip, PositionsAndShortReadsBehaveAsOnAFile)
{
    void* h = Open(Data("zip/pak_deflated.zip") + "\\big.txt");
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    DWORD nSize = zynGetFileSize(h, NULL);
    EXPECT_EQ(nSize, 4000u * 37u);
    char buf[16] = {};
    DWORD nRead = 0;
    EXPECT_EQ(zynSetFilePointer(h, 37, NULL, FILE_BEGIN), 37u);
    zynReadFile(h, buf, 11, &nRead, NULL);
    EXPECT_EQ(std::string(buf, nRead), "line 000001");
    EXPECT_EQ(zynSetFilePointer(h, 0, NULL, FILE_CURRENT), 48u);
    EXPECT_EQ(zynSetFilePointer(h, -4, NULL, FILE_END), nSize - 4);
    zynReadFile(h, buf, 16, &nRead, NULL);
    EXPECT_EQ(nRead, 4u) << "a read past the end gives what is left";
    EXPECT_EQ(zynSetFilePointer(h, -1, NULL, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    zynCloseHandle(h);
}

TEST(FileIOZip, FoldersExistAndMissingNamesDoNot)
{
    std::string szZip = Data("zip/pak_stored.zip");
    EXPECT_TRUE(zynGetFileAttributes((szZip + "\\empty").c_str()) & FILE_ATTRIBUTE_DIRECTORY) << "written folder";
    EXPECT_TRUE(zynGetFileAttributes((szZip + "\\TEXTURES\\sub").c_str()) & FILE_ATTRIBUTE_DIRECTORY) << "implied";
    EXPECT_EQ(zynGetFileAttributes((szZip + "\\maps\\nothing.tga").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(zynGetFileAttributes((szZip + "\\map").c_str()), INVALID_FILE_ATTRIBUTES) << "a prefix is no folder";
    EXPECT_EQ(Open(szZip + "\\maps\\nothing.tga"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(Open(szZip + "\\maps"), INVALID_HANDLE_VALUE) << "a folder cannot be opened";
    void* hWrite = zynCreateFile((szZip + "\\photo.jpg").c_str(), GENERIC_WRITE, 0, NULL, OPEN_EXISTING, 0, NULL);
    EXPECT_EQ(hWrite, INVALID_HANDLE_VALUE) << "archives are read-only";
}

TEST(FileIOZip, RefusedAndDamagedArchivesNeverGiveMisreadBytes)
{
    struct Bad {
        const char* szArchive;
        bool bListed;    // the member is still seen by name
    };
    static const Bad s_Bad[] = {
        {"zip/bad_crc.zip", true}, {"zip/bad_encrypted.zip", true}, {"zip/bad_method.zip", true},
        {"zip/bad_local.zip", true}, {"zip/bad_offset.zip", true}, {"zip/bad_split.zip", false},
        {"zip/bad_directory.zip", false}, {"zip/bad_truncated.zip", false}, {"zip/bad_dirsize.zip", false},
    };
    for (const Bad& b : s_Bad) {
        std::string szName = Data(b.szArchive) + "\\Maps\\Wall.TGA";
        SCOPED_TRACE(szName);
        EXPECT_EQ(zynGetFileAttributes(szName.c_str()) != INVALID_FILE_ATTRIBUTES, b.bListed);
        EXPECT_EQ(Open(szName), INVALID_HANDLE_VALUE);
        zynImageTarga tga;
        EXPECT_HR(tga.Load(szName.c_str(), NULL), E_FAIL);
        EXPECT_STREQ(tga.GetErrorText(), b.bListed ? "Invalid Handle Value." : "Don't find file.");
    }
    // the other members of an archive with one bad member still read
    void* h = Open(Data("zip/bad_crc.zip") + "\\photo.jpg");
    EXPECT_NE(h, INVALID_HANDLE_VALUE);
    zynCloseHandle(h);
    EXPECT_EQ(Open(Data("zip/bad_inflate.zip") + "\\big.txt"), INVALID_HANDLE_VALUE) << "damaged deflate stream";
}

TEST(FileIOZip, ImagesLoadFromArchivesThroughHandleAndName)
{
    std::string szPhoto = Data("zip/pak_deflated.zip") + "\\Photo.JPG";
    zynImageJpeg byName;
    EXPECT_HR(byName.Load(szPhoto.c_str(), NULL), S_OK);
    EXPECT_EQ(byName.GetWidth(), 70u);
    void* h = Open(Data("zip/pak_stored.zip") + "\\maps\\wall.tga");
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    DDSURFACEDESC2 desc;
    EXPECT_HR(zynImage_ReadSurface(h, &desc), S_OK);
    EXPECT_EQ(desc.dwWidth, 70u);
    delete[] (BYTE*)desc.lpSurface;
    zynCloseHandle(h);
}

TEST(FileIOSearchPath, FoldersInOrderThenArchivesLyingInThem)
{
    std::string szPath = Data("search/a") + ";" + Data("search/c") + ";" + Data("search/b");
    char szBuffer[256];
    char* pPart = NULL;
    DWORD n = zynSearchPath(szPath.c_str(), "wall", ".jpeg", 255, szBuffer, &pPart);
    EXPECT_EQ(std::string(szBuffer, n), Full(Data("search/a") + "\\wall.jpeg"));
    EXPECT_STREQ(pPart, "wall.jpeg");
    n = zynSearchPath(szPath.c_str(), "textures\\marble.tga", NULL, 255, szBuffer, NULL);
    EXPECT_EQ(std::string(szBuffer, n), Full(Data("search/c") + "\\pak0.zip\\textures\\marble.tga"));
    n = zynSearchPath(szPath.c_str(), "maps\\stone", ".tga", 255, szBuffer, NULL);
    EXPECT_EQ(std::string(szBuffer, n), Full(Data("search/b") + "\\maps\\stone.tga"));
    EXPECT_EQ(zynSearchPath(szPath.c_str(), "wall.tga", ".jpeg", 255, szBuffer, NULL), 0u)
        << "a name with an extension gets no other";
    EXPECT_EQ(zynSearchPath(szPath.c_str(), "wall", ".jpeg", 10, szBuffer, NULL), 0u) << "too long for the buffer";
    EXPECT_EQ(zynSearchPath(NULL, "nothing.tga", NULL, 255, szBuffer, NULL), 0u);
}
