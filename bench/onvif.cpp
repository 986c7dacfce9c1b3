// What the ONVIF plug-in costs, against libcurl that posts the same bodies and looks at nothing. The device is a
// process of its own that knows four answers by heart; it asks for an HTTP digest where that is measured.

#include "adapter/ClientAdapter.h"

#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <curl/curl.h>
#include <fstream>
#include <malloc.h>
#include <map>
#include <string>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{
[[noreturn]] void Fail(char const* szWhat)
{
    std::fprintf(stderr, "onvif: %s\n", szWhat);
    std::exit(1);
}

// --- the device ------------------------------------------------------------------------------------------------------

std::string Envelope(std::string const& strBody)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><SOAP-ENV:Envelope "
           "xmlns:SOAP-ENV=\"http://www.w3.org/2003/05/soap-envelope\" "
           "xmlns:tds=\"http://www.onvif.org/ver10/device/wsdl\" "
           "xmlns:tt=\"http://www.onvif.org/ver10/schema\"><SOAP-ENV:Body>" +
           strBody + "</SOAP-ENV:Body></SOAP-ENV:Envelope>";
}

std::string Answer(std::string const& strRequest, bool bDigest)
{
    const auto fnAsks = [&](char const* szName) { return strRequest.find(szName) != std::string::npos; };
    std::string strBody;
    char const* szStatus = "200 OK";
    if (fnAsks("<tds:GetSystemDateAndTime>"))
    {
        const std::time_t nNow = std::time(nullptr);
        std::tm t{};
        gmtime_r(&nNow, &t);
        char szTime[400];
        std::snprintf(
            szTime, sizeof szTime,
            "<tds:GetSystemDateAndTimeResponse><tds:SystemDateAndTime><tt:UTCDateTime><tt:Time><tt:Hour>%d</tt:Hour>"
            "<tt:Minute>%d</tt:Minute><tt:Second>%d</tt:Second></tt:Time><tt:Date><tt:Year>%d</tt:Year><tt:Month>%d"
            "</tt:Month><tt:Day>%d</tt:Day></tt:Date></tt:UTCDateTime></tds:SystemDateAndTime>"
            "</tds:GetSystemDateAndTimeResponse>",
            t.tm_hour, t.tm_min, t.tm_sec, t.tm_year + 1900, t.tm_mon + 1, t.tm_mday);
        strBody = Envelope(szTime);
    }
    else if (bDigest && !fnAsks("Authorization: Digest"))
    {
        szStatus = "401 Unauthorized\r\nWWW-Authenticate: Digest realm=\"d\", nonce=\"0123456789abcdef\", qop=\"auth\"";
    }
    else if (fnAsks("<tds:GetServices>"))
    {
        std::string strServices;
        for (char const* const szName :
             {"ver10/device", "ver10/media", "ver20/media", "ver20/ptz", "ver20/imaging", "ver10/events",
              "ver10/deviceIO", "ver10/recording", "ver10/search", "ver10/replay"})
        {
            strServices += std::string("<tds:Service><tds:Namespace>http://www.onvif.org/") + szName +
                           "/wsdl</tds:Namespace><tds:XAddr>http://192.0.2.1/onvif/" + szName +
                           "</tds:XAddr><tds:Version><tt:Major>2</tt:Major></tds:Version></tds:Service>";
        }
        strBody = Envelope("<tds:GetServicesResponse>" + strServices + "</tds:GetServicesResponse>");
    }
    else if (fnAsks("<tds:GetDeviceInformation>"))
    {
        strBody =
            Envelope("<tds:GetDeviceInformationResponse><tds:Manufacturer>M</tds:Manufacturer><tds:Model>1</tds:Model>"
                     "</tds:GetDeviceInformationResponse>");
    }
    else
    {
        strBody = Envelope(
            "<tds:GetNetworkInterfacesResponse><tds:NetworkInterfaces "
            "token=\"eth0\"><tt:Enabled>true</tt:Enabled><tt:Info>"
            "<tt:Name>eth0</tt:Name><tt:HwAddress>02:00:5e:10:00:01</tt:HwAddress><tt:MTU>1500</tt:MTU></"
            "tt:Info><tt:IPv4>"
            "<tt:Enabled>true</tt:Enabled><tt:Config><tt:Manual><tt:Address>192.0.2.1</tt:Address><tt:PrefixLength>24"
            "</tt:PrefixLength></tt:Manual><tt:DHCP>false</tt:DHCP></tt:Config></tt:IPv4></tds:NetworkInterfaces>"
            "</tds:GetNetworkInterfacesResponse>");
    }
    return std::string("HTTP/1.1 ") + szStatus +
           "\r\nContent-Type: application/soap+xml\r\nContent-Length: " + std::to_string(strBody.size()) + "\r\n\r\n" +
           strBody;
}

