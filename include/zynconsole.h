// The console: one table of named commands that users, scripts, key binds and
// the host call by text; aliases and key binds recorded from command lines;
// .cfg scripts read through zynFileIO (loose files or zip members); and one
// bounded text buffer that every message of the engine goes to, and from which
// the log file is written.
//
// Step by step: the kernel starts the console (zynConsole_Initialize, which
// also runs console.cfg) and hands it the font. A module registers its commands
// with zynConsole_RegisterCommand and one ZYNCONSOLE_CALLBACK that switches on
// the command's ID, and removes them with zynConsole_UnregisterCommand(module).
// Lines run through zynConsole_ExecuteString ("Kernel:Pause; Print \"a b\"");
// text goes out through zynConsole_Print and zynConsole_UrgentPrint; a log
// file is kept after zynConsole_EnableLog. The kernel calls zynConsole_Render
// in each frame, which polls the key binds while the console is closed.
//
// Results: S_OK, or E_FAIL (0x80004005) for a refused call, most often because
// the console is not started. Scripts add E_HANDLE (0x80070006, no such file)
// and E_ABORT (0x80004004, loaded already). A bad statement in a line is
// reported as console text, and the next statement still runs.
//
// Limits: a line holds 255 characters and 14 arguments; names of modules 31,
// of commands 63, of aliases 15 characters; at most 2048 commands. The text
// buffer keeps the newest 5119 characters; the log receives text in blocks of
// 4096 and the rest at zynConsole_Finalize or the command "Clear". "~" and
// four colour bytes in text set the colour of what follows; the log leaves
// them out. The font surface handed to zynConsole_SetFont belongs to the
// console from then on and is released by zynConsole_Finalize.
#ifndef ZYNCONSOLE_H
#define ZYNCONSOLE_H

#include <windows.h>
#include <ddraw.h>

#include "zynapi.h"

// A module's command routine: dwID says which command. For a toggle command
// nArgs is the state (1 on, 0 off) and ppArgs is null; otherwise ppArgs holds
// 16 entries, the arguments first, then empty strings, the name in entry 15.
typedef void (*ZYNCONSOLE_CALLBACK)(unsigned long dwID, int nArgs, char** ppArgs);

// one registered command
typedef struct ZYNCONSOLE_COMMAND {
    char szModule[32];               // empty for a global command
    char szName[64];
    int nArgs;                       // arguments declared
    ZYNCONSOLE_CALLBACK pfnCallback;
    unsigned long dwID;
    int nOptional;                   // how many of them may be left out
    int bEnabled;
    int bToggle;                     // called with a +/- state instead of arguments
} ZYNCONSOLE_COMMAND;

// one statement recorded by an alias or a bind
typedef struct ZYNCONSOLE_STORED {
    ZYNCONSOLE_COMMAND* pCommand;    // null: the slot does nothing
    char szText[256];
    int nArgs;                       // for a toggle command: the state
    char* ppArgs[16];                // into szText
} ZYNCONSOLE_STORED;

// an alias, or a bind (whose szName holds its bHasToggle flag instead)
typedef struct ZYNCONSOLE_ALIAS {
    char szName[16];
    ZYNCONSOLE_STORED* pStored;
    int nStored;
} ZYNCONSOLE_ALIAS;

// a loaded script
typedef struct ZYNCONSOLE_SCRIPT {
    char* pszName;                   // file name without folders, with extension
    char* pText;                     // null for an empty file
} ZYNCONSOLE_SCRIPT;

// the console's one state record
typedef struct ZYNCONSOLE_STATE {
    HWND hWnd;
    unsigned long dwBackColor;       // 0xAARRGGBB
    unsigned long dwAnimTime;        // milliseconds of the open and close animation
    RECT rcView;                     // client area, bottom cut to half the height
    unsigned long dwAnimStart;
    unsigned long dwCursorTime;
    int bCursorOn;
    LPDIRECTDRAWSURFACE7 pFont;
    unsigned long nCellWidth, nCellHeight;
    int bOpening;
    unsigned long dwFontColor;
    unsigned long dwFontColorEnd;    // zero: ends dwFontColor as a string
    HANDLE hLog;                     // 0 none, INVALID_HANDLE_VALUE failed to open
    char* pUrgent;                   // queue of urgent lines
    char* pUrgentLine;               // the line on show
    unsigned long dwUrgentTime;
    char szLogName[256];
    char szText[5120];
    char szModule[32];               // current module
    char szInput[128];
    int nCursor;
    int nScrollPage;
} ZYNCONSOLE_STATE;

