// Wine's <io.h> makes open() a macro, which renames every member function called open; the
// UCRT's header declares the POSIX names as functions.
#pragma once
#include_next <io.h>
#undef open
#undef sopen
