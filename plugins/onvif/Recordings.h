#pragma once

#include "onvif/Archive.h"
#include "plugins/onvif/Login.h"
#include "plugins/onvif/Topics.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace onvifclient
{
/// What is asked for; times 0: from the first, to the last.
struct tagQuestion
{
    uint64_t ullChannels = 0;  ///< bits; 0: all
    uint32_t dwTypes = 0;      ///< eHistoryStreamType bits; 0: all
    uint32_t dwStreamKind = 0; ///< eStreamKind
    int64_t llStartUs = 0;
    int64_t llEndUs = 0;
};

/// What one channel recorded without a gap.
struct tagRecording
{
    std::string strToken; ///< the device's recording that it is a part of
    uint32_t dwChannel = 0;
    uint32_t dwType = 0;
    uint32_t dwCodec = 0; ///< eMediaCodec, 0: not known
    int64_t llStartUs = 0;
    int64_t llEndUs = 0;
    bool bRecording = false; ///< still

    /// The name that stands for it; FromFile reads it.
    std::string File() const;
    /// False: no such name. Channel and codec aren't in it.
    static bool FromFile(std::string const& strFile, tagRecording& t);
};

/// How a channel is recorded.
struct tagPlan
{
    bool bActive = false; ///< a job of it is
    uint32_t dwStreamKind = 0;
    bool bAudio = false;
    uint32_t dwKeepDays = 0; ///< 0: as long as there is room
};

struct tagChannel;

/// A device's recordings. Any thread but the HTTP thread; the answers block.
///
/// ONVIF doesn't say why something was recorded: it is eHistoryContinuous. A question for eHistoryMotion or
/// eHistoryAlarm is answered by the parts during which the device reported motion or an alarm input.
class CRecordings final : public CPart
{
public:
    explicit CRecordings(CLogin& tLogin) : m_tLogin(tLogin) {}
    void Forget() override;

    /// In the order of their begin. eResultNoChannel, eResultNotSupported, eResultBadArgument and what a device
    /// answers.
    int Find(tagQuestion const& tQuestion, std::vector<tagRecording>& atFound);
    /// The one that a name stands for. eResultNotFound.
    int FindFile(std::string const& strFile, tagRecording& t);
    /// The channel of each recording that is known, by its token.
    void Number(tagPlaces::Numbers& tChannels);
    /// Begins or ends the recording of a channel.
    int Control(uint32_t dwChannel, bool bOn);
    int ReadPlan(uint32_t dwChannel, tagPlan& t);
    int Keep(uint32_t dwChannel, uint32_t dwDays);
    /// How far the device's local time is ahead of UTC.
    int32_t UtcOffsetMinutes(int64_t llTimeUs);

private:
    struct tagOf
    {
        onvif::tagArchived tArchived;
        uint32_t dwChannel = 0;
    };
    int All(std::vector<tagOf>& atAll);
    int FindParts(tagOf const& tOf, tagQuestion const& tQuestion, std::vector<tagRecording>& atFound);
    int FindEventParts(tagOf const& tOf, uint32_t dwType, tagQuestion const& tQuestion,
                       std::vector<tagRecording>& atFound);
    /// What makes a recording, and what from.
    struct tagJob
    {
        std::string strToken;
        std::string strRecording;
        std::string strSource;
        bool bActive = false;
    };
    int OfChannel(uint32_t dwChannel, std::shared_ptr<tagChannel const>& pChannel, std::string& strToken);
    std::vector<tagJob> Jobs();
    uint32_t CodecOf(tagRecording const& t);

    CLogin& m_tLogin;
    std::mutex m_tMutex;
    std::map<std::string, uint32_t> m_tChannels; ///< of each recording's token
    std::map<std::string, uint32_t> m_tCodecs;
    std::string m_strZone;
    bool m_bZoneKnown = false;
};
} // namespace onvifclient
