// Zip archives seen as folders: a name such as "base\pak0.zip\maps\wall.tga"
// names the member "maps/wall.tga" of the archive "base\pak0.zip". Member names
// compare without regard to case, and '\' and '/' are the same separator.
//
// Every call reads the archive's central directory afresh, so a changed archive
// is never seen through stale data. Only stored (0) and deflated (8) members of
// single-part, unencrypted, 32-bit archives are read; anything else is refused.
#ifndef ZYNFILEIO_ZIP_H
#define ZYNFILEIO_ZIP_H

#include <windows.h>

// What a name is inside an archive.
enum ZYNZIP_KIND {
    ZYNZIP_NONE = 0,      // no archive in the name, a damaged archive, or no such member
    ZYNZIP_FILE = 1,      // a member that can be read
    ZYNZIP_FOLDER = 2,    // the archive's root or a folder of it (written or implied)
};

// Looks a name up. Returns ZYNZIP_NONE when no folder of the name is an
// existing zip file or the archive's directory is damaged.
ZYNZIP_KIND ZipLookUp(const char* szName);

// Reads a whole member into a block of nHeader spare bytes followed by the
// member's contents; *ppBlock is released with free(). Fails (FALSE) for a
// missing member, a refused method or flag, a damaged entry, a failed inflate
// and a CRC that does not match.
BOOL ZipReadMember(const char* szName, DWORD nHeader, BYTE** ppBlock, DWORD* pSize);

// Calls pfnVisit with the full name of every *.zip file in a folder, in name
// order, until it returns TRUE. Returns TRUE when a visit did.
BOOL ZipVisitArchives(const char* szFolder, BOOL (*pfnVisit)(const char* szArchive, void* pContext), void* pContext);

#endif
