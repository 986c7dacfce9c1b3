// What needs no login.

#include "tests/device/Device.h"

#include <algorithm>

namespace
{
CInbox<std::string> g_tFound;
CInbox<std::string> g_tRegistered;
} // namespace

TEST_P(CDeviceTest, Discovery)
{
    if (!IsVTQ())
    {
        GTEST_SKIP() << "asks ONVIF and VTQ alone";
    }
    auto tWhere = Sized<tagDeviceProbeParameter>();
    strcpy(tWhere.szAddress, m_strAddress.c_str());
    const auto fnMe = [&](std::string const& str) { return str == m_strAddress; };
    WORKS(DeviceProbeStart, &tWhere, [](tagDeviceProbeConfig* ptFound) { g_tFound.Put(ptFound->szAddress); });
    g_tFound.Await(fnMe);
    WORKS(DeviceProbeResearch, &tWhere);
    g_tFound.Await(fnMe);
    WORKS(DeviceProbeStop);
    WORKS(DeviceProbeResearch, &tWhere);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(g_tFound.Drain(), 0);
    // Four that do nothing.
    unsigned char abyMac[6] = {};
    tagDeviceProbeConfig tConfig{};
    tagDeviceProbeUserLoginPara tLogin{};
    tagDeviceProbeConfigInformation tBlock{};
    WORKS(GetLoginMac, m_nLogin, abyMac, 6);
    strcpy(tConfig.szName, "Nothing");
    WORKS(DeviceProbeSetDeviceConfig, abyMac, 0, &tConfig);
    WORKS(DeviceProbeSetAllDeviceConfig, &tWhere, &tConfig);
    WORKS(DeviceProbeSetConfig, abyMac, 0, &tLogin, &tBlock);
    WORKS(DeviceProbeGetConfig, abyMac, 0, &tLogin, &tBlock);
    EXPECT_EQ(tBlock.dwLength, 0);
    EXPECT_STRNE(Read<tagConfigIdentity>(eConfigIdentity).szName, "Nothing");
    // A device that registers itself, while somebody listens.
    WORKS(DeviceRegisterCB, [](tagDeviceRegisterInfo* ptInfo) { return g_tRegistered.Put(ptInfo->szAddress), 0; });
    WORKS(DeviceRegisterListenStart, nullptr, 0);
    EXPECT_EQ(Fault(eFaultRegister), 0);
    g_tRegistered.Await(fnMe);
    WORKS(DeviceRegisterListenStop);
    EXPECT_EQ(Fault(eFaultRegister), 0);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(g_tRegistered.Drain(), 0);
    auto tHttp = Sized<tagDeviceConfigFromHttp>();
    WORKS(GetDeviceConfigFromHttp, m_strAddress.c_str(), &tHttp);
    EXPECT_TRUE(tHttp.dwHttpStatus == 200 && tHttp.dwChannels == 4);
    // A text as dots, in a lattice that is large enough at the second try.
    auto tFont = Sized<tagFontPara>();
    std::vector<unsigned char> abyDots(4096);
    unsigned long dwWidth = 0;
    unsigned long dwHeight = 0;
    unsigned long dwLength = 0;
    tFont.dwBitsPerDot = 8;
    tFont.dwHeight = 24;
    WORKS(StringToLattice, "Tor", &tFont, abyDots.data(), &dwWidth, &dwHeight, &dwLength);
    EXPECT_TRUE(dwHeight == 24 && dwWidth > 10 && dwLength == dwWidth * dwHeight && dwLength < abyDots.size());
    EXPECT_EQ(std::ranges::count(abyDots, 0), 4096);
    tFont.dwCapacity = 4096;
    WORKS(StringToLattice, "Tor", &tFont, abyDots.data(), &dwWidth, &dwHeight, &dwLength);
    EXPECT_GT(std::ranges::count_if(abyDots, [](unsigned char by) { return by > 128; }), 30);
    // What is asked without a login.
    eNetworkSDKVersion eVersion = eSDKVersionUnknown;
    WORKS(GetSDKVersion, "nobody.invalid", 0, 100, &eVersion);
    EXPECT_EQ(eVersion, eSDKVersionUnknown);
    WORKS(GetSDKVersion, m_strAddress.c_str(), 0, 100, &eVersion);
    EXPECT_EQ(eVersion, eSDKVersion2);
    std::string strHeader(4096, '\0');
    dwLength = strHeader.size();
    WORKS(GetFileHeader, eFileFormatNative, strHeader.data(), &dwLength);
    EXPECT_TRUE(dwLength > 0 && dwLength < strHeader.size());
    EXPECT_NE(strHeader.substr(0, 4), std::string(4, '\0'));
    EXPECT_EQ(Fault(eFaultHang, 0, 0, 1), 0);
    WORKS(DeviceIsOnline, m_strAddress.c_str(), 0, 50); // this call isn't answered, the next one is
    EXPECT_STRNE(Read<tagConfigIdentity>(eConfigIdentity).szName, "");
}
