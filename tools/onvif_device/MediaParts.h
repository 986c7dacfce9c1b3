#pragma once

#include "tools/onvif_device/Call.h"

#include <vector>

namespace onvif_device
{
/// One stream of a channel, and so one profile of it. The numbers of its tokens: Profile_1_0 is the main stream of
/// channel 1.
struct tagStreamKey
{
    uint32_t dwChannel = 0;
    uint32_t dwStream = 0; ///< 0 main, 1 sub

    uint32_t Kind() const { return dwStream == 0 ? eStreamMain : eStreamSub; }
    std::string Of(std::string_view strKind) const { return Token(strKind, {dwChannel, dwStream}); }
};

/// @name All of these need the device's lock
/// @{

std::vector<tagStreamKey> Streams(CCall& tCall);
/// The stream of a token of this kind; throws CFault.
tagStreamKey StreamAt(CCall& tCall, CCall::Path astrPath, std::string_view strKind,
                      std::string const& strDetail = "ter:NoConfig");
bool Moves(CCall& tCall, uint32_t dwChannel);
bool HasAudio(CCall& tCall, uint32_t dwChannel);

/// Parts that are the same in both media services, as the inside of an element of this name.
void WriteVideoSourceConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel);
void WriteAudioSourceConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel);
void WriteMetadataConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel);
void WriteAudioOutputConfiguration(CCall& tCall, char const* szElement);
void WriteAudioDecoderConfiguration(CCall& tCall, char const* szElement);
void WriteMulticast(CXml& tXml);
void WritePtzConfiguration(CCall& tCall, char const* szElement, uint32_t dwChannel);

/// Whether a stream of this kind ("VideoEncoder", "AudioEncoder") is on, which is what having the configuration means;
/// and turns it on or off. False: there is no such kind.
bool IsEncoding(CCall& tCall, tagStreamKey const& tKey, bool bAudio);
bool SetEncoding(CCall& tCall, tagStreamKey const& tKey, std::string_view strKind, bool bOn);

/// A record with what the request's Configuration says of rate, bits, quality and so on, common to both.
void ReadVideoEncoder(CCall& tCall, tagConfigVideoEncoder& tVideo);
void ReadAudioEncoder(CCall& tCall, tagConfigAudioEncoder& tAudio);
/// @}

/// Sizes that a codec can have.
std::vector<std::pair<uint32_t, uint32_t>> SizesOf(uint32_t dwCodec);

/// The elements of the types that both services take.
#define ONVIF_MULTICAST "Multicast{Address{Type IPv4Address? IPv6Address?} Port TTL AutoStart ...}"
} // namespace onvif_device
