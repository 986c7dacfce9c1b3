// What is read from devices and written for them, by tables.

#include "onvif/Client.h"
#include "onvif/DiscoveryMessage.h"
#include "onvif/Security.h"
#include "onvif/Xml.h"

#include "protocol/PluginInterface.h"

#include <gtest/gtest.h>

using namespace onvif;

TEST(OnvifWords, AddressesOfDevices)
{
    struct tagRow
    {
        char const* szText;
        unsigned nPort;
        char const* szWanted; // empty: none
    };
    for (tagRow const& t : {tagRow{"192.0.2.10", 0, "http://192.0.2.10/onvif/device_service"},
                            {"192.0.2.10", 8080, "http://192.0.2.10:8080/onvif/device_service"},
                            {"camera.example:81", 0, "http://camera.example:81/onvif/device_service"},
                            {"2001:db8::10", 443, "http://[2001:db8::10]:443/onvif/device_service"},
                            {"fe80::1%eth0", 0, "http://[fe80::1%25eth0]/onvif/device_service"},
                            {"https://[2001:db8::10]", 0, "https://[2001:db8::10]/onvif/device_service"},
                            {"http://h:81/a/b?c=d", 0, "http://h:81/a/b?c=d"},
                            {"http://u:p@h/", 0, ""},
                            {"rtsp://h/", 0, ""},
                            {"h", 70000, ""},
                            {"h i", 0, ""},
                            {"", 0, ""}})
    {
        const auto tAddress = ParseDevice(t.szText, t.nPort);
        EXPECT_EQ(tAddress ? tAddress->Text() : "", t.szWanted) << t.szText;
    }
}

TEST(OnvifWords, AddressesThatDevicesAnnounce)
{
    const tagAddress tHere = *ParseAddress("http://203.0.113.5:8081/onvif/device_service");
    const tagAddress tSafe = *ParseAddress("https://[2001:db8::1]:8443/x");
    struct tagRow
    {
        tagAddress const& tReached;
        char const* szAnnounced;
        char const* szWanted;
    };
    for (tagRow const& t :
         {tagRow{tHere, "http://192.168.0.9/onvif/media?x=1", "http://203.0.113.5:8081/onvif/media?x=1"},
          {tHere, "http://192.168.0.9:8899/events", "http://203.0.113.5:8899/events"},
          {tHere, "https://192.168.0.9/onvif/ptz", "http://203.0.113.5:8081/onvif/ptz"},
          {tHere, "rtsp://192.168.0.9/live?p=1", "rtsp://203.0.113.5/live?p=1"},
          {tHere, "rtsp://192.168.0.9:5554/live", "rtsp://203.0.113.5:5554/live"},
          {tSafe, "http://192.168.0.9/a", "https://[2001:db8::1]:8443/a"},
          {tSafe, "rtsp://192.168.0.9/a", "rtsp://[2001:db8::1]/a"},
          {tHere, "nonsense", "nonsense"}})
    {
        EXPECT_EQ(Reachable(t.szAnnounced, t.tReached, 80), t.szWanted);
    }
}

TEST(OnvifWords, TimesAndNumbers)
{
    const std::pair<char const*, std::int64_t> atTimes[] = {{"2026-05-31T08:00:00Z", 1780214400000000},
                                                            {"2026-05-31T08:00:00", 1780214400000000},
                                                            {" 2026-05-31T10:30:00.25+02:30", 1780214400250000},
                                                            {"2026-5-31T08:00:00.1234567Z", 1780214400123456},
                                                            {"2026-05-31T05:30:00-0230", 1780214400000000},
                                                            {"2026-02-30T08:00:00Z", -1},
                                                            {"yesterday", -1},
                                                            {"2026-05-31", -1},
                                                            {"99999-01-01T00:00:00Z", -1},
                                                            {"", -1}};
    for (auto const& [szText, llWanted] : atTimes)
    {
        EXPECT_EQ(ParseTime(szText).value_or(-1), llWanted) << szText;
    }
    const std::pair<char const*, std::int64_t> atDurations[] = {
        {"PT10S", 10000}, {"PT1.5S", 1500}, {"P1DT1H1M1S", 90061000},
        {"-PT1S", -1000}, {"PT0S", 0},      {"P1M", -1},
        {"10", -1},       {"PT", -1},       {"P", -1},
        {"PTS", -1}};
    for (auto const& [szText, llWanted] : atDurations)
    {
        EXPECT_EQ(ParseDuration(szText).value_or(-1), llWanted) << szText;
    }
    EXPECT_EQ(TimeText(1780214400250000), "2026-05-31T08:00:00.250000Z");
    EXPECT_EQ(DurationText(1500), "PT1.5S");
    EXPECT_EQ(NumberText(-0.25), "-0.25");
}

