// Events as devices write them, and what they are called here; what a history tells of recordings; requests in pieces.

#include "onvif/Archive.h"
#include "onvif/Incoming.h"
#include "plugins/onvif/Topics.h"

#include "protocol/PluginInterface.h"

#include <gtest/gtest.h>

using namespace onvif;

namespace
{
// Prefixes that nobody expects, parts in another order.
tagNotification Read(std::string const& strTopic, std::string const& strSource, std::string const& strData,
                     std::string const& strHow)
{
    const auto pDocument =
        ParseXml("<a:NotificationMessage xmlns:a='urn:a' xmlns:q='urn:q'><a:Message><q:Message " + strHow +
                 " UtcTime='2026-05-31T08:00:01.5Z'><q:Data>" + strData + "</q:Data><q:Source>" + strSource +
                 "</q:Source></q:Message></a:Message><a:Topic Dialect='urn:d'> " + strTopic +
                 " </a:Topic></a:NotificationMessage>");
    return ReadNotification(pDocument->first_child());
}

std::string Item(std::string const& strName, std::string const& strValue)
{
    return "<q:SimpleItem Value='" + strValue + "' Name='" + strName + "'/>";
}

onvifclient::tagPlaces Places()
{
    onvifclient::tagPlaces t;
    t.tChannels = {{"src_a", 0}, {"src_b", 1}, {"profile_b", 1}};
    t.dwChannels = 4;
    t.tInputs = {{"in_x", 0}, {"in_y", 1}};
    t.tOutputs = {{"relay", 0}};
    t.tWindows = {{"receiver_7", 65}};
    return t;
}
} // namespace

TEST(OnvifEvents, TopicsInTheInterfacesWords)
{
    struct tagRow
    {
        char const* szTopic;
        std::string strSource;
        std::string strData;
        uint32_t dwEvent, dwPlace, dwState;
        char const* szHow = "PropertyOperation='Changed'";
    };
    for (tagRow const& t : {
             tagRow{"tns1:VideoSource/MotionAlarm", Item("Source", "src_b"), Item("State", "true"), eEventMotion, 1, 1},
             {"x:RuleEngine/y:CellMotionDetector/z:Motion", Item("VideoSourceConfigurationToken", "src_a"),
              Item("Other", "7") + Item("IsMotion", "0"), eEventMotion, 0, 0},
             {"tns1:RuleEngine/m:MyMotionDetector/Motion", Item("Rule", "r"), Item("Score", "3"), eEventOther,
              0xFFFFFFFF, 2},
             {"tns1:VideoSource/MotionAlarm", Item("Source", "src_b"), Item("State", "true"), eEventMotion, 1, 0,
              "PropertyOperation='Deleted'"},
             {"tns1:VideoSource/MotionAlarm", Item("Source", "camera3"), Item("State", "1"), eEventMotion, 3, 1},
             {"tns1:VideoSource/MotionAlarm", Item("Source", "camera9"), Item("State", "1"), eEventMotion, 0, 1},
             {"tns1:Device/Trigger/DigitalInput", Item("InputToken", "in_y"), Item("LogicalState", "true"),
              eEventAlarmInput, 1, 1},
             {"tns1:Device/Trigger/Relay", Item("RelayToken", "relay"), Item("LogicalState", "inactive"),
              eEventAlarmOutput, 0, 0},
             {"tns1:VideoSource/ImageTooDark/AnalyticsService", Item("Source", "src_b"), Item("State", "true"),
              eEventTamper, 1, 1},
             {"tns1:VideoSource/SignalLoss", Item("Source", "src_a"), Item("State", "true"), eEventVideoLoss, 0, 1},
             {"tns1:Device/HardwareFailure/StorageFailure", Item("Token", "Disk_2"), Item("Failed", "true"),
              eEventDiskError, 2, 1},
             {"tns1:RecordingHistory/Recording/State", Item("RecordingToken", "profile_b"), Item("IsRecording", "true"),
              eEventRecording, 1, eHistoryContinuous},
             {"tns1:Receiver/ChangeState", Item("ReceiverToken", "receiver_7"), Item("NewState", "Connected"),
              eEventWindow, 65, eWindowShowing},
             {"tns1:Media/ConfigurationChanged", Item("Token", "profile_b"), Item("Type", "AudioEncoder"),
              eEventConfigChanged, eConfigAudioEncoder, 1},
             {"tns1:Media/ConfigurationChanged", "", Item("Type", "Metadata"), eEventOther, 0, 2},
             {"m:User/Login", Item("Level", "3"), Item("State", "2"), eEventUserLogin, 3, 2},
             {"m:Door/Open", Item("Door", "src_b"), Item("Open", "true"), eEventOther, 1, 1},
             {"", "", "", eEventOther, 0xFFFFFFFF, 2, ""},
         })
    {
        const tagNotification tEvent = Read(t.szTopic, t.strSource, t.strData, t.szHow);
        const auto tTold = onvifclient::Translate(tEvent, Places());
        EXPECT_EQ(tTold.dwEvent, t.dwEvent) << t.szTopic;
        EXPECT_EQ(tTold.dwPlace, t.dwPlace) << t.szTopic << t.strSource;
        EXPECT_EQ(tTold.dwState, t.dwState) << t.szTopic << t.strData;
        EXPECT_EQ(tTold.dwTime, 1780214401U) << t.szTopic;
    }
}

