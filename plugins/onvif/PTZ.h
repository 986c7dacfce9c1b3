#pragma once

#include "onvif/Client.h"
#include "plugins/onvif/Numbers.h"
#include "plugins/onvif/PTZNode.h"
#include "plugins/onvif/Profiles.h"

#include "protocol/interface/PTZ.h"

#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace onvifclient
{
constexpr int32_t g_nFull = 10000; ///< full speed, and the far end of a normalised range

/// How long a movement lasts for which nMilliseconds are asked: 0 is 5 s, and a minute is the most.
constexpr int64_t MovementMs(int32_t nMilliseconds)
{
    const auto dwAsked = static_cast<uint32_t>(nMilliseconds);
    return dwAsked == 0 ? 5000 : dwAsked < 60000 ? int64_t{dwAsked} : 60000;
}

class CEdit;

/// The head of one camera: where ONVIF lacks something (a movement that ends by itself, numbers for presets), it stands
/// in for the device. Any thread but the HTTP thread; nothing is locked while the device is asked, so that a stop never
/// waits for another command.
class CHead : public std::enable_shared_from_this<CHead>
{
public:
    using Para = std::array<int32_t, 4>;

    explicit CHead(std::shared_ptr<onvif::CClient> pClient) : m_pClient(std::move(pClient)) {}

    /// The channel as it is now; before each of the others.
    int Use(std::shared_ptr<tagChannel const> pChannel);
    void Forget();

    int Command(ePTZControlCmdCode eCommand, Para const& anPara, char const* szName);
    int Position(tagPTZPosition& t);
    int Ability(tagPTZAbility& t);
    int Presets(std::vector<tagPTZPreset>& atPresets);
    int Tours(std::vector<tagPTZTour>& atTours);

private:
    // What moves and stops together.
    enum eMotion : unsigned char
    {
        eMotionHead,
        eMotionZoom,
        eMotionFocus,
        eMotions,
    };
    // A movement that ends by itself.
    struct tagMotion
    {
        int32_t nX = 0; // ten-thousandths of full speed
        int32_t nY = 0;
        onvif::Clock::time_point tEnd{};
        uint32_t dwRun = 0; // of one that another one took the place of, the end doesn't count
    };
    // Who is asked for what: a copy, used without the lock.
    struct tagUse
    {
        std::shared_ptr<tagChannel const> pChannel;
        std::shared_ptr<tagNode const> pNode; // null: it doesn't move
        std::string strProfile;
    };

    tagUse Used() const;
    static onvif::CXmlWriter Body(tagUse const& tUse);
    int Send(char const* szName, onvif::CXmlWriter tBody);

    // PTZ.cpp
    int Turn(tagUse const& tUse, int32_t nPan, int32_t nTilt, int32_t nZoom, bool bHead, int32_t nMilliseconds);
    int SendVelocity(tagUse const& tUse, Para anSpeed, bool bHead, bool bZoom, int64_t llMilliseconds);
    static int64_t LeftMs(tagMotion const& tMotion);
    int Stop(tagUse const& tUse, uint32_t dwAxes);
    int StopPart(tagUse const& tUse, uint32_t dwAxes);
    int Absolute(tagUse const& tUse, Para const& anTo);
    int Relative(tagUse const& tUse, Para const& anBy);
    static onvif::tagRequest StopRequest(tagUse const& tUse, eMotion eWhich);
    void Begin(eMotion eWhich, int32_t nX, int32_t nY, int64_t llMilliseconds);
    void Ended(eMotion eWhich);
    static rtsp::CTask<> EndLater(std::shared_ptr<CHead> pSelf, eMotion eWhich, uint32_t dwRun,
                                  onvif::Clock::time_point tEnd);

    // PTZLens.cpp
    bool MovesFocus() const;
    int StopFocus(tagUse const& tUse);
    int Focus(tagUse const& tUse, int32_t nSpeed, int32_t nMilliseconds);
    int Iris(tagUse const& tUse, int32_t nSpeed, int32_t nMilliseconds);

    // PTZAuxiliary.cpp
    int Auxiliary(tagUse const& tUse, Para const& anPara);
    static rtsp::CTask<> SwitchOffLater(std::shared_ptr<CHead> pSelf, onvif::tagRequest tRequest, uint32_t dwKind,
                                        uint32_t dwRun, onvif::Clock::time_point tEnd);

    // PTZPresets.cpp
    int AskPresets(tagUse const& tUse, std::vector<tagPTZPreset>& atPresets);
    int SetPreset(tagUse const& tUse, uint32_t dwPreset, std::string const& strName);
    int CallPreset(tagUse const& tUse, uint32_t dwPreset, int32_t nSpeed);
    int RemovePreset(tagUse const& tUse, uint32_t dwPreset);
    int PresetToken(tagUse const& tUse, uint32_t dwPreset, std::string& strToken);

    // PTZTours.cpp
    int TourCommand(tagUse const& tUse, ePTZControlCmdCode eCommand, Para const& anPara);
    onvif::CAnswer AskTours(tagUse const& tUse);
    int FindTour(tagUse const& tUse, uint32_t dwTour, std::string& strToken, pugi::xml_node& tTour,
                 onvif::CAnswer& tAnswer);
    int AddStop(tagUse const& tUse, Para const& anPara);
    int RunTour(tagUse const& tUse, std::string const& strToken, pugi::xml_node tTour, int32_t nRounds);
    int Modify(tagUse const& tUse, CEdit const& tTour);
    int Operate(tagUse const& tUse, std::string const& strTour, char const* szOperation);
    void StopTours(tagUse const& tUse);

    const std::shared_ptr<onvif::CClient> m_pClient;
    mutable std::mutex m_tMutex;
    tagUse m_tUse;
    std::string m_strNode; // of m_tUse.pNode
    bool m_bKnown = false; // m_tUse holds
    std::array<tagMotion, eMotions> m_atMotions;
    bool m_bNoTimeout = false; // the device takes no time-out
    CNumbers m_tPresetNumbers;
    CNumbers m_tTourNumbers;
    std::vector<tagPTZPreset> m_atPresets; // as they were last seen
    uint32_t m_dwAuxiliary = 0;            // switched on: bit n for ePTZAuxiliaryKind n
    std::map<uint32_t, uint32_t> m_tAuxiliaryRuns;
};

/// Speed and direction of a move in a space, and a position in one.
/// @{
std::string Vector2(char const* szName, tagSpace const& tSpace, double dX, double dY);
std::string Vector1(char const* szName, tagSpace const& tSpace, double dX);
/// "tptz:Speed", or nothing where the node has no speeds. nSpeed: 0 full.
std::string SpeedText(tagNode const& tNode, int32_t nSpeed, char const* szElement);
/// @}

/// The heads of a device.
class CHeads : public CPart
{
public:
    explicit CHeads(CLogin& tLogin) : m_tLogin(tLogin) {}
    /// The head of this channel, ready for use.
    int Find(uint32_t dwChannel, std::shared_ptr<CHead>& pHead);
    /// What the heads can do is asked again.
    void Forget() override;

private:
    CLogin& m_tLogin;
    std::mutex m_tMutex;
    std::map<uint32_t, std::shared_ptr<CHead>> m_apHeads;
};
} // namespace onvifclient
