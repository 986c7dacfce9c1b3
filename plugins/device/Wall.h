#pragma once

#include "plugins/device/Part.h"
#include "plugins/device/Session.h"
#include "plugins/device/WallView.h"

#include "protocol/interface/Configuration.h"
#include "protocol/interface/Decoders.h"
#include "protocol/interface/Playback.h"
#include "protocol/interface/Transfer.h"

#include <map>
#include <optional>
#include <vector>

namespace device
{
/// A decoder's wall: its screens, its windows, and what each shows.
class CWall : public CPart
{
public:
    explicit CWall(CDevice& tDevice);

    /// @name Layout
    /// @{
    int Split(tagCaller const& tCaller, uint32_t dwScreen, uint32_t dwMode, unsigned long* pdwChannels);
    int SetLayout(tagCaller const& tCaller, tagDecoderDeviceConfig const* ptConfig);
    int Layout(tagDecoderDeviceConfig* ptConfig) const;
    int SetWindow(tagCaller const& tCaller, uint32_t dwWindow, tagDecoderChannelConfig const* ptConfig);
    int Window(uint32_t dwWindow, tagDecoderChannelConfig& tConfig) const;
    int Information(uint32_t dwWindow, tagDecoderChannelInformation& tInformation) const;
    /// @}

    /// @name What a window shows
    /// @{
    int Connect(tagCaller const& tCaller, uint32_t dwWindow, tagDecoderDynamicInformation const& tSource);
    int Disconnect(tagCaller const& tCaller, uint32_t dwWindow, uint32_t dwFlag);
    int SetLoop(tagCaller const& tCaller, uint32_t dwWindow, tagDecoderChannelLoopConfig const* ptLoop);
    int Loop(uint32_t dwWindow, tagDecoderChannelLoopConfig* ptLoop) const;
    int SetLoopState(tagCaller const& tCaller, uint32_t dwWindow, eDecoderChannelStatus eStatus);
    int LoopState(uint32_t dwWindow, eDecoderChannelStatus& eStatus) const;
    int LoopStates(tagDecoderLoopStatus* ptStatus) const;
    int Status(tagDecoderChannelStatus* ptStatus) const;
    int SetPlay(tagCaller const& tCaller, uint32_t dwWindow, tagDecoderSetPlayStatusParameter const& tPara);
    int Play(tagDecoderGetPlayStatusParameter& tPara) const;
    int Display(tagCaller const& tCaller, uint32_t dwWindow, tagDecoderDisplayStatus const& tDisplay);
    /// dwFlag: eOsdTime.
    int Time(uint32_t dwWindow, tagTimeInfo& tTime, uint32_t dwFlag) const;
    int SetLogo(tagCaller const& tCaller, uint32_t dwWindow, tagUploadLogoParameter const& tLogo);
    int SwitchLogo(tagCaller const& tCaller, uint32_t dwWindow, eDeviceChannelControl eControl);
    /// @}

    /// @name Screens
    /// @{
    int SetSignal(tagCaller const& tCaller, uint32_t dwScreen, tagDecoderVideoStandardConfig const* ptSignal);
    int Signal(uint32_t dwScreen, tagDecoderVideoStandardConfig& tSignal) const;
    int SetScreen(tagCaller const& tCaller, uint32_t dwScreen, tagDecoderDisplayConfig const* ptScreen);
    int Screen(uint32_t dwScreen, tagDecoderDisplayConfig& tScreen) const;
    /// @}

    /// @name Frames that are sent
    /// @{
    /// eResultBusy: somebody else sends; eResultRefused: the window isn't bound to eDecoderSourceTransfer.
    int OpenTransfer(uint32_t dwWindow, tagStreamTransferPara const& tPara);
    int Transfer(uint32_t dwWindow, tagStreamTransferFrame const& tFrame);
    void CloseTransfer(uint32_t dwWindow);
    /// @}

