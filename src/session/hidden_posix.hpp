// Marks a class inside one that the library shows, so that it is not shown too: where shared libraries are
// ELF's.
#pragma once

#define ORVANTA_HIDDEN __attribute__((visibility("hidden")))
