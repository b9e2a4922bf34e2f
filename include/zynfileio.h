// zynFileIO: every file the engine reads goes through here. Loose files and
// the members of zip archives stand behind one interface that behaves like the
// Win32 calls of the same stem.
//
// Step by step: zynCreateFile (or zynSearchPath first to find the name), then
// zynGetFileSize, zynReadFile and zynSetFilePointer on the handle, and
// zynCloseHandle. zynGetFileAttributes tells whether a name exists at all.
//
// Results: zynCreateFile returns INVALID_HANDLE_VALUE (-1) on failure;
// zynGetFileAttributes 0xFFFFFFFF for a name that exists nowhere; zynSearchPath
// 0 when nothing was found. Callers judge reads by the count in *pRead.
//
// Handles: a handle for which zynFileIO_IsZip is 0 is an ordinary handle of the
// operating system. For a member of an archive it is the address of the
// member's complete contents in memory, zynGetFileSize bytes long.
#ifndef ZYNFILEIO_H
#define ZYNFILEIO_H

#include <windows.h>

#include "zynapi.h"

// files
ZYN_API void* zynCreateFile(const char* szName, DWORD dwAccess, DWORD dwShare, SECURITY_ATTRIBUTES* pSecurity,
                            DWORD dwCreation, DWORD dwFlags, void* hTemplate);
ZYN_API BOOL zynReadFile(void* hFile, void* pBuffer, DWORD nCount, DWORD* pRead, OVERLAPPED* pOverlapped);
ZYN_API BOOL zynCloseHandle(void* hFile);
ZYN_API DWORD zynGetFileSize(void* hFile, DWORD* pHigh);
ZYN_API DWORD zynSetFilePointer(void* hFile, long nDistance, long* pHigh, DWORD dwMethod);
ZYN_API int zynFileIO_IsZip(void* hFile);

// names
ZYN_API DWORD zynGetFileAttributes(const char* szName);
ZYN_API DWORD zynSearchPath(const char* szPath, const char* szFile, const char* szExtension, DWORD nBufferLength,
                            char* szBuffer, char** pFilePart);

#endif
