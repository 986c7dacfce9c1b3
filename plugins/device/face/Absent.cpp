// As long as nothing makes frames.
#include "plugins/device/media/Capture.h"
#include "plugins/device/media/Download.h"
#include "plugins/device/media/Lattice.h"
#include "plugins/device/media/LiveStream.h"
#include "plugins/device/media/Playback.h"
#include "plugins/device/media/VoiceLink.h"
namespace device
{
#ifdef ABSENT_Download
class CMuxer
{
};
#endif
#ifdef ABSENT_Capture
int Capture(CDevice&, uint32_t, eImageFormat, tagImageFileInfo&) { return 201; }
#endif
#ifdef ABSENT_Lattice
int Lattice(char const*, tagFontPara const&, void*, unsigned long&, unsigned long&, unsigned long&) { return 201; }
#endif
#ifdef ABSENT_Download
int FileHeader(uint32_t, char*, unsigned long&) { return 201; }
#endif
#ifdef ABSENT_Download
int CDownload::Open(std::shared_ptr<CDevice>, tagFileDownloadPara&, std::shared_ptr<IBlockSink>, std::shared_ptr<CDownload>&) { return 201; }
#endif
#ifdef ABSENT_Download
CDownload::~CDownload() = default;
#endif
#ifdef ABSENT_Download
int CDownload::Control(eFileTransferControl) { return 201; }
#endif
#ifdef ABSENT_Download
void CDownload::Close() {}
#endif
#ifdef ABSENT_Download
int64_t CDownload::Run(int64_t) { return 0; }
#endif
#ifdef ABSENT_LiveStream
CLiveStream::CLiveStream(std::shared_ptr<CDevice> pDevice, uint32_t c, uint32_t k, std::shared_ptr<IFrameSink> pSink) : m_pDevice(std::move(pDevice)), m_dwChannel(c), m_dwStreamKind(k), m_pSink(std::move(pSink)) {}
#endif
#ifdef ABSENT_LiveStream
int CLiveStream::Open(std::shared_ptr<CDevice> p, uint32_t c, uint32_t k, std::shared_ptr<IFrameSink> s, std::shared_ptr<CLiveStream>& o) { o = std::make_shared<CLiveStream>(p, c, k, s); return 0; }
#endif
#ifdef ABSENT_LiveStream
void CLiveStream::Start() {}
#endif
#ifdef ABSENT_LiveStream
void CLiveStream::Stop() {}
#endif
#ifdef ABSENT_LiveStream
int CLiveStream::Control(eTaskControl) { return 0; }
#endif
#ifdef ABSENT_LiveStream
void CLiveStream::ForceKeyFrame() {}
#endif
#ifdef ABSENT_LiveStream
tagRTSPPackageInfo CLiveStream::Info() const { return {}; }
#endif
#ifdef ABSENT_LiveStream
void CLiveStream::Close() {}
#endif
#ifdef ABSENT_LiveStream
int64_t CLiveStream::Run(int64_t) { return 0; }
#endif
#ifdef ABSENT_Playback
int CPlayback::Open(std::shared_ptr<CDevice>, tagRecordingQuestion const&, uint32_t, std::shared_ptr<IFrameSink>, std::shared_ptr<CPlayback>&) { return 201; }
#endif
#ifdef ABSENT_Playback
void CPlayback::Start() {}
#endif
#ifdef ABSENT_Playback
void CPlayback::Stop() {}
#endif
#ifdef ABSENT_Playback
int CPlayback::Control(eTaskControl) { return 201; }
#endif
#ifdef ABSENT_Playback
int CPlayback::SetSpeed(uint32_t) { return 201; }
#endif
#ifdef ABSENT_Playback
int CPlayback::Position(eOperationType, tagTimeInfo&) { return 201; }
#endif
#ifdef ABSENT_Playback
int CPlayback::Sync(std::shared_ptr<CPlayback> const&) { return 201; }
#endif
#ifdef ABSENT_Playback
int CPlayback::UnSync(std::shared_ptr<CPlayback> const&) { return 201; }
#endif
#ifdef ABSENT_Playback
void CPlayback::Close() {}
#endif
#ifdef ABSENT_Playback
int64_t CPlayback::Run(int64_t) { return 0; }
#endif
#ifdef ABSENT_VoiceLink
int CVoiceLink::Open(std::shared_ptr<CDevice>, tagVoiceStreamPara&, std::shared_ptr<IVoiceSink>, std::shared_ptr<CVoiceLink>&) { return 201; }
#endif
#ifdef ABSENT_VoiceLink
int CVoiceLink::Send(tagBuffer const&) { return 201; }
#endif
#ifdef ABSENT_VoiceLink
void CVoiceLink::Close() {}
#endif
#ifdef ABSENT_VoiceLink
int64_t CVoiceLink::Run(int64_t) { return 0; }
#endif
#ifdef ABSENT_Pump
struct CPump::tagState {};
#endif
#ifdef ABSENT_Pump
CPump& CPump::Instance() { static CPump t; return t; }
#endif
#ifdef ABSENT_Pump
void CPump::Stop() {}
#endif
#ifdef ABSENT_Pump
void CPump::Wake(std::shared_ptr<CPumped> const&, int64_t) {}
#endif
} // namespace device
