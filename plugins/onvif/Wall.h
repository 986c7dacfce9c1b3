#pragma once

#include "plugins/onvif/Login.h"
#include "plugins/onvif/Topics.h"

#include "protocol/interface/Decoders.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace onvifclient
{
/// One of a decoder's outputs: a screen. They stand in one row, since ONVIF doesn't tell how.
struct tagScreen
{
    std::string strToken;
    uint32_t dwWidth = 0;
    uint32_t dwHeight = 0;
    uint32_t dwFrameRate = 0; ///< frames per 1000 s
};

/// A pane: a window that lies on one screen.
struct tagPane
{
    uint32_t dwWindow = 0;
    std::size_t iScreen = 0;
    std::string strToken;
    std::string strName;
    std::string strReceiver; ///< empty: it is bound to nothing
    std::string strAudioOutput;
    bool bPlaced = false; ///< the layout has it
    tagDecoderWindow tPlace{};
};

/// What a receiver is told to connect to.
struct tagReceiver
{
    std::string strUri; ///< with the login, if it has one
    bool bOn = false;
};

/// A decoder's wall by the services for displays and receivers. Numbers of windows: those of a pane that was made here
/// stay as they were asked for as long as the login; others count from the screen's first one. Any thread but the HTTP
/// thread; all block.
class CWall final : public CPart
{
public:
    explicit CWall(CLogin& tLogin) : m_tLogin(tLogin), m_pShared(std::make_shared<tagShared>()) {}

    int Layout(tagDecoderDeviceConfig* ptConfig);
    int SetLayout(tagDecoderDeviceConfig const* ptConfig);
    int Split(uint32_t dwScreen, uint32_t dwMode, unsigned long const* pdwChannels);
    int Window(uint32_t dwWindow, tagDecoderChannelConfig* ptConfig);
    int SetWindow(uint32_t dwWindow, tagDecoderChannelConfig const* ptConfig);
    int Connect(uint32_t dwWindow, tagDecoderDynamicInformation const* ptSource);
    int Disconnect(uint32_t dwWindow, uint32_t dwFlag);
    int Signal(uint32_t dwScreen, tagDecoderVideoStandardConfig* ptSignal);
    int Information(uint32_t dwWindow, tagDecoderChannelInformation* ptInformation);
    int Status(tagDecoderChannelStatus* ptStatus);
    /// The window of each receiver that one is bound to.
    void Number(tagPlaces::Numbers& tWindows);
    void Forget() override;

private:
    /// One of the decoder's own streams.
    struct tagOwn
    {
        uint32_t dwChannel = 0;
        uint32_t dwStreamKind = 0;
    };
    /// What waits of the HTTP thread's look at too.
    struct tagShared
    {
        std::mutex tMutex;
        std::map<std::string, uint32_t> tNumbers; ///< of each pane, by screen and token
        /// What a window that shows something for now is bound to, and the run of that.
        std::map<uint32_t, std::pair<tagReceiver, uint32_t>> tBound;
        uint32_t dwRun = 0;
        std::map<std::string, tagOwn> tOwn; ///< by their addresses; empty: not asked
    };

    int Screens(std::vector<tagScreen>& atScreens);
    int Read(std::vector<tagScreen>& atScreens, std::vector<tagPane>& atPanes);
    int ReadPanes(std::vector<tagScreen> const& atScreens, std::size_t iScreen, std::vector<tagPane>& atPanes);
    int Find(uint32_t dwWindow, std::vector<tagScreen>& atScreens, tagPane& tPane);
    int WriteScreen(tagScreen const& tScreen, std::size_t iScreen, std::size_t nScreens,
                    std::vector<tagPane> const& atBefore, std::vector<tagDecoderWindow> const& atWanted);
    int Create(std::string const& strScreen, tagPane& tPane);
    int Write(std::string const& strScreen, tagPane const& tPane);
    int Receiver(std::string const& strToken, tagReceiver& t);
    int Bind(std::string const& strScreen, tagPane& tPane, tagReceiver const& t);
    int Show(uint32_t dwWindow, uint32_t dwChannel);
    int AskOwn();
    /// As ReceiverOf and SourceOf, which know addresses alone; channels of the decoder's own too.
    int ReceiverFor(tagPane const& tPane, std::size_t nScreens, tagDecoderSource const& t,
                    tagDecoderSource const& tBefore, tagReceiver& tReceiver);
    tagDecoderSource SourceFor(tagReceiver const& tReceiver);
    static onvif::tagRequest Configure(std::string const& strToken, tagReceiver const& t);
    static rtsp::CTask<> RestoreLater(std::shared_ptr<onvif::CClient> pClient, std::shared_ptr<tagShared> pShared,
                                      std::string strReceiver, uint32_t dwWindow, uint32_t dwRun,
                                      onvif::Clock::time_point tWhen);

    CLogin& m_tLogin;
    const std::shared_ptr<tagShared> m_pShared;
};
} // namespace onvifclient
