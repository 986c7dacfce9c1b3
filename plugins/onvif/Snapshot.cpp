// Snapshots: the picture that the device makes, else a key frame.

#include "plugins/onvif/KeyFrame.h"
#include "plugins/onvif/MediaCalls.h"
#include "plugins/onvif/Operations.h"
#include "plugins/onvif/Pictures.h"
#include "plugins/onvif/Profiles.h"

#include "plugins/common/Text.h"

#include <cstdio>
#include <cstring>

namespace onvifclient
{
namespace
{
using namespace onvif;

/// Where the channels' pictures are, asked once.
class CSnapshots : public CPart
{
public:
    explicit CSnapshots(CLogin&) {}

    std::string Find(std::string const& strProfile) const
    {
        const std::lock_guard tLock(m_tMutex);
        const auto it = m_tAddresses.find(strProfile);
        return it == m_tAddresses.end() ? std::string() : it->second;
    }
    /// Empty: it is to be asked again.
    void Set(std::string const& strProfile, std::string const& strAddress)
    {
        const std::lock_guard tLock(m_tMutex);
        m_tAddresses[strProfile] = strAddress;
    }
    void Forget() override
    {
        const std::lock_guard tLock(m_tMutex);
        m_tAddresses.clear();
    }

private:
    mutable std::mutex m_tMutex;
    std::map<std::string, std::string> m_tAddresses;
};

int AskAddress(CLogin const& tLogin, bool bMedia2, std::string const& strProfile, std::string& strAddress)
{
    const CAnswer tAnswer = tLogin.Call({MediaService(bMedia2), "GetSnapshotUri",
                                         CXmlWriter().Add(MediaName(bMedia2, "ProfileToken"), strProfile).Take()});
    strAddress = onvif::Text(tAnswer.Body(), bMedia2 ? "Uri" : "MediaUri/Uri");
    return !tAnswer ? tAnswer.Result() : strAddress.empty() ? int{eResultNotSupported} : int{eResultOk};
}

// The picture that the device makes.
int Fetch(CLogin& tLogin, bool bMedia2, std::string const& strProfile, std::string& strFile)
{
    CSnapshots& tSnapshots = tLogin.Part<CSnapshots>();
    std::string strAddress = tSnapshots.Find(strProfile);
    if (strAddress.empty())
    {
        if (const int nResult = AskAddress(tLogin, bMedia2, strProfile, strAddress))
        {
            return nResult;
        }
        tSnapshots.Set(strProfile, strAddress);
    }
    tagHttpAnswer tAnswer = tLogin.Client().Get(strAddress);
    if (tAnswer.nResult == eResultOk && tAnswer.nStatus != 200)
    {
        tSnapshots.Set(strProfile, {});
        return tAnswer.nStatus == 401 || tAnswer.nStatus == 403 ? int{eResultWrongLogin}
               : tAnswer.nStatus == 503                         ? int{eResultBusy}
                                                                : int{eResultNotSupported};
    }
    strFile = std::move(tAnswer.strBody);
    return tAnswer.nResult;
}

// dwCodec: what strFile is.
int Take(CLogin& tLogin, uint32_t dwChannel, std::string& strFile, uint32_t& dwCodec)
{
    std::shared_ptr<tagChannel const> pChannel;
    bool bMedia2 = false;
    if (const int nResult = FindChannel(tLogin, dwChannel, pChannel, bMedia2))
    {
        return nResult;
    }
    tagProfile const& tMain = pChannel->atProfiles[0];
    dwCodec = eCodecMJPEG;
    const int nResult = Fetch(tLogin, bMedia2, tMain.strToken, strFile);
    if (nResult != eResultNotSupported)
    {
        return nResult;
    }
    dwCodec = tMain.dwCodec;
    return TakeKeyFrame(tLogin, bMedia2, tMain.strToken, strFile);
}

bool WriteFile(std::string const& strPath, std::string const& strFile)
{
    std::FILE* const pFile = std::fopen(strPath.c_str(), "wb");
    const bool bWritten = pFile && std::fwrite(strFile.data(), 1, strFile.size(), pFile) == strFile.size();
    return pFile && std::fclose(pFile) == 0 && bWritten;
}

int Capture(CLogin& tLogin, uint32_t dwTarget, eImageFormat eFormat, tagImageFileInfo& tInfo)
{
    const std::string strPath = plugin::Text(tInfo.szPath);
    if ((eFormat != eImageJpeg && eFormat != eImagePng) || (strPath.empty() && !tInfo.pbyData) || tInfo.dwQuality > 100)
    {
        return eResultBadArgument;
    }
    if (dwTarget >= eCaptureWindow)
    {
        return eResultNotSupported;
    }
    std::string strFile;
    uint32_t dwCodec = 0;
    int nResult = Take(tLogin, dwTarget, strFile, dwCodec);
    nResult = nResult ? nResult : Fit(strFile, dwCodec, eFormat, tInfo);
    if (nResult != eResultOk)
    {
        return nResult;
    }
    tInfo.llTimeUs = tLogin.Client().DeviceTimeUs();
    tInfo.dwLength = static_cast<uint32_t>(strFile.size());
    if ((tInfo.pbyData && tInfo.dwCapacity < strFile.size()) || (!strPath.empty() && !WriteFile(strPath, strFile)))
    {
        return eResultNoResources;
    }
    if (tInfo.pbyData)
    {
        std::memcpy(tInfo.pbyData, strFile.data(), strFile.size());
    }
    return eResultOk;
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::ImageCapture>, void* hLogin, unsigned long dwChannel, eImageFormat eFormat,
          tagImageFileInfo* ptInfo)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin)
                        {
                            tagImageFileInfo tInfo{};
                            int nResult = Adapter_ProtocolSet::ReadRecord(tInfo, ptInfo);
                            nResult =
                                nResult ? nResult : Capture(tLogin, static_cast<uint32_t>(dwChannel), eFormat, tInfo);
                            if (nResult == eResultOk || nResult == eResultNoResources)
                            {
                                Adapter_ProtocolSet::WriteRecord(ptInfo, tInfo); // how much room is needed, too
                            }
                            return nResult;
                        });
}
} // namespace onvifclient
