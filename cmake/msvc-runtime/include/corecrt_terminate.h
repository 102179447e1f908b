// terminate() and its handlers; Wine declares them in <eh.h>.
#pragma once
#include <eh.h>
