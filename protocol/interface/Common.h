/// @file
/// What every header of the plug-in interface stands on.

#ifndef TESSARO_PROTOCOL_INTERFACE_COMMON_H
#define TESSARO_PROTOCOL_INTERFACE_COMMON_H

#include "system/Export.h"

#include <stddef.h>
#include <stdint.h>

/// @cond
// clang-format off
#ifdef __cplusplus
#define TESSARO_ENUM(name) enum name : int
#define TESSARO_OPAQUE_ENUM(name) enum name : int
#define TESSARO_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define TESSARO_ENUM(name) typedef int name; enum
#define TESSARO_OPAQUE_ENUM(name) typedef int name
#if defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define TESSARO_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#else
#define TESSARO_STATIC_ASSERT(condition, text) extern char tagLayoutHolds[(condition) ? 1 : -1]
#endif
#endif
// clang-format on
/// @endcond

#endif
