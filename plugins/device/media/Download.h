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

namespace device
{
class CDevice;
class CMuxer;

/// A file on its way from a device. Any thread may call any function; none of them waits for the sink.
class CDownload final : public CPumped
{
public:
    static constexpr std::size_t g_nBlock = 256 << 10;

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
    int Find(tagFileDownloadPara& tPara);
    bool Fill(std::vector<unsigned char>& abyBlock);
    void End(int nResult);

    const std::shared_ptr<CDevice> m_pDevice;
    const std::shared_ptr<IBlockSink> m_pSink;
    std::mutex m_tMutex;
    eState m_eState = eState::Waiting;

    // The rest belongs to Run.
    SharedBytes m_pFile;                        // a file that is kept as such
    std::unique_ptr<CRecordedFrames> m_pFrames; // a recording
    std::unique_ptr<CMuxer> m_pMuxer;
    bool m_bHeader = false;
    uint64_t m_ullSkip = 0; // of what comes
    std::vector<unsigned char> m_abyAhead;
    std::FILE* m_pOutput = nullptr;
    std::vector<unsigned char> m_abyRoom;
};

/// What every file of this format (eFileFormat) begins with, into pbyHeader; dwLength: the room there, then the length.
/// eResultBadArgument; eResultNoResources: dwLength says what is needed.
int FileHeader(uint32_t dwFormat, char* pbyHeader, unsigned long& dwLength);
} // namespace device
