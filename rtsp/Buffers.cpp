#include "rtsp/Buffers.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

namespace rtsp
{
namespace
{
// Buffers are kept by size, each size four times the one before, so that a small frame doesn't hold a large buffer.
constexpr std::size_t g_nSmallest = 2048;
constexpr std::size_t g_nSizes = 6; // up to 2 MiB; larger frames are too rare to keep room for
// Of each size, however many streams there are.
constexpr std::size_t g_nMostBytes = std::size_t{2} << 20;

struct tagFree
{
    std::mutex tMutex;
    std::vector<std::vector<unsigned char>> aabyBuffers;
};

// Never destroyed: streams may end after the static objects of the process.
std::array<tagFree, g_nSizes>& Free()
{
    static auto& g_atFree = *new std::array<tagFree, g_nSizes>;
    return g_atFree;
}

constexpr std::size_t Size(std::size_t iSize)
{
    return g_nSmallest << (2 * iSize);
}
} // namespace

std::vector<unsigned char> TakeBuffer(std::size_t nBytes)
{
    std::vector<unsigned char> abyBuffer;
    std::size_t iSize = 0;
    while (iSize < g_nSizes && Size(iSize) < nBytes)
    {
        ++iSize;
    }
    if (iSize == g_nSizes)
    {
        abyBuffer.reserve(nBytes);
        return abyBuffer;
    }
    {
        tagFree& tFree = Free()[iSize];
        const std::lock_guard tLock(tFree.tMutex);
        if (!tFree.aabyBuffers.empty())
        {
            abyBuffer = std::move(tFree.aabyBuffers.back());
            tFree.aabyBuffers.pop_back();
            return abyBuffer;
        }
    }
    abyBuffer.reserve(Size(iSize));
    return abyBuffer;
}

void GiveBuffer(std::vector<unsigned char>&& abyBuffer)
{
    if (abyBuffer.capacity() == 0)
    {
        return;
    }
    std::vector<unsigned char> abyOurs = std::move(abyBuffer);
    abyOurs.clear();
    for (std::size_t iSize = g_nSizes; iSize-- > 0;)
    {
        if (abyOurs.capacity() < Size(iSize))
        {
            continue;
        }
        if (abyOurs.capacity() > 4 * Size(iSize))
        {
            return;
        }
        tagFree& tFree = Free()[iSize];
        const std::lock_guard tLock(tFree.tMutex);
        if (tFree.aabyBuffers.size() < g_nMostBytes / Size(iSize))
        {
            tFree.aabyBuffers.push_back(std::move(abyOurs));
        }
        return;
    }
}

void Append(std::vector<unsigned char>& abyBuffer, std::span<unsigned char const> abyMore)
{
    if (abyBuffer.capacity() - abyBuffer.size() < abyMore.size())
    {
        std::vector<unsigned char> abyLarger =
            TakeBuffer(std::max(abyBuffer.size() + abyMore.size(), 2 * abyBuffer.capacity()));
        abyLarger.insert(abyLarger.end(), abyBuffer.begin(), abyBuffer.end());
        GiveBuffer(std::exchange(abyBuffer, std::move(abyLarger)));
    }
    abyBuffer.insert(abyBuffer.end(), abyMore.begin(), abyMore.end());
}
} // namespace rtsp
