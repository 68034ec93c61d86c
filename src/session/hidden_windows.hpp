// Marks a class inside one that the library shows, so that it is not shown too: a DLL shows marked members
// alone.
#pragma once

#define ORVANTA_HIDDEN
