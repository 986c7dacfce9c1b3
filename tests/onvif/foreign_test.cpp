// A device that nobody here wrote: what it answers was recorded from a camera of 2014, and names an address of then.
// The same behind an HTTP server that asks for a digest.

#include "tests/onvif/Onvif.h"

#include <sstream>

namespace
{
CInbox<tagDeviceProbeConfig> g_tFound;

class Foreign : public COnvifTest
{
protected:
    static unsigned Plain() { return static_cast<unsigned>(std::stoul(getenv("PLAIN"))); }
};
} // namespace

TEST_F(Foreign, DeviceIsFound)
{
    auto tWhere = Sized<tagDeviceProbeParameter>();
    WORKS(DeviceProbeStart, &tWhere,
          [](tagDeviceProbeConfig* ptFound)
          {
              if (ptFound->dwProtocol == eProtocolOnvif) // other protocols' plug-ins may look too
              {
                  g_tFound.Put(*ptFound);
              }
          });
    const auto tFound = g_tFound.Next();
    EXPECT_EQ(tFound.dwPort, Plain());
    EXPECT_STREQ(tFound.szName, "PREDATOR");
    EXPECT_STREQ(tFound.szModel, "HD_PREDATOR");
    WORKS(DeviceProbeStop);
}

TEST_F(Foreign, DeviceIsUsed)
{
    ASSERT_EQ(Login(m_nLogin, Plain()), 0);
    EXPECT_STRNE(Read<tagConfigIdentity>(eConfigIdentity).szManufacturer, "");
    const auto tEncoder = Read<tagConfigVideoEncoder>(eConfigVideoEncoder);
    EXPECT_TRUE(tEncoder.dwWidth > 0 && tEncoder.dwCodec == eCodecH264);
    EXPECT_GE(Read<tagConfigUsers>(eConfigUsers).dwCount, 1);
    Subscribe();
    m_tEvents.Await(Is(eEventMotion, 0, 1));
    EXPECT_EQ(API(PTZControl)(m_nLogin, 0, ePTZMove, 5000, 0, 0, 1000), 0);
    EXPECT_EQ(API(PTZControl)(m_nLogin, 0, ePTZStop, 0, 0, 0, 0), 0);
    tagListed<tagPTZPresetList, tagPTZPreset> tPresets;
    WORKS(GetIpcPara, m_nLogin, 0, eCameraPresets, &tPresets, sizeof(tagPTZPresetList));
    EXPECT_GT(tPresets.dwCount, 0);
    auto tPicture = Sized<tagCameraPicture>();
    WORKS(GetIpcPara, m_nLogin, 0, eCameraPicture, &tPicture, sizeof tPicture);
    EXPECT_GT(tPicture.dwBrightness, 0);
    // Nobody serves its stream; that isn't the login's end.
    int nStream = -1;
    EXPECT_EQ(Open(nStream), 0);
    WORKS(StreamMediaCB, nStream, OnFrame, User(m_tFrames));
    WORKS(RealStreamDisconnect, nStream);
    tagConfigMotion tMotion{};
    EXPECT_NE(TryRead(eConfigMotion, tMotion), 0); // it answers nonsense: "Error.xml" isn't even XML
    EXPECT_STRNE(Read<tagConfigIdentity>(eConfigIdentity).szModel, "");
}

TEST_F(Foreign, DigestsAreAnswered)
{
    std::istringstream tPorts(getenv("DIGESTS"));
    for (unsigned uPort = 0; tPorts >> uPort;)
    {
        SCOPED_TRACE(uPort);
        int nLogin = -1;
        EXPECT_EQ(Login(nLogin, uPort, "admin", "wrong"), eResultWrongLogin);
        ASSERT_EQ(Login(m_nLogin, uPort), 0);
        EXPECT_STRNE(Read<tagConfigIdentity>(eConfigIdentity).szModel, "");
        WORKS(UserLogout, std::exchange(m_nLogin, -1));
    }
}
