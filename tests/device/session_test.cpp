// Logins, what devices do to them, and the plug-in itself.

#include "tests/device/Device.h"

#include <future>

namespace
{
CInbox<std::string> g_tLines;
} // namespace

TEST_P(CDeviceTest, Logins)
{
    int nViewer = -1;
    int nLevel = -1;
    int nStatus = -1;
    unsigned char abyMac[6] = {};
    EXPECT_EQ(Login(nViewer, "admin", "wrong"), eResultWrongLogin);
    EXPECT_EQ(Login(nViewer, "nobody"), eResultWrongLogin);
    EXPECT_EQ(Fault(eFaultLockOut, 0, 0, 2), 0);
    EXPECT_EQ(Login(nViewer, "viewer", "wrong"), eResultWrongLogin);
    EXPECT_EQ(Login(nViewer, "viewer", "wrong"), eResultWrongLogin);
    EXPECT_EQ(Login(nViewer, "viewer", "viewer"), eResultLocked);
    EXPECT_EQ(Fault(eFaultNone), 0);
    EXPECT_EQ(Login(nViewer, "viewer", "viewer"), 0);
    ANSWERS(eResultWrongLogin, RecordControl, nViewer, 0, 1);
    WORKS(GetLoginLevel, nViewer, &nLevel);
    WORKS(GetLoginMac, m_nLogin, abyMac, 6);
    WORKS(GetLoginStatus, m_nLogin, &nStatus);
    if (IsVTQ()) // the private protocol isn't asked
    {
        char szMac[18];
        std::snprintf(szMac, sizeof szMac, "%02x:%02x:%02x:%02x:%02x:%02x", abyMac[0], abyMac[1], abyMac[2], abyMac[3],
                      abyMac[4], abyMac[5]);
        EXPECT_STREQ(szMac, Read<tagConfigNetwork>(eConfigNetwork, eInterfaceOfLogin).szMac);
        EXPECT_EQ(nLevel, eUserViewer);
        EXPECT_EQ(nStatus, eLoginAlive);
        const auto fnStatus = [&] { return API(GetLoginStatus)(nViewer, &nStatus) ? -1 : nStatus; };
        static CInbox<unsigned long> s_tForcedOff;
        API(DeleteUserForceCB)([](void*, unsigned long dwUser) { return s_tForcedOff.Put(dwUser), 0; }, 7);
        EXPECT_EQ(Fault(eFaultDrop), 0);
        EXPECT_TRUE(Comes([&] { return fnStatus() == eLoginLost; }));
        EXPECT_EQ(Fault(eFaultNone), 0);
        EXPECT_TRUE(Comes([&] { return fnStatus() == eLoginAlive; }));
        EXPECT_EQ(Fault(eFaultForceOff), 0); // of every user
        EXPECT_EQ(s_tForcedOff.Next(), 7);
        EXPECT_TRUE(Comes([&] { return fnStatus() == eLoginEnded; }));
    }
    WORKS(UserLogout, nViewer);
    ANSWERS(eResultUnknownLogin, GetLoginStatus, nViewer, &nStatus);
    const std::string strAddress = std::exchange(m_strAddress, "nobody.invalid");
    EXPECT_EQ(Login(nViewer), eResultUnreachable);
    m_strAddress = strAddress;
    Stop();
    EXPECT_EQ(Login(nViewer), eResultNoProtocol);
    Start();
}

TEST_P(CDeviceTest, FaultsOfCalls)
{
    auto tPicture = Sized<tagCameraPicture>();
    const auto fnAsk = [&] { return API(GetIpcPara)(m_nLogin, 0, eCameraPicture, &tPicture, sizeof tPicture); };
    EXPECT_EQ(Fault(eFaultBusy), 0);
    EXPECT_EQ(fnAsk(), eResultBusy);
    EXPECT_EQ(Fault(eFaultNone), 0);
    EXPECT_EQ(Fault(eFaultSlow, 0, 0, 0, 50), 0);
    const auto tBegin = std::chrono::steady_clock::now();
    EXPECT_EQ(fnAsk(), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - tBegin, 50ms);
    tagDeviceFault tFault = FaultOf(eFaultNone); // any
    const auto fnFault = [&] { return g_cProtocolSet.GetMiscPara(0, eMiscFault, &tFault, sizeof tFault, GetParam()); };
    EXPECT_EQ(fnFault(), 0);
    EXPECT_TRUE(tFault.dwFault == eFaultSlow && tFault.dwValue == 50 && m_strAddress == tFault.szAddress);
    EXPECT_EQ(Fault(eFaultNone), 0);
    EXPECT_EQ(fnFault(), eResultNotFound);
    // A call that nobody answers ends with its login.
    EXPECT_EQ(Fault(eFaultHang, 0, 0, 1), 0);
    auto tCall = std::async(std::launch::async, fnAsk);
    EXPECT_EQ(tCall.wait_for(50ms), std::future_status::timeout);
    EXPECT_EQ(Fault(eFaultForceOff), 0);
    EXPECT_NE(tCall.get(), 0);
}

TEST_P(CDeviceTest, Plugin)
{
    // Four names of one function.
    tagDeviceFault tFault = FaultOf(eFaultAlarmInput);
    const auto fnRaise = [&](auto pfnSet)
    {
        EXPECT_EQ(pfnSet(eMiscFault, &tFault, sizeof tFault, GetParam()), 0);
        ++tFault.dwChannel;
    };
    fnRaise(API(RTSPSetIsProductTest));
    fnRaise(API(VTQDealRepairIpcMsg));
    fnRaise(API(_VoiceStreamMedia));
    fnRaise(API(_VoiceStreamIf));
    unsigned long adwInputs[4] = {};
    unsigned long dwCount = 4;
    EXPECT_TRUE(Comes(
        [&]
        {
            WORKS(AlarminStateGet, m_nLogin, &dwCount, adwInputs);
            return adwInputs[0] + adwInputs[1] + adwInputs[2] + adwInputs[3] == 4;
        }));
    ANSWERS(eResultNotSupported, RTSPSetIsProductTest, 1, nullptr, 0, GetParam());
    if (IsVTQ())
    {
        int nOther = -1;
        API(SetCallbackFunc)
        (eCallbackLog, reinterpret_cast<void*>(+[](unsigned long, char const* szText) { g_tLines.Put(szText); }));
        EXPECT_EQ(Login(nOther), 0);
        EXPECT_NE(g_tLines.Next().find(m_strAddress), std::string::npos);
        API(UserLogout)(nOther);
        API(SetCallbackFunc)(eCallbackLog, nullptr);
    }
}
