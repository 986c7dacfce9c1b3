#include "adapter/CallbackRecord.h"

namespace Adapter_ApplicationLayer
{
CSetCallBack::CSetCallBack()
    : cbUserEvent(nullptr), cbStreamMedia(nullptr), cbStreamMediaRaw(nullptr), cbStreamVoice(nullptr),
      cbTransparentChannel(nullptr), cbFileUpload(nullptr), cbFileDownload(nullptr), m_hUserEvent(0), m_hStreamMedia(0),
      m_hStreamMediaRaw(0), m_hStreamVoice(0), m_hTransparentChannel(0), m_hFileUpload(0), m_hFileDownload(0),
      m_dwUserEvent(0), m_dwStreamMedia(0), m_dwStreamMediaRaw(0), m_dwStreamVoice(0), m_dwTransparentChannel(0),
      m_dwFileUpload(0), m_dwFileDownload(0), m_bUsed(false)
{
}

CSetCallBack::~CSetCallBack() = default;
} // namespace Adapter_ApplicationLayer
