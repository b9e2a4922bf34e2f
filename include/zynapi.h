// The export macro of zynKernel.dll. The DLL is built with ZYN_BUILDING_DLL;
// hosts include the headers without it and import the same names.
#ifndef ZYNAPI_H
#define ZYNAPI_H

#ifdef ZYN_BUILDING_DLL
#define ZYN_API __declspec(dllexport)
#else
#define ZYN_API __declspec(dllimport)
#endif

#endif
