#include "rtsp/payload/Encoded.h"

namespace rtsp
{
namespace
{
// Groups of nBits, the highest first; fnValue tells one's value, or -1.
template <class F>
std::vector<unsigned char> Decode(std::string_view strText, unsigned nBits, F fnValue)
{
    std::vector<unsigned char> abyBytes;
    unsigned uValue = 0;
    unsigned nHave = 0;
    for (const char c : strText)
    {
        const int nValue = fnValue(c);
        if (nValue < 0)
        {
            continue;
        }
        uValue = (uValue << nBits | static_cast<unsigned>(nValue)) & 0xFFFF;
        nHave += nBits;
        if (nHave >= 8)
        {
            nHave -= 8;
            abyBytes.push_back(static_cast<unsigned char>(uValue >> nHave));
        }
    }
    return abyBytes;
}
} // namespace

std::vector<unsigned char> FromBase64(std::string_view strText)
{
    return Decode(strText.substr(0, strText.find('=')), 6,
                  [](char c)
                  {
                      return c >= 'A' && c <= 'Z'   ? c - 'A'
                             : c >= 'a' && c <= 'z' ? c - 'a' + 26
                             : c >= '0' && c <= '9' ? c - '0' + 52
                             : c == '+'             ? 62
                             : c == '/'             ? 63
                                                    : -1;
                  });
}

std::vector<unsigned char> FromHex(std::string_view strText)
{
    return Decode(strText, 4,
                  [](char c)
                  {
                      return c >= '0' && c <= '9'   ? c - '0'
                             : c >= 'a' && c <= 'f' ? c - 'a' + 10
                             : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                    : -1;
                  });
}
} // namespace rtsp
