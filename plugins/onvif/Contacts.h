#pragma once

#include "plugins/onvif/Login.h"

#include <string>
#include <vector>

namespace onvifclient
{
/// A device's alarm inputs and outputs, which it names by tokens, in its own order.
class CContacts : public CPart
{
public:
    explicit CContacts(CLogin& tLogin) : m_tLogin(tLogin) {}

    int Inputs(std::vector<std::string>& astrTokens);
    int Outputs(std::vector<std::string>& astrTokens);
    /// dwOn: 0 off, 1 on, more: for so many milliseconds.
    int Switch(uint32_t dwOutput, uint32_t dwOn);

private:
    rtsp::CTask<> SwitchOffLater(std::shared_ptr<CLogin> pLogin, std::string strToken, uint32_t dwRun,
                                 onvif::Clock::time_point tEnd);

    CLogin& m_tLogin;
    std::mutex m_tMutex;
    std::map<std::string, uint32_t> m_tRuns; // of one that was switched again, the end doesn't count
};
} // namespace onvifclient
