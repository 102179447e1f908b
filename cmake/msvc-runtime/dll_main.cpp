// The DllMain of a DLL that defines none; the linker takes this object only then.
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) { return TRUE; }