TEST(OnvifWords, XmlWithAnyPrefix)
{
    const auto pDocument =
        ParseXml("<a:r xmlns:a='u' xmlns:b='v'><x:n> +0.5 </x:n><t>TRUE</t><n>7</n><i a:token='k'/><e/>"
                 "<c><![CDATA[<&]]></c><huge>1e999</huge><b:copy><b:inner/></b:copy></a:r>");
    ASSERT_TRUE(pDocument);
    const pugi::xml_node tRoot = Child(*pDocument, "r");
    EXPECT_EQ(Number(tRoot, "n"), 0.5);
    EXPECT_EQ(Truth(tRoot, "t"), true);
    EXPECT_EQ(Integer(tRoot, "e"), std::nullopt);
    EXPECT_EQ(Number(tRoot, "huge"), std::nullopt);
    EXPECT_EQ(Children(tRoot, "n").size(), 2U);
    EXPECT_EQ(Attribute(Find(tRoot, "i"), "token"), "k");
    EXPECT_EQ(Text(tRoot, "c"), "<&");
    EXPECT_EQ(Text(tRoot, "not/there"), "");
    EXPECT_EQ(Serialized(Child(tRoot, "copy")), "<b:copy xmlns:a=\"u\" xmlns:b=\"v\"><b:inner/></b:copy>");
    EXPECT_FALSE(ParseXml("<a><b></a>"));
    EXPECT_EQ(CXmlWriter().Open("a").Attribute("b", "\"<").Add("c", "&\x01>").Open("d").Take(),
              "<a b=\"&quot;&lt;\"><c>&amp;&gt;</c><d></d></a>");
}

// Reckoned with another program.
TEST(OnvifWords, DigestOfThePassword)
{
    EXPECT_EQ(PasswordDigest("\x2c\x8a\x5e\x1f", "2026-05-31T08:00:00Z", "secret"), "Xp4mbU1h2Q/c0C0QKd63rFuy2pA=");
}

TEST(OnvifWords, AnnouncementsOfDevices)
{
    const std::string strMatch =
        "<w:EndpointReference><q:Address> URN:UUID:AB-1 "
        "</q:Address></w:EndpointReference><w:Types>dn:NetworkVideoTransmitter"
        "</w:Types><w:Scopes>onvif://www.onvif.org/name/Gate%20North\tonvif://www.onvif.org/hardware/M1 "
        "onvif://www.onvif.org/location/country/%C3%96land onvif://www.onvif.org/MAC/02:00:5e:10:00:01 "
        "http://else/name/x"
        "</w:Scopes><w:XAddrs>http://[fe80::9]/v6 http://192.0.2.9:81/v4 http://10.0.0.9/other</w:XAddrs>"
        "<w:MetadataVersion>3</w:MetadataVersion>";
    const auto fnIn = [](std::string const& strBody)
    { return "<s:Envelope><s:Body>" + strBody + "</s:Body></s:Envelope>"; };
    const auto atFound = ParseAnnouncements(
        fnIn("<w:ProbeMatches><w:ProbeMatch>" + strMatch + "</w:ProbeMatch><w:ProbeMatch/></w:ProbeMatches>"));
    ASSERT_EQ(atFound.size(), 1U);
    tagAnnouncement const& t = atFound[0];
    EXPECT_EQ(t.strEndpoint, "urn:uuid:ab-1");
    EXPECT_EQ(t.strName + '|' + t.strHardware + '|' + t.strLocation + '|' + t.strMac,
              "Gate North|M1|country/\xC3\x96land|02:00:5e:10:00:01");
    const std::pair<char const*, char const*> atSenders[] = {{"10.0.0.9", "http://10.0.0.9/other"},
                                                             {"198.51.100.7", "http://198.51.100.7:81/v4"},
                                                             {"fe80::9%eth1", "http://[fe80::9%25eth1]/v6"}};
    for (auto const& [szSender, szWanted] : atSenders)
    {
        EXPECT_EQ(Choose(t, szSender)->Text(), szWanted);
    }
    EXPECT_EQ(ParseAnnouncements(fnIn("<w:Hello>" + strMatch + "</w:Hello>")).size(), 1U);
    const auto atGone = ParseAnnouncements(fnIn("<w:Bye><w:EndpointReference><q:Address>urn:uuid:AB-1</q:Address>"
                                                "</w:EndpointReference></w:Bye>"));
    ASSERT_EQ(atGone.size(), 1U);
    EXPECT_TRUE(atGone[0].bBye);
    // A printer.
    EXPECT_TRUE(
        ParseAnnouncements(fnIn("<w:Hello><w:EndpointReference><q:Address>urn:uuid:1</q:Address></w:EndpointReference>"
                                "<w:Types>wprt:PrintDeviceType</w:Types></w:Hello>"))
            .empty());
}
