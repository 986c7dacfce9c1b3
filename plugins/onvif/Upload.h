#pragma once

#include "plugins/onvif/Delivery.h"
#include "plugins/onvif/Login.h"

#include <string>

namespace onvifclient
{
/// A file on its way to the device: firmware, or a configuration to restore.
class CUpload : public CObject, public std::enable_shared_from_this<CUpload>
{
public:
    CUpload(std::shared_ptr<CLogin> pLogin, bool bFirmware, std::string strFile)
        : CObject(std::move(pLogin)), m_bFirmware(bFirmware), m_ullLength(strFile.size()), m_strFile(std::move(strFile))
    {
    }
    bool Close() override;
    int Control(eFileTransferControl eControl);

    std::atomic<void*> m_hUpload{nullptr};
    CCallback<FileUploadCallback> m_tCallback;

private:
    enum class eState : unsigned char
    {
        Waiting,
        Running,
        Over,
    };
    static rtsp::CTask<> Run(std::shared_ptr<CUpload> pSelf, std::string strFile);
    void Report(uint32_t dwState, int nResult, uint64_t ullSent);

    const bool m_bFirmware;
    const uint64_t m_ullLength;
    const std::shared_ptr<onvif::CHttpGroup> m_pGroup = std::make_shared<onvif::CHttpGroup>();
    std::mutex m_tMutex;
    eState m_eState = eState::Waiting;
    std::string m_strFile; // until it runs
    uint64_t m_ullTold = 0;
    std::shared_ptr<CDelivery> m_pDelivery;
};
} // namespace onvifclient
