// The RTSP plug-in's entry points, called as they shouldn't be.

#include "plugins/rtsp/EntryPoints.h"

#include <gtest/gtest.h>
#include <string>

namespace
{
int TryCreate(void** phStream, std::string const& strUrl)
{
    tagRTSPClientPara tPara{};
    strUrl.copy(tPara.szUrl, sizeof tPara.szUrl);
    return RTSPClient_Create(phStream, &tPara, 0);
}

TEST(EntryPoints, BadCallsAreRefused)
{
    EXPECT_EQ(RTSPClient_Start(), 0);
    void* hStream = nullptr;
    unsigned long dwValue = 0;
    tagRTSPPackageInfo tInfo;
    const std::string strNobody = "rtsp://127.0.0.1:1/x";
    for (char const* const szUrl : {"", "http://127.0.0.1/x", "rtsp://", "rtsp:///x", "rtsp://u:p@127.0.0.1/x",
                                    "rtsp://127.0.0.1/x\r\nX-Injected: y"})
    {
        EXPECT_EQ(TryCreate(&hStream, szUrl), eResultBadAddress) << szUrl;
    }
    EXPECT_EQ(hStream, nullptr);
    EXPECT_EQ(RTSPClient_Create(nullptr, nullptr, 0), eResultBadArgument);
    EXPECT_EQ(RTSPClient_SetMaxChannel(2), 0);
    EXPECT_EQ(TryCreate(&hStream, strNobody) + TryCreate(&hStream, strNobody), 0);
    EXPECT_EQ(TryCreate(&hStream, strNobody), eResultTooManyStreams);
    EXPECT_EQ(RTSP_GetAttribute(eAttributeOpenStreams, &dwValue), 0);
    EXPECT_EQ(dwValue, 2U);
    EXPECT_EQ(RTSP_GetAttribute(eAttributeMaxChannel, &dwValue), 0);
    EXPECT_EQ(dwValue, 2U);
    EXPECT_EQ(RTSP_GetAttribute(static_cast<eClientSDKAttributeType>(9), &dwValue), eResultNotSupported);
    EXPECT_EQ(RTSPClient_SetMaxChannel(0), 0);
    EXPECT_EQ(RTSP_ForceIFrame(hStream, 0), eResultNotSupported);
    EXPECT_EQ(RTSPClient_Control(hStream, static_cast<eTaskControl>(3)), eResultNotSupported);
    EXPECT_EQ(RTSPClient_GetPackageInfo(hStream, &tInfo, sizeof tInfo - 1, 0), eResultBadArgument);
    EXPECT_EQ(RTSPClient_GetPackageInfo(hStream, nullptr, sizeof tInfo, 0), eResultBadArgument);
    EXPECT_EQ(RTSPClient_Destroy(hStream), 0);
    for (void* const hBad : {hStream, static_cast<void*>(nullptr), reinterpret_cast<void*>(-1)})
    {
        EXPECT_EQ(RTSPClient_Destroy(hBad), eResultBadHandle);
        EXPECT_EQ(RTSPClient_StreamCB(hBad, nullptr, 0), eResultBadHandle);
        EXPECT_EQ(RTSPClient_EventCB(hBad, nullptr, 0), eResultBadHandle);
        EXPECT_EQ(RTSPClient_SetRtspEvenCb(hBad, nullptr, 0), eResultBadHandle);
        EXPECT_EQ(RTSPClient_Control(hBad, eTaskPlay), eResultBadHandle);
        EXPECT_EQ(RTSPClient_GetPackageInfo(hBad, &tInfo, sizeof tInfo, 0), eResultBadHandle);
    }
    RTSPClient_Stop();
    EXPECT_EQ(TryCreate(&hStream, strNobody), eResultNotStarted);
}
} // namespace
