// The simulated device as one that speaks ONVIF:
//
//   onvif_device [--fleet FILE] [--listen ADDRESS] [--port N] [--tls PEM] [--clock SECONDS] [--set NAME=VALUE]...
//                [--discovery] [--seconds N]
//
// Serves every device of a fleet file, or one with the address 192.0.2.1, by SOAP over HTTP and by RTSP. A device
// listens at the port that the file says, or at a free one; prints "onvif_device: port N rtsp M" for each in turn when
// it is ready. Ends when its standard input does, or after --seconds. What comes on standard input are commands, one
// in a line, each answered with "ok" or "error: why" (docs/device-in-a-box.md):
//
//   fault DEVICE KIND [channel=N] [ms=N] [count=N] [value=N] [offset_us=N] [user=NAME]
//   set DEVICE NAME VALUE
//   lose DEVICE
//
// DEVICE is its number from 0, or * for all.

#include "tools/onvif_device/Announcer.h"
#include "tools/onvif_device/Face.h"
#include "tools/onvif_device/RtspSide.h"
#include "tools/onvif_device/Server.h"
#include "tools/onvif_device/Values.h"

#include "plugins/device/Device.h"
#include "plugins/device/Fleet.h"
#include "plugins/device/Text.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <curl/curl.h>
#include <fstream>
#include <getopt.h>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace onvif_device
{
namespace
{
struct tagOptions
{
    std::string strFleet;
    tagServerOptions tServer;
    int64_t llClockSeconds = 0;
    tagQuirks tQuirks;
    bool bDiscovery = false;
    int64_t llSeconds = 3600;
};

std::string ReadFile(std::string const& strPath)
{
    std::ifstream tFile(strPath, std::ios::binary);
    std::ostringstream tText;
    tText << tFile.rdbuf();
    return tFile ? tText.str() : throw std::runtime_error(strPath + " can't be read");
}

void SetOrFail(tagQuirks& tQuirks, std::string const& strName, std::string const& strValue)
{
    if (!SetQuirk(tQuirks, strName, strValue))
    {
        throw std::runtime_error(strName + " can't be " + strValue);
    }
}

int64_t NumberOrFail(std::string const& strText)
{
    int64_t llValue = 0;
    return ParseNumber(strText, llValue) ? llValue : throw std::runtime_error(strText + " is no number");
}

tagOptions ReadOptions(int nArguments, char** aszArguments)
{
    const option atOptions[] = {{"fleet", 1, nullptr, 'f'},     {"listen", 1, nullptr, 'l'},  {"port", 1, nullptr, 'p'},
                                {"tls", 1, nullptr, 't'},       {"clock", 1, nullptr, 'c'},   {"set", 1, nullptr, 's'},
                                {"discovery", 0, nullptr, 'd'}, {"seconds", 1, nullptr, 'n'}, {nullptr, 0, nullptr, 0}};
    tagOptions t;
    for (int nOption = 0; (nOption = getopt_long(nArguments, aszArguments, "", atOptions, nullptr)) != -1;)
    {
        const std::string strValue = optarg ? optarg : "";
        const auto nEqual = strValue.find('=');
        switch (nOption)
        {
        case 'f':
            t.strFleet = strValue;
            break;
        case 'l':
            t.tServer.strListen = strValue;
            break;
        case 'p':
            t.tServer.dwPort = static_cast<uint32_t>(NumberOrFail(strValue));
            break;
        case 't':
            t.tServer.strCertificate = ReadFile(strValue);
            break;
        case 'c':
            t.llClockSeconds = NumberOrFail(strValue);
            break;
        case 's':
            SetOrFail(t.tQuirks, strValue.substr(0, nEqual),
                      nEqual == std::string::npos ? "true" : strValue.substr(nEqual + 1));
            break;
        case 'd':
            t.bDiscovery = true;
            break;
        case 'n':
            t.llSeconds = NumberOrFail(strValue);
            break;
        default:
            throw std::runtime_error("see the begin of main.cpp for the options");
        }
    }
    return t;
}

// Hears of a device's events for its server, and for who announces it.
class CListener final : public device::CSession
{
public:
    CListener(std::shared_ptr<CServer> pServer, std::size_t nIndex)
        : CSession({}), m_pServer(std::move(pServer)), m_nIndex(nIndex)
    {
    }
    void Announce(std::shared_ptr<CAnnouncer const> pAnnouncer) { m_pAnnouncer = std::move(pAnnouncer); }
    void OnEvent(device::tagDeviceEvent const& tEvent) override
    {
        m_pServer->OnEvent(tEvent);
        const auto pAnnouncer = m_pAnnouncer.load();
        if (pAnnouncer && (tEvent.eEvent == eEventLoginLost || tEvent.eEvent == eEventLoginRestored))
        {
            pAnnouncer->SayHello(m_nIndex, tEvent.eEvent == eEventLoginRestored);
        }
    }
    void OnForcedOff() override { m_pServer->OnForcedOff(); }

private:
    std::shared_ptr<CServer> m_pServer;
    std::size_t m_nIndex;
    std::atomic<std::shared_ptr<CAnnouncer const>> m_pAnnouncer;
};

struct tagServed
{
    std::shared_ptr<CFace> pFace;
    std::shared_ptr<CServer> pServer;
    std::shared_ptr<CListener> pListener;
};

tagServed ServeDevice(CFace::Devices const& apDevices, std::size_t nIndex, IRtspSide& tRtsp, tagOptions const& tOptions)
{
    auto const& pDevice = apDevices[nIndex];
    tagQuirks tQuirks = tOptions.tQuirks;
    tagServerOptions tServer = tOptions.tServer;
    {
        const device::CDevice::CLock tLock(*pDevice);
        for (auto const& [strName, strValue] : pDevice->Blueprint().tOnvif)
        {
            SetOrFail(tQuirks, strName, strValue);
        }
        tServer.dwPort = pDevice->Blueprint().dwPort ? pDevice->Blueprint().dwPort : tServer.dwPort;
        pDevice->Clock().Jump(tOptions.llClockSeconds * 1000000);
    }
    tagServed t;
    t.pFace = std::make_shared<CFace>(apDevices, nIndex, tRtsp, tQuirks);
    t.pServer = CServer::Start(t.pFace, tServer);
    t.pListener = std::make_shared<CListener>(t.pServer, nIndex);
    pDevice->Listen(t.pListener);
    pDevice->Tick();
    return t;
}

// --- commands --------------------------------------------------------------------------------------------------------

std::vector<tagServed> Chosen(std::vector<tagServed> const& atServed, std::string const& strDevice)
{
    if (strDevice == "*")
    {
        return atServed;
    }
    const auto llIndex = NumberOrFail(strDevice);
    if (llIndex < 0 || static_cast<std::size_t>(llIndex) >= atServed.size())
    {
        throw std::runtime_error("there is no device " + strDevice);
    }
    return {atServed[static_cast<std::size_t>(llIndex)]};
}

tagDeviceFault ReadFault(std::vector<std::string> const& astrWords)
{
    tagDeviceFault t{};
    t.dwSize = sizeof t;
    t.dwFault = device::FaultByName(astrWords.at(2));
    if (t.dwFault == eFaultNone && astrWords[2] != "none")
    {
        throw std::runtime_error("there is no fault " + astrWords[2]);
    }
    for (std::size_t i = 3; i < astrWords.size(); ++i)
    {
        const std::string strName = astrWords[i].substr(0, astrWords[i].find('='));
        const std::string strValue = astrWords[i].substr(std::min(strName.size() + 1, astrWords[i].size()));
        const auto fnWord = [&] { return static_cast<uint32_t>(NumberOrFail(strValue)); };
        // clang-format off
        if (strName == "channel") { t.dwChannel = fnWord(); }
        else if (strName == "ms") { t.dwMilliseconds = fnWord(); }
        else if (strName == "count") { t.dwCount = fnWord(); }
        else if (strName == "value") { t.dwValue = fnWord(); }
        else if (strName == "offset_us") { t.llOffsetUs = NumberOrFail(strValue); }
        else if (strName == "user") { device::CopyText(t.szUserName, strValue); }
        else { throw std::runtime_error("a fault has no " + strName); }
        // clang-format on
    }
    return t;
}

void Execute(std::vector<tagServed> const& atServed, std::vector<std::string> const& astrWords)
{
    for (tagServed const& t : Chosen(atServed, astrWords.at(1)))
    {
        if (astrWords[0] == "set")
        {
            tagQuirks tQuirks = t.pFace->Quirks();
            std::string strValue = astrWords.size() > 3 ? astrWords[3] : "";
            for (std::size_t i = 4; i < astrWords.size(); ++i)
            {
                strValue += ' ' + astrWords[i];
            }
            SetOrFail(tQuirks, astrWords.at(2), strValue);
            t.pFace->SetQuirks(tQuirks);
        }
        else if (astrWords[0] == "fault")
        {
            const tagDeviceFault tFault = ReadFault(astrWords);
            const device::CDevice::CLock tLock(t.pFace->Device());
            if (const int nResult = t.pFace->Device().Part<device::CFaults>().Set(tFault))
            {
                throw std::runtime_error("refused with " + std::to_string(nResult));
            }
        }
        else if (astrWords[0] == "lose")
        {
            t.pFace->Subscriptions().Clear();
        }
        else
        {
            throw std::runtime_error("there is no command " + astrWords[0]);
        }
        t.pServer->Wake();
    }
}

void ReadCommands(std::vector<tagServed> const& atServed)
{
    for (std::string strLine; std::getline(std::cin, strLine);)
    {
        const auto astrWords = Words(strLine);
        if (astrWords.empty())
        {
            continue;
        }
        try
        {
            Execute(atServed, astrWords);
            std::puts("ok");
        }
        catch (std::out_of_range const&)
        {
            std::puts("error: something is missing");
        }
        catch (std::exception const& tError)
        {
            std::printf("error: %s\n", tError.what());
        }
        std::fflush(stdout);
    }
}

// --- all of it -------------------------------------------------------------------------------------------------------

std::vector<std::shared_ptr<device::CDevice>> ReadFleet(std::string const& strPath)
{
    if (strPath.empty())
    {
        return {device::Fleet().Find("192.0.2.1")};
    }
    device::Fleet().Load(strPath);
    std::vector<std::shared_ptr<device::CDevice>> apDevices;
    for (device::tagDeviceBlueprint const& t : device::ReadFleetFile(strPath).atDevices) // in the file's order
    {
        apDevices.push_back(device::Fleet().Find(t.strAddress, t.dwPort));
    }
    return apDevices;
}

void Run(tagOptions const& tOptions)
{
    device::TimeWorker().Start();
    device::DeliveryWorker().Start();
    const auto apDevices = ReadFleet(tOptions.strFleet);
    const auto pRtsp = StartRtsp(apDevices, {tOptions.tServer.strListen, tOptions.tQuirks.strAuth != "none"});
    std::vector<tagServed> atServed;
    for (std::size_t i = 0; i < apDevices.size(); ++i)
    {
        atServed.push_back(ServeDevice(apDevices, i, *pRtsp, tOptions));
        std::printf("onvif_device: port %u rtsp %u\n", atServed.back().pServer->Port(), pRtsp->Port(i));
    }
    std::shared_ptr<CAnnouncer> pAnnouncer;
    if (tOptions.bDiscovery)
    {
        std::vector<tagAnnounced> atAnnounced;
        for (tagServed const& t : atServed)
        {
            atAnnounced.push_back({t.pFace, t.pServer->Port(), !tOptions.tServer.strCertificate.empty()});
        }
        pAnnouncer = std::make_shared<CAnnouncer>(std::move(atAnnounced), tOptions.tServer.strListen);
        for (tagServed const& t : atServed)
        {
            t.pListener->Announce(pAnnouncer);
        }
    }
    std::fflush(stdout);
    // Whichever comes first: the end of the time, which ends the process, or that of the input.
    std::thread(
        [llSeconds = tOptions.llSeconds]
        {
            std::this_thread::sleep_for(std::chrono::seconds(llSeconds));
            std::_Exit(0);
        })
        .detach();
    ReadCommands(atServed);
    for (tagServed const& t : atServed)
    {
        t.pListener->Announce(nullptr);
    }
    pAnnouncer.reset();
    for (tagServed const& t : atServed)
    {
        t.pServer->Stop();
    }
    device::TimeWorker().Stop();
    device::DeliveryWorker().Stop();
}
} // namespace
} // namespace onvif_device

int main(int nArguments, char** aszArguments)
{
    std::signal(SIGPIPE, SIG_IGN);
    curl_global_init(CURL_GLOBAL_DEFAULT);
    try
    {
        onvif_device::Run(onvif_device::ReadOptions(nArguments, aszArguments));
    }
    catch (std::exception const& tError)
    {
        std::fprintf(stderr, "onvif_device: %s\n", tError.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
