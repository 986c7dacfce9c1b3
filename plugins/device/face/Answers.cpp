#include "plugins/device/face/Answers.h"

#include "plugins/device/face/Operations.h"

namespace device
{
namespace
{
bool IsStarted()
{
    return Face().bStarted;
}
} // namespace
} // namespace device

#define PLUGIN_NAMESPACE device
#include "plugins/common/Enter.h"

namespace device::answers
{
#define OPERATION(line, name, ...)                                                                                     \
    int name(PARAMETERS(&CClientProtocolBase::name __VA_OPT__(, ) __VA_ARGS__))                                        \
    {                                                                                                                  \
        return Enter(tagCall<&CClientProtocolBase::name> {} __VA_OPT__(, ) __VA_ARGS__);                               \
    }
#include "protocol/operations.def"
} // namespace device::answers