[[noreturn]] void Serve(int nListener, bool bDigest)
{
    const int nEpoll = epoll_create1(0);
    std::map<int, std::string> tGot;
    const auto fnWatch = [&](int nFile)
    {
        epoll_event tEvent{};
        tEvent.events = EPOLLIN;
        tEvent.data.fd = nFile;
        epoll_ctl(nEpoll, EPOLL_CTL_ADD, nFile, &tEvent);
    };
    fnWatch(nListener);
    for (;;)
    {
        epoll_event tEvent{};
        if (epoll_wait(nEpoll, &tEvent, 1, -1) != 1)
        {
            continue;
        }
        const int nFile = tEvent.data.fd;
        if (nFile == nListener)
        {
            fnWatch(accept(nListener, nullptr, nullptr));
            continue;
        }
        char acRoom[65536];
        const ssize_t nLength = read(nFile, acRoom, sizeof acRoom);
        if (nLength <= 0)
        {
            close(nFile);
            tGot.erase(nFile);
            continue;
        }
        std::string& strGot = tGot[nFile];
        strGot.append(acRoom, static_cast<std::size_t>(nLength));
        if (strGot.ends_with("</s:Envelope>"))
        {
            const std::string strAnswer = Answer(strGot, bDigest);
            (void)!write(nFile, strAnswer.data(), strAnswer.size());
            strGot.clear();
        }
    }
}

class CDevice
{
public:
    explicit CDevice(bool bDigest)
    {
        const int nListener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in tAddress{};
        tAddress.sin_family = AF_INET;
        tAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t nSize = sizeof tAddress;
        if (bind(nListener, reinterpret_cast<sockaddr*>(&tAddress), nSize) != 0 || listen(nListener, 1024) != 0 ||
            getsockname(nListener, reinterpret_cast<sockaddr*>(&tAddress), &nSize) != 0)
        {
            Fail("no port");
        }
        m_wPort = ntohs(tAddress.sin_port);
        m_nProcess = fork();
        if (m_nProcess == 0)
        {
            Serve(nListener, bDigest);
        }
        close(nListener);
    }
    ~CDevice()
    {
        kill(m_nProcess, SIGKILL);
        waitpid(m_nProcess, nullptr, 0);
    }
    CDevice(CDevice const&) = delete;
    CDevice& operator=(CDevice const&) = delete;

    std::uint16_t Port() const { return m_wPort; }

private:
    std::uint16_t m_wPort = 0;
    pid_t m_nProcess = 0;
};

// --- what is measured ------------------------------------------------------------------------------------------------

double CpuUs()
{
    rusage tUsed{};
    getrusage(RUSAGE_SELF, &tUsed);
    const auto fnUs = [](timeval const& t)
    { return static_cast<double>(t.tv_sec) * 1e6 + static_cast<double>(t.tv_usec); };
    return fnUs(tUsed.ru_utime) + fnUs(tUsed.ru_stime);
}