// start and stop
// Starts the console and runs console.cfg. E_FAIL if started or shown already.
ZYN_API HRESULT zynConsole_Initialize();
// Writes the rest of the text to the log and releases everything, font included.
ZYN_API HRESULT zynConsole_Finalize();

// console text
// printf-style text into the buffer. E_FAIL if not started, on a null format
// or an unfinished conversion ("%"), which adds nothing. While the console is
// closed and invisible output is off, text is dropped and the result is S_OK.
ZYN_API HRESULT zynConsole_Print(const char* szFormat, ...);
// A highlighted line; with the console closed it is also shown on the picture
// for 2000 ms. S_OK.
ZYN_API HRESULT zynConsole_UrgentPrint(const char* szFormat, ...);
// Colour of the text that follows, 0xAARRGGBB.
ZYN_API HRESULT zynConsole_SetFontColor(unsigned long dwColor);
// Opens a new log file (overwriting it), or closes the log on a null or empty
// name. E_FAIL if not started or the file cannot be made.
ZYN_API HRESULT zynConsole_EnableLog(const char* szName);
// 0 drops text printed while nobody can see it.
ZYN_API HRESULT zynConsole_EnableInvisibleOutput(int bEnable);
// Whether entered lines are copied into the text.
ZYN_API HRESULT zynConsole_Echo(int bEcho);

// commands
// Adds a command; szModule "" or the second form makes it global. dwID 0 takes
// the next free ID below 2048; an explicit ID must be 2048 or more. E_FAIL if
// the name or ID is taken in the module, or 2048 commands exist.
ZYN_API HRESULT zynConsole_RegisterCommand(const char* szModule, const char* szName, int nArgs,
                                           ZYNCONSOLE_CALLBACK pfnCallback, unsigned long dwID,
                                           int nOptional, int bToggle);
ZYN_API HRESULT zynConsole_RegisterCommand(const char* szName, int nArgs, ZYNCONSOLE_CALLBACK pfnCallback,
                                           unsigned long dwID, int nOptional, int bToggle);
// Removes one command (E_FAIL if there is none), or every command of a module.
ZYN_API HRESULT zynConsole_UnregisterCommand(const char* szModule, const char* szName);
ZYN_API HRESULT zynConsole_UnregisterCommand(const char* szModule);
// *pdwID becomes the command's ID, or 0xFFFFFFFF when there is no such command.
ZYN_API HRESULT zynConsole_GetCommandID(const char* szModule, const char* szName, unsigned long* pdwID);
ZYN_API HRESULT zynConsole_EnableCommand(const char* szModule, const char* szName, int bEnable);

// lines
// Runs one line, statement by statement. E_FAIL if the console is not started
// or the line has more than 255 characters.
ZYN_API HRESULT zynConsole_ExecuteString(const char* szLine);
ZYN_API HRESULT zynConsole_ExecuteStrings(char** ppLines, int nCount);
// Calls "[module:]name" with nArgs char* arguments as they stand, without
// parsing, argument checks or aliases. S_OK also when there is no such command.
ZYN_API HRESULT zynConsole_ExecuteCommand(const char* szCommand, ...);
// The callback of the console's own commands.
ZYN_API void zynConsole_CommandRoutine(unsigned long dwID, int nArgs, char** ppArgs);

// scripts
// Reads a script into memory (".cfg" is added to a name without a dot); looks
// in the current folder, then the program's folder, BASE and BASE\Scripts.
ZYN_API HRESULT zynConsole_LoadScript(const char* szFile);
// Removes one loaded script, or all of them with "all".
ZYN_API HRESULT zynConsole_UnloadScript(const char* szFile);
// Runs a loaded script, or reads and runs the file once. Nests 5 deep.
ZYN_API HRESULT zynConsole_ExecuteFile(const char* szFile);

// view
// Takes the font surface (32 by 4 glyph cells); the console releases it.
ZYN_API HRESULT zynConsole_SetFont(void* pFont);
ZYN_API HRESULT zynConsole_SetBackgroundColor(unsigned long dwColor);
ZYN_API HRESULT zynConsole_SetAnimationTime(unsigned long dwTime);
// Opens the console and takes the keyboard. E_FAIL if not started or shown,
// also while it is closing.
ZYN_API HRESULT zynConsole_Show();
// Starts closing; the keyboard goes back at once. E_FAIL if not shown.
ZYN_API HRESULT zynConsole_Hide();
// bShow becomes 1 while the console is shown, closing included.
ZYN_API HRESULT zynConsole_IsShow(int& bShow);
ZYN_API int zynConsole_IsVisible();
// Called by the kernel once in each frame, inside the scene. S_OK.
ZYN_API HRESULT zynConsole_Render();

#endif
