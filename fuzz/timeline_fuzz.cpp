// Time stamps and clocks of a device: records of what came (a byte: 0 a new session, else a frame of track n % 4), and
// for a frame its stamp, the time that passed, and its wall clock.

#include "fuzz/Input.h"
#include "plugins/rtsp/Timeline.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    constexpr std::int64_t llLastUs = std::int64_t{1} << 60; // what tracks let through, either way
    CInput tInput(pbyData, nLength);
    rtsp::CTimeline tTimeline;
    rtsp::CWallClock atClocks[4];
    std::int64_t llNowUs = 0;
    std::int64_t llFrames = 0;
    while (!tInput.IsEmpty())
    {
        const auto byWhat = tInput.Number<std::uint8_t>();
        if (byWhat == 0)
        {
            tTimeline.Restart();
            continue;
        }
        const std::int64_t llStampUs = std::clamp(tInput.Number<std::int64_t>(), -llLastUs, llLastUs);
        const std::int64_t llWallUs = std::clamp(tInput.Number<std::int64_t>(), -llLastUs, llLastUs);
        llNowUs += tInput.Number<std::uint32_t>();
        const auto tMapped = tTimeline.Map(byWhat % 4, llStampUs, llNowUs);
        // The line leaves real time by no more than what a device may run ahead or lag with each frame.
        ++llFrames;
        REQUIRE(tMapped.llTimeUs <= llNowUs + 10'000'000 + 3'000'000 * llFrames);
        REQUIRE(tMapped.llTimeUs >= -10'000'000 - 1'000'000 * llFrames);
        REQUIRE(!tMapped.llJumpUs || tMapped.bDiscontinuity);
        const auto tChecked =
            atClocks[byWhat % 4].Check(llWallUs, llStampUs, tMapped.llTimeUs, tMapped.llJumpUs.has_value());
        REQUIRE(tChecked.llWallUs == 0 || tChecked.llWallUs == llWallUs);
        REQUIRE(!tChecked.llJumpUs || tChecked.llWallUs == llWallUs);
    }
    return 0;
}
