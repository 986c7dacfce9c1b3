#include "plugins/device/Users.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"

#include "protocol/Record.h"

#include <algorithm>
#include <set>
#include <span>

namespace device
{
namespace
{
std::span<tagConfigUser> Each(tagConfigUsers& tUsers)
{
    return {tUsers.atUsers, std::min<std::size_t>(tUsers.dwCount, std::size(tUsers.atUsers))};
}
} // namespace

CUsers::CUsers(CDevice& tDevice) : CPart(tDevice)
{
    Reset();
    m_tDevice.Store().GetRecord("users", m_tUsers);
}

void CUsers::Reset()
{
    m_tUsers = {};
    m_tUsers.dwSize = sizeof m_tUsers;
    for (tagUserBlueprint const& tBlueprint : m_tDevice.Blueprint().atUsers)
    {
        tagConfigUser& tUser = m_tUsers.atUsers[m_tUsers.dwCount++];
        CopyText(tUser.szUserName, tBlueprint.strName);
        CopyText(tUser.szPassword, tBlueprint.strPassword);
        tUser.dwLevel = tBlueprint.dwLevel;
    }
}

tagConfigUser* CUsers::Find(std::string const& strUser)
{
    const auto atUsers = Each(m_tUsers);
    const auto it = std::ranges::find_if(atUsers, [&](auto const& t) { return Text(t.szUserName) == strUser; });
    return it == atUsers.end() ? nullptr : &*it;
}

uint32_t CUsers::Level(std::string const& strUser) const
{
    tagConfigUser const* const ptUser = const_cast<CUsers*>(this)->Find(strUser);
    return ptUser ? ptUser->dwLevel : 0;
}

std::map<std::string, std::string> CUsers::Passwords() const
{
    std::map<std::string, std::string> tPasswords;
    for (tagConfigUser const& t : Each(const_cast<tagConfigUsers&>(m_tUsers)))
    {
        tPasswords.emplace(Text(t.szUserName), Text(t.szPassword));
    }
    return tPasswords;
}

bool CUsers::IsLocked(std::string const& strUser) const
{
    const auto it = m_tWrong.find(strUser);
    return it != m_tWrong.end() && it->second.llLockedUntilUs > m_tDevice.SteadyNow();
}

int CUsers::Check(std::string const& strUser, std::string const& strPassword, uint32_t& dwLevel)
{
    return Check(
        strUser, [&](std::string const& strRight) { return strRight == strPassword; }, dwLevel);
}

int CUsers::Check(std::string const& strUser, std::function<bool(std::string const&)> const& fnIsRight,
                  uint32_t& dwLevel)
{
    tagConfigUser const* const ptUser = Find(strUser);
    if (!ptUser)
    {
        return eResultWrongLogin;
    }
    if (IsLocked(strUser))
    {
        return eResultLocked;
    }
    if (fnIsRight(Text(ptUser->szPassword)))
    {
        m_tWrong.erase(strUser);
        dwLevel = ptUser->dwLevel;
        return eResultOk;
    }
    if (tagDeviceFault const* const ptFault = m_tDevice.Part<CFaults>().On(eFaultLockOut))
    {
        tagWrong& tWrong = m_tWrong[strUser];
        if (++tWrong.dwCount >= (ptFault->dwCount ? ptFault->dwCount : 5))
        {
            tWrong.dwCount = 0;
            tWrong.llLockedUntilUs =
                ptFault->dwMilliseconds ? m_tDevice.SteadyNow() + int64_t{ptFault->dwMilliseconds} * 1000 : g_llNever;
        }
    }
    return eResultWrongLogin;
}

tagConfigUsers CUsers::Read() const
{
    tagConfigUsers tUsers = m_tUsers;
    for (tagConfigUser& tUser : Each(tUsers))
    {
        std::ranges::fill(tUser.szPassword, '\0');
        tUser.bLocked = IsLocked(Text(tUser.szUserName)) ? 1 : 0;
    }
    return tUsers;
}

int CUsers::Write(tagConfigUsers const* ptUsers)
{
    tagConfigUsers tUsers = Read();
    if (Adapter_ProtocolSet::MergeRecord(tUsers, ptUsers) != eResultOk || tUsers.dwCount > std::size(tUsers.atUsers))
    {
        return eResultBadArgument;
    }
    std::set<std::string> strNames;
    bool bAdministrator = false;
    for (tagConfigUser& tUser : Each(tUsers))
    {
        const std::string strName = Text(tUser.szUserName);
        tagConfigUser const* const ptBefore = Find(strName);
        if (tUser.szPassword[0] == '\0' && ptBefore)
        {
            std::ranges::copy(ptBefore->szPassword, tUser.szPassword);
        }
        if (strName.empty() || !strNames.insert(strName).second || tUser.szPassword[0] == '\0' ||
            tUser.dwLevel < eUserViewer || tUser.dwLevel > eUserAdministrator || tUser.bLocked > 1)
        {
            return eResultBadArgument;
        }
        bAdministrator = bAdministrator || tUser.dwLevel == eUserAdministrator;
    }
    if (!bAdministrator)
    {
        return eResultBadArgument;
    }
    for (tagConfigUser const& tUser : Each(tUsers))
    {
        if (tUser.bLocked == 0)
        {
            m_tWrong.erase(Text(tUser.szUserName));
        }
    }
    std::ranges::fill(std::span(tUsers.atUsers).subspan(tUsers.dwCount), tagConfigUser{});
    m_tUsers = tUsers;
    m_tDevice.Store().PutRecord("users", m_tUsers);
    m_tDevice.RefreshLevels();
    return eResultOk;
}
} // namespace device
