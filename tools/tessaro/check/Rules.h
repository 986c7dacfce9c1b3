#pragma once

#include "tools/tessaro/Session.h"

#include <atomic>
#include <span>
#include <string>

namespace tessaro
{
/// What a rule found.
struct tagVerdict
{
    enum eKind
    {
        eKept,
        eBroken,
        eSkipped, ///< the plug-in or the device has nothing to try it on
    };
    eKind eWhat = eKept;
    std::string strText;
};

inline tagVerdict Bad(std::string const& strText)
{
    return {tagVerdict::eBroken, strText};
}

/// What a rule works with: the plug-in behind the protocol set, as the library uses it, and a device to try it on.
struct tagTried
{
    eProtocolType eProtocol;
    tagUserLoginPara tLogin; ///< empty address: there is no device
    bool IsRtsp() const { return eProtocol == eProtocolRTSP; }
};

/// A promise of the plug-in interface, and how it is tried.
struct tagRule
{
    char const* szName;
    char const* szPromise;
    bool bDevice; ///< needs a device
    tagVerdict (*pfnTry)(tagTried& tTried);
};

/// The rules for handles and calls that need no device, and those that do. Each begins and ends with the plug-in
/// started and nothing open.
std::span<tagRule const> CallRules();
std::span<tagRule const> StreamRules();
} // namespace tessaro
