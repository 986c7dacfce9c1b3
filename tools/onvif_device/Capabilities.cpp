// What each service says that it can do: the attributes of its Capabilities element, "name=value" each.

#include "tools/onvif_device/Call.h"

namespace onvif_device
{
namespace
{
struct tagCapabilities
{
    eService eWhich;
    char const* szElement; // within Capabilities, or that itself
    char const* szAttributes;
};
constexpr tagCapabilities g_atCapabilities[] = {
    {eService::Device, "Network", "IPFilter=false ZeroConfiguration=false IPVersion6=false DynDNS=false NTP=2"},
    {eService::Device, "Security",
     "TLS1.2=true UsernameToken=true HttpDigest=true MaxUsers=32 MaxUserNameLength=31 MaxPasswordLength=31"},
    {eService::Device, "System",
     "DiscoveryResolve=true DiscoveryBye=true SystemLogging=true HttpFirmwareUpgrade=true HttpSystemBackup=true "
     "HttpSystemLogging=true HttpSupportInformation=true"},
    {eService::Media, "Capabilities", "SnapshotUri=true Rotation=false OSD=true"},
    {eService::Media, "ProfileCapabilities", "MaximumNumberOfProfiles=128"},
    {eService::Media, "StreamingCapabilities", "RTPMulticast=false RTP_TCP=true RTP_RTSP_TCP=true"},
    {eService::Media2, "Capabilities", "SnapshotUri=true Rotation=false OSD=true Mask=true"},
    {eService::Media2, "ProfileCapabilities",
     "MaximumNumberOfProfiles=128 "
     "ConfigurationsSupported=VideoSource,VideoEncoder,AudioSource,AudioEncoder,Analytics,PTZ"},
    {eService::Media2, "StreamingCapabilities", "RTSPStreaming=true RTPMulticast=false RTP_RTSP_TCP=true"},
    {eService::Ptz, "Capabilities", "EFlip=false Reverse=false MoveStatus=true StatusPosition=true"},
    {eService::Imaging, "Capabilities", "ImageStabilization=false"},
    {eService::Events, "Capabilities",
     "WSSubscriptionPolicySupport=true WSPausableSubscriptionManagerInterfaceSupport=false "
     "MaxNotificationProducers=1 MaxPullPoints=8 PersistentNotificationStorage=false"},
    {eService::DeviceIo, "Capabilities",
     "VideoSources=4 VideoOutputs=4 AudioSources=1 AudioOutputs=1 RelayOutputs=4 DigitalInputs=4 SerialPorts=2"},
    {eService::Search, "Capabilities", "MetadataSearch=false GeneralStartEvents=true"},
    {eService::Recording, "Capabilities",
     "DynamicRecordings=false DynamicTracks=false MaxRecordings=64 MaxRecordingJobs=64 Options=true"},
    {eService::Replay, "Capabilities", "ReversePlayback=true SessionTimeoutRange=10,60 RTP_RTSP_TCP=true"},
    {eService::Receiver, "Capabilities",
     "RTP_Multicast=false RTP_TCP=true RTP_RTSP_TCP=true SupportedReceivers=64 MaximumRTSPURILength=256"},
    {eService::Display, "Capabilities", "FixedLayout=false"},
    {eService::Analytics, "Capabilities", "RuleSupport=true AnalyticsModuleSupport=true"},
};
} // namespace

void WriteCapabilities(CCall& tCall, eService eWhich)
{
    CXml& tXml = tCall.Xml();
    const std::string strPrefix = ServiceOf(eWhich).szPrefix + std::string(":");
    std::vector<std::pair<std::string, std::vector<std::pair<std::string, std::string>>>> atElements;
    for (tagCapabilities const& t : g_atCapabilities)
    {
        if (t.eWhich != eWhich)
        {
            continue;
        }
        auto& [strElement, atAttributes] = atElements.emplace_back(strPrefix + t.szElement, 0);
        for (std::string const& strFlag : Words(t.szAttributes))
        {
            const auto nEqual = strFlag.find('=');
            std::string strValue = strFlag.substr(nEqual + 1);
            std::ranges::replace(strValue, ',', ' ');
            atAttributes.emplace_back(strFlag.substr(0, nEqual), strValue);
        }
    }
    const auto fnAttributes = [](auto const& tElement)
    {
        CXml::Attributes atAttributes;
        for (auto const& [strName, strValue] : tElement.second)
        {
            atAttributes.emplace_back(strName.c_str(), strValue);
        }
        return atAttributes;
    };
    const bool bOwn = atElements.front().first == strPrefix + "Capabilities";
    tXml.In(strPrefix + "Capabilities", bOwn ? fnAttributes(atElements.front()) : CXml::Attributes{},
            [&]
            {
                for (std::size_t i = bOwn ? 1 : 0; i < atElements.size(); ++i)
                {
                    tXml.Empty(atElements[i].first, fnAttributes(atElements[i]));
                }
            });
}
} // namespace onvif_device
