// The device service: users, restart, files, outputs.

#include "tools/onvif_device/Call.h"
#include "tools/onvif_device/Contacts.h"

#include "plugins/device/Worker.h"

namespace onvif_device
{
namespace
{
using device::Text;

// A device that restarts at once can't answer any more.
constexpr int64_t g_llAnswerFirstUs = 300000;

// --- users -----------------------------------------------------------------------------------------------------------

struct tagLevelName
{
    char const* szName;
    uint32_t dwLevel;
};
constexpr tagLevelName g_atLevels[] = {
    {"Administrator", eUserAdministrator}, {"Operator", eUserOperator}, {"User", eUserViewer}};

uint32_t LevelAt(pugi::xml_node tUser)
{
    const std::string strLevel = ChildText(tUser, "UserLevel");
    for (tagLevelName const& t : g_atLevels)
    {
        if (strLevel == t.szName)
        {
            return t.dwLevel;
        }
    }
    FailValue("ter:UserLevel", "there is no level " + strLevel);
}

tagConfigUser* FindUser(tagConfigUsers& tUsers, std::string const& strName)
{
    auto* const pEnd = tUsers.atUsers + tUsers.dwCount;
    auto* const pt =
        std::find_if(tUsers.atUsers, pEnd, [&](tagConfigUser const& t) { return Text(t.szUserName) == strName; });
    return pt == pEnd ? nullptr : pt;
}

void GetUsers(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagConfigUsers tUsers = tCall.Part<device::CUsers>().Read();
    for (uint32_t i = 0; i < tUsers.dwCount; ++i)
    {
        tCall.Xml().In("tds:User",
                       [&]
                       {
                           auto const* const pt =
                               std::ranges::find(g_atLevels, tUsers.atUsers[i].dwLevel, &tagLevelName::dwLevel);
                           tCall.Xml().Put("tt:Username", Text(tUsers.atUsers[i].szUserName));
                           tCall.Xml().Put("tt:UserLevel", pt->szName);
                       });
    }
}

// What is to become of each user that a request names.
template <class F>
void ChangeUsers(CCall& tCall, F fnChange)
{
    const auto tLock = tCall.Lock();
    tagConfigUsers tUsers = tCall.Part<device::CUsers>().Read();
    for (const pugi::xml_node t : tCall.Request().children())
    {
        if (t.type() == pugi::node_element)
        {
            fnChange(tUsers, t);
        }
    }
    const auto* const pEnd = tUsers.atUsers + tUsers.dwCount;
    if (std::none_of(tUsers.atUsers, const_cast<tagConfigUser*>(pEnd),
                     [](tagConfigUser const& t) { return t.dwLevel == eUserAdministrator; }))
    {
        FailValue("ter:FixedUser", "there must be an administrator");
    }
    tCall.Set(eConfigUsers, tUsers);
}

void CreateUsers(CCall& tCall)
{
    ChangeUsers(tCall,
                [](tagConfigUsers& tUsers, pugi::xml_node t)
                {
                    const std::string strName = ChildText(t, "Username");
                    const std::string strPassword = ChildText(t, "Password");
                    if (strName.empty() || strName.size() >= sizeof tUsers.atUsers[0].szUserName)
                    {
                        FailValue("ter:UsernameTooLong", "a name has 1 to 31 bytes");
                    }
                    if (strPassword.empty() || strPassword.size() >= sizeof tUsers.atUsers[0].szPassword)
                    {
                        FailValue("ter:PasswordTooWeak", "a password has 1 to 31 bytes");
                    }
                    if (FindUser(tUsers, strName))
                    {
                        throw CFault(eBlame::Sender, "ter:OperationProhibited", "ter:UsernameClash",
                                     "there is a user of this name");
                    }
                    if (tUsers.dwCount == std::size(tUsers.atUsers))
                    {
                        FailAction("ter:TooManyUsers", "there are too many users");
                    }
                    tagConfigUser& tNew = tUsers.atUsers[tUsers.dwCount++];
                    tNew = {};
                    device::CopyText(tNew.szUserName, strName);
                    device::CopyText(tNew.szPassword, strPassword);
                    tNew.dwLevel = LevelAt(t);
                });
}

tagConfigUser& UserAt(tagConfigUsers& tUsers, std::string const& strName)
{
    tagConfigUser* const pt = FindUser(tUsers, strName);
    return pt ? *pt : (FailValue("ter:UsernameMissing", "there is no user " + strName), *pt);
}

void SetUser(CCall& tCall)
{
    ChangeUsers(tCall,
                [](tagConfigUsers& tUsers, pugi::xml_node t)
                {
                    tagConfigUser& tUser = UserAt(tUsers, ChildText(t, "Username"));
                    device::CopyText(tUser.szPassword, ChildText(t, "Password"));
                    tUser.dwLevel = LevelAt(t);
                });
}

void DeleteUsers(CCall& tCall)
{
    ChangeUsers(tCall,
                [](tagConfigUsers& tUsers, pugi::xml_node t)
                {
                    tagConfigUser* const pt = &UserAt(tUsers, TextOf(t));
                    std::move(pt + 1, tUsers.atUsers + tUsers.dwCount, pt);
                    --tUsers.dwCount;
                });
}

// --- restart ---------------------------------------------------------------------------------------------------------

void Control(CCall& tCall, eRemoteDeviceControl eControl)
{
    device::TimeWorker().At(device::SteadyUs() + g_llAnswerFirstUs,
                            [pDevice = tCall.Face().SharedDevice(), tCaller = tCall.Caller(), eControl]
                            {
                                const device::CDevice::CLock tLock(*pDevice);
                                pDevice->Control(tCaller, eControl);
                            });
}

void SystemReboot(CCall& tCall)
{
    Control(tCall, eDeviceRestart);
    tCall.Xml().Put("tds:Message", "down for 2 seconds");
}

void SetSystemFactoryDefault(CCall& tCall)
{
    Control(tCall, tCall.Word({"FactoryDefault"}, {"Soft", "Hard"}) ? eDeviceFactoryReset : eDeviceFactoryDefault);
}

// --- disks -----------------------------------------------------------------------------------------------------------

void GetStorageConfigurations(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const tagConfigStorage tStorage = tCall.Part<device::CStorage>().Disks();
    for (uint32_t i = 0; i < tStorage.dwCount; ++i)
    {
        tCall.Xml().In("tds:StorageConfigurations", {{"token", Token("Disk", {i})}},
                       [&]
                       {
                           tCall.Xml().In("tds:Data", {{"type", "LocalStorage"}},
                                          [&] { tCall.Xml().Put("tds:LocalPath", Text(tStorage.atDisks[i].szName)); });
                       });
    }
}

// --- files -----------------------------------------------------------------------------------------------------------

std::string FileText(CCall& tCall, uint32_t dwKind)
{
    const device::SharedBytes pFile = tCall.Device().File(dwKind, {});
    return {pFile->begin(), pFile->end()};
}

void GetSystemLog(CCall& tCall)
{
    tCall.Word({"LogType"}, {"System", "Access"});
    tCall.Xml().In("tds:SystemLog", [&] { tCall.Xml().Put("tt:String", FileText(tCall, eFileLog)); });
}

void GetSystemSupportInformation(CCall& tCall)
{
    tCall.Xml().In("tds:SupportInformation", [&] { tCall.Xml().Put("tt:String", FileText(tCall, eFileSupport)); });
}

void GetSystemUris(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    tXml.In("tds:SystemLogUris",
            [&] {
                tXml.In("tt:SystemLog",
                        [&] { tXml.Put("tt:Type", "System").Put("tt:Uri", tCall.Address("/files/log")); });
            });
    tXml.Put("tds:SupportInfoUri", tCall.Address("/files/support"));
    tXml.Put("tds:SystemBackupUri", tCall.Address("/files/configuration"));
}

void StartFirmwareUpgrade(CCall& tCall)
{
    tCall.Xml().Put("tds:UploadUri", tCall.Address("/files/firmware")).Put("tds:UploadDelay", "PT0S");
    tCall.Xml().Put("tds:ExpectedDownTime", "PT2S");
}

void StartSystemRestore(CCall& tCall)
{
    tCall.Xml().Put("tds:UploadUri", tCall.Address("/files/configuration")).Put("tds:ExpectedDownTime", "PT0S");
}

constexpr tagAction g_atActions[] = {
    {"GetUsers", eUserAdministrator, "", GetUsers},
    {"CreateUsers", eUserAdministrator, "User{Username Password? UserLevel ...}+", CreateUsers},
    {"SetUser", eUserAdministrator, "User{Username Password? UserLevel ...}+", SetUser},
    {"DeleteUsers", eUserAdministrator, "Username+", DeleteUsers},
    {"GetStorageConfigurations", eUserAdministrator, "", GetStorageConfigurations},
    {"SystemReboot", eUserAdministrator, "", SystemReboot},
    {"SetSystemFactoryDefault", eUserAdministrator, "FactoryDefault", SetSystemFactoryDefault},
    {"GetSystemLog", eUserAdministrator, "LogType", GetSystemLog},
    {"GetSystemSupportInformation", eUserAdministrator, "", GetSystemSupportInformation},
    {"GetSystemUris", eUserAdministrator, "", GetSystemUris},
    {"StartFirmwareUpgrade", eUserAdministrator, "", StartFirmwareUpgrade},
    {"StartSystemRestore", eUserAdministrator, "", StartSystemRestore},
    {"GetRelayOutputs", eUserViewer, "", GetRelayOutputs},
    {"SetRelayOutputSettings", eUserAdministrator, "RelayOutputToken Properties{Mode DelayTime IdleState}",
     SetRelayOutputSettings},
    {"SetRelayOutputState", eUserOperator, "RelayOutputToken LogicalState", SetRelayOutputState},
};
} // namespace

std::span<tagAction const> DeviceSystemActions()
{
    return g_atActions;
}
} // namespace onvif_device
