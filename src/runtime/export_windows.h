/* Marks what the library makes visible to its users; installed as vantu/orvanta/export.h on Windows.
 * VANTU_ORVANTA_STATIC is set by the CMake target of a static library; VANTU_ORVANTA_BUILDING while the
 * library itself is built. */
#ifndef VANTU_ORVANTA_EXPORT_H
#define VANTU_ORVANTA_EXPORT_H

#if defined(VANTU_ORVANTA_STATIC)
#define VANTU_ORVANTA_API
#elif defined(VANTU_ORVANTA_BUILDING)
#define VANTU_ORVANTA_API __declspec(dllexport)
#else
#define VANTU_ORVANTA_API __declspec(dllimport)
#endif

#endif
