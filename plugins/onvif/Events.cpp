// The login's life, and events.

#include "plugins/onvif/Events.h"

#include "onvif/Listener.h"
#include "plugins/onvif/EventFlow.h"
#include "plugins/onvif/Operations.h"
#include "plugins/onvif/Profiles.h"
#include "plugins/onvif/Recordings.h"
#include "plugins/onvif/Wall.h"

#include <utility>

namespace onvifclient
{
namespace
{
using onvif::CAnswer;
using onvif::eService;

// The tokens of what a call lists, in its order.
void NumberElements(CLogin& tLogin, eService eTo, char const* szName, char const* szElement,
                    tagPlaces::Numbers& tNumbers)
{
    const CAnswer tAnswer = tLogin.Call({eTo, szName});
    for (pugi::xml_node const& tItem : onvif::Children(tAnswer.Body(), szElement))
    {
        const std::string strToken{onvif::Attribute(tItem, "token")};
        tNumbers.try_emplace(strToken, static_cast<uint32_t>(tNumbers.size()));
    }
}

// One listener for all logins, as long as there is this engine.
std::shared_ptr<onvif::CListener> Listener()
{
    static std::mutex s_tMutex;
    static std::weak_ptr<rtsp::CEngine> s_pEngine;
    static std::shared_ptr<onvif::CListener> s_pListener;
    const auto pEngine = Engine();
    const std::lock_guard tLock(s_tMutex);
    if (s_pEngine.lock() != pEngine)
    {
        s_pEngine = pEngine;
        s_pListener = pEngine ? std::make_shared<onvif::CListener>(pEngine->Loop()) : nullptr;
    }
    return s_pListener;
}
} // namespace

CEvents::CEvents(CLogin& tLogin) : m_tLogin(tLogin), m_pFlow(std::make_shared<CEventFlow>(tLogin.weak_from_this())) {}

void CEvents::Begin()
{
    const std::lock_guard tLock(m_tMutex);
    m_pWatch = std::make_shared<onvif::CWatch>(m_tLogin.ClientPointer(), m_pFlow);
    m_pWatch->Begin();
}

int CEvents::Status() const
{
    return m_pWatch->Status();
}

int CEvents::Subscribe(unsigned long dwEvents, DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    const std::lock_guard tLock(m_tMutex);
    const bool bEnded = m_pFlow->Set(dwEvents, pfnEvent, dwUser);
    if (pfnEvent && !m_pSubscription)
    {
        m_pFlow->SetPlaces(PlacesOf(m_tLogin));
        m_pSubscription =
            std::make_shared<onvif::CSubscription>(m_tLogin.ClientPointer(), m_pWatch, m_pFlow, Listener());
        m_pSubscription->Begin();
    }
    return Ended(bEnded);
}

// What is left of a subscription goes on.
int CEvents::Unsubscribe(unsigned long dwEvents)
{
    if (m_pFlow->Remove(dwEvents) != 0)
    {
        return eResultOk;
    }
    EndSubscription();
    return Ended(m_pFlow->Set(0, nullptr, 0));
}

void CEvents::EndSubscription()
{
    const std::lock_guard tLock(m_tMutex);
    if (m_pSubscription)
    {
        std::exchange(m_pSubscription, nullptr)->End();
    }
}

bool CEvents::Close()
{
    EndSubscription();
    return m_pFlow->Close();
}

int CEvents::ContactStates(eDeviceEvent eWhich, std::vector<bool>& abActive)
{
    const tagPlaces tPlaces = PlacesOf(m_tLogin);
    std::map<uint32_t, uint32_t> tStates;
    if (!m_pFlow->States(static_cast<uint32_t>(eWhich), tStates))
    {
        std::vector<tagNotification> atStates;
        if (const int nResult = onvif::CSubscription::ReadStates(m_tLogin.Client(), atStates))
        {
            return nResult;
        }
        for (tagNotification const& tEvent : atStates)
        {
            const tagTold t = Translate(tEvent, tPlaces);
            if (t.dwEvent == static_cast<uint32_t>(eWhich))
            {
                tStates[t.dwPlace] = t.dwState;
            }
        }
    }
    abActive.assign((eWhich == eEventAlarmInput ? tPlaces.tInputs : tPlaces.tOutputs).size(), false);
    for (auto const& [dwPlace, dwState] : tStates)
    {
        if (dwPlace < abActive.size())
        {
            abActive[dwPlace] = dwState != 0;
        }
    }
    return eResultOk;
}

tagPlaces PlacesOf(CLogin& tLogin)
{
    tagPlaces t;
    onvif::CClient const& tClient = tLogin.Client();
    std::shared_ptr<CProfiles::Channels const> pChannels;
    if (tLogin.Part<CProfiles>().All(pChannels) == eResultOk)
    {
        t.dwChannels = static_cast<uint32_t>(pChannels->size());
        for (uint32_t i = 0; i < t.dwChannels; ++i)
        {
            t.tChannels.try_emplace((*pChannels)[i].strSource, i);
            for (tagProfile const& tProfile : (*pChannels)[i].atProfiles)
            {
                for (std::string const& strToken : {tProfile.strToken, tProfile.strSourceConfig, tProfile.strEncoder,
                                                    tProfile.strAudioSource, tProfile.strAudioEncoder})
                {
                    t.tChannels.try_emplace(strToken, i);
                }
            }
        }
        t.tChannels.erase("");
    }
    tLogin.Part<CRecordings>().Number(t.tChannels);
    tLogin.Part<CWall>().Number(t.tWindows);
    if (tClient.Has(eService::DeviceIO))
    {
        NumberElements(tLogin, eService::DeviceIO, "GetDigitalInputs", "DigitalInputs", t.tInputs);
    }
    NumberElements(tLogin, eService::Device, "GetRelayOutputs", "RelayOutputs", t.tOutputs);
    return t;
}

int Serve(tagCall<&CClientProtocolBase::GetLoginStatus>, void* hLogin, int*)
{
    const auto pLogin = Face().tHandles.Find<CLogin>(hLogin);
    return pLogin ? pLogin->Part<CEvents>().Status() : -int{eResultBadHandle};
}

int Serve(tagCall<&CClientProtocolBase::SubscribeEvent>, void* hLogin, unsigned long dwEvent,
          DeviceEventCallback pfnEvent, unsigned long dwUser)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin) { return tLogin.Part<CEvents>().Subscribe(dwEvent, pfnEvent, dwUser); });
}

int Serve(tagCall<&CClientProtocolBase::UnSubscribeEvent>, void* hLogin, unsigned long dwEvent)
{
    return With<CLogin>(hLogin, [&](CLogin& tLogin) { return tLogin.Part<CEvents>().Unsubscribe(dwEvent); });
}
} // namespace onvifclient
