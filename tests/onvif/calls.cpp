// Calls of the C API, one for each line that comes in, with one line for each that ends: its number and what it
// answered. Each runs on a thread of its own, so that a later one may end it.

#include "adapter/ClientAdapter.h"

#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace
{
std::mutex g_tMutex;

void Say(std::string const& strLine)
{
    const std::lock_guard tLock(g_tMutex);
    std::cerr << strLine << std::endl;
}

std::string Login(std::istringstream& tWords)
{
    std::string strAddress;
    std::string strUser;
    std::string strPassword;
    tagUserLoginPara tPara{};
    tWords >> strAddress >> strUser >> strPassword >> tPara.dwTimeoutMs;
    std::snprintf(tPara.szAddress, sizeof tPara.szAddress, "%s", strAddress.c_str());
    std::snprintf(tPara.szUserName, sizeof tPara.szUserName, "%s", strUser.c_str());
    std::snprintf(tPara.szPassword, sizeof tPara.szPassword, "%s", strPassword.c_str());
    int nLogin = -1;
    const int nResult = ClientAdapter_UserLogin(&nLogin, eProtocolOnvif, &tPara);
    return std::to_string(nResult) + ' ' + std::to_string(nLogin);
}

int Number(std::istringstream& tWords)
{
    int n = 0;
    tWords >> n;
    return n;
}

std::string Mac(std::istringstream& tWords)
{
    unsigned char aby[6] = {};
    const int nResult = ClientAdapter_GetLoginMac(Number(tWords), aby, 6);
    char szText[40];
    std::snprintf(szText, sizeof szText, "%d %02x%02x%02x%02x%02x%02x", nResult, aby[0], aby[1], aby[2], aby[3], aby[4],
                  aby[5]);
    return szText;
}

std::string Level(std::istringstream& tWords)
{
    int nLevel = 0;
    const int nResult = ClientAdapter_GetLoginLevel(Number(tWords), &nLevel);
    return std::to_string(nResult) + ' ' + std::to_string(nLevel);
}

std::string Certificates(std::istringstream& tWords)
{
    auto dwWanted = static_cast<uint32_t>(Number(tWords));
    return std::to_string(
        ClientAdapter_RTSPSetIsProductTest(eMiscCertificate, &dwWanted, sizeof dwWanted, eProtocolOnvif));
}

void OnFound(tagDeviceProbeConfig* ptFound)
{
    if (ptFound->dwProtocol != eProtocolOnvif)
    {
        return; // another plug-in's
    }
    Say("found " + std::string(ptFound->szSerialNumber) + ' ' + ptFound->szService + ' ' +
        std::to_string(ptFound->dwFlags) + ' ' + ptFound->szName);
}

std::string Probe(std::istringstream& tWords)
{
    tagDeviceProbeParameter tWhere{};
    tWhere.dwSize = sizeof tWhere;
    std::string strInterface;
    tWords >> tWhere.dwSeconds >> strInterface;
    std::snprintf(tWhere.szInterface, sizeof tWhere.szInterface, "%s", strInterface.c_str());
    return std::to_string(ClientAdapter_DeviceProbeStart(&tWhere, &OnFound));
}

const std::map<std::string, std::function<std::string(std::istringstream&)>> g_tCalls{
    {"start", [](auto&) { return std::to_string(ClientAdapter_Start(4)); }},
    {"stop", [](auto&) { return std::to_string(ClientAdapter_Stop()); }},
    {"login", &Login},
    {"logout", [](auto& tWords) { return std::to_string(ClientAdapter_UserLogout(Number(tWords))); }},
    {"mac", &Mac},
    {"level", &Level},
    {"certificates", &Certificates},
    {"probe", &Probe},
    {"again", [](auto&) { return std::to_string(ClientAdapter_DeviceProbeResearch(nullptr)); }},
};
} // namespace

int main()
{
    std::vector<std::thread> atCalls;
    std::string strLine;
    while (std::getline(std::cin, strLine))
    {
        const std::lock_guard tLock(g_tMutex); // what was answered before has happened before, for a sanitizer too
        atCalls.emplace_back(
            [strLine]
            {
                std::istringstream tWords(strLine);
                std::string strNumber;
                std::string strCall;
                tWords >> strNumber >> strCall;
                Say(strNumber + ' ' + g_tCalls.at(strCall)(tWords));
            });
    }
    for (std::thread& tCall : atCalls)
    {
        tCall.join();
    }
}
