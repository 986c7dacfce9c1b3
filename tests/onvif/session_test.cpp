// Finding devices, logging in, and logins that outlive what devices do to them.

#include "tests/onvif/Onvif.h"

#include <algorithm>

namespace
{
CInbox<tagDeviceProbeConfig> g_tFound;

void OnFound(tagDeviceProbeConfig* ptFound)
{
    if (ptFound->dwProtocol == eProtocolOnvif) // other protocols' plug-ins may look too
    {
        g_tFound.Put(*ptFound);
    }
}

// Devices as they are: after each of these, a login does what it should.
struct tagKind
{
    char const* szName;
    std::vector<std::string> astrOptions;
};
void PrintTo(tagKind const& t, std::ostream* pStream)
{
    *pStream << t.szName;
}
std::vector<std::string> Set(std::vector<std::string> const& astrQuirks)
{
    std::vector<std::string> astrOptions;
    for (std::string const& str : astrQuirks)
    {
        astrOptions.insert(astrOptions.end(), {"--set", str});
    }
    return astrOptions;
}
class COnvifKinds : public COnvifTest, public testing::WithParamInterface<tagKind>
{
};
} // namespace

TEST_P(COnvifKinds, AreLoggedInTo)
{
    CTool& tTool = Device(GetParam().astrOptions);
    tTool.Tell("set 0 rtsp_host 10.1.2.3:" + std::to_string(tTool.Rtsp())); // streams behind a router, always
    EXPECT_STREQ(Read<tagConfigIdentity>(eConfigIdentity).szModel, "TB-400");
    Subscribe();
    int nStream = -1;
    ASSERT_EQ(Open(nStream), 0);
    WORKS(StreamMediaCB, nStream, OnFrame, User(m_tFrames));
    EXPECT_TRUE(m_tFrames.Next().IsKey());
    tTool.Tell("fault 0 motion channel=1");
    m_tEvents.Await(Is(eEventMotion, 1, 1));
    // A picture by HTTP, with what the device wants for a login there.
    std::vector<unsigned char> abyPicture(1 << 20);
    auto tInfo = Sized<tagImageFileInfo>();
    tInfo.pbyData = abyPicture.data();
    tInfo.dwCapacity = static_cast<uint32_t>(abyPicture.size());
    WORKS(ImageCapture, m_nLogin, 0, eImageJpeg, &tInfo);
    EXPECT_TRUE(abyPicture[0] == 0xFF && abyPicture[1] == 0xD8);
    WORKS(RealStreamDisconnect, nStream);
}

INSTANTIATE_TEST_SUITE_P(
    Onvif, COnvifKinds,
    testing::Values(tagKind{"Plain", {}}, tagKind{"Token", Set({"auth=wsse"})}, tagKind{"Digest", Set({"auth=digest"})},
                    tagKind{"Sha256", Set({"auth=digest", "digest=sha256"})}, tagKind{"Both", Set({"auth=both"})},
                    tagKind{"Open", Set({"auth=none"})}, tagKind{"TwelveYearsBack", {"--clock", "-378432000"}},
                    tagKind{"TwelveYearsAhead", {"--clock", "378432000"}},
                    tagKind{"BehindRouter", Set({"host=10.1.2.3:8899"})},
                    tagKind{"OddPlaces", Set({"odd_paths", "odd_prefixes", "reference_parameters"})},
                    tagKind{"OddAnswers", Set({"fault_status=200", "sparse", "piece=700", "piece_ms=1", "compress"})},
                    tagKind{"MediaOne", Set({"without=media2"})}),
    [](auto const& tInfo) { return tInfo.param.szName; });

TEST_F(COnvifTest, LoginsAreRefused)
{
    const CTool tTool;
    int nLogin = -1;
    EXPECT_EQ(Login(nLogin, tTool.Port(), "admin", "wrong"), eResultWrongLogin);
    EXPECT_EQ(Login(nLogin, tTool.Port(), "nobody"), eResultWrongLogin);
    EXPECT_EQ(Login(nLogin, 1), eResultUnreachable);
    tagUserLoginPara tPara{};
    strcpy(tPara.szAddress, "user:secret@127.0.0.1");
    ANSWERS(eResultBadAddress, UserLogin, &nLogin, eProtocolOnvif, &tPara);
    int nLevel = -1;
    ASSERT_EQ(Login(nLogin, tTool.Port(), "viewer", "viewer"), 0);
    WORKS(GetLoginLevel, nLogin, &nLevel);
    EXPECT_EQ(nLevel, eUserViewer);
    ANSWERS(eResultWrongLogin, DeviceControl, nLogin, eDeviceRestart);
    WORKS(UserLogout, nLogin);
    ASSERT_EQ(Login(m_nLogin, tTool.Port()), 0);
    WORKS(GetLoginLevel, m_nLogin, &nLevel);
    EXPECT_EQ(nLevel, eUserAdministrator);
    unsigned char abyMac[6] = {};
    WORKS(GetLoginMac, m_nLogin, abyMac, 6);
    EXPECT_NE(std::count(abyMac, abyMac + 6, 0), 6);
    WORKS(UserLogout, std::exchange(m_nLogin, -1));
}

