#pragma once

#include "plugins/onvif/Convert.h"

#include <string>
#include <vector>

namespace onvif
{
class CClient;
}

namespace onvifclient
{

/// A coordinate space of a camera's head: its name, and the range of either axis.
struct tagSpace
{
    std::string strUri;
    tagSpan tX;
    tagSpan tY;
};
using Spaces = std::vector<tagSpace>;

/// What a camera's head can do, as its node tells.
struct tagNode
{
    Spaces atPosition; ///< pan and tilt
    Spaces atZoomPosition;
    Spaces atTranslation;
    Spaces atZoomTranslation;
    Spaces atVelocity;
    Spaces atZoomVelocity;
    Spaces atSpeed;
    Spaces atZoomSpeed;
    uint32_t dwPresets = 0;
    uint32_t dwTours = 0;
    bool bHome = false;
    std::vector<std::string> astrAuxiliaries;
    bool bDeviceAuxiliaries = false; ///< these are the device service's
};

int AskNode(onvif::CClient& tClient, std::string const& strToken, tagNode& tNode);

/// The device's word for switching this: ePTZAuxiliaryKind; empty: it has none.
std::string AuxiliaryCommand(tagNode const& tNode, uint32_t dwKind, bool bOn);

inline bool Within(int32_t n, int32_t nLeast, int32_t nMost)
{
    return n >= nLeast && n <= nMost;
}
/// A signed speed or step, ten-thousandths, in a range: the range's ends are the most, 0 stands.
double SpeedIn(tagSpan const& tSpan, int32_t nSpeed);

/// The space to use: the generic one, else the first; null: there is none.
tagSpace const* Usual(Spaces const& atSpaces);
/// The one whose name holds this; null: none.
tagSpace const* Named(Spaces const& atSpaces, std::string_view strPart);
} // namespace onvifclient
