// What the plug-in makes of a device's parts where no device is needed to see it: by tables.

#include "plugins/onvif/Edit.h"
#include "plugins/onvif/MotionCells.h"
#include "plugins/onvif/Numbers.h"
#include "plugins/onvif/SyncClock.h"

#include "onvif/Xml.h"

#include <chrono>
#include <cmath>
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

TEST(OnvifParts, CellsOfMotion)
{
    struct tagRow
    {
        char const* szText;
        std::size_t nCells;
        bool bGood;
        std::vector<unsigned char> abyWanted; // the first ones; 0 behind them
    };
    for (tagRow const& t : {tagRow{"zwA=", 396, true, {0}}, // the standard's example: none of 22 by 18
                            {"AaCA", 16, true, {0x05, 0x01}},
                            {"AYCA", 12, true, {0x01, 0x01}},
                            {"gA==", 16, true, {0}},
                            {"", 8, true, {0}},
                            {"zw==", 396, false, {}}, // a run of nothing
                            {"f/8=", 396, false, {}},
                            {"#", 8, false, {}}})
    {
        std::vector<unsigned char> abyCells((t.nCells + 7) / 8, 0xAA);
        auto abyWanted = t.abyWanted;
        abyWanted.resize(abyCells.size());
        EXPECT_EQ(TakeCells(t.szText, abyCells), t.bGood) << t.szText;
        EXPECT_TRUE(!t.bGood || abyCells == abyWanted) << t.szText;
    }
    for (std::size_t nCells : {1, 12, 396, 4096})
    {
        for (const std::size_t nEvery : {1, 2, 3, 30, 5000})
        {
            std::vector<unsigned char> abyCells((nCells + 7) / 8);
            for (std::size_t i = 0; i < nCells; i += nEvery)
            {
                abyCells[i / 8] = static_cast<unsigned char>(abyCells[i / 8] | 1 << i % 8);
            }
            auto abyBack = abyCells;
            EXPECT_TRUE(TakeCells(CellsText(abyCells, nCells), abyBack) && abyBack == abyCells) << nCells << nEvery;
        }
    }
}

TEST(OnvifParts, PlaybacksInStepGoByOneClock)
{
    CSyncClock tClock;
    int nOne = 0;
    int nOther = 0;
    bool bOthers = false;
    const auto fnDue = [&](int& nMember, double dRecorded, double dNow, double dScale = 1)
    {
        using std::chrono::microseconds;
        const CSyncClock::Time tNow{microseconds(std::llround(dNow * 1e6))};
        bOthers = false;
        const auto tDue = tClock.Due(&nMember, std::llround(dRecorded * 1e6), dScale, tNow, bOthers);
        return std::round(std::chrono::duration<double>(tDue.time_since_epoch()).count() * 1000) / 1000;
    };
    tClock.Join(&nOne);
    EXPECT_EQ(fnDue(nOne, 50, 10), 10) << "alone, the device's pace counts";
    tClock.Join(&nOther);
    EXPECT_EQ(fnDue(nOne, 50, 10), 13) << "it waits for the other one, but not for ever";
    EXPECT_EQ(fnDue(nOther, 49.5, 11), 11.1) << "the earliest begins";
    EXPECT_TRUE(bOthers);
    EXPECT_EQ(fnDue(nOne, 50, 11), 11.6);
    EXPECT_EQ(fnDue(nOther, 49.58, 11.1), 11.18);
    EXPECT_EQ(fnDue(nOther, 49.54, 11.12), 11.12) << "sent in another order than it is shown in";
    EXPECT_EQ(fnDue(nOther, 49.62, 11.52), 11.52) << "it is late";
    EXPECT_EQ(fnDue(nOne, 50, 11.52), 11.9) << "so all wait";
    EXPECT_EQ(fnDue(nOne, 100, 12), 61.9) << "a gap of its own";
    EXPECT_EQ(fnDue(nOther, 101, 12), 13) << "a gap that both have";
    EXPECT_TRUE(bOthers);
    EXPECT_EQ(fnDue(nOne, 100, 12), 12);
    tClock.Restart();
    tClock.Forget(&nOne);
    tClock.Forget(&nOther);
    fnDue(nOne, 30, 20, -2);
    EXPECT_EQ(fnDue(nOther, 28, 20, -2), 21.1) << "backwards, twice as fast";
    tClock.Leave(&nOne);
    EXPECT_EQ(fnDue(nOther, 20, 20, -2), 20);
}