TEST_F(COnvifTest, AWrongPasswordIsTriedOnce)
{
    const CTool tTool({"--fleet", getenv("LOCKING")}); // locks after the second one
    int nLogin = -1;
    EXPECT_EQ(Login(nLogin, tTool.Port(), "admin", "wrong"), eResultWrongLogin);
    ASSERT_EQ(Login(m_nLogin, tTool.Port()), 0);
}

TEST_F(COnvifTest, RestartsAreOutlived)
{
    CTool& tTool = Device();
    Subscribe();
    int nStream = -1;
    ASSERT_EQ(Open(nStream, 0, eStreamSub), 0);
    WORKS(StreamMediaCB, nStream, OnFrame, User(m_tFrames));
    m_tFrames.Next();
    for (const bool bForced : {false, true})
    {
        if (bForced)
        {
            tTool.Tell("fault 0 force_off");
        }
        else
        {
            WORKS(DeviceControl, m_nLogin, eDeviceRestart);
        }
        m_tEvents.Await(Is(eEventLoginLost));
        m_tEvents.Await(Is(eEventLoginRestored));
        m_tEvents.Await(Is(eEventsMissed));
        m_tFrames.Drain();
        EXPECT_TRUE(m_tFrames.Await([](tagSeen const& t) { return t.IsVideo() || t.IsEnd(); }).IsVideo());
    }
    tTool.Tell("fault 0 alarm_input channel=2");
    m_tEvents.Await(Is(eEventAlarmInput, 2, 1));
    // A subscription that the device has forgotten.
    tTool.Tell("lose 0");
    m_tEvents.Await(Is(eEventsMissed));
    tTool.Tell("fault 0 tamper channel=1");
    m_tEvents.Await(Is(eEventTamper, 1, 1));
    // The clock is set by years: what was an answer yesterday is refused today, and asked about.
    tTool.Tell("fault 0 clock_jump offset_us=-157680000000000");
    EXPECT_NEAR(static_cast<double>(Read<tagConfigClock>(eConfigClock).llTimeUs) / 1e6,
                static_cast<double>(time(nullptr)) - 157680000, 600);
    WORKS(RealStreamDisconnect, nStream);
}

TEST_F(COnvifTest, CallsEnd)
{
    CTool& tTool = Device();
    tTool.Tell("fault 0 hang");
    std::thread tCall(
        [this]
        {
            tagConfigIdentity tIdentity{};
            EXPECT_NE(TryRead(eConfigIdentity, tIdentity), 0);
        });
    std::this_thread::sleep_for(200ms);
    const auto tBegin = std::chrono::steady_clock::now();
    WORKS(UserLogout, m_nLogin);
    tCall.join();
    m_nLogin = -1;
    EXPECT_LT(std::chrono::steady_clock::now() - tBegin, 15s); // the call's own limit is 20 s
}

TEST_F(COnvifTest, DevicesAreFound)
{
    auto pTool = std::make_unique<CTool>(std::vector<std::string>{"--discovery"});
    const auto fnIs = [&](uint32_t dwFlag)
    { return [=](tagDeviceProbeConfig const& t) { return (t.dwFlags & eProbeGone) == dwFlag; }; };
    auto tWhere = Sized<tagDeviceProbeParameter>();
    tWhere.dwSeconds = 2;
    WORKS(DeviceProbeStart, &tWhere, &OnFound);
    const auto tFound = g_tFound.Await(fnIs(0));
    EXPECT_EQ(tFound.dwPort, pTool->Port());
    EXPECT_STREQ(tFound.szModel, "TB-400");
    EXPECT_NE(std::string(tFound.szService).find("http://"), std::string::npos);
    std::this_thread::sleep_for(2500ms);
    EXPECT_EQ(g_tFound.Drain(), 0) << "once, however often it answers";
    WORKS(DeviceProbeResearch, &tWhere);
    EXPECT_EQ(g_tFound.Await(fnIs(0)).dwPort, pTool->Port());
    pTool.reset();
    g_tFound.Await(fnIs(eProbeGone)); // it says good-bye
    CTool tOther;
    strcpy(tWhere.szAddress, "127.0.0.1");
    tWhere.dwPort = tOther.Port(); // asked itself, with no discovery
    WORKS(DeviceProbeStop);
    g_tFound.Drain(); // an answer of the first may have come behind its good-bye
    WORKS(DeviceProbeStart, &tWhere, &OnFound);
    EXPECT_EQ(g_tFound.Await(fnIs(0)).dwPort, tOther.Port());
    WORKS(DeviceProbeStop);
}
