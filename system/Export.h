/// @file
/// What both languages need around a declaration of the library.

#ifndef TESSARO_SYSTEM_EXPORT_H
#define TESSARO_SYSTEM_EXPORT_H

/// Marks what the library exports; everything else is hidden.
#define TESSARO_API __attribute__((visibility("default")))

/// @cond
#ifdef __cplusplus
#define TESSARO_C_BEGIN                                                                                                \
    extern "C"                                                                                                         \
    {
#define TESSARO_C_END }
#else
#define TESSARO_C_BEGIN
#define TESSARO_C_END
#endif
/// @endcond

#endif
