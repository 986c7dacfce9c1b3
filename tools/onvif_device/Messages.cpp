#include "tools/onvif_device/Messages.h"

#include "tools/onvif_device/Values.h"
#include "tools/onvif_device/Xml.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"

#include <algorithm>

namespace onvif_device
{
namespace
{
using device::CDevice;

// What the second word of an event counts.
enum class eWhere : unsigned char
{
    Channel,
    Input,
    Output,
    Disk,
};

// A state of the device's, and a topic that tells it.
struct tagTopic
{
    eDeviceEvent eEvent;
    eWhere eWhat;
    char const* szTopic;
    char const* szSource; // name of the item that says where
    char const* szToken;  // kind of that token
    char const* szData;   // name of the item that says what
    char const* szOff;
    char const* szOn;
    char const* szType; // of that item
};
constexpr tagTopic g_atTopics[] = {
    {eEventMotion, eWhere::Channel, "tns1:RuleEngine/CellMotionDetector/Motion", "VideoSourceConfigurationToken",
     "VideoSourceConfig", "IsMotion", "false", "true", "xs:boolean"},
    {eEventMotion, eWhere::Channel, "tns1:VideoSource/MotionAlarm", "Source", "VideoSource", "State", "false", "true",
     "xs:boolean"},
    {eEventAlarmInput, eWhere::Input, "tns1:Device/Trigger/DigitalInput", "InputToken", "Input", "LogicalState",
     "false", "true", "xs:boolean"},
    {eEventAlarmOutput, eWhere::Output, "tns1:Device/Trigger/Relay", "RelayToken", "Relay", "LogicalState", "inactive",
     "active", "tt:RelayLogicalState"},
    {eEventVideoLoss, eWhere::Channel, "tns1:VideoSource/SignalLoss", "Source", "VideoSource", "State", "false", "true",
     "xs:boolean"},
    {eEventTamper, eWhere::Channel, "tns1:VideoSource/GlobalSceneChange/ImagingService", "Source", "VideoSource",
     "State", "false", "true", "xs:boolean"},
    {eEventDiskError, eWhere::Disk, "tns1:Device/HardwareFailure/StorageFailure", "Token", "Disk", "Failed", "false",
     "true", "xs:boolean"},
    {eEventDiskFull, eWhere::Disk, "box:Storage/Full", "Token", "Disk", "State", "false", "true", "xs:boolean"},
    {eEventRecording, eWhere::Channel, "tns1:RecordingConfig/JobState", "RecordingJobToken", "RecordingJob", "State",
     "Idle", "Active", "xs:string"},
};

// Topics without a state, for the topic set.
constexpr char const* g_aszOtherTopics[] = {
    "tns1:Monitoring/OperatingTime/LastReboot",
    "tns1:Monitoring/OperatingTime/LastClockSynchronization",
    "tns1:Media/ConfigurationChanged",
    "tns1:PTZController/PTZPresets/Reached",
    "box:User/Login",
    "box:Configuration/Changed",
    "box:Decoder/Window",
    "box:Panel/Key",
};

uint32_t CountOf(CDevice& tDevice, eWhere eWhat)
{
    const CDevice::CLock tLock(tDevice);
    switch (eWhat)
    {
    case eWhere::Channel:
        return tDevice.Channels();
    case eWhere::Input:
        return tDevice.Blueprint().dwInputs;
    case eWhere::Output:
        return tDevice.Blueprint().dwOutputs;
    case eWhere::Disk:
        break;
    }
    return tDevice.Blueprint().dwDisks;
}

tagMessage StateMessage(tagTopic const& tTopic, uint32_t dwWhere, bool bOn, char const* szOperation, int64_t llTimeUs)
{
    tagMessage t{tTopic.szTopic, szOperation, llTimeUs, {{tTopic.szSource, Token(tTopic.szToken, {dwWhere})}}, {}};
    if (std::string_view(tTopic.szTopic).starts_with("tns1:RuleEngine"))
    {
        t.atSource.emplace_back("VideoAnalyticsConfigurationToken", Token("Analytics", {dwWhere}));
        t.atSource.emplace_back("Rule", "Motion");
    }
    t.atData.emplace_back(tTopic.szData, bOn ? tTopic.szOn : tTopic.szOff);
    return t;
}

// "Channel=0,Preset=3"
tagMessage::Items ItemsOf(std::string const& strText)
{
    tagMessage::Items atItems;
    std::size_t nBegin = 0;
    while (nBegin < strText.size())
    {
        const std::size_t nEnd = std::min(strText.find(',', nBegin), strText.size());
        const std::size_t nEqual = strText.find('=', nBegin);
        if (nEqual < nEnd)
        {
            atItems.emplace_back(strText.substr(nBegin, nEqual - nBegin),
                                 strText.substr(nEqual + 1, nEnd - nEqual - 1));
        }
        nBegin = nEnd + 1;
    }
    return atItems;
}

// What has no state.
tagMessage OtherMessage(device::tagDeviceEvent const& tEvent, int64_t llNowUs)
{
    const std::string strWord2 = std::to_string(tEvent.dwWord2);
    const std::string strWord3 = std::to_string(tEvent.dwWord3);
    tagMessage t{{}, {}, llNowUs, {}, {}};
    switch (tEvent.eEvent)
    {
    case eEventDeviceRestarted:
        t.strTopic = "tns1:Monitoring/OperatingTime/LastReboot";
        t.atData = {{"Status", DateTime(llNowUs)}};
        break;
    case eEventClockChanged:
        t.strTopic = "tns1:Monitoring/OperatingTime/LastClockSynchronization";
        t.atData = {{"Status", DateTime(llNowUs)}};
        break;
    case eEventConfigChanged:
        if (tEvent.dwWord2 == eConfigVideoEncoder || tEvent.dwWord2 == eConfigAudioEncoder)
        {
            const bool bVideo = tEvent.dwWord2 == eConfigVideoEncoder;
            t.strTopic = "tns1:Media/ConfigurationChanged";
            t.atSource = {{"Token", Token(bVideo ? "VideoEncoder" : "AudioEncoder", {tEvent.dwWord3, 0})}};
            t.atData = {{"Type", bVideo ? "VideoEncoder" : "AudioEncoder"}};
            break;
        }
        t.strTopic = "box:Configuration/Changed";
        t.atSource = {{"Block", strWord2}, {"Index", strWord3}};
        break;
    case eEventUserLogin:
        t.strTopic = "box:User/Login";
        t.atSource = {{"Level", strWord2}};
        t.atData = {{"State", strWord3}};
        break;
    case eEventWindow:
        t.strTopic = "box:Decoder/Window";
        t.atSource = {{"Window", strWord2}};
        t.atData = {{"State", strWord3}};
        break;
    case eEventPanelKey:
        t.strTopic = "box:Panel/Key";
        t.atSource = {{"Key", strWord2}};
        t.atData = {{"State", strWord3}};
        break;
    case eEventOther:
        if (tEvent.pDetail)
        {
            t.strTopic = device::Text(tEvent.pDetail->szTopic);
            t.llTimeUs = tEvent.pDetail->llTimeUs;
            t.atSource = ItemsOf(device::Text(tEvent.pDetail->szSource));
            t.atData = ItemsOf(device::Text(tEvent.pDetail->szData));
        }
        break;
    default:
        break;
    }
    return t;
}

// Topics as a tree: the inside of the topics that begin with strRoot.
void WriteTopics(CXml& tXml, std::vector<std::string> const& astrTopics, std::string const& strRoot)
{
    std::vector<std::string> astrDone;
    for (std::string const& strTopic : astrTopics)
    {
        if (!strTopic.starts_with(strRoot))
        {
            continue;
        }
        const std::string strRest = strTopic.substr(strRoot.size());
        const std::string strStep = strRest.substr(0, strRest.find('/'));
        if (std::ranges::find(astrDone, strStep) != astrDone.end())
        {
            continue;
        }
        astrDone.push_back(strStep);
        if (strStep.size() != strRest.size())
        {
            tXml.In(strStep, [&] { WriteTopics(tXml, astrTopics, strRoot + strStep + '/'); });
            continue;
        }
        tXml.In(
            strStep, {{"wstop:topic", "true"}},
            [&]
            {
                auto const* const pt =
                    std::ranges::find(g_atTopics, strTopic, [](tagTopic const& t) { return std::string(t.szTopic); });
                if (pt == std::end(g_atTopics))
                {
                    return;
                }
                tXml.In("tt:MessageDescription", {{"IsProperty", "true"}},
                        [&]
                        {
                            tXml.In("tt:Source",
                                    [&] {
                                        tXml.Empty("tt:SimpleItemDescription",
                                                   {{"Name", pt->szSource}, {"Type", tXml.Name("tt:ReferenceToken")}});
                                    });
                            tXml.In("tt:Data",
                                    [&] {
                                        tXml.Empty("tt:SimpleItemDescription",
                                                   {{"Name", pt->szData}, {"Type", tXml.Name(pt->szType)}});
                                    });
                        });
            });
    }
}

void WriteItems(CXml& tXml, char const* szName, tagMessage::Items const& atItems)
{
    tXml.In(szName,
            [&]
            {
                for (auto const& [strName, strValue] : atItems)
                {
                    tXml.Empty("tt:SimpleItem", {{"Name", strName}, {"Value", strValue}});
                }
            });
}
} // namespace

void tagMessage::Write(CXml& tXml, std::string const& strFrom, char const* szElement) const
{
    constexpr char const* szDialect = "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet";
    tXml.In(szElement,
            [&]
            {
                if (!strFrom.empty())
                {
                    tXml.In("wsnt:SubscriptionReference", [&] { tXml.Put("wsa:Address", strFrom); });
                }

                tXml.Put("wsnt:Topic", tXml.Name(strTopic), {{"Dialect", szDialect}});
                CXml::Attributes atAttributes{{"UtcTime", DateTime(llTimeUs)}};
                if (!strOperation.empty())
                {
                    atAttributes.emplace_back("PropertyOperation", strOperation);
                }
                tXml.In("wsnt:Message",
                        [&]
                        {
                            tXml.In("tt:Message", atAttributes,
                                    [&]
                                    {
                                        WriteItems(tXml, "tt:Source", atSource);
                                        WriteItems(tXml, "tt:Data", atData);
                                    });
                        });
            });
}

std::vector<tagMessage> MessagesOf(CDevice& tDevice, device::tagDeviceEvent const& tEvent)
{
    std::vector<tagMessage> atMessages;
    const int64_t llNowUs = tDevice.NowUs();
    for (tagTopic const& tTopic : g_atTopics)
    {
        if (tTopic.eEvent == tEvent.eEvent)
        {
            atMessages.push_back(StateMessage(tTopic, tEvent.dwWord2, tEvent.dwWord3 != 0, "Changed", llNowUs));
        }
    }
    if (atMessages.empty())
    {
        atMessages.push_back(OtherMessage(tEvent, llNowUs));
    }
    std::erase_if(atMessages, [](tagMessage const& t) { return t.strTopic.empty(); });
    return atMessages;
}

std::vector<tagMessage> InitialMessages(CDevice& tDevice)
{
    std::vector<tagMessage> atMessages;
    const int64_t llNowUs = tDevice.NowUs();
    for (tagTopic const& tTopic : g_atTopics)
    {
        for (uint32_t i = 0; i < CountOf(tDevice, tTopic.eWhat); ++i)
        {
            const CDevice::CLock tLock(tDevice);
            const bool bOn = tDevice.Part<device::CAlarms>().IsOn(tTopic.eEvent, i);
            atMessages.push_back(StateMessage(tTopic, i, bOn, "Initialized", llNowUs));
        }
    }
    return atMessages;
}

void WriteTopicSet(CXml& tXml)
{
    std::vector<std::string> astrTopics(std::begin(g_aszOtherTopics), std::end(g_aszOtherTopics));
    for (tagTopic const& t : g_atTopics)
    {
        astrTopics.emplace_back(t.szTopic);
    }
    WriteTopics(tXml, astrTopics, {});
}

bool MatchesTopic(std::string const& strFilter, std::string const& strTopic)
{
    std::size_t nBegin = 0;
    while (nBegin <= strFilter.size())
    {
        const std::size_t nEnd = std::min(strFilter.find('|', nBegin), strFilter.size());
        std::string strOne = strFilter.substr(nBegin, nEnd - nBegin);
        std::erase(strOne, ' ');
        const bool bTree = strOne.ends_with("//.");
        strOne.resize(strOne.size() - (bTree ? 3 : 0));
        if (strOne.empty() ? strFilter.empty() : strTopic == strOne || (bTree && strTopic.starts_with(strOne + '/')))
        {
            return true;
        }
        nBegin = nEnd + 1;
    }
    return false;
}
} // namespace onvif_device
