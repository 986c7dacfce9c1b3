/// @file
/// What every header of the plug-in interface stands on.

#ifndef TESSARO_PROTOCOL_INTERFACE_COMMON_H
#define TESSARO_PROTOCOL_INTERFACE_COMMON_H

#include "../../system/Export.h"

#include <stddef.h>
#include <stdint.h>

/// @addtogroup plugin
/// @{

/// Every channel, input, output or window at once, where a function says that it takes it.
#define TESSARO_ALL 0xFFFFFFFFul

/// A number with a sign for a parameter that is a word without one: `TESSARO_SIGNED(-3000)`.
#define TESSARO_SIGNED(number) ((unsigned long)(long)(number))

/// @}

/// @cond
// clang-format off
#ifdef __cplusplus
#define TESSARO_ENUM(name) enum name : int
#define TESSARO_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define TESSARO_ENUM(name) typedef int name; enum
#if defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define TESSARO_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#else
#define TESSARO_STATIC_ASSERT(condition, text) extern char tagLayoutHolds[(condition) ? 1 : -1]
#endif
#endif

// A pointer inside a record: 8 bytes on every machine, so that no offset depends on the word size.
#if UINTPTR_MAX == UINT32_MAX
#define TESSARO_POINTER(member) member; uint32_t : 32
#else
#define TESSARO_POINTER(member) member
#endif

// Says of a record that begins with dwSize how long its first version was, which every later plug-in still accepts, and
// how long it is now. Stands after TESSARO_C_END.
#ifdef __cplusplus
template <class Record> struct tagRecordSize;
#define TESSARO_RECORD(name, first, now)                                                                               \
    template <> struct tagRecordSize<name> { static constexpr uint32_t dwFirst = first; };                             \
    static_assert(offsetof(name, dwSize) == 0 && sizeof(name) == (now) && (first) <= (now), #name)
#else
#define TESSARO_RECORD(name, first, now)                                                                               \
    TESSARO_STATIC_ASSERT(offsetof(name, dwSize) == 0 && sizeof(name) == (now) && (first) <= (now), #name)
#endif
// clang-format on
/// @endcond

#endif
