// Wine declares terminate() and friends without C linkage; vcruntime140 exports them as C.
#pragma once
extern "C" {
#include_next <eh.h>
}
