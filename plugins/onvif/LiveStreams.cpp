// Entry points of live streams.

#include "plugins/onvif/Live.h"
#include "plugins/onvif/MediaCalls.h"
#include "plugins/onvif/Operations.h"
#include "plugins/onvif/Profiles.h"
#include "plugins/onvif/StreamAddress.h"

#include <cstring>

namespace onvifclient
{
using onvif::CXmlWriter;

int Serve(tagCall<&CClientProtocolBase::RealStreamConnect>, void** phStream, void* hLogin, tagRealStreamPara* ptPara)
{
    return With<CLogin>(
        hLogin,
        [&](CLogin& tLogin) -> int
        {
            if (!phStream || !ptPara || ptPara->dwStreamKind < eStreamMain ||
                ptPara->dwStreamPara[0] > eRtspAutomatic || ptPara->dwStreamPara[1] > eRtspCertificateTrusted)
            {
                return eResultBadArgument;
            }
            IProtocol* const pProtocols = Face().pProtocols;
            if (!pProtocols)
            {
                return eResultNotSupported;
            }
            CProfiles& tProfiles = tLogin.Part<CProfiles>();
            std::shared_ptr<tagChannel const> pChannel;
            tagProfile const* ptProfile = nullptr;
            std::string strUrl;
            int nResult = tProfiles.Channel(ptPara->dwChannel, pChannel);
            nResult = nResult ? nResult : pChannel->Stream(ptPara->dwStreamKind, ptProfile);
            const bool bMedia2 = tProfiles.IsMedia2();
            nResult = nResult ? nResult
                              : StreamAddress(tLogin, bMedia2, ptProfile->strToken, ptPara->dwStreamPara[0], strUrl);
            if (nResult != eResultOk)
            {
                return nResult;
            }
            const auto pLive = std::make_shared<CLive>(tLogin.shared_from_this(), *pProtocols,
                                                       tagLiveWish{ptProfile->strToken, bMedia2, *ptPara});
            nResult = pLive->Open(strUrl);
            if (nResult == eResultOk)
            {
                *phStream = Face().tHandles.Add(pLive);
                pLive->m_hStream = *phStream;
            }
            return nResult;
        });
}

int Serve(tagCall<&CClientProtocolBase::StreamMediaCB>, void* hStream, StreamMediaCallback pfnFrame,
          unsigned long dwUser)
{
    return With<CLive>(hStream,
                       [&](CLive& tLive) { return tLive.SetFrameCallback(tLive.m_tFrames, pfnFrame, dwUser); });
}

int Serve(tagCall<&CClientProtocolBase::StreamMediaRawCB>, void* hStream, StreamMediaCallback pfnFrame,
          unsigned long dwUser)
{
    return With<CLive>(hStream, [&](CLive& tLive) { return tLive.SetFrameCallback(tLive.m_tRaw, pfnFrame, dwUser); });
}

int Serve(tagCall<&CClientProtocolBase::StreamMediaControl>, void* hStream, eTaskControl eControl)
{
    return With<CMedia>(hStream, [&](CMedia& tMedia) { return tMedia.Control(eControl); });
}

int Serve(tagCall<&CClientProtocolBase::ForceIFrame>, void* hLogin, unsigned long dwStream)
{
    return With<CLogin>(hLogin,
                        [&](CLogin const& tLogin)
                        {
                            return With<CLive>(reinterpret_cast<void*>(dwStream),
                                               [&](CLive const& tLive)
                                               {
                                                   const bool bMedia2 = tLive.Wish().bMedia2;
                                                   const std::string strToken = MediaName(bMedia2, "ProfileToken");
                                                   return tLogin
                                                       .Call(
                                                           {MediaService(bMedia2), "SetSynchronizationPoint",
                                                            CXmlWriter().Add(strToken, tLive.Wish().strProfile).Take()})
                                                       .Result();
                                               });
                        });
}

int Serve(tagCall<&CClientProtocolBase::GetPackInfo>, void* hStream, void* pInfo, int nLength)
{
    return With<CLive>(hStream,
                       [&](CLive const& tLive) -> int
                       {
                           if (!pInfo || nLength <= 0)
                           {
                               return eResultBadArgument;
                           }
                           tagRTSPPackageInfo tInfo{};
                           const int nResult = tLive.Info(tInfo);
                           std::memcpy(pInfo, &tInfo, std::min(static_cast<std::size_t>(nLength), sizeof tInfo));
                           return nResult;
                       });
}

// No device says that its streams may share a connection.
int Serve(tagCall<&CClientProtocolBase::QueryStreamMediaLinkID>, void* hLogin, eMediaFunctionType eFunction,
          tagMediaLinkIDQueryResult* ptResult)
{
    return With<CLogin>(hLogin,
                        [&](CLogin const&) -> int
                        {
                            tagMediaLinkIDQueryResult t{};
                            t.dwSize = sizeof t;
                            return eFunction < eMediaFunctionLive || eFunction > eMediaFunctionDownload
                                       ? int{eResultBadArgument}
                                       : Adapter_ProtocolSet::WriteRecord(ptResult, t);
                        });
}

int Serve(tagCall<&CClientProtocolBase::SetStreamMediaLinkID>, void* hStream, unsigned long dwLink)
{
    return With<CMedia>(hStream, [&](CMedia const&) { return dwLink == 0 ? int{eResultOk} : int{eResultBadArgument}; });
}
} // namespace onvifclient
