// Locking annotations live with the other source annotations.
#pragma once
#include <sal.h>
