#pragma once

#include "plugins/rtsp/EntryPoints.h"
#include "tests/rtsp/Support.h"

#include <utility>

struct tagOpen
{
    std::string strUser{}, strPassword{};
    std::uint32_t dwTransport = eRtspTcp;
    std::uint32_t dwCertificate = 0; ///< dwStreamPara[1]
};

inline int TryCreate(void** phStream, std::string const& strUrl, tagOpen const& tHow = {})
{
    tagRTSPClientPara tPara{};
    strUrl.copy(tPara.szUrl, sizeof tPara.szUrl);
    tHow.strUser.copy(tPara.szUserName, sizeof tPara.szUserName - 1);
    tHow.strPassword.copy(tPara.szPassword, sizeof tPara.szPassword - 1);
    tPara.dwStreamPara[0] = tHow.dwTransport;
    tPara.dwStreamPara[1] = tHow.dwCertificate;
    return RTSPClient_Create(phStream, &tPara, 0);
}

/// A stream of the plug-in's entry points and its receiver. Closed with the object.
class CStream : public CReceiver
{
public:
    CStream() = default;
    explicit CStream(std::string const& strUrl, tagOpen const& tHow = {}) { Open(strUrl, tHow); }
    ~CStream() { EXPECT_EQ(Close(), 0); }
    CStream(CStream const&) = delete;
    CStream& operator=(CStream const&) = delete;

    void Open(std::string const& strUrl, tagOpen const& tHow = {})
    {
        EXPECT_EQ(TryCreate(&m_hStream, strUrl, tHow), 0);
        EXPECT_EQ(RTSPClient_EventCB(m_hStream, &OnEvent, User()), 0);
        EXPECT_EQ(RTSPClient_StreamCB(m_hStream, &OnFrame, User()), 0);
    }
    int Close()
    {
        void* const hStream = std::exchange(m_hStream, nullptr);
        const auto tBefore = Clock::now();
        const int nResult = hStream ? RTSPClient_Destroy(hStream) : 0;
        m_tClosing = Clock::now() - tBefore;
        return nResult;
    }
    /// How long closing took.
    Clock::duration Closing() const { return m_tClosing; }
    void* Handle() const { return m_hStream; }
    tagRTSPPackageInfo Info() const
    {
        tagRTSPPackageInfo tInfo{};
        EXPECT_EQ(RTSPClient_GetPackageInfo(m_hStream, &tInfo, sizeof tInfo, 0), 0);
        return tInfo;
    }

private:
    void* m_hStream = nullptr;
    Clock::duration m_tClosing{};
};

/// The plug-in is started for each test.
class CPluginTest : public testing::Test
{
protected:
    CPluginTest() { EXPECT_EQ(RTSPClient_Start(), 0); }
    ~CPluginTest() override { RTSPClient_Stop(); }
};
