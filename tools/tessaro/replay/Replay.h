#pragma once

#include "tools/tessaro/records/Records.h"

#include <map>
#include <string>

namespace tessaro
{
/// The calls of a trace, made again at a plug-in.
class CReplay
{
public:
    /// strFile: the plug-in. strPassword: for the passwords that a trace doesn't show. Throws CFailure.
    CReplay(std::string const& strFile, std::string strPassword);

    /// Makes one traced call again, and gives its result.
    int Call(json const& tLine);
    /// Frames and other callbacks that came.
    static unsigned long Callbacks();

private:
    void* m_hModule;
    std::string m_strPassword;
    std::map<std::string, void*> m_tHandles; ///< the trace's, and what they are now
};
} // namespace tessaro
