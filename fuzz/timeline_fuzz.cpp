// Time stamps and clocks of a device: records of what came (a byte: 0 a new live session, 1 a played one, else a frame
// of track n % 4), and for a frame its stamp, the time that passed, and its wall clock.

#include "fuzz/Input.h"
#include "rtsp/Timeline.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    constexpr std::int64_t llLastUs = std::int64_t{1} << 60; // what tracks let through, either way
    CInput tInput(pbyData, nLength);
    rtsp::CTimeline tTimeline;
    rtsp::CWallClock atClocks[4];
    std::int64_t llNowUs = 0;
    std::int64_t llSessions = 1;
    bool bAllLive = true;
    std::optional<std::int64_t> allHighestUs[4]; // of each track
    while (!tInput.IsEmpty())
    {
        const auto byWhat = tInput.Number<std::uint8_t>();
        if (byWhat <= 1)
        {
            tTimeline.Restart(byWhat ? rtsp::CTimeline::ePace::Played : rtsp::CTimeline::ePace::Live);
            bAllLive &= byWhat == 0;
            ++llSessions;
            continue;
        }
        const std::int64_t llStampUs = std::clamp(tInput.Number<std::int64_t>(), -llLastUs, llLastUs);
        const std::int64_t llWallUs = std::clamp(tInput.Number<std::int64_t>(), -llLastUs, llLastUs);
        llNowUs += tInput.Number<std::uint32_t>();
        const unsigned iTrack = byWhat % 4;
        const auto tMapped = tTimeline.Map(std::string_view("audiovideomore").substr(iTrack), llStampUs, llNowUs);
        // A live line leaves real time by no more than what a session may begin with, a network holds up, and a clock
        // drifts.
        REQUIRE(!bAllLive || tMapped.llTimeUs <= llNowUs + llNowUs / 20 + 73'000'000 * llSessions);
        auto& llHighestUs = allHighestUs[iTrack];
        REQUIRE(!llHighestUs || tMapped.llTimeUs >= *llHighestUs - 10'000'000 * llSessions - 1'000'000);
        llHighestUs = std::max(llHighestUs.value_or(tMapped.llTimeUs), tMapped.llTimeUs);
        REQUIRE(!tMapped.llJumpUs || tMapped.bDiscontinuity);
        const auto tChecked =
            atClocks[byWhat % 4].Check(llWallUs, llStampUs, tMapped.llTimeUs, tMapped.llJumpUs.has_value());
        REQUIRE(tChecked.llWallUs == 0 || tChecked.llWallUs == llWallUs);
        REQUIRE(!tChecked.llJumpUs || tChecked.llWallUs == llWallUs);
    }
    return 0;
}
