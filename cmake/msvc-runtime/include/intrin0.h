// The STL includes this for its intrinsics; clang declares every one it uses as a builtin, and
// Wine's <intrin.h> would redefine some of them.
#pragma once
