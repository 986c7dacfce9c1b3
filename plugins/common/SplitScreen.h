#pragma once

#include "protocol/interface/Decoders.h"

#include <cstdint>
#include <vector>

namespace plugin
{
/// A window of a split screen, in cells of a grid.
struct tagCell
{
    uint32_t x, y, dwSize;
};

/// The windows of a mode (eScreenSplitMode), and how many cells the grid is wide and high; none for a mode that isn't
/// one.
inline std::vector<tagCell> CellsOf(uint32_t dwMode, uint32_t& dwGrid)
{
    std::vector<tagCell> atCells;
    const bool bBig = dwMode == eSplit6 || dwMode == eSplit8;
    dwGrid = bBig ? dwMode / 2 : 1;
    while (!bBig && dwGrid * dwGrid < dwMode)
    {
        ++dwGrid;
    }
    if (!bBig && (dwGrid * dwGrid != dwMode || dwMode > eSplit36))
    {
        return {};
    }
    const uint32_t dwBig = bBig ? dwGrid - 1 : 0;
    if (bBig)
    {
        atCells.push_back({0, 0, dwBig});
    }
    for (uint32_t y = 0; y < dwGrid; ++y)
    {
        for (uint32_t x = 0; x < dwGrid; ++x)
        {
            if (x >= dwBig || y >= dwBig)
            {
                atCells.push_back({x, y, 1});
            }
        }
    }
    return atCells;
}
} // namespace plugin
