/* Marks what the library makes visible to its users; installed as vantu/orvanta/export.h where shared
 * libraries are ELF's. VANTU_ORVANTA_STATIC is set by the CMake target of a static library. */
#ifndef VANTU_ORVANTA_EXPORT_H
#define VANTU_ORVANTA_EXPORT_H

#if defined(VANTU_ORVANTA_STATIC)
#define VANTU_ORVANTA_API
#else
#define VANTU_ORVANTA_API __attribute__((visibility("default")))
#endif

#endif
