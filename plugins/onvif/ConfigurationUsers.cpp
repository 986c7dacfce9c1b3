// Users.

#include "plugins/onvif/Configuration.h"

#include "plugins/common/Text.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace onvifclient
{
namespace
{
using namespace onvif;

struct tagLevelName
{
    std::string_view strName;
    uint32_t dwLevel;
};
constexpr tagLevelName g_atLevels[] = {
    {"User", eUserViewer}, {"Operator", eUserOperator}, {"Administrator", eUserAdministrator}};

std::span<tagConfigUser const> Each(tagConfigUsers const& t)
{
    return {t.atUsers, std::min<std::size_t>(t.dwCount, std::size(t.atUsers))};
}

tagConfigUser const* FindUser(tagConfigUsers const& t, tagConfigUser const& tUser)
{
    const auto atUsers = Each(t);
    const auto it = std::ranges::find_if(atUsers, [&](tagConfigUser const& tEach)
                                         { return IsSame(tEach.szUserName, tUser.szUserName); });
    return it == atUsers.end() ? nullptr : &*it;
}

std::string UserXml(tagConfigUser const& tUser)
{
    CXmlWriter t;
    t.Open("tds:User").Add("tt:Username", plugin::Text(tUser.szUserName));
    if (tUser.szPassword[0] != '\0')
    {
        t.Add("tt:Password", plugin::Text(tUser.szPassword));
    }
    return t.Add("tt:UserLevel", std::ranges::find(g_atLevels, tUser.dwLevel, &tagLevelName::dwLevel)->strName).Take();
}

bool IsValid(tagConfigUsers const& tBefore, tagConfigUsers const& t)
{
    bool bAdministrator = false;
    if (t.dwCount > std::size(t.atUsers))
    {
        return false;
    }
    for (tagConfigUser const& tUser : Each(t))
    {
        if (tUser.szUserName[0] == '\0' || FindUser(t, tUser) != &tUser || tUser.dwLevel < eUserViewer ||
            tUser.dwLevel > eUserAdministrator || tUser.bLocked > 1 ||
            (tUser.szPassword[0] == '\0' && !FindUser(tBefore, tUser)))
        {
            return false;
        }
        bAdministrator = bAdministrator || tUser.dwLevel == eUserAdministrator;
    }
    return bAdministrator;
}

int Send(CLogin const& tLogin, char const* szName, std::string const& strUsers)
{
    return strUsers.empty() ? int{eResultOk} : tLogin.Call({eService::Device, szName, strUsers}).Result();
}
} // namespace

int Read(CLogin& tLogin, tagWhich const& tWhich, tagConfigUsers& t)
{
    if (tWhich.dwIndex != 0)
    {
        return eResultNoChannel;
    }
    const CAnswer tAnswer = tLogin.Call({eService::Device, "GetUsers"});
    for (pugi::xml_node tUser : Children(tAnswer.Body(), "User"))
    {
        const std::string_view strLevel = onvif::Text(tUser, "UserLevel");
        if (t.dwCount == std::size(t.atUsers) || strLevel == "Anonymous")
        {
            continue;
        }
        tagConfigUser& tThis = t.atUsers[t.dwCount++];
        plugin::CopyText(tThis.szUserName, onvif::Text(tUser, "Username"));
        auto const* const ptLevel = std::ranges::find(g_atLevels, strLevel, &tagLevelName::strName);
        tThis.dwLevel = ptLevel == std::end(g_atLevels) ? uint32_t{eUserViewer} : ptLevel->dwLevel;
    }
    return tAnswer.Result();
}

// New ones first and the removed ones last, so that an administrator is always left.
int Write(CLogin& tLogin, tagWhich const&, tagConfigUsers const& tBefore, tagConfigUsers const& tAfter)
{
    if (!IsValid(tBefore, tAfter))
    {
        return eResultBadArgument;
    }
    std::string strNew;
    std::string strChanged;
    CXmlWriter tGone;
    for (tagConfigUser const& tUser : Each(tAfter))
    {
        tagConfigUser const* const ptBefore = FindUser(tBefore, tUser);
        if (!ptBefore)
        {
            strNew += UserXml(tUser);
        }
        else if (ptBefore->dwLevel != tUser.dwLevel || tUser.szPassword[0] != '\0')
        {
            strChanged += UserXml(tUser);
        }
    }
    for (tagConfigUser const& tUser : Each(tBefore))
    {
        if (!FindUser(tAfter, tUser))
        {
            tGone.Add("tds:Username", plugin::Text(tUser.szUserName));
        }
    }
    int nResult = Send(tLogin, "CreateUsers", strNew);
    nResult = nResult ? nResult : Send(tLogin, "SetUser", strChanged);
    return nResult ? nResult : Send(tLogin, "DeleteUsers", tGone.Take());
}
} // namespace onvifclient
