#include "bindings/CProtocolRTSP.h"

#include "adapter/LookUp.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

using Adapter_ApplicationLayer::tagResource;
using Adapter_ApplicationLayer::UpdateUser;

namespace Adapter_ProtocolSet
{
namespace
{
using CreateEntry = int(void**, tagRTSPClientPara*, unsigned int);
using EventEntry = int(void*, DeviceEventCallback, unsigned long);

void* ToHandle(int nIndex)
{
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(nIndex));
}

// -1 for a handle that is no index.
int ToIndex(void* hLogin)
{
    const auto n = reinterpret_cast<std::intptr_t>(hLogin);
    return n >= 0 && n < Adapter_ApplicationLayer::Client::nSlots ? static_cast<int>(n) : -1;
}

// A text that fills its whole field without a terminator ends at the field.
template <std::size_t nTo, std::size_t nFrom>
void CopyText(char (&szTo)[nTo], char const (&szFrom)[nFrom])
{
    const std::size_t nLength = std::min(strnlen(szFrom, nFrom), nTo - 1);
    std::memcpy(szTo, szFrom, nLength);
    szTo[nLength] = '\0';
}

// What doesn't fit is cut.
template <std::size_t nUrl, std::size_t nHost, std::size_t nPath>
void FormatUrl(char (&szUrl)[nUrl], char const (&szHost)[nHost], std::int32_t nPort, char const (&szPath)[nPath])
{
    std::snprintf(szUrl, nUrl, "rtsp://%.*s:%d/%.*s", static_cast<int>(nHost), szHost, nPort, static_cast<int>(nPath),
                  szPath);
}

tagRTSPClientPara LoginBlock(tagUserLoginPara const& tLogin)
{
    tagRTSPClientPara tBlock{};
    tBlock.dwFlag = 1;
    CopyText(tBlock.szUserName, tLogin.szUserName);
    CopyText(tBlock.szPassword, tLogin.szPassword);
    if (tLogin.dwRtspUrlMode == 0)
    {
        CopyText(tBlock.szUrl, tLogin.szAddress);
        tBlock.dwPort = tLogin.dwPort;
        return tBlock;
    }
    auto const& szHost = tLogin.dwRtspHostSelect == 1 ? tLogin.szRtspHost : tLogin.szAddress;
    FormatUrl(tBlock.szUrl, szHost, tLogin.dwRtspMainPort, tLogin.szRtspMainPath);
    FormatUrl(tBlock.szSubUrl, szHost, tLogin.dwRtspSubPort, tLogin.szRtspSubPath);
    tBlock.dwPort = static_cast<std::uint32_t>(tLogin.dwRtspMainPort);
    tBlock.dwSubPort = static_cast<std::uint32_t>(tLogin.dwRtspSubPort);
    return tBlock;
}

// False for a stream kind that isn't one.
bool StreamBlock(tagRTSPClientPara const& tLogin, tagRealStreamPara const& tStream, tagRTSPClientPara& tBlock)
{
    switch (tStream.dwStreamKind)
    {
    case 1:
    case 2:
    case 3:
        CopyText(tBlock.szUrl, tLogin.szUrl);
        tBlock.dwPort = tLogin.dwPort;
        break;
    case 4:
    case 5:
        CopyText(tBlock.szUrl, tLogin.szSubUrl);
        tBlock.dwPort = tLogin.dwSubPort;
        break;
    default:
        return false;
    }
    tBlock.dwFlag = tLogin.dwFlag;
    CopyText(tBlock.szUserName, tLogin.szUserName);
    CopyText(tBlock.szPassword, tLogin.szPassword);
    std::copy(std::begin(tStream.dwStreamPara), std::end(tStream.dwStreamPara), tBlock.dwStreamPara);
    tBlock.dwChannel = tStream.dwChannel;
    return true;
}

// The record of a login that this binding made, which holds its own index. The application's own ID for the same login
// is another slot, with nothing in it to build a stream from.
bool FindLogin(void* hLogin, tagResource& tRecord)
{
    return g_cClient.GetUserType(ToIndex(hLogin), tRecord) == 0 && tRecord.eType == eProtocolRTSP &&
           tRecord.hHandle == hLogin;
}
} // namespace

int CProtocolSetRTSP::Run(tagCall<&CClientProtocolBase::UserLogin>, void** phLogin, tagUserLoginPara* ptPara)
{
    if (!phLogin || !ptPara)
    {
        return eResultNoProtocol;
    }
    const tagRTSPClientPara tBlock = LoginBlock(*ptPara);
    tagResource tRecord{};
    tRecord.eType = eProtocolRTSP;
    static_assert(sizeof tRecord.byProtocolData < sizeof tBlock);
    std::memcpy(tRecord.byProtocolData, &tBlock, sizeof tRecord.byProtocolData);

    int nIndex = -1;
    g_cClient.SetUserType(nIndex, tRecord);
    UpdateUser(nIndex, &tagResource::hHandle, ToHandle(nIndex)); // no slot was free: -1, and no record
    *phLogin = ToHandle(nIndex);
    return eResultOk;
}

int CProtocolSetRTSP::Run(tagCall<&CClientProtocolBase::UserLogout>, void* hLogin)
{
    return g_cClient.DeleteUserType(ToIndex(hLogin));
}

int CProtocolSetRTSP::Run(tagCall<&CClientProtocolBase::RealStreamConnect>, void** phStream, void* hLogin,
                          tagRealStreamPara* ptPara)
{
    CreateEntry* const pfnCreate = m_tEntry.As<CreateEntry>(eOperation::RealStreamConnect);
    tagResource tRecord;
    if (!pfnCreate || !phStream || !ptPara || !FindLogin(hLogin, tRecord))
    {
        return eResultNoEntryPoint;
    }
    tagRTSPClientPara tLogin{};
    std::memcpy(&tLogin, tRecord.byProtocolData, sizeof tRecord.byProtocolData);
    tagRTSPClientPara tBlock{};
    if (!StreamBlock(tLogin, *ptPara, tBlock))
    {
        return eResultNoEntryPoint;
    }

    // Emptied for the call, so that an old value in the caller's variable is never taken for a new stream.
    void* const hBefore = *phStream;
    *phStream = nullptr;
    const int nResult = pfnCreate(phStream, &tBlock, ptPara->dwChannel);
    if (!*phStream)
    {
        *phStream = hBefore;
    }
    else if (nResult == eResultOk)
    {
        UpdateUser(ToIndex(hLogin), &tagResource::hStream, *phStream);
    }
    return nResult;
}

int CProtocolSetRTSP::Run(tagCall<&CClientProtocolBase::SubscribeEvent>, void* hLogin, unsigned long,
                          DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    EventEntry* const pfnEventCB = m_tEntry.As<EventEntry>(eOperation::SubscribeEvent);
    tagResource tRecord;
    if (!pfnEventCB || !FindLogin(hLogin, tRecord))
    {
        return eResultNoEntryPoint;
    }
    return pfnEventCB(tRecord.hStream, pfnEvent, dwUser);
}

int CProtocolSetRTSP::Run(tagCall<&CClientProtocolBase::StreamMediaControl> tCall, void* hStream, eTaskControl eControl)
{
    return Run<>(tCall, hStream, static_cast<eTaskControl>(std::min(static_cast<int>(eControl), 3)));
}
} // namespace Adapter_ProtocolSet
