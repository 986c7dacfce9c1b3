#pragma once

#include "plugins/common/Results.h"
#include "plugins/onvif/Login.h"

#include <string>

namespace onvifclient
{
/// A query for log entries, and what it has found.
class CLogQuery : public CObject
{
public:
    CLogQuery(std::shared_ptr<CLogin> pLogin, std::vector<tagLogQueryResult> atFound)
        : CObject(std::move(pLogin)), m_tResults(std::move(atFound))
    {
    }
    bool Close() override { return true; }
    int Next(tagLogQueryResult* ptResult) { return m_tResults.Next(ptResult); }

private:
    plugin::CResults<tagLogQueryResult> m_tResults;
};

/// A file that a device makes of itself: its log, what support asks for, its whole configuration. eKind: eFileLog,
/// eFileSupport or eFileConfiguration. Blocks.
int ReadDeviceFile(CLogin& tLogin, eFileKind eKind, std::string& strFile);
} // namespace onvifclient
