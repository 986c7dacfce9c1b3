#include "adapter/CallbackRecord.h"

namespace Adapter_ApplicationLayer
{
CSetCallBack::~CSetCallBack() = default;
} // namespace Adapter_ApplicationLayer
