// Alarm inputs and outputs.

#include "plugins/onvif/Contacts.h"

#include "plugins/onvif/Configuration.h"
#include "plugins/onvif/Events.h"
#include "plugins/onvif/Operations.h"

#include "plugins/common/Text.h"

#include <algorithm>
#include <cstring>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr std::size_t g_nMost = 256;

std::vector<std::string> Tokens(CAnswer const& tAnswer, char const* szName)
{
    std::vector<std::string> astrTokens;
    for (pugi::xml_node tEach : Children(tAnswer.Body(), szName))
    {
        if (!Attribute(tEach, "token").empty() && astrTokens.size() < g_nMost)
        {
            astrTokens.emplace_back(Attribute(tEach, "token"));
        }
    }
    return astrTokens;
}

CAnswer AskInputs(CLogin const& tLogin)
{
    return tLogin.Client().Has(eService::DeviceIO) ? tLogin.Call({eService::DeviceIO, "GetDigitalInputs"})
                                                   : CAnswer::Failed(eResultNotSupported);
}

CAnswer AskOutputs(CLogin const& tLogin)
{
    return tLogin.Call({eService::Device, "GetRelayOutputs"});
}

tagRequest StateRequest(std::string const& strToken, bool bOn)
{
    CXmlWriter t;
    t.Add("tds:RelayOutputToken", strToken).Add("tds:LogicalState", bOn ? "active" : "inactive");
    return {eService::Device, "SetRelayOutputState", t.Take()};
}

// The element of a contact; eResultNoChannel: there is none.
int FindContact(CAnswer const& tAnswer, char const* szName, uint32_t dwIndex, pugi::xml_node& tFound)
{
    if (!tAnswer)
    {
        // A device without contacts has none of this number.
        return tAnswer.Result() == eResultNotSupported ? int{eResultNoChannel} : tAnswer.Result();
    }
    const auto atAll = Children(tAnswer.Body(), szName);
    tFound = dwIndex < atAll.size() ? atAll[dwIndex] : pugi::xml_node();
    return tFound ? int{eResultOk} : int{eResultNoChannel};
}
} // namespace

int CContacts::Inputs(std::vector<std::string>& astrTokens)
{
    const CAnswer tAnswer = AskInputs(m_tLogin);
    astrTokens = Tokens(tAnswer, "DigitalInputs");
    return tAnswer.Result() == eResultNotSupported ? int{eResultOk} : tAnswer.Result();
}

int CContacts::Outputs(std::vector<std::string>& astrTokens)
{
    const CAnswer tAnswer = AskOutputs(m_tLogin);
    astrTokens = Tokens(tAnswer, "RelayOutputs");
    return tAnswer.Result() == eResultNotSupported ? int{eResultOk} : tAnswer.Result();
}

int CContacts::Switch(uint32_t dwOutput, uint32_t dwOn)
{
    std::vector<std::string> astrTokens;
    if (const int nResult = Outputs(astrTokens))
    {
        return nResult;
    }
    if (dwOutput >= astrTokens.size())
    {
        return eResultNoChannel;
    }
    std::string const& strToken = astrTokens[dwOutput];
    const int nResult = m_tLogin.Call(StateRequest(strToken, dwOn != 0)).Result();
    if (nResult != eResultOk)
    {
        return nResult;
    }
    uint32_t dwRun = 0;
    {
        const std::lock_guard tLock(m_tMutex);
        dwRun = ++m_tRuns[strToken];
    }
    if (dwOn > 1)
    {
        m_tLogin.Client().Http().Begin(SwitchOffLater(m_tLogin.shared_from_this(), strToken, dwRun,
                                                      Clock::now() + std::chrono::milliseconds(dwOn)));
    }
    return eResultOk;
}

// pLogin keeps this alive.
rtsp::CTask<> CContacts::SwitchOffLater(std::shared_ptr<CLogin> pLogin, std::string strToken, uint32_t dwRun,
                                        Clock::time_point tEnd)
{
    CClient& tClient = pLogin->Client();
    co_await tClient.Http().Until(tClient.Group(), tEnd); // a logout ends it too
    bool bLast = false;
    {
        const std::lock_guard tLock(m_tMutex);
        bLast = m_tRuns[strToken] == dwRun;
    }
    if (bLast)
    {
        tagRequest tRequest = StateRequest(strToken, false);
        co_await tClient.CallAsync(std::move(tRequest));
    }
}

// --- configuration blocks --------------------------------------------------------------------------------------------

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigAlarmInput& t)
{
    const CAnswer tAnswer = AskInputs(tLogin);
    pugi::xml_node tFound;
    const int nResult = FindContact(tAnswer, "DigitalInputs", tWhich.dwIndex, tFound);
    t.bEnabled = 1;
    t.dwIdle = Attribute(tFound, "IdleState") == "closed" ? eContactClosed : eContactOpen;
    plugin::CopyText(t.szName, Attribute(tFound, "token"));
    return nResult;
}

