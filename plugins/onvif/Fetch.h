#pragma once

#include "plugins/common/FileWriter.h"
#include "plugins/onvif/Delivery.h"
#include "plugins/onvif/Download.h"
#include "plugins/onvif/Replay.h"

#include "protocol/interface/Transfer.h"

#include <array>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace onvifclient
{
/// Recordings on their way into a file: replayed as fast as they come, and packed here. Where the application is slower
/// than the device, the session is closed and goes on later. What is coded in another way than the first picture is
/// left out: players take one codec a file.
class CFetch final : public CDownload, public std::enable_shared_from_this<CFetch>
{
public:
    /// atStretches: not empty; tPara: dwFormat and ullOffset count.
    CFetch(std::shared_ptr<CLogin> pLogin, std::shared_ptr<rtsp::CEngine> pEngine, std::vector<tagStretch> atStretches,
           tagFileDownloadPara const& tPara);
    ~CFetch() override;

    /// szPath of the parameters. False: it can't be written.
    bool OpenFile(std::string const& strPath);
    void Begin(void* hDownload) { m_hDownload = hDownload; }
    bool Close() override;
    int Control(eFileTransferControl eControl) override;
    int SetCallback(FileDownloadCallback pfnData, unsigned long dwUser) override;

private:
    enum class eState : unsigned char
    {
        Waiting,
        Running,
        Over,
    };
    /// A frame that isn't in the file yet: how long it lasts the next one tells.
    struct tagPending
    {
        tagStreamMediaFrame tFrame{};
        plugin::Output abyData;
    };

    static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser);
    static int OnEvent(void* hStream, unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3,
                       unsigned long dwWord4, unsigned long dwUser);

    // With the mutex locked.
    void OpenStretch();
    void NextStretch();
    void Finish(int nResult);
    void Pack(tagStreamMediaFrame const& tFrame);
    bool StartFile();
    void Add(tagPending const& tPending, int64_t llNextUs);
    int64_t FileTime(int64_t llTimeUs) const;
    void AddSound(int64_t llUntilUs);
    void WantGiving();
    std::size_t Waiting() const { return m_abyMade.size() - m_nGiven; }

    void Take(tagStreamMediaFrame const& tFrame, unsigned long dwRun);
    void TakeEnd(tagReplayEnd const& tEnd, unsigned long dwRun);
    void Give();

    const std::shared_ptr<rtsp::CEngine> m_pEngine;
    const std::shared_ptr<CDelivery> m_pDelivery;
    const std::vector<tagStretch> m_atStretches;
    const uint32_t m_dwFormat;
    std::atomic<void*> m_hDownload{nullptr};
    CCallback<FileDownloadCallback> m_tCallback;

    std::mutex m_tMutex;
    eState m_eState = eState::Waiting;
    std::unique_ptr<rtsp::CStream> m_pStream; ///< null: not open
    unsigned long m_dwRun = 0;
    std::size_t m_iStretch = 0;
    bool m_bFull = false;                 ///< no more is fetched until the application has taken some
    std::array<int64_t, 2> m_allHaveUs{}; ///< up to when pictures and sound have come
    std::optional<int> m_nEnd;            ///< all is packed: the result

    // The file.
    std::unique_ptr<plugin::CFileWriter> m_pWriter; ///< null: it hasn't begun
    std::vector<tagPending> m_atFirst;              ///< until it is known what the file holds
    plugin::tagVideoFormat m_tVideo;
    plugin::tagAudioFormat m_tAudio;
    std::optional<tagPending> m_tPicture;
    std::deque<tagPending> m_atSound; ///< that waits for pictures of its time
    int64_t m_llLastUs = 0;           ///< of the recording's pictures
    /// Where the file's pictures go on behind a gap, and how much has been left out up to there.
    struct tagGap
    {
        int64_t llEndUs;
        int64_t llSumUs;
    };
    std::vector<tagGap> m_atGaps;
    plugin::Output m_abyMade;
    std::size_t m_nGiven = 0; ///< bytes of that which the application has got
    uint64_t m_ullSkip;       ///< bytes that it has from before
    bool m_bGiving = false;
    std::FILE* m_pOutput = nullptr;
};
} // namespace onvifclient
