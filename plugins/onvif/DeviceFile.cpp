#include "plugins/onvif/DeviceFile.h"

#include <algorithm>

namespace onvifclient
{
namespace
{
constexpr std::size_t g_nBlock = 64 << 10;
} // namespace

bool CDeviceFile::Close()
{
    Control(eTransferStop);
    m_pDelivery->Close();
    return m_tCallback.Close();
}

int CDeviceFile::SetCallback(FileDownloadCallback pfnData, unsigned long dwUser)
{
    return Ended(m_tCallback.Set(pfnData, dwUser));
}

int CDeviceFile::Control(eFileTransferControl eControl)
{
    if (eControl < eTransferStart || eControl > eTransferStop)
    {
        return eResultBadArgument;
    }
    const std::lock_guard tLock(m_tMutex);
    if (m_eState == eState::Over)
    {
        return eControl == eTransferStop ? int{eResultOk} : int{eResultRefused};
    }
    m_eState = eControl == eTransferStart   ? eState::Running
               : eControl == eTransferPause ? eState::Waiting
                                            : eState::Over;
    if (m_eState == eState::Running && !m_bGiving)
    {
        m_bGiving = true;
        m_pDelivery->Add([pSelf = shared_from_this()] { pSelf->Give(); });
    }
    return eResultOk;
}

// One block after the other, and one without bytes behind the last.
void CDeviceFile::Give()
{
    std::unique_lock tLock(m_tMutex);
    while (m_eState == eState::Running)
    {
        const std::size_t nLength = std::min(g_nBlock, m_strFile.size() - m_nGiven);
        tagBuffer tBlock{};
        if (nLength != 0)
        {
            tBlock.pData = reinterpret_cast<unsigned char*>(m_strFile.data()) + m_nGiven;
            tBlock.dwLength = static_cast<uint32_t>(nLength);
        }
        const bool bWritten = !m_pOutput || std::fwrite(tBlock.pData, 1, nLength, m_pOutput.get()) == nLength;
        if (!bWritten || (nLength == 0 && m_pOutput && std::fflush(m_pOutput.get()) != 0))
        {
            tBlock = {nullptr, eResultNoResources};
        }
        m_nGiven += nLength;
        m_eState = tBlock.pData ? m_eState : eState::Over;
        tLock.unlock();
        m_tCallback.Call(m_hDownload.load(), tBlock);
        tLock.lock();
    }
    m_bGiving = false;
}
} // namespace onvifclient
