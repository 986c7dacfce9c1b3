#include "plugins/onvif/PTZ.h"

#include "protocol/interface/Results.h"

namespace onvifclient
{
namespace
{
using namespace onvif;

// strTo: the profile of the camera; not looked at where the device service switches.
tagRequest Request(tagNode const& tNode, std::string const& strProfile, std::string const& strCommand)
{
    if (tNode.bDeviceAuxiliaries)
    {
        return {eService::Device, "SendAuxiliaryCommand", CXmlWriter().Add("tds:AuxiliaryCommand", strCommand).Take()};
    }
    return {eService::PTZ, "SendAuxiliaryCommand",
            CXmlWriter().Add("tptz:ProfileToken", strProfile).Add("tptz:AuxiliaryData", strCommand).Take()};
}
} // namespace

int CHead::Auxiliary(tagUse const& tUse, Para const& anPara)
{
    const auto dwKind = static_cast<uint32_t>(anPara[0]);
    if (dwKind < ePTZWiper || dwKind > ePTZHeater || anPara[1] < 0 || anPara[1] > 1 || anPara[3] < 0)
    {
        return eResultBadArgument;
    }
    const bool bOn = anPara[1] != 0;
    const std::string strCommand = AuxiliaryCommand(*tUse.pNode, dwKind, bOn);
    const std::string strOff = AuxiliaryCommand(*tUse.pNode, dwKind, false);
    if (strCommand.empty() || (bOn && anPara[3] != 0 && strOff.empty()))
    {
        return eResultNotSupported;
    }
    if (const int nResult = m_pClient->Call(Request(*tUse.pNode, tUse.strProfile, strCommand)).Result())
    {
        return nResult;
    }
    uint32_t dwRun = 0;
    {
        const std::lock_guard tLock(m_tMutex);
        m_dwAuxiliary = (m_dwAuxiliary & ~(1U << dwKind)) | static_cast<uint32_t>(bOn) << dwKind;
        dwRun = ++m_tAuxiliaryRuns[dwKind];
    }
    if (bOn && anPara[3] != 0)
    {
        m_pClient->Http().Begin(SwitchOffLater(shared_from_this(), Request(*tUse.pNode, tUse.strProfile, strOff),
                                               dwKind, dwRun, Clock::now() + std::chrono::milliseconds(anPara[3])));
    }
    return eResultOk;
}

rtsp::CTask<> CHead::SwitchOffLater(std::shared_ptr<CHead> pSelf, tagRequest tRequest, uint32_t dwKind, uint32_t dwRun,
                                    Clock::time_point tEnd)
{
    CClient& tClient = *pSelf->m_pClient;
    co_await tClient.Http().Until(tClient.Group(), tEnd); // a logout ends it too
    {
        const std::lock_guard tLock(pSelf->m_tMutex);
        if (pSelf->m_tAuxiliaryRuns[dwKind] != dwRun)
        {
            co_return;
        }
        pSelf->m_dwAuxiliary &= ~(1U << dwKind);
    }
    co_await tClient.CallAsync(std::move(tRequest));
}
} // namespace onvifclient
