#pragma once

#include "plugins/device/Recording.h"
#include "plugins/device/Sinks.h"
#include "plugins/device/WallView.h"
#include "plugins/device/media/Pump.h"
#include "plugins/device/media/RecordedFrames.h"

#include "protocol/interface/Transfer.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace device
{
class CDevice;
class CMuxer;

/// A file on its way from a device. Gaps between recordings are left out of its time. What
/// is coded in another way than the first recording is left out too: players take one codec a file. Any thread may call
/// any function; none of them waits for the sink.
class CDownload final : public CPumped
{
public:
    static constexpr std::size_t g_nBlock = 64 << 10;

    /// What tPara asks for; tPara.ullLength receives the length. Waits for eTransferStart. eResultNotFound: no such
    /// file, or nothing was recorded; eResultNoChannel, eResultBadArgument (ullOffset after the end too);
    /// eResultNoResources: szPath can't be written.
    static int Open(std::shared_ptr<CDevice> pDevice, tagFileDownloadPara& tPara, std::shared_ptr<IBlockSink> pSink,
                    std::shared_ptr<CDownload>& pDownload);
    CDownload(std::shared_ptr<CDevice> pDevice, std::shared_ptr<IBlockSink> pSink);
    ~CDownload() override;

    /// eResultBadArgument; eResultRefused: it is over.
    int Control(eFileTransferControl eControl);
    /// eTransferStop.
    void Close();

    int64_t Run(int64_t llNowUs) override;

private:
    enum class eState : unsigned char
    {
        Waiting,
        Running,
        Over,
    };
    int Find(tagFileDownloadPara const& tPara);
    int FindRecording(tagFileDownloadPara const& tPara, std::string const& strFile);
    bool Make();
    uint64_t Measure(uint32_t dwFormat);
    void Restart(uint32_t dwFormat);
    bool Give();
    void End(int nResult);

    const std::shared_ptr<CDevice> m_pDevice;
    const std::shared_ptr<IBlockSink> m_pSink;
    std::mutex m_tMutex;
    eState m_eState = eState::Waiting;

    // The rest belongs to Run.
    uint32_t m_dwChannel = 0;
    SharedBytes m_pFile;                        // a file that is kept as such
    std::unique_ptr<CRecordedFrames> m_pFrames; // or a recording
    std::unique_ptr<CMuxer> m_pMuxer;
    bool m_bBegan = false;
    bool m_bEnded = false;
    int64_t m_llGapsUs = 0; // time before the file's begin, and that of all gaps
    int64_t m_llEndUs = 0;  // of the frame before
    uint64_t m_ullSkip = 0; // bytes that the application has
    std::vector<unsigned char> m_abyMade;
    std::size_t m_nGiven = 0; // bytes of those
    std::FILE* m_pOutput = nullptr;
};

/// What every file of this format (eFileFormat) begins with, into pbyHeader; dwLength: the room there, then the length.
/// eResultBadArgument; eResultNoResources: dwLength says what is needed.
int FileHeader(uint32_t dwFormat, char* pbyHeader, unsigned long& dwLength);
} // namespace device
