// As long as nothing makes frames.
#include "plugins/device/media/Capture.h"
#include "plugins/device/media/Download.h"
#include "plugins/device/media/Lattice.h"
#include "plugins/device/media/LiveStream.h"
#include "plugins/device/media/Playback.h"
#include "plugins/device/media/VoiceLink.h"
namespace device
{
class CMuxer
{
};
int Capture(CDevice&, uint32_t, eImageFormat, tagImageFileInfo&) { return 201; }
int Lattice(char const*, tagFontPara const&, void*, unsigned long&, unsigned long&, unsigned long&) { return 201; }
int FileHeader(uint32_t, char*, unsigned long&) { return 201; }
int CDownload::Open(std::shared_ptr<CDevice>, tagFileDownloadPara&, std::shared_ptr<IBlockSink>, std::shared_ptr<CDownload>&) { return 201; }
CDownload::~CDownload() = default;
int CDownload::Control(eFileTransferControl) { return 201; }
void CDownload::Close() {}
int64_t CDownload::Run(int64_t) { return 0; }
CLiveStream::CLiveStream(std::shared_ptr<CDevice> pDevice, uint32_t c, uint32_t k, std::shared_ptr<IFrameSink> pSink) : m_pDevice(std::move(pDevice)), m_dwChannel(c), m_dwStreamKind(k), m_pSink(std::move(pSink)) {}
int CLiveStream::Open(std::shared_ptr<CDevice> p, uint32_t c, uint32_t k, std::shared_ptr<IFrameSink> s, std::shared_ptr<CLiveStream>& o) { o = std::make_shared<CLiveStream>(p, c, k, s); return 0; }
void CLiveStream::Start() {}
void CLiveStream::Stop() {}
int CLiveStream::Control(eTaskControl) { return 0; }
void CLiveStream::ForceKeyFrame() {}
tagRTSPPackageInfo CLiveStream::Info() const { return {}; }
void CLiveStream::Close() {}
int64_t CLiveStream::Run(int64_t) { return 0; }
int CPlayback::Open(std::shared_ptr<CDevice>, tagRecordingQuestion const&, uint32_t, std::shared_ptr<IFrameSink>, std::shared_ptr<CPlayback>&) { return 201; }
void CPlayback::Start() {}
void CPlayback::Stop() {}
int CPlayback::Control(eTaskControl) { return 201; }
int CPlayback::SetSpeed(uint32_t) { return 201; }
int CPlayback::Position(eOperationType, tagTimeInfo&) { return 201; }
int CPlayback::Sync(std::shared_ptr<CPlayback> const&) { return 201; }
int CPlayback::UnSync(std::shared_ptr<CPlayback> const&) { return 201; }
void CPlayback::Close() {}
int64_t CPlayback::Run(int64_t) { return 0; }
int CVoiceLink::Open(std::shared_ptr<CDevice>, tagVoiceStreamPara&, std::shared_ptr<IVoiceSink>, std::shared_ptr<CVoiceLink>&) { return 201; }
int CVoiceLink::Send(tagBuffer const&) { return 201; }
void CVoiceLink::Close() {}
int64_t CVoiceLink::Run(int64_t) { return 0; }
struct CPump::tagState {};
CPump& CPump::Instance() { static CPump t; return t; }
void CPump::Stop() {}
void CPump::Wake(std::shared_ptr<CPumped> const&, int64_t) {}
} // namespace device
