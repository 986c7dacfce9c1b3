// Files to and from a device, its restart and factory values, its network, and the ways to it: https, and how streams
// travel.

#include "tests/onvif/Onvif.h"

namespace
{
class COnvifMaintenance : public COnvifTest
{
protected:
    std::string Name()
    {
        tagConfigIdentity t{};
        return TryRead(eConfigIdentity, t) == 0 ? t.szName : "";
    }
    void Rename(char const* szName)
    {
        auto t = Read<tagConfigIdentity>(eConfigIdentity);
        strcpy(t.szName, szName);
        EXPECT_EQ(Write(eConfigIdentity, t), 0);
        EXPECT_EQ(Name(), szName);
    }
    std::string Fetch(uint32_t dwKind, uint64_t ullOffset = 0)
    {
        auto tPara = Sized<tagFileDownloadPara>();
        tPara.dwKind = dwKind;
        tPara.ullOffset = ullOffset;
        Bytes tBlocks;
        std::string strFile;
        int nDownload = -1;
        WORKS(FileDownloadConnect, &nDownload, m_nLogin, &tPara);
        WORKS(FileDownloadCB, nDownload, OnBlock, User(tBlocks));
        WORKS(FileDownloadControl, nDownload, eTransferStart);
        tBlocks.Await([&](std::string const& strBlock) { return strFile += strBlock, strBlock.empty(); });
        EXPECT_EQ(strFile.size() + ullOffset, tPara.ullLength);
        WORKS(FileDownloadDisconnect, nDownload);
        return strFile;
    }
};
} // namespace

TEST_F(COnvifMaintenance, FilesGoBothWays)
{
    Device();
    Rename("Gate");
    for (const uint32_t dwKind : {eFileLog, eFileSupport, eFileConfiguration})
    {
        const std::string strFile = Fetch(dwKind);
        EXPECT_GT(strFile.size(), 10) << dwKind;
    }
    EXPECT_EQ(Fetch(eFileConfiguration, 5), Fetch(eFileConfiguration).substr(5)); // one that had broken off
    auto tNone = Sized<tagFileDownloadPara>();
    tNone.dwKind = eFileAudio;
    int nDownload = -1;
    ANSWERS(eResultNotSupported, FileDownloadConnect, &nDownload, m_nLogin, &tNone);
    // What was saved comes back; what is none is refused.
    const std::string strSaved = Fetch(eFileConfiguration);
    Rename("Door");
    EXPECT_EQ(SendFile(eFileConfiguration, "no configuration"), eUploadFailed);
    EXPECT_EQ(SendFile(eFileConfiguration, strSaved), eUploadFinished);
    EXPECT_TRUE(Comes([&] { return Name() == "Gate"; }));
}

TEST_F(COnvifMaintenance, FactoryValues)
{
    Device();
    const std::string strName = Name();
    for (const auto eControl : {eDeviceFactoryDefault, eDeviceFactoryReset})
    {
        Rename("Gate");
        WORKS(DeviceControl, m_nLogin, eControl);
        EXPECT_TRUE(Comes([&] { return Name() == strName; }));
    }
    ANSWERS(eResultNotSupported, DeviceControl, m_nLogin, eDeviceShutDown);
    ANSWERS(eResultNotSupported, DeviceControl, m_nLogin, eDeviceClearLog);
}

