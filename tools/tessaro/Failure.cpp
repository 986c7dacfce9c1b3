#include "tools/tessaro/Failure.h"

#include "adapter/ClientAdapterExtra.h"

#include <algorithm>
#include <fmt/format.h>

namespace tessaro
{
namespace
{
constexpr tagExitText g_atExits[] = {
    {eExitDone, "done"},
    {eExitFailed, "the device refused, or something else went wrong; the last line says what"},
    {eExitUsage, "the command line is wrong; nothing was tried"},
    {eExitUnreachable, "the device can't be reached, or the connection broke"},
    {eExitLogin, "wrong user name or password, or this user may not do it"},
    {eExitUnsupported, "the protocol or the device can't do this"},
    {eExitNoPlugin, "the plug-in of the protocol isn't there; tessaro doctor says why"},
};

struct tagAdvice
{
    int nResult;
    eExit eCode;
    char const* szAdvice;
};
constexpr tagAdvice g_atAdvice[] = {
    {eResultNoEntryPoint, eExitNoPlugin, "tessaro doctor shows which plug-ins are there, and why others aren't"},
    {eResultNoProtocol, eExitNoPlugin, "tessaro doctor shows which plug-ins are there, and why others aren't"},
    {eResultNotSupported, eExitUnsupported, "tessaro info --matrix shows what the device can do"},
    {eResultBadArgument, eExitFailed, "a value is out of its range, or names nothing that there is"},
    {eResultTooManyStreams, eExitFailed, "close other streams of this device first"},
    {eResultNotStarted, eExitNoPlugin, "the plug-in didn't start: try again with --verbose"},
    {eResultBadAddress, eExitUsage, "an address is PROTOCOL://[user@]host[:port]; passwords don't belong there"},
    {eResultWrongLogin, eExitLogin, "check user name and password, and what the user may do on the device"},
    {eResultLocked, eExitLogin, "wait some minutes, or let an administrator unlock the user"},
    {eResultUnreachable, eExitUnreachable, "check the address, and whether the device is on: ping it"},
    {eResultTimeOut, eExitUnreachable, "try again with a longer --timeout; check the network between"},
    {eResultConnectionLost, eExitUnreachable, "check the network; the device may have restarted"},
    {eResultBusy, eExitFailed, "try again in a moment"},
    {eResultNoChannel, eExitFailed,
     "tessaro info shows what channels, inputs and outputs there are; they count from 0"},
    {eResultDeviceFull, eExitFailed, "make room on the device first"},
};

tagAdvice const* Find(int nResult)
{
    auto const* const pt = std::ranges::find(g_atAdvice, nResult, &tagAdvice::nResult);
    return pt == std::end(g_atAdvice) ? nullptr : pt;
}
} // namespace

std::span<tagExitText const> ExitTexts()
{
    return g_atExits;
}

std::string Advice(int nResult)
{
    tagAdvice const* const pt = Find(nResult);
    return pt ? pt->szAdvice : "";
}

CFailure::CFailure(int nResult, std::string const& strWhat)
    : std::runtime_error(fmt::format("{}: {} ({})", strWhat, TessaroExtra_ResultText(nResult), nResult)),
      m_eCode(Find(nResult) ? Find(nResult)->eCode : eExitFailed), m_nResult(nResult),
      m_strAdvice(tessaro::Advice(nResult))
{
}

void Check(int nResult, std::string const& strWhat)
{
    if (nResult != eResultOk)
    {
        throw CFailure(nResult, strWhat);
    }
}
} // namespace tessaro
