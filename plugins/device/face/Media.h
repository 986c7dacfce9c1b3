#pragma once

#include "plugins/device/Sinks.h"
#include "plugins/device/face/Face.h"
#include "plugins/device/media/Download.h"
#include "plugins/device/media/LiveStream.h"
#include "plugins/device/media/Playback.h"
#include "plugins/device/media/VoiceLink.h"

namespace device
{
/// Frames on their way to an application.
class CFrameSink : public IFrameSink
{
public:
    void OnFrame(tagStreamMediaFrame const& tFrame) override;
    /// What comes before the next key frame is held back from m_tFrames.
    void AwaitKeyFrame() { m_bAwaitKey = true; }
    bool IsWanted() const { return m_tFrames || m_tRaw; }

    std::atomic<void*> m_hStream{nullptr};
    CCallback<StreamMediaCallback> m_tFrames;
    CCallback<StreamMediaCallback> m_tRaw;

private:
    std::atomic<bool> m_bAwaitKey{false};
};

/// A stream of media: other things are opened under it.
class CMedia : public CObject
{
public:
    CMedia(CObject const& tParent, std::shared_ptr<CFrameSink> pSink)
        : CObject(tParent.DevicePointer(), tParent.SessionPointer()), m_pSink(std::move(pSink))
    {
    }
    virtual int Control(eTaskControl eControl) = 0;
    CFrameSink& Sink() const { return *m_pSink; }

    std::atomic<uint32_t> m_dwLink{0};

private:
    std::shared_ptr<CFrameSink> m_pSink;
};

/// A live stream.
class CLive : public CMedia
{
public:
    CLive(CObject const& tParent, std::shared_ptr<CFrameSink> pSink, std::shared_ptr<CLiveStream> pStream)
        : CMedia(tParent, std::move(pSink)), m_pStream(std::move(pStream))
    {
    }
    bool Close() override;
    int Control(eTaskControl eControl) override { return m_pStream->Control(eControl); }
    CLiveStream& Stream() const { return *m_pStream; }

private:
    std::shared_ptr<CLiveStream> m_pStream;
};

/// A playback.
class CRecorded : public CMedia
{
public:
    CRecorded(CObject const& tParent, std::shared_ptr<CFrameSink> pSink, std::shared_ptr<CPlayback> pPlayback)
        : CMedia(tParent, std::move(pSink)), m_pPlayback(std::move(pPlayback))
    {
    }
    bool Close() override;
    int Control(eTaskControl eControl) override { return m_pPlayback->Control(eControl); }
    std::shared_ptr<CPlayback> const& Playback() const { return m_pPlayback; }

private:
    std::shared_ptr<CPlayback> m_pPlayback;
};

/// Voice on its way to an application.
class CVoiceSink : public IVoiceSink
{
public:
    void OnVoice(eVoiceStreamSource eSource, tagStreamVoiceFrame const& tFrame) override
    {
        m_tCallback.Call(m_hVoice.load(), eSource, &tFrame);
    }

    std::atomic<void*> m_hVoice{nullptr};
    CCallback<StreamVoiceCallback> m_tCallback;
};

/// A voice connection.
class CVoice : public CObject
{
public:
    CVoice(CObject const& tParent, std::shared_ptr<CVoiceSink> pSink, std::shared_ptr<CVoiceLink> pLink)
        : CObject(tParent.DevicePointer(), tParent.SessionPointer()), m_pSink(std::move(pSink)),
          m_pLink(std::move(pLink))
    {
    }
    bool Close() override;
    CVoiceSink& Sink() const { return *m_pSink; }
    CVoiceLink& Link() const { return *m_pLink; }

private:
    std::shared_ptr<CVoiceSink> m_pSink;
    std::shared_ptr<CVoiceLink> m_pLink;
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

/// A file's blocks on their way to an application.
class CBlockSink : public IBlockSink
{
public:
    void OnBlock(tagBuffer const& tBlock) override { m_tCallback.Call(m_hDownload.load(), tBlock); }

    std::atomic<void*> m_hDownload{nullptr};
    CCallback<FileDownloadCallback> m_tCallback;
};

/// A file on its way from the device.
class CFetch : public CObject
{
public:
    CFetch(CObject const& tParent, std::shared_ptr<CBlockSink> pSink, std::shared_ptr<CDownload> pDownload)
        : CObject(tParent.DevicePointer(), tParent.SessionPointer()), m_pSink(std::move(pSink)),
          m_pDownload(std::move(pDownload))
    {
    }
    bool Close() override;
    CBlockSink& Sink() const { return *m_pSink; }
    CDownload& Download() const { return *m_pDownload; }

private:
    std::shared_ptr<CBlockSink> m_pSink;
    std::shared_ptr<CDownload> m_pDownload;
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
