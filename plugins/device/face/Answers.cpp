#include "plugins/device/face/Answers.h"

#include "plugins/device/face/Operations.h"

namespace device::answers
{
namespace
{
// Nothing is thrown across an entry point, and only Start works before Start.
template <auto Op, class... A>
int Enter(tagCall<Op> tCall, A... tArguments)
try
{
    if constexpr (!std::is_same_v<tagCall<Op>, tagCall<&CClientProtocolBase::Start>>)
    {
        if (!Face().bStarted)
        {
            return eResultNotStarted;
        }
    }
    return Serve(tCall, tArguments...);
}
catch (...)
{
    return eResultNoResources;
}
} // namespace

#define OPERATION(line, name, ...)                                                                                     \
    int name(PARAMETERS(&CClientProtocolBase::name __VA_OPT__(, ) __VA_ARGS__))                                        \
    {                                                                                                                  \
        return Enter(tagCall<&CClientProtocolBase::name> {} __VA_OPT__(, ) __VA_ARGS__);                               \
    }
#include "protocol/operations.def"
} // namespace device::answers