TEST_F(COnvifMaintenance, Network)
{
    Device();
    const auto fnSet = [](auto& szText, char const* szNew)
    { strncpy(szText, szNew, sizeof szText); }; // with zeros behind
    const auto fnTry = [&](int nWanted, auto fnChange, char const* szWhat)
    {
        auto tBefore = Read<tagConfigNetwork>(eConfigNetwork);
        auto tAfter = tBefore;
        fnChange(tAfter);
        EXPECT_EQ(Write(eConfigNetwork, tAfter), nWanted) << szWhat;
        tagConfigNetwork tNow{};
        EXPECT_TRUE(Comes([&] { return TryRead(eConfigNetwork, tNow) == 0; })); // it may restart for it
        EXPECT_EQ(std::memcmp(&tNow, nWanted == 0 ? &tAfter : &tBefore, sizeof tNow), 0) << szWhat;
    };
    fnTry(
        0, [&](auto& t) { fnSet(t.szHostName, "gate"); }, "host name");
    fnTry(
        0, [&](auto& t) { fnSet(t.szNameServer1, "192.0.2.53"), fnSet(t.szNameServer2, ""); }, "name servers");
    fnTry(
        0, [&](auto& t) { fnSet(t.szGateway, "192.0.2.254"); }, "gateway");
    fnTry(
        0, [](auto& t) { t.dwRtspPort = 8554; }, "port");
    fnTry(
        0, [&](auto& t) { fnSet(t.szAddress, "192.0.2.77"), t.dwPrefixLength = 25; }, "address");
    fnTry(
        0, [&](auto& t) { t.bDhcp = 1, fnSet(t.szNameServer1, ""); }, "DHCP");
    fnTry(
        eResultBadArgument, [&](auto& t) { fnSet(t.szGateway, "nowhere"); }, "no address");
    fnTry(
        eResultBadArgument, [](auto& t) { t.dwRtspPort = 70000; }, "no port");
}

TEST_F(COnvifMaintenance, Certificates)
{
    const CTool tTool({"--tls", getenv("TLS")});
    // A certificate of its own, which nobody vouches for.
    const std::string strUrl = "https://127.0.0.1:" + std::to_string(tTool.Port()) + "/onvif/device_service";
    for (const auto& [eCheck, nWanted] :
         {std::pair{eRtspCertificateTrusted, int{eResultUnreachable}}, {eRtspCertificateAny, int{eResultOk}}})
    {
        uint32_t dwCheck = eCheck;
        EXPECT_EQ(API(RTSPSetIsProductTest)(eMiscCertificate, &dwCheck, sizeof dwCheck, eProtocolOnvif), 0);
        EXPECT_EQ(Login(m_nLogin, 0, "admin", "admin", strUrl.c_str()), nWanted);
    }
    int nPlain = -1;
    EXPECT_EQ(Login(nPlain, tTool.Port()), eResultConnectionLost) << "http to an https server";
}

TEST_F(COnvifMaintenance, StreamsTravel)
{
    Device();
    for (const auto& [eTransport, nWanted] : {std::pair{eRtspTcp, int{eResultOk}},
                                              {eRtspUdp, int{eResultOk}},
                                              {eRtspAutomatic, int{eResultOk}},
                                              {eRtspMulticast, int{eResultNotSupported}}})
    {
        tagRealStreamPara tPara{0, 0, eStreamSub, {}};
        tPara.dwStreamPara[0] = eTransport;
        Frames tFrames;
        int nStream = -1;
        EXPECT_EQ(API(RealStreamConnect)(&nStream, m_nLogin, &tPara), nWanted) << eTransport;
        if (nWanted == 0)
        {
            WORKS(StreamMediaCB, nStream, OnFrame, User(tFrames));
            EXPECT_TRUE(tFrames.Next().IsKey()) << eTransport;
            WORKS(RealStreamDisconnect, nStream);
        }
    }
    // And what is told without a login, at a port that isn't the usual one.
    auto tHttp = Sized<tagDeviceConfigFromHttp>();
    tHttp.dwPort = m_pTool->Port();
    strcpy(tHttp.szUserName, "admin");
    strcpy(tHttp.szPassword, "admin");
    WORKS(GetDeviceConfigFromHttp, "127.0.0.1", &tHttp);
    EXPECT_TRUE(tHttp.dwHttpStatus == 200 && tHttp.dwChannels == 4 && tHttp.dwDevicePort == m_pTool->Port() &&
                tHttp.szSerialNumber[0] && tHttp.szMac[0] && std::string(tHttp.szModel) == "TB-400");
    EXPECT_EQ(tHttp.szPassword[0], '\0');
}
