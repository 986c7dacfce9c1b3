// Every function of the C API on the simulated device, each with what it does as an application sees it: the tests
// stand in the other files, by subject. None may be left out.

#include "tests/device/Device.h"

INSTANTIATE_TEST_SUITE_P(All, CDeviceTest, testing::Values(eProtocolVTQ, eProtocolPrivate),
                         [](auto const& tInfo) { return tInfo.param == eProtocolVTQ ? "VTQ" : "Private"; });

namespace
{
class CNoneIsLeftOut : public testing::Environment
{
    void TearDown() override
    {
        if (testing::GTEST_FLAG(filter) != "*")
        {
            return;
        }
        std::set<std::string> strMissing{"ClientAdapter_Start",          "ClientAdapter_Stop",
                                         "ClientAdapter_UserLogin",      "ClientAdapter_UserLogout",
                                         "ClientAdapter_GetLoginStatus", "ClientAdapter_GetConfig",
                                         "ClientAdapter_SetConfigBySn",  "ClientAdapter_ForceIFrame",
                                         "ClientAdapter_SubscribeEvent", "ClientAdapter_DeviceProbeStart"};
#define EXPORT(shape, line, function, ...) strMissing.insert(#function);
#include "adapter/exports.def"
        EXPECT_EQ(strMissing.size(), 131);
        for (std::string const& strName : g_strCalled)
        {
            strMissing.erase(strName);
        }
        EXPECT_EQ(testing::PrintToString(strMissing), "{}");
    }
};
testing::Environment* const g_pNoneIsLeftOut = testing::AddGlobalTestEnvironment(new CNoneIsLeftOut);
} // namespace
