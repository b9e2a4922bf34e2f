// What the 3D API's files share: the started flag (kept with the texture
// objects) and the default search path that the start adds.
#ifndef ZYN3DAPI_LOCAL_H
#define ZYN3DAPI_LOCAL_H

#include <windows.h>

// Non-zero between zyn3DAPI_Initialize and zyn3DAPI_Finalize.
BOOL zyn3DAPI_IsStarted();
// Adds the program's folder, folder\base\ and folder\base\models\ to the path.
void zyn3DAPI_AddDefaultTexturePaths();

#endif
