// Live streams, playback, voice, snapshots.

#include "plugins/device/face/Operations.h"

namespace device
{
void MediaStop() {}
} // namespace device