double WallUs()
{
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

struct tagCost
{
    double dCpuUs = 1e12;
    double dWallUs = 1e12;
};

// The best of some rounds, a call.
template <class F>
void Measure(tagCost& tBest, int nCalls, F fnCall)
{
    const double dCpu = CpuUs();
    const double dWall = WallUs();
    for (int i = 0; i < nCalls; ++i)
    {
        fnCall();
    }
    tBest.dCpuUs = std::min(tBest.dCpuUs, (CpuUs() - dCpu) / nCalls);
    tBest.dWallUs = std::min(tBest.dWallUs, (WallUs() - dWall) / nCalls);
}

int Login(CDevice const& tDevice)
{
    tagUserLoginPara tPara{};
    std::strcpy(tPara.szAddress, "127.0.0.1");
    tPara.dwPort = tDevice.Port();
    std::strcpy(tPara.szUserName, "admin");
    std::strcpy(tPara.szPassword, "secret");
    int nLogin = -1;
    if (ClientAdapter_UserLogin(&nLogin, eProtocolOnvif, &tPara) != 0)
    {
        Fail("no login");
    }
    return nLogin;
}

// As the plug-in's: the same size and headers.
class CBare
{
public:
    explicit CBare(CDevice const& tDevice)
        : m_strUrl("http://127.0.0.1:" + std::to_string(tDevice.Port()) + "/onvif/device_service"),
          m_pHandle(curl_easy_init())
    {
        m_strBody = "<s:Envelope>" + std::string(2550, ' ') +
                    "<s:Body><tds:GetNetworkInterfaces></tds:GetNetworkInterfaces></s:Body></s:Envelope>";
        m_ptHeaders =
            curl_slist_append(nullptr, "Content-Type: application/soap+xml; charset=utf-8; "
                                       "action=\"http://www.onvif.org/ver10/device/wsdl/GetNetworkInterfaces\"");
        curl_easy_setopt(m_pHandle, CURLOPT_URL, m_strUrl.c_str());
        curl_easy_setopt(m_pHandle, CURLOPT_HTTPHEADER, m_ptHeaders);
        curl_easy_setopt(m_pHandle, CURLOPT_POSTFIELDS, m_strBody.c_str());
        curl_easy_setopt(m_pHandle, CURLOPT_WRITEDATA, &m_strAnswer);
        curl_easy_setopt(
            m_pHandle, CURLOPT_WRITEFUNCTION,
            +[](char* pc, std::size_t, std::size_t n, void* pText)
            {
                static_cast<std::string*>(pText)->append(pc, n);
                return n;
            });
    }
    ~CBare()
    {
        curl_easy_cleanup(m_pHandle);
        curl_slist_free_all(m_ptHeaders);
    }
    CBare(CBare const&) = delete;
    CBare& operator=(CBare const&) = delete;

    void Call()
    {
        m_strAnswer.clear();
        if (curl_easy_perform(m_pHandle) != CURLE_OK || m_strAnswer.find("HwAddress") == std::string::npos)
        {
            Fail("bare libcurl had no answer");
        }
    }

private:
    std::string m_strUrl;
    std::string m_strBody;
    std::string m_strAnswer;
    CURL* m_pHandle;
    curl_slist* m_ptHeaders = nullptr;
};

void Mac(int nLogin)
{
    unsigned char aby[6];
    if (ClientAdapter_GetLoginMac(nLogin, aby, sizeof aby) != 0 || aby[5] != 1)
    {
        Fail("no answer");
    }
}

double HeapBytes()
{
    malloc_trim(0);
    const auto t = mallinfo2();
    return static_cast<double>(t.uordblks + t.hblkhd);
}

double ResidentBytes()
{
    long nPages = 0;
    long nResident = 0;
    std::ifstream("/proc/self/statm") >> nPages >> nResident;
    return static_cast<double>(nResident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// So many calls and nothing else, for a tool that counts instructions.
int Count(std::string const& strWhat, int nCalls)
{
    const CDevice tDevice(strWhat == "digest");
    curl_global_init(CURL_GLOBAL_DEFAULT);
    if (strWhat == "bare")
    {
        CBare tCurl(tDevice);
        for (int i = 0; i < nCalls; ++i)
        {
            tCurl.Call();
        }
        return 0;
    }
    ClientAdapter_Start(4);
    const int nLogin = Login(tDevice);
    for (int i = 0; i < nCalls; ++i)
    {
        Mac(nLogin);
    }
    return ClientAdapter_UserLogout(nLogin) + ClientAdapter_Stop();
}

} // namespace

int main(int nArguments, char** pszArguments)
{
    if (nArguments == 4)
    {
        return Count(pszArguments[2], std::atoi(pszArguments[3]));
    }
    constexpr int nRounds = 7;
    constexpr int nCalls = 1000;
    constexpr int nLogins = 200;
    const CDevice tPlain(false);
    const CDevice tDigest(true);
    curl_global_init(CURL_GLOBAL_DEFAULT);
    ClientAdapter_Start(4);

    tagCost tBare;
    tagCost tToken;
    tagCost tBoth;
    tagCost tLoginToken;
    tagCost tLoginBoth;
    {
        CBare tCurl(tPlain);
        const int nPlain = Login(tPlain);
        const int nDigest = Login(tDigest);
        for (int i = 0; i < nRounds; ++i)
        {
            Measure(tBare, nCalls, [&] { tCurl.Call(); });
            Measure(tToken, nCalls, [&] { Mac(nPlain); });
            Measure(tBoth, nCalls, [&] { Mac(nDigest); });
            Measure(tLoginToken, 100, [&] { ClientAdapter_UserLogout(Login(tPlain)); });
            Measure(tLoginBoth, 100, [&] { ClientAdapter_UserLogout(Login(tDigest)); });
        }
        ClientAdapter_UserLogout(nPlain);
        ClientAdapter_UserLogout(nDigest);
    }
    const double dHeap = HeapBytes();
    const double dResident = ResidentBytes();
    std::vector<int> anLogins;
    for (int i = 0; i < nLogins; ++i)
    {
        anLogins.push_back(Login(tPlain));
    }
    const double dHeapEach = (HeapBytes() - dHeap) / nLogins;
    const double dResidentEach = (ResidentBytes() - dResident) / nLogins;
    for (const int nLogin : anLogins)
    {
        ClientAdapter_UserLogout(nLogin);
    }
    ClientAdapter_Stop();

    std::printf("%-44s %8s %8s %10s\n", "", "CPU us", "us", "x bare");
    const auto fnRow = [&](char const* szWhat, tagCost const& t)
    { std::printf("%-44s %8.1f %8.1f %10.2f\n", szWhat, t.dCpuUs, t.dWallUs, t.dCpuUs / tBare.dCpuUs); };
    fnRow("libcurl posts the same", tBare);
    fnRow("a call (UsernameToken)", tToken);
    fnRow("a call (UsernameToken and HTTP digest)", tBoth);
    fnRow("login and logout (UsernameToken)", tLoginToken);
    fnRow("login and logout (and HTTP digest)", tLoginBoth);
    std::printf("memory a login: %.1f KB of heap, %.1f KB resident\n", dHeapEach / 1024, dResidentEach / 1024);
}
