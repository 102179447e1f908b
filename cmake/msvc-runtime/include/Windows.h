// Windows is case-insensitive about header names; Linux is not.
#include <windows.h>
