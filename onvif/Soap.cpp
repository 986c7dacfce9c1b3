#include "onvif/Soap.h"

#include "protocol/PluginInterface.h"

#include <algorithm>
#include <array>
#include <utility>

namespace onvif
{
namespace
{
constexpr std::array<tagServiceName, g_nServices> g_atServices{{
    {eService::Device, "tds", "http://www.onvif.org/ver10/device/wsdl", "Device"},
    {eService::Media, "trt", "http://www.onvif.org/ver10/media/wsdl", "Media"},
    {eService::Media2, "tr2", "http://www.onvif.org/ver20/media/wsdl", nullptr},
    {eService::PTZ, "tptz", "http://www.onvif.org/ver20/ptz/wsdl", "PTZ"},
    {eService::Imaging, "timg", "http://www.onvif.org/ver20/imaging/wsdl", "Imaging"},
    {eService::Events, "tev", "http://www.onvif.org/ver10/events/wsdl", "Events"},
    {eService::DeviceIO, "tmd", "http://www.onvif.org/ver10/deviceIO/wsdl", "Extension/DeviceIO"},
    {eService::Recording, "trc", "http://www.onvif.org/ver10/recording/wsdl", "Extension/Recording"},
    {eService::Search, "tse", "http://www.onvif.org/ver10/search/wsdl", "Extension/Search"},
    {eService::Replay, "trp", "http://www.onvif.org/ver10/replay/wsdl", "Extension/Replay"},
    {eService::Receiver, "trv", "http://www.onvif.org/ver10/receiver/wsdl", "Extension/Receiver"},
    {eService::Display, "tls", "http://www.onvif.org/ver10/display/wsdl", "Extension/Display"},
    {eService::Analytics, "tan", "http://www.onvif.org/ver20/analytics/wsdl", "Analytics"},
}};

constexpr std::pair<char const*, char const*> g_atOtherNames[] = {
    {"tt", "http://www.onvif.org/ver10/schema"},     {"wsnt", "http://docs.oasis-open.org/wsn/b-2"},
    {"wstop", "http://docs.oasis-open.org/wsn/t-1"}, {"wsa", "http://www.w3.org/2005/08/addressing"},
    {"tns1", "http://www.onvif.org/ver10/topics"},   {"ter", "http://www.onvif.org/ver10/error"},
    {"xsd", "http://www.w3.org/2001/XMLSchema"},     {"xsi", "http://www.w3.org/2001/XMLSchema-instance"},
};

// A device's refusals in the words of the interface. The first that is found in the fault's subcodes, from the
// innermost.
constexpr std::pair<std::string_view, int> g_atRefusals[] = {
    {"NotAuthorized", eResultWrongLogin},
    {"OperationProhibited", eResultWrongLogin},
    {"FailedAuthentication", eResultWrongLogin},
    {"InvalidSecurity", eResultWrongLogin},
    {"InvalidSecurityToken", eResultWrongLogin},
    {"FailedCheck", eResultWrongLogin},
    {"AccountLocked", eResultLocked},
    {"UserLocked", eResultLocked},
    {"AuthenticationLocked", eResultLocked},
    {"ActionNotSupported", eResultNotSupported},
    {"ActionNotImplemented", eResultNotSupported},
    {"OptionalActionNotImplemented", eResultNotSupported},
    {"NotSupported", eResultNotSupported},
    {"UnknownAction", eResultNotSupported},
    {"MethodNotFound", eResultNotSupported},
    {"NoSource", eResultNoChannel},
    {"NoVideoSource", eResultNoChannel},
    {"NoAudioSource", eResultNoChannel},
    {"NoVideoOutput", eResultNoChannel},
    {"NoAudioOutput", eResultNoChannel},
    {"RelayToken", eResultNoChannel},
    {"DigitalInputToken", eResultNoChannel},
    {"NoProfile", eResultNotFound},
    {"NoConfig", eResultNotFound},
    {"NoEntity", eResultNotFound},
    {"NoToken", eResultNotFound},
    {"NoRecording", eResultNotFound},
    {"NoTrack", eResultNotFound},
    {"NoPTZProfile", eResultNotFound},
    {"UsernameMissing", eResultNotFound},
    {"InvalidToken", eResultNotFound},
    {"TooManyUsers", eResultDeviceFull},
    {"TooManyPresets", eResultDeviceFull},
    {"MaxNVTProfiles", eResultDeviceFull},
    {"MaxRecordings", eResultDeviceFull},
    {"MaxReceivers", eResultDeviceFull},
    {"StreamConflict", eResultBusy},
    {"ConfigurationConflict", eResultBusy},
    {"ServiceUnavailable", eResultBusy},
    {"Moving", eResultBusy},
    {"MovingPTZ", eResultBusy},
    {"OutofMemory", eResultBusy},
    {"InvalidArgVal", eResultBadArgument},
    {"InvalidArgs", eResultBadArgument},
    {"TagMismatch", eResultBadArgument},
};

// What a status says where no fault does.
int ResultOf(int nStatus)
{
    switch (nStatus)
    {
    case 401:
    case 403:
        return eResultWrongLogin;
    case 404:
    case 405:
    case 501:
        return eResultNotSupported;
    case 423:
        return eResultLocked;
    case 408:
    case 504:
        return eResultTimeOut;
    case 429:
    case 503:
        return eResultBusy;
    default:
        return eResultRefused;
    }
}

bool SpeaksOfLock(std::string_view strReason)
{
    std::string strLower(strReason);
    std::ranges::transform(strLower, strLower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return strLower.find("locked") != std::string::npos || strLower.find("lockout") != std::string::npos;
}
} // namespace

tagServiceName const& NameOf(eService eWhich)
{
    return g_atServices[static_cast<std::size_t>(eWhich)];
}

tagServiceName const* FindService(std::string_view strNamespace)
{
    while (strNamespace.ends_with('/'))
    {
        strNamespace.remove_suffix(1);
    }
    const auto it =
        std::ranges::find_if(g_atServices, [&](tagServiceName const& t) { return strNamespace == t.szNamespace; });
    return it == g_atServices.end() ? nullptr : &*it;
}

std::string Envelope(std::string_view strElement, std::string_view strBody, std::string_view strHeader)
{
    static const std::string s_strOpen = []
    {
        std::string strOpen = R"(<?xml version="1.0" encoding="UTF-8"?>)"
                              R"(<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope")";
        const auto fnDeclare = [&](char const* szPrefix, char const* szNamespace)
        { strOpen.append(" xmlns:").append(szPrefix).append("=\"").append(szNamespace).append("\""); };
        for (tagServiceName const& t : g_atServices)
        {
            fnDeclare(t.szPrefix, t.szNamespace);
        }
        for (auto const& [szPrefix, szNamespace] : g_atOtherNames)
        {
            fnDeclare(szPrefix, szNamespace);
        }
        return strOpen + '>';
    }();
    std::string strXml;
    strXml.reserve(s_strOpen.size() + strBody.size() + strHeader.size() + 200);
    strXml.append(s_strOpen);
    if (!strHeader.empty())
    {
        strXml.append("<s:Header>").append(strHeader).append("</s:Header>");
    }
    strXml.append("<s:Body><").append(strElement).append(">").append(strBody);
    strXml.append("</").append(strElement).append("></s:Body></s:Envelope>");
    return strXml;
}

CAnswer CAnswer::Failed(int nResult, std::string strReason)
{
    CAnswer tAnswer;
    tAnswer.m_nResult = nResult;
    tAnswer.m_strReason = std::move(strReason);
    return tAnswer;
}

// A page that says 401 may be XML too, and a fault may come with any status.
CAnswer CAnswer::Read(int nStatus, std::string strBody)
{
    CAnswer t;
    t.m_pDocument = ParseXml(std::move(strBody));
    t.m_nStatus = nStatus;
    t.m_bAnswered = true;
    const pugi::xml_node tBody = t.m_pDocument ? Child(Child(*t.m_pDocument, "Envelope"), "Body") : pugi::xml_node();
    pugi::xml_node tFirst = tBody.first_child();
    while (tFirst && tFirst.type() != pugi::node_element)
    {
        tFirst = tFirst.next_sibling();
    }
    if (LocalName(tFirst) == "Fault")
    {
        t.TakeFault(tFirst, nStatus);
    }
    else if (nStatus / 100 != 2)
    {
        t.m_nResult = ResultOf(nStatus);
        t.m_strReason = "status " + std::to_string(nStatus);
    }
    else if (!tBody)
    {
        t.m_nResult = eResultRefused;
        t.m_strReason = t.m_pDocument ? "no SOAP envelope" : "no XML";
    }
    else
    {
        t.m_tBody = tFirst;
    }
    return t;
}

// SOAP 1.2: Code/Value, Code/Subcode/Value, Code/Subcode/Subcode/Value; 1.1: faultcode and faultstring.
void CAnswer::TakeFault(pugi::xml_node tFault, int nStatus)
{
    std::vector<std::string_view> astrCodes;
    for (pugi::xml_node tCode = Child(tFault, "Code"); tCode; tCode = Child(tCode, "Subcode"))
    {
        astrCodes.push_back(WithoutPrefix(Text(tCode, "Value")));
    }
    if (astrCodes.empty())
    {
        astrCodes.push_back(WithoutPrefix(Text(tFault, "faultcode")));
    }
    m_strSubcode = astrCodes.back();
    m_strReason = Text(tFault, "Reason/Text");
    m_strReason = m_strReason.empty() ? Text(tFault, "faultstring") : std::string_view(m_strReason);
    m_nResult = 0;
    for (auto it = astrCodes.rbegin(); it != astrCodes.rend() && m_nResult == 0; ++it)
    {
        const auto itRefusal = std::ranges::find(g_atRefusals, *it, &std::pair<std::string_view, int>::first);
        m_nResult = itRefusal == std::end(g_atRefusals) ? 0 : itRefusal->second;
    }
    if (m_nResult == 0)
    {
        m_nResult = nStatus == 401 || nStatus == 403 ? int{eResultWrongLogin} : int{eResultRefused};
    }
    if (m_nResult == eResultWrongLogin && SpeaksOfLock(m_strReason))
    {
        m_nResult = eResultLocked;
    }
}
} // namespace onvif
