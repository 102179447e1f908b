// Wine's <crtdbg.h> plus the report-file calls and the debug-heap forms of malloc and free, which
// without the debug runtime are no-ops and the plain heap.
#pragma once
#include_next <crtdbg.h>
#ifndef _DEBUG
typedef void* _HFILE;
#define _CRTDBG_MODE_FILE 0x1
#define _CRTDBG_MODE_DEBUG 0x2
#define _CRTDBG_MODE_WNDW 0x4
#define _CRTDBG_FILE_STDOUT ((_HFILE)(intptr_t)-5)
#define _CRTDBG_FILE_STDERR ((_HFILE)(intptr_t)-4)
#define _CrtSetReportFile(type, file) ((_HFILE)0)
#define _malloc_dbg(size, type, file, line) malloc(size)
#define _free_dbg(block, type) free(block)
#endif
