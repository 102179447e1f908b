// Debug-heap forms of operator new exist only in debug runtimes, which this build never uses.
#pragma once
#include <vcruntime_new.h>
