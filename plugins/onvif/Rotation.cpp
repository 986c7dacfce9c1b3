#include "plugins/onvif/Rotation.h"

#include "plugins/onvif/Convert.h"
#include "plugins/onvif/Edit.h"
#include "plugins/onvif/MediaCalls.h"
#include "plugins/onvif/Profiles.h"

#include "protocol/interface/Camera.h"
#include "protocol/interface/Results.h"

#include <algorithm>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr uint32_t g_adwTurns[] = {eTurnNone, eTurnQuarter, eTurnMirror | eTurnFlip,
                                   eTurnMirror | eTurnFlip | eTurnQuarter};
} // namespace

int ReadTurn(CClient& tClient, tagChannel const& tChannel, bool bMedia2, uint32_t& dwTurn)
{
    dwTurn = eTurnNone;
    tagProfile const& tMain = tChannel.atProfiles[0];
    pugi::xml_node tFound;
    const CAnswer tAnswer = AskConfiguration(tClient, bMedia2, "VideoSource", tMain.strSourceConfig, tFound);
    const pugi::xml_node tRotate = Find(tFound, "Extension/Rotate");
    if (Text(tRotate, "Mode") == "ON")
    {
        dwTurn = g_adwTurns[Word(tRotate, "Degree") / 90 % 4];
    }
    return IsSilent(tAnswer) ? tAnswer.Result() : int{eResultOk};
}

namespace
{
int Turn(CClient& tClient, tagChannel const& tChannel, bool bMedia2, uint32_t dwTurn, bool bWrite)
{
    auto const* const pTurn = std::ranges::find(g_adwTurns, dwTurn);
    tagProfile const& tMain = tChannel.atProfiles[0];
    pugi::xml_node tFound;
    const CAnswer tAnswer = AskConfiguration(tClient, bMedia2, "VideoSource", tMain.strSourceConfig, tFound);
    if (!tAnswer || !tFound)
    {
        return tAnswer ? int{eResultBadArgument} : tAnswer.Result();
    }
    const CAnswer tOptions = AskOptions(tClient, bMedia2, "VideoSource", tMain.strSourceConfig, tMain.strToken);
    if (pTurn == std::end(g_adwTurns) ||
        (!Find(tFound, "Extension/Rotate") && !Find(tOptions.Body(), "Options/Extension/Rotate")))
    {
        return eResultBadArgument;
    }
    CEdit tEdit(tFound, "VideoSourceConfiguration");
    tEdit.Set("Extension/Rotate/Mode", dwTurn == eTurnNone ? "OFF" : "ON");
    tEdit.Set("Extension/Rotate/Degree", std::to_string((pTurn - g_adwTurns) * 90));
    return bWrite ? SendConfiguration(tClient, bMedia2, "VideoSource", tEdit).Result() : int{eResultOk};
}
} // namespace

int WriteTurn(CClient& tClient, tagChannel const& tChannel, bool bMedia2, uint32_t dwTurn)
{
    return Turn(tClient, tChannel, bMedia2, dwTurn, true);
}

int CheckTurn(CClient& tClient, tagChannel const& tChannel, bool bMedia2, uint32_t dwTurn)
{
    return Turn(tClient, tChannel, bMedia2, dwTurn, false);
}
} // namespace onvifclient
