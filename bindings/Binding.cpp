#include "bindings/Binding.h"

#include "system/OutputMessage.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace Adapter_ProtocolSet
{
namespace
{
constexpr std::size_t g_nLongestOperation = []
{
    std::size_t nLongest = 0;
    for (const std::string_view strName : g_aszOperation)
    {
        nLongest = std::max(nLongest, strName.size());
    }
    return nLongest;
}();
} // namespace

int CEntryTable::Missing()
{
    return eResultNoEntryPoint;
}

int CEntryTable::Bind(Adapter_System::CModule& tModule, tagBindingProfile const& tProfile, char const* szPath)
{
    if (!szPath)
    {
        DiagnosticLine(tProfile.szSource, "Intialize", tProfile.nNullPathLine);
        return eResultNoProtocol;
    }
    m_apEntry.fill(MissingEntry());
    if (tModule.Open(szPath) != 0)
    {
        if (tProfile.szOpenFailed)
        {
            std::puts(tProfile.szOpenFailed);
        }
        return eResultOk;
    }
    if (tProfile.szOpened)
    {
        DiagnosticLine(tProfile.szSource, "Intialize", tProfile.nOpenedLine, tProfile.szOpened);
    }
    // Put together by hand: 400 times snprintf shows in a start.
    char szName[sizeof tProfile.szPrefix + g_nLongestOperation];
    char* const szOperation = stpcpy(szName, tProfile.szPrefix);
    for (const eOperation eOp : tProfile.aeLookUp)
    {
        const auto iOp = static_cast<std::size_t>(eOp);
        const auto itIrregular = std::ranges::find(tProfile.atIrregular, eOp, &tagIrregularName::eOp);
        const bool bRegular = itIrregular == tProfile.atIrregular.end();
        if (bRegular)
        {
            stpcpy(szOperation, g_aszOperation[iOp]);
        }
        void* pEntry = nullptr;
        if (tModule.Export(bRegular ? szName : itIrregular->szSymbol, pEntry) == 0)
        {
            m_apEntry[iOp] = pEntry;
        }
    }
    return eResultOk;
}
} // namespace Adapter_ProtocolSet
