#include "bindings/Binding.h"

#include "system/OutputMessage.h"

#include <cstdio>

namespace Adapter_ProtocolSet
{
int CEntryTable::Bind(Adapter_System::CModule& tModule, tagBindingProfile const& tProfile, char const* szPath)
{
    if (!szPath)
    {
        DiagnosticLine(tProfile.szSource, "Intialize", tProfile.nNullPathLine);
        return eResultNoProtocol;
    }
    m_apEntry.fill(nullptr);
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
    for (tagLookUp const& tRow : tProfile.atLookUp)
    {
        const auto iOp = static_cast<std::size_t>(tRow.eOp);
        char szName[80];
        std::snprintf(szName, sizeof szName, "%s%s", tRow.szSymbol ? "" : tProfile.szPrefix,
                      tRow.szSymbol ? tRow.szSymbol : g_aszOperation[iOp]);
        tModule.Export(szName, m_apEntry[iOp]);
    }
    return eResultOk;
}
} // namespace Adapter_ProtocolSet
