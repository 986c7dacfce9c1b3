#pragma once

#include "plugins/onvif/Delivery.h"
#include "plugins/onvif/Download.h"

#include <cstdio>
#include <string>

namespace onvifclient
{
/// A file that the device made of itself, which was fetched as a whole: its log, what support asks for, its
/// configuration.
class CDeviceFile final : public CDownload, public std::enable_shared_from_this<CDeviceFile>
{
public:
    /// strFile: what is still to be given. pOutput: a file of this machine for it, which is closed here; null: none.
    CDeviceFile(std::shared_ptr<CLogin> pLogin, std::shared_ptr<rtsp::CEngine> const& pEngine, std::string strFile,
                std::FILE* pOutput)
        : CDownload(std::move(pLogin)), m_pDelivery(std::make_shared<CDelivery>(pEngine)),
          m_strFile(std::move(strFile)), m_pOutput(pOutput, &std::fclose)
    {
    }
    bool Close() override;
    int Control(eFileTransferControl eControl) override;
    int SetCallback(FileDownloadCallback pfnData, unsigned long dwUser) override;

    std::atomic<void*> m_hDownload{nullptr};

private:
    enum class eState : unsigned char
    {
        Waiting,
        Running,
        Over,
    };
    void Give();

    const std::shared_ptr<CDelivery> m_pDelivery;
    CCallback<FileDownloadCallback> m_tCallback;
    std::mutex m_tMutex;
    eState m_eState = eState::Waiting;
    bool m_bGiving = false;
    std::string m_strFile;
    std::size_t m_nGiven = 0;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_pOutput;
};
} // namespace onvifclient
