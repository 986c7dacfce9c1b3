// Every function of the C API on the simulated device, each with what it does as an application sees it: the tests
// stand in the other files, by subject. None may be left out.

#include "tests/device/Device.h"

INSTANTIATE_TEST_SUITE_P(All, CDeviceTest, testing::Values(eProtocolVTQ, eProtocolPrivate),
                         [](auto const& tInfo) { return tInfo.param == eProtocolVTQ ? "VTQ" : "Private"; });

namespace
{
testing::Environment* const g_pNoneIsLeftOut = testing::AddGlobalTestEnvironment(new CNoneIsLeftOut("*"));
} // namespace