    tagWallView View() const;
    void Advance();
    int64_t NextDue() const;
    /// What is shown for now is forgotten: the device has stopped.
    void Halt();
    void Reset();

    /// A source that another device has, and who has been found there. Looked up without the device's lock.
    struct tagLookUp
    {
        uint32_t dwWindow;
        tagDecoderSource tSource;
        std::shared_ptr<CDevice> pDevice; // null: not reached
        uint32_t dwChannel = 0;           // of that
        int nResult = 0;
        bool bSignal = false;
        tagConfigVideoEncoder tVideo{};
    };
    std::vector<tagLookUp> WantedSources() const;
    static void LookUp(tagLookUp& tLookUp);
    void Found(tagLookUp const& tLookUp);

private:
    struct tagPlay
    {
        tagDecoderSource tSource{};
        int64_t llStartUs = 0;
        int64_t llEndUs = 0;
        uint32_t dwSpeed = eSpeedNormal;
        bool bPaused = false;
        int64_t llPositionUs = 0; // at llSinceUs
        int64_t llSinceUs = 0;
    };
    struct tagWindow
    {
        tagDecoderWindow tPlace{};
        tagDecoderChannelConfig tConfig{};
        tagDecoderDisplayStatus tDisplay{};
        tagLogo tLogo;
        // what it may show, in this order
        std::optional<tagPlay> tPlay;
        std::optional<tagDecoderSource> tDynamic;
        int64_t llDynamicEndUs = g_llNever;
        bool bBlank = false; // nothing, until something new is connected
        std::vector<tagDecoderLoopEntry> atLoop;
        uint32_t dwSkipSeconds = 0;
        eDecoderChannelStatus eLoop = eDecoderLoopOff;
        std::size_t nEntry = 0;
        int64_t llEntryUs = 0; // when the entry began to be looked for; when it began to show
        bool bEntryShown = false;
        // what it shows
        uint32_t dwShows = 5;
        tagDecoderSource tSource{};
        uint32_t dwState = eWindowEmpty;
        int64_t llFrozenUs = 0;
        // what was found out about a source on another device
        std::weak_ptr<CDevice> pSource;
        uint32_t dwSourceChannel = 0;
        uint32_t dwResult = 0;
        tagConfigVideoEncoder tVideo{};
        int64_t llLookUpUs = g_llNever; // when to look again
        // what is sent to it
        bool bTransfer = false;
        tagStreamTransferPara tTransfer{};
        SharedBytes pTransferred;
        uint32_t dwTransferCodec = 0;
    };
    // What is kept of a window.
    struct tagKept
    {
        tagDecoderWindow tPlace;
        tagDecoderChannelConfig tConfig;
        uint32_t dwSkipSeconds;
        eDecoderChannelStatus eLoop;
    };

    int Find(uint32_t dwWindow, tagWindow*& ptWindow);
    int Find(uint32_t dwWindow, tagWindow const*& ptWindow) const;
    int CheckSource(tagDecoderSource const& tSource) const;
    int CheckScreen(uint32_t dwScreen) const;
    void Choose(tagWindow& tWindow);
    uint32_t OwnState(tagWindow const& tWindow) const;
    void Enter(tagWindow& tWindow, uint32_t dwState);
    void StepLoop(tagWindow& tWindow);
    int64_t Position(tagPlay const& tPlay) const;
    tagDecoderWindowStatus StatusOf(tagWindow const& tWindow) const;
    tagWindowView ViewOf(tagWindow const& tWindow) const;
    uint32_t ScreenOf(tagDecoderWindow const& tPlace) const;
    tagDecoderWindow ScreenPlace(uint32_t dwScreen) const;
    void Keep();
    void Load();

    uint32_t m_dwRows = 1;
    uint32_t m_dwColumns = 1;
    char m_szName[64] = {};
    std::map<uint32_t, tagWindow> m_tWindows;
    std::vector<tagDecoderDisplayConfig> m_atScreens;
    std::vector<tagDecoderVideoStandardConfig> m_atSignals;
};
} // namespace device
