/// @file
/// Configuration blocks.

#ifndef TESSARO_PROTOCOL_INTERFACE_CONFIGURATION_H
#define TESSARO_PROTOCOL_INTERFACE_CONFIGURATION_H

#include "protocol/interface/Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup blocks Configuration blocks
/// The same contents in two layouts, both 262168 bytes.
/// @{

/// One configuration block, first layout.
typedef struct tagConfigInformation
{
    uint32_t type;              ///< configuration type code; the device protocol defines them
    uint32_t index;             ///< qualifier of the type
    unsigned char data[262144]; ///< the contents
    uint32_t extra[4];          ///< words for the plug-in, in and out
} tagConfigInformation;

/// The same block, second layout.
typedef struct tagConfigInformationV2
{
    uint32_t type;              ///< configuration type code
    uint32_t index;             ///< qualifier of the type
    uint32_t extra[4];          ///< words for the plug-in, in and out
    unsigned char data[262144]; ///< the contents
} tagConfigInformationV2;

/// @}

/// @}

TESSARO_STATIC_ASSERT(offsetof(tagConfigInformation, data) == 8, "tagConfigInformation");
TESSARO_STATIC_ASSERT(offsetof(tagConfigInformation, extra) == 262152, "tagConfigInformation");
TESSARO_STATIC_ASSERT(sizeof(tagConfigInformation) == 262168, "tagConfigInformation");
TESSARO_STATIC_ASSERT(offsetof(tagConfigInformationV2, extra) == 8, "tagConfigInformationV2");
TESSARO_STATIC_ASSERT(offsetof(tagConfigInformationV2, data) == 24, "tagConfigInformationV2");
TESSARO_STATIC_ASSERT(sizeof(tagConfigInformationV2) == 262168, "tagConfigInformationV2");

TESSARO_C_END

#endif
