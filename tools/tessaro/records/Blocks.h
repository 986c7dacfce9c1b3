#pragma once

#include "tools/tessaro/records/Tables.h"

namespace tessaro
{
/// The record of a configuration block (eConfigType); null: not known.
tagRecord const* BlockRecord(unsigned int dwType);
/// The record of a camera parameter (eCameraParameter); null: not known.
tagRecord const* CameraRecord(unsigned int dwType);
} // namespace tessaro