int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigAlarmInput const& tBefore, tagConfigAlarmInput const& tAfter)
{
    // ONVIF knows nothing of the rest.
    tagConfigAlarmInput tElse = tAfter;
    tElse.dwIdle = tBefore.dwIdle;
    if (std::memcmp(&tElse, &tBefore, sizeof tElse) != 0 || tAfter.dwIdle > eContactClosed)
    {
        return eResultBadArgument;
    }
    std::vector<std::string> astrTokens;
    const int nResult = tLogin.Part<CContacts>().Inputs(astrTokens);
    if (nResult != eResultOk || tAfter.dwIdle == tBefore.dwIdle)
    {
        return nResult;
    }
    CXmlWriter tBody;
    tBody.Open("tmd:DigitalInputs").Attribute("token", astrTokens.at(tWhich.dwIndex));
    tBody.Attribute("IdleState", tAfter.dwIdle == eContactClosed ? "closed" : "open");
    return tLogin.Call({eService::DeviceIO, "SetDigitalInputConfigurations", tBody.Take()}).Result();
}

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigAlarmOutput& t)
{
    const CAnswer tAnswer = AskOutputs(tLogin);
    pugi::xml_node tFound;
    const int nResult = FindContact(tAnswer, "RelayOutputs", tWhich.dwIndex, tFound);
    const pugi::xml_node tProperties = Child(tFound, "Properties");
    t.dwIdle = onvif::Text(tProperties, "IdleState") == "closed" ? eContactClosed : eContactOpen;
    if (onvif::Text(tProperties, "Mode") == "Monostable")
    {
        const int64_t llMs = ParseDuration(onvif::Text(tProperties, "DelayTime")).value_or(0);
        t.dwPulseMs = static_cast<uint32_t>(std::clamp<int64_t>(llMs, 1, 3600000));
    }
    plugin::CopyText(t.szName, Attribute(tFound, "token"));
    return nResult;
}

int Write(CLogin& tLogin, tagWhich const& tWhich, tagConfigAlarmOutput const& tBefore,
          tagConfigAlarmOutput const& tAfter)
{
    if (!IsSame(tBefore.szName, tAfter.szName) || tAfter.dwIdle > eContactClosed || tAfter.dwPulseMs > 3600000)
    {
        return eResultBadArgument; // a relay has no name that could be changed
    }
    std::vector<std::string> astrTokens;
    if (const int nResult = tLogin.Part<CContacts>().Outputs(astrTokens))
    {
        return nResult;
    }
    CXmlWriter tBody;
    tBody.Add("tds:RelayOutputToken", astrTokens.at(tWhich.dwIndex)).Open("tds:Properties");
    tBody.Add("tt:Mode", tAfter.dwPulseMs ? "Monostable" : "Bistable");
    tBody.Add("tt:DelayTime", DurationText(tAfter.dwPulseMs));
    tBody.Add("tt:IdleState", tAfter.dwIdle == eContactClosed ? "closed" : "open");
    return tLogin.Call({eService::Device, "SetRelayOutputSettings", tBody.Take()}).Result();
}

// --- entry points ----------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::AlarmoutControl>, void* hLogin, unsigned long dwOutput, unsigned long dwOn)
{
    return With<CLogin>(
        hLogin, [&](CLogin& tLogin)
        { return tLogin.Part<CContacts>().Switch(static_cast<uint32_t>(dwOutput), static_cast<uint32_t>(dwOn)); });
}

namespace
{
int GiveStates(void* hLogin, eDeviceEvent eWhich, unsigned long* pdwCount, unsigned long* pdwState)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin) -> int
                        {
                            std::vector<bool> abActive;
                            if (!pdwCount || (!pdwState && *pdwCount != 0))
                            {
                                return eResultBadArgument;
                            }
                            if (const int nResult = tLogin.Part<CEvents>().ContactStates(eWhich, abActive))
                            {
                                return nResult;
                            }
                            for (std::size_t i = 0; i < std::min<std::size_t>(*pdwCount, abActive.size()); ++i)
                            {
                                pdwState[i] = abActive[i] ? 1 : 0;
                            }
                            *pdwCount = static_cast<unsigned long>(abActive.size());
                            return eResultOk;
                        });
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::AlarminStateGet>, void* hLogin, unsigned long* pdwCount,
          unsigned long* pdwState)
{
    return GiveStates(hLogin, eEventAlarmInput, pdwCount, pdwState);
}

int Serve(tagCall<&CClientProtocolBase::AlarmoutStateGet>, void* hLogin, unsigned long* pdwCount,
          unsigned long* pdwState)
{
    return GiveStates(hLogin, eEventAlarmOutput, pdwCount, pdwState);
}
} // namespace onvifclient
