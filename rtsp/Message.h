#pragma once

#include "rtsp/Bytes.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace rtsp
{
/// One header line of a message.
struct tagHeader
{
    std::string strName;
    std::string strValue; ///< without blanks around it
};

/// An RTSP message: a response when nStatus isn't 0, else a request.
struct tagMessage
{
    int nStatus = 0;
    std::string strReason; ///< of a response
    std::string strMethod; ///< of a request
    std::string strUri;    ///< of a request
    std::vector<tagHeader> atHeaders;
    std::string strBody;

    /// The value of the first header of this name, whatever its case; empty: there is none.
    std::string_view Header(std::string_view strName) const;
    /// The values of all headers of this name.
    std::vector<std::string_view> Headers(std::string_view strName) const;
};

/// The message as it is sent. Content-Length is added when there is a body. Control characters become blanks, so that
/// no word of a server or of a user can begin a line of its own.
std::string Serialize(tagMessage const& tMessage);

/// What CMessageReader finds.
class IMessageSink
{
public:
    virtual void OnMessage(tagMessage&& tMessage) = 0;
    /// RTP or RTCP in the RTSP connection. abyPacket is valid until the call returns.
    virtual void OnInterleaved(unsigned nChannel, Bytes abyPacket) = 0;
    /// Bytes that belong to no message and no packet were passed over. A long run may come in several calls.
    virtual void OnJunk(std::size_t nBytes) = 0;

protected:
    ~IMessageSink() = default;
};

/// Takes the bytes of an RTSP connection in any split and finds messages and interleaved packets in them. After junk it
/// finds its place again with the next thing that can only be the beginning of a message or packet. Keeps only what is
/// not complete yet; a message is bounded, so that a server can't fill the memory.
class CMessageReader
{
public:
    static constexpr std::size_t nLongestHead = std::size_t{64} * 1024; ///< of a message, without its body
    static constexpr std::size_t nLongestBody = std::size_t{1024} * 1024;

    /// False: the server sends what has no end (a head or body above the bound): close the connection. The sink may
    /// throw; the reader is then not to be used any more.
    bool Take(Bytes abyData, IMessageSink& tSink);

private:
    std::size_t Read(Bytes abyData, IMessageSink& tSink);
    std::size_t ReadNext(Bytes abyData, IMessageSink& tSink);
    std::size_t ReadMessage(Bytes abyData, IMessageSink& tSink);
    std::size_t ReadBody(Bytes abyData, IMessageSink& tSink);
    std::size_t FindPlace(Bytes abyData, IMessageSink& tSink);
    std::size_t PassOver(std::size_t nBytes, IMessageSink& tSink);

    std::vector<unsigned char> m_abyRest; ///< the beginning of something that isn't complete yet
    std::size_t m_nNeeded = 0;            ///< so many bytes must be there before it is worth looking again
    std::size_t m_nSearched = 0;          ///< so many bytes of it were searched already
    std::size_t m_nHead = 0;              ///< length of a head whose body is still to come; 0: none
    std::size_t m_nBody = 0;              ///< length of that body
    bool m_bLost = false;                 ///< among junk
    bool m_bEndless = false;
};
} // namespace rtsp
