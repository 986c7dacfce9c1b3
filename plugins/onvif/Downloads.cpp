// Files from the device: recordings, and what it makes of itself.

#include "plugins/common/Text.h"
#include "plugins/onvif/DeviceFile.h"
#include "plugins/onvif/Fetch.h"
#include "plugins/onvif/Maintenance.h"
#include "plugins/onvif/Operations.h"

#include <algorithm>
#include <utility>

namespace onvifclient
{
namespace
{
using Adapter_ProtocolSet::ReadRecord;
using Adapter_ProtocolSet::WriteRecord;

// What is to be fetched; the parameters have been read.
int FindParts(CLogin& tLogin, tagFileDownloadPara const& t, std::vector<tagRecording>& atParts)
{
    CRecordings& tRecordings = tLogin.Part<CRecordings>();
    if (t.szFile[0])
    {
        return tRecordings.FindFile(plugin::Text(t.szFile), atParts.emplace_back());
    }
    return t.dwChannel >= 64
               ? int{eResultNoChannel}
               : tRecordings.Find({uint64_t{1} << t.dwChannel, t.dwTypes, t.dwStreamKind, t.llStartUs, t.llEndUs},
                                  atParts);
}

// A file that the device makes of itself is fetched at once, as a whole.
int OpenDeviceFile(void** phDownload, CLogin& tLogin, tagFileDownloadPara& t)
{
    const auto pEngine = Engine();
    if (!pEngine)
    {
        return eResultNotStarted;
    }
    std::string strFile;
    if (const int nResult = ReadDeviceFile(tLogin, static_cast<eFileKind>(t.dwKind), strFile))
    {
        return nResult;
    }
    const std::string strPath = plugin::Text(t.szPath);
    std::FILE* const pOutput = strPath.empty() ? nullptr : std::fopen(strPath.c_str(), t.ullOffset ? "abe" : "wbe");
    if (!strPath.empty() && !pOutput)
    {
        return eResultNoResources;
    }
    t.ullLength = strFile.size();
    strFile.erase(0, static_cast<std::size_t>(std::min<uint64_t>(t.ullOffset, strFile.size())));
    const auto pFile = std::make_shared<CDeviceFile>(tLogin.shared_from_this(), pEngine, std::move(strFile), pOutput);
    *phDownload = Face().tHandles.Add(pFile);
    pFile->m_hDownload = *phDownload;
    return eResultOk;
}
} // namespace

// How long a recording's file will be isn't known beforehand.
int Serve(tagCall<&CClientProtocolBase::FileDownloadConnect>, void** phDownload, void* hLogin,
          tagFileDownloadPara* ptPara)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin) -> int
                        {
                            tagFileDownloadPara t{};
                            if (!phDownload || ReadRecord(t, ptPara) != eResultOk || t.dwKind > eFileAudio ||
                                t.dwFormat > eFileFormatMpegTs || (t.llEndUs != 0 && t.llEndUs <= t.llStartUs))
                            {
                                return eResultBadArgument;
                            }
                            if (t.dwKind != eFileRecording && t.dwKind != eFileAny)
                            {
                                const int nResult = OpenDeviceFile(phDownload, tLogin, t);
                                return nResult ? nResult : WriteRecord(ptPara, t);
                            }
                            std::vector<tagRecording> atParts;
                            if (const int nResult = FindParts(tLogin, t, atParts))
                            {
                                return nResult;
                            }
                            std::vector<tagStretch> atStretches;
                            if (const int nResult = MakeStretches(tLogin, atParts, t.llStartUs, t.llEndUs, atStretches))
                            {
                                return nResult;
                            }
                            const auto pEngine = Engine();
                            if (!pEngine)
                            {
                                return eResultNotStarted;
                            }
                            const auto pFetch =
                                std::make_shared<CFetch>(tLogin.shared_from_this(), pEngine, std::move(atStretches), t);
                            if (!pFetch->OpenFile(plugin::Text(t.szPath)))
                            {
                                return eResultNoResources;
                            }
                            t.ullLength = 0;
                            WriteRecord(ptPara, t);
                            *phDownload = Face().tHandles.Add(pFetch);
                            pFetch->Begin(*phDownload);
                            return eResultOk;
                        });
}

int Serve(tagCall<&CClientProtocolBase::FileDownloadControl>, void* hDownload, eFileTransferControl eControl)
{
    return With<CDownload>(hDownload, [&](CDownload& t) { return t.Control(eControl); });
}

int Serve(tagCall<&CClientProtocolBase::FileDownloadCB>, void* hDownload, FileDownloadCallback pfnData,
          unsigned long dwUser)
{
    return With<CDownload>(hDownload, [&](CDownload& t) { return t.SetCallback(pfnData, dwUser); });
}

int Serve(tagCall<&CClientProtocolBase::FileDownloadDisconnect>, void* hDownload)
{
    return CloseHandle<CDownload>(hDownload);
}

int Serve(tagCall<&CClientProtocolBase::GetFileHeader>, unsigned long dwType, char* pbyHeader, unsigned long* pdwLength)
{
    if (dwType > eFileFormatMpegTs || !pdwLength)
    {
        return eResultBadArgument;
    }
    return plugin::GiveHeader(dwType == eFileFormatMp4 ? plugin::FragmentedMp4Header()
                                                       : plugin::TransportStreamHeader({}),
                              pbyHeader, *pdwLength);
}
} // namespace onvifclient
