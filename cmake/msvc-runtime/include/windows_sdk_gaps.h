// Windows 10 declarations that the STL's <filesystem> implementation uses and Wine 8's headers
// lack, in the Windows SDK's layouts. Included only where that implementation is compiled.
#pragma once
#include <windows.h>

extern "C" {

#ifndef SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE
#define SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE 0x2
#endif
#ifndef FILE_DISPOSITION_FLAG_DELETE
#define FILE_DISPOSITION_FLAG_DO_NOT_DELETE 0x00000000
#define FILE_DISPOSITION_FLAG_DELETE 0x00000001
#define FILE_DISPOSITION_FLAG_POSIX_SEMANTICS 0x00000002
#define FILE_DISPOSITION_FLAG_FORCE_IMAGE_SECTION_CHECK 0x00000004
#define FILE_DISPOSITION_FLAG_ON_CLOSE 0x00000008
#define FILE_DISPOSITION_FLAG_IGNORE_READONLY_ATTRIBUTE 0x00000010
#endif

typedef struct _FILE_DISPOSITION_INFO_EX {
    DWORD Flags;
} FILE_DISPOSITION_INFO_EX, *PFILE_DISPOSITION_INFO_EX;

typedef struct _FILE_ID_128_SDK {
    BYTE Identifier[16];
} HELMBRIDGE_FILE_ID_128;

typedef struct _FILE_ID_INFO {
    ULONGLONG VolumeSerialNumber;
    HELMBRIDGE_FILE_ID_128 FileId;
} FILE_ID_INFO, *PFILE_ID_INFO;

__declspec(dllimport) unsigned int __cdecl ___lc_codepage_func(void);
// Only looked up at run time, with a fallback for Windows versions before it.
__declspec(dllimport) DWORD WINAPI GetTempPath2W(DWORD length, LPWSTR buffer);
}
