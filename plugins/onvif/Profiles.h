#pragma once

#include "plugins/onvif/Login.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace onvifclient
{
/// One of a device's media profiles: the tokens of what belongs together. Empty: it has none.
struct tagProfile
{
    std::string strToken;
    std::string strSourceConfig; ///< of its VideoSourceConfiguration
    std::string strEncoder;      ///< of its video encoder's configuration
    std::string strAudioSource;  ///< of its AudioSourceConfiguration
    std::string strAudioEncoder; ///< of its audio encoder's configuration
    std::string strAnalytics;    ///< of its video analytics' configuration
    std::string strNode;         ///< the PTZ node that its PTZ configuration names
    uint32_t dwWidth = 0;        ///< of its video as the profile says, 0: not told
    uint32_t dwHeight = 0;
    uint32_t dwCodec = 0; ///< eMediaCodec
};

/// One of a device's video sources, with what can be seen of it.
struct tagChannel
{
    std::string strSource;
    uint32_t dwWidth = 0; ///< of the part that the profiles show, 0: not told
    uint32_t dwHeight = 0;
    std::vector<tagProfile> atProfiles; ///< as the device lists them: the main stream, the sub stream, others

    /// dwKind: eStreamKind, 0: the main stream. 0; eResultBadArgument: no such kind; eResultNotSupported: there is no
    /// sub stream.
    int Stream(uint32_t dwKind, tagProfile const*& ptProfile) const;
    /// The first profile that moves the camera; null: none does.
    tagProfile const* Moving() const;
};

/// A device's profiles, sorted into channels: its video sources in the order in which its profiles name them. Asked
/// once, and kept until Forget. Any thread but the HTTP thread.
class CProfiles : public CPart
{
public:
    using Channels = std::vector<tagChannel>;

    explicit CProfiles(CLogin& tLogin) : m_tClient(tLogin.Client()) {}

    int All(std::shared_ptr<Channels const>& pChannels);
    int Channel(uint32_t dwChannel, std::shared_ptr<tagChannel const>& pChannel);
    /// Whether the profiles come from the second media service.
    bool IsMedia2();
    /// The device has changed them, or may have.
    void Forget() override;

private:
    onvif::CClient& m_tClient;
    std::mutex m_tMutex;
    std::shared_ptr<Channels const> m_pChannels;
    bool m_bMedia2 = false;
};

/// A login's channel, and which media service its profiles are of.
int FindChannel(CLogin& tLogin, uint32_t dwChannel, std::shared_ptr<tagChannel const>& pChannel, bool& bMedia2);
} // namespace onvifclient
