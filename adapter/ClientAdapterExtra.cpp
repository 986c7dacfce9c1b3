#include "adapter/ClientAdapterExtra.h"

#include "adapter/Globals.h"
#include "adapter/LookUp.h"
#include "adapter/Version.h"
#include "bindings/EntryPoints.h"
#include "protocol/CreateBinding.h"
#include "protocol/Record.h"
#include "system/OutputMessage.h"

#include <cstring>

namespace
{
struct tagResultText
{
    short nResult;
    char szText[58]; // in place: pointers would be relocated at every start
};
constexpr tagResultText g_atResultText[] = {
    {eResultOk, "done"},
    {eResultNoEntryPoint, "the plug-in is missing or can't do this"},
    {eResultUnknownLogin, "unknown login ID"},
    {eResultNoProtocol, "no such protocol, or the service isn't started"},
    {eResultAlreadyInserted, "the protocol is there already"},
    {eResultUnknownMedia, "unknown media ID, or a required pointer is null"},
    {eResultNotSupported, "the protocol or the device has no such function"},
    {eResultBadHandle, "nothing is open under this handle"},
    {eResultBadArgument, "a wrong argument"},
    {eResultTooManyStreams, "as many streams are open as are allowed"},
    {eResultNotStarted, "the plug-in isn't started"},
    {eResultNoResources, "out of memory or threads"},
    {eResultBadAddress, "the address is not one of this protocol"},
    {eResultWrongLogin, "wrong user name or password, or not permitted"},
    {eResultLocked, "the device has locked the account for a while"},
    {eResultUnreachable, "nobody answers at the address"},
    {eResultTimeOut, "the device didn't answer in time"},
    {eResultConnectionLost, "the connection was lost"},
    {eResultBusy, "the device is busy, try again later"},
    {eResultNoChannel, "the device has no such channel, input, output or window"},
    {eResultRefused, "the device refused"},
    {eResultNotFound, "not found on the device"},
    {eResultNoMoreEntries, "no more entries"},
    {eResultDeviceFull, "the device has no room left"},
    {eResultStillRunning, "closed, a last callback is still running"},
};
} // namespace

TESSARO_C_BEGIN

int TessaroExtra_GetStreamStatistics(int nMediaID, tagRTSPPackageInfo* ptInfo)
{
    Adapter_ApplicationLayer::tagTarget tMedia;
    if (!FindMedia(nMediaID, tMedia))
    {
        return eResultUnknownMedia;
    }
    return g_cProtocolSet.GetPackageInfo(tMedia.hHandle, ptInfo, sizeof *ptInfo, 0, tMedia.eType);
}

char const* TessaroExtra_ResultText(int nResult)
{
    for (tagResultText const& tRow : g_atResultText)
    {
        if (tRow.nResult == nResult)
        {
            return tRow.szText;
        }
    }
    return "a result of the plug-in's own";
}

char const* TessaroExtra_Version(void)
{
    return TESSARO_VERSION ", " TESSARO_BUILD;
}

int TessaroExtra_GetEntryPoint(eProtocolType eType, unsigned int dwIndex, tagEntryPoint* ptEntry)
{
    if (static_cast<unsigned int>(eType) > static_cast<unsigned int>(eProtocolVTQ))
    {
        return eResultNoProtocol;
    }
    char szRoom[Adapter_ProtocolSet::g_nSymbolRoom];
    const auto tFound = Adapter_ProtocolSet::ProtocolEntry(eType, BindingOf(g_cProtocolSet, eType), dwIndex, szRoom);
    if (!tFound.tName.szSymbol)
    {
        return eResultNoMoreEntries;
    }
    tagEntryPoint tEntry{};
    tEntry.dwState = !tFound.bBound ? eEntryPointUnbound : tFound.bExists ? eEntryPointThere : eEntryPointMissing;
    static_assert(sizeof tEntry.szSymbol >= sizeof szRoom);
    std::strcpy(tEntry.szOperation, Adapter_ProtocolSet::g_aszOperation[static_cast<std::size_t>(tFound.tName.eOp)]);
    std::strcpy(tEntry.szSymbol, tFound.tName.szSymbol);
    return Adapter_ProtocolSet::WriteRecord(ptEntry, tEntry);
}

int TessaroExtra_DiagnosticCB(DiagnosticCallback pfnLine)
{
    SetDiagnosticSink(pfnLine);
    return eResultOk;
}

TESSARO_C_END
