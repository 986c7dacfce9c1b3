// What the plug-in makes of a device's parts where no device is needed to see it: by tables.

#include "plugins/onvif/Edit.h"
#include "plugins/onvif/Numbers.h"

#include "onvif/Xml.h"

#include <gtest/gtest.h>

using namespace onvifclient;

TEST(OnvifParts, PresetsKeepTheirNumbers)
{
    using Names = std::vector<std::pair<std::string, std::string>>;
    struct tagRow
    {
        char const* szWhat;
        Names atAll;
        std::vector<uint32_t> adwWanted;
    };
    CNumbers tNumbers;
    for (tagRow const& t :
         {tagRow{"a name wins over a token, and both over the order",
                 {{"P9", ""}, {"2", "Preset 5"}, {"x", ""}},
                 {9, 5, 1}},
          {"who was there before stays", {{"new5", "Preset 5"}, {"2", "Preset 5"}, {"x", ""}, {"1", ""}}, {2, 5, 1, 3}},
          {"who is gone makes room", {{"x", ""}, {"new9", ""}}, {1, 9}},
          {"what is no number", {{"0", "Preset 0"}, {"99999999999", "Preset -1"}, {"x", "Preset 3a"}}, {2, 3, 1}}})
    {
        tNumbers.Take("Preset", t.atAll);
        for (std::size_t i = 0; i < t.atAll.size(); ++i)
        {
            EXPECT_EQ(tNumbers.Number(t.atAll[i].first), t.adwWanted[i]) << t.szWhat << ": " << t.atAll[i].first;
            EXPECT_EQ(tNumbers.Token(t.adwWanted[i]), t.atAll[i].first) << t.szWhat;
        }
    }
    tNumbers.Set("made", 1); // somebody else's before
    EXPECT_TRUE(tNumbers.Token(1) == "made" && tNumbers.Number("x") == 0);
}

TEST(OnvifParts, WhatIsSentBackKeepsWhatNobodyKnows)
{
    const auto pDocument =
        onvif::ParseXml(R"(<a:Got xmlns:a="http://www.onvif.org/ver10/schema" xmlns:m="urn:maker">)"
                        R"(<a:Exposure m:own="1"><a:Mode>AUTO</a:Mode><a:Gain>3</a:Gain></a:Exposure>)"
                        R"(<m:Secret>x</m:Secret><Sharpness>5 &lt; 6</Sharpness></a:Got>)");
    ASSERT_TRUE(pDocument);
    CEdit tEdit(pDocument->first_child(), "ImagingSettings");
    tEdit.Set("Exposure/MinGain", "1"); // between the two that are there
    tEdit.Set("Brightness", "50");      // before them
    tEdit.Set("Extension/Extension/NoiseReduction/Level", "0.5");
    tEdit.SetAttribute("", "token", "a\"b");
    tEdit.Remove("Nothing/Here");
    EXPECT_EQ(tEdit.As("timg:ImagingSettings"),
              R"(<timg:ImagingSettings token="a&quot;b"><tt:Brightness>50</tt:Brightness><tt:Exposure><tt:Mode>AUTO)"
              R"(</tt:Mode><tt:MinGain>1</tt:MinGain><tt:Gain>3</tt:Gain></tt:Exposure><tt:Sharpness>5 &lt; 6)"
              R"(</tt:Sharpness><tt:Extension><tt:Extension><tt:NoiseReduction><tt:Level>0.5</tt:Level>)"
              R"(</tt:NoiseReduction></tt:Extension></tt:Extension></timg:ImagingSettings>)");
    CEdit tTour("PresetTour");
    tTour.Set("Status/State", "Idle");
    tTour.Add("<tt:TourSpot><tt:StayTime>PT1S</tt:StayTime></tt:TourSpot>");
    tTour.Set("AutoStart", "false");
    EXPECT_EQ(tTour.As("t"), "<t><tt:Status><tt:State>Idle</tt:State></tt:Status><tt:AutoStart>false</tt:AutoStart>"
                             "<tt:TourSpot><tt:StayTime>PT1S</tt:StayTime></tt:TourSpot></t>");
}
