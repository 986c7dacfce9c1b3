#include "plugins/onvif/StreamAddress.h"

#include "plugins/onvif/MediaCalls.h"

#include "protocol/interface/Live.h"

namespace onvifclient
{
using namespace onvif;

onvif::tagRequest AddressRequest(bool bMedia2, std::string const& strProfile, uint32_t dwTransport)
{
    const bool bGroup = dwTransport == eRtspMulticast;
    const bool bDatagrams = dwTransport == eRtspUdp || dwTransport == eRtspAutomatic;
    CXmlWriter t;
    if (bMedia2)
    {
        t.Add("tr2:Protocol", bGroup ? "RtspMulticast" : bDatagrams ? "RtspUnicast" : "RTSP");
        t.Add("tr2:ProfileToken", strProfile);
    }
    else
    {
        t.Open("trt:StreamSetup").Add("tt:Stream", bGroup ? "RTP-Multicast" : "RTP-Unicast");
        t.Open("tt:Transport").Add("tt:Protocol", bGroup || bDatagrams ? "UDP" : "RTSP").Close().Close();
        t.Add("trt:ProfileToken", strProfile);
    }
    return {MediaService(bMedia2), "GetStreamUri", t.Take()};
}

std::string AddressOf(CClient const& tClient, CAnswer const& tAnswer, bool bMedia2)
{
    std::string strUrl(onvif::Text(tAnswer.Body(), bMedia2 ? "Uri" : "MediaUri/Uri"));
    const std::size_t nHost = strUrl.find("://");
    const std::size_t nEnd = nHost == std::string::npos ? 0 : strUrl.find('/', nHost + 3);
    const std::size_t nAt = strUrl.substr(0, nEnd).rfind('@');
    if (nAt != std::string::npos && nAt > nHost)
    {
        strUrl.erase(nHost + 3, nAt - nHost - 2);
    }
    return strUrl.empty() ? strUrl : tClient.Reachable(strUrl);
}
int StreamAddress(CLogin const& tLogin, bool bMedia2, std::string const& strProfile, uint32_t dwTransport,
                  std::string& strUrl)
{
    const CAnswer tAnswer = tLogin.Call(AddressRequest(bMedia2, strProfile, dwTransport));
    strUrl = AddressOf(tLogin.Client(), tAnswer, bMedia2);
    if (tAnswer.Subcode() == "InvalidStreamSetup")
    {
        return eResultNotSupported; // the device's word for a way that it doesn't know
    }
    return !tAnswer ? tAnswer.Result() : strUrl.empty() ? int{eResultRefused} : int{eResultOk};
}
} // namespace onvifclient
