// memcpy and friends: vcruntime140 exports them, the UCRT's <string.h> declares them.
#pragma once
#include <string.h>
