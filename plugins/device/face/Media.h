#pragma once

#include "plugins/device/Sinks.h"
#include "plugins/device/face/Face.h"

namespace device
{
/// Frames on their way to an application.
class CFrameCallback : public IFrameSink
{
public:
    void OnFrame(tagStreamMediaFrame const& tFrame) override { m_tCallback.Call(m_hStream.load(), &tFrame); }

    std::atomic<void*> m_hStream{nullptr};
    CCallback<StreamMediaCallback> m_tCallback;
};

/// A stream of media: other things are opened under it.
class CMedia : public CObject
{
public:
    using CObject::CObject;
};

/// A live stream.
class CLive : public CMedia
{
public:
    using CMedia::CMedia;
    bool Close() override { return true; }
};

/// A playback.
class CRecorded : public CMedia
{
public:
    using CMedia::CMedia;
    bool Close() override { return true; }
};

/// A voice connection.
class CVoice : public CMedia
{
public:
    using CMedia::CMedia;
    bool Close() override { return true; }
};

/// A serial port of the device.
class CSerialChannel : public CObject
{
public:
    CSerialChannel(CObject const& tParent, uint32_t dwPort)
        : CObject(tParent.DevicePointer(), tParent.SessionPointer()), m_dwPort(dwPort)
    {
    }
    bool Close() override;

    const uint32_t m_dwPort;
    std::atomic<void*> m_hChannel{nullptr};
    CCallback<TransparentChannelCallback> m_tCallback;
};

/// A file on its way to the device.
class CUpload : public CObject, public std::enable_shared_from_this<CUpload>
{
public:
    CUpload(CObject const& tParent, uint32_t dwKind, std::string strName, SharedBytes pData)
        : CObject(tParent.DevicePointer(), tParent.SessionPointer()), m_dwKind(dwKind), m_strName(std::move(strName)),
          m_pData(std::move(pData))
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
    void Step();
    bool Report(uint32_t dwState, int nResult);

    const uint32_t m_dwKind;
    const std::string m_strName;
    const SharedBytes m_pData;
    std::mutex m_tMutex;
    eState m_eState = eState::Waiting;
    std::size_t m_nSent = 0;
    uint32_t m_dwRun = 0; // of one that was paused the older steps don't count
};

/// A file on its way from the device.
class CFetch : public CObject
{
public:
    using CObject::CObject;
    bool Close() override { return true; }
};

/// Frames on their way to a window.
class CWindowTransfer : public CObject
{
public:
    CWindowTransfer(CObject const& tParent, uint32_t dwWindow)
        : CObject(tParent.DevicePointer(), tParent.SessionPointer()), m_dwWindow(dwWindow)
    {
    }
    bool Close() override;

    const uint32_t m_dwWindow;
};

/// Ends whatever makes frames.
void MediaStop();
} // namespace device