TEST(OnvifEvents, TheirOwnWordsAreCutAtCharacters)
{
    std::string strLong;
    for (int i = 0; i < 200; ++i)
    {
        strLong += "\xC3\xA4";
    }
    const tagNotification tEvent = Read("m:Door/Open", Item("a", "1") + Item("b", strLong), "", "");
    const auto t = onvifclient::DetailOf(tEvent, onvifclient::Translate(tEvent, {}));
    EXPECT_STREQ(t.szTopic, "m:Door/Open");
    EXPECT_EQ(std::string(t.szSource).substr(0, 8), "a=1,b=\xC3\xA4");
    EXPECT_EQ(std::string(t.szSource).size(), 126U);
    EXPECT_EQ(t.llTimeUs, 1780214401500000);
}

TEST(OnvifEvents, PartsOfARecording)
{
    const auto fnAt = [](int64_t llTimeUs, char const* szState, bool bStart = false)
    {
        tagFoundEvent t;
        t.llTimeUs = llTimeUs;
        t.bStartState = bStart;
        t.tEvent.atData = {{"IsDataPresent", szState}};
        return t;
    };
    // It was there before, is said to begin twice, ends, and begins again with no end.
    const auto at =
        SectionsOf({fnAt(5, "true", true), fnAt(7, "true"), fnAt(20, "false"), fnAt(21, "false"), fnAt(30, "1"), {}},
                   "IsDataPresent", 10, 100);
    ASSERT_EQ(at.size(), 2U);
    EXPECT_EQ(at[0].llStartUs, 10);
    EXPECT_EQ(at[0].llEndUs, 20);
    EXPECT_FALSE(at[0].bOpen);
    EXPECT_EQ(at[1].llStartUs, 30);
    EXPECT_EQ(at[1].llEndUs, 100);
    EXPECT_TRUE(at[1].bOpen);
}

TEST(OnvifEvents, RequestsInPieces)
{
    struct tagRow
    {
        std::string strRequest;
        char const* szBody; // null: it is refused
    };
    for (tagRow const& t :
         {tagRow{"POST /a HTTP/1.1\r\nHost: h\r\ncontent-LENGTH: 3\r\n\r\nabc", "abc"},
          {"POST /a HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n1;x=y\r\nc\r\n0\r\n", "abc"},
          {"POST /a HTTP/1.1\r\nContent-Length: 99999999999\r\n\r\n", nullptr},
          {"POST /a HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nFFFFFFFF\r\n", nullptr},
          {"POST /a HTTP/1.1\r\nHost: h\r\n\r\n", nullptr},
          {"GET /a HTTP/1.1\r\n\r\n", nullptr}})
    {
        CIncoming tIncoming;
        auto eState = CIncoming::eState::Partial;
        for (const char c : t.strRequest)
        {
            ASSERT_EQ(eState, CIncoming::eState::Partial) << t.strRequest;
            eState = tIncoming.Take({&c, 1});
        }
        EXPECT_EQ(eState, t.szBody ? CIncoming::eState::Whole : CIncoming::eState::Bad) << t.strRequest;
        if (t.szBody)
        {
            EXPECT_EQ(tIncoming.Path(), "/a");
            EXPECT_EQ(tIncoming.Body(), t.szBody);
        }
    }
}
