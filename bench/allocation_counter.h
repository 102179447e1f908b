// Counts heap allocations: the program that links allocation_counter.cpp replaces operator new.
#pragma once

#include <cstdint>

// Every operator new of the process since it started, on any thread.
uint64_t allocationCount();
