#pragma once

#include "tests/device/Device.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

/// The simulated device as a process of its own, tools/onvif_device (in the environment's DEVICE), as long as this
/// lives. A log and what it says of itself go to standard error.
class CTool
{
public:
    explicit CTool(std::vector<std::string> astrOptions = {}, std::size_t nDevices = 1)
    {
        astrOptions.insert(astrOptions.begin(), getenv("DEVICE"));
        std::vector<char*> aszWords;
        for (std::string& str : astrOptions)
        {
            aszWords.push_back(str.data());
        }
        aszWords.push_back(nullptr);
        int anIn[2];
        int anOut[2];
        posix_spawn_file_actions_t tFiles;
        EXPECT_TRUE(pipe2(anIn, O_CLOEXEC) == 0 && pipe2(anOut, O_CLOEXEC) == 0);
        posix_spawn_file_actions_init(&tFiles);
        posix_spawn_file_actions_adddup2(&tFiles, anIn[0], 0);
        posix_spawn_file_actions_adddup2(&tFiles, anOut[1], 1);
        EXPECT_EQ(posix_spawn(&m_nProcess, aszWords[0], &tFiles, nullptr, aszWords.data(), environ), 0);
        posix_spawn_file_actions_destroy(&tFiles);
        close(anIn[0]);
        close(anOut[1]);
        m_pIn = fdopen(anIn[1], "w");
        m_pOut = fdopen(anOut[0], "r");
        for (m_auPorts.resize(nDevices); unsigned& uPort : m_auPorts)
        {
            EXPECT_EQ(std::sscanf(ReadLine().c_str(), "onvif_device: port %u rtsp %u", &uPort, &m_uRtsp), 2);
        }
    }
    ~CTool()
    {
        fclose(m_pIn);
        EXPECT_EQ(waitpid(m_nProcess, &m_nStatus, 0), m_nProcess);
        EXPECT_EQ(m_nStatus, 0);
        fclose(m_pOut);
    }
    CTool(CTool const&) = delete;
    CTool& operator=(CTool const&) = delete;

    unsigned Port(std::size_t nDevice = 0) const { return m_auPorts.at(nDevice); }
    /// Where the last device's RTSP server listens.
    unsigned Rtsp() const { return m_uRtsp; }
    /// A command of its own; "fault 0 motion channel=1".
    void Tell(std::string const& strCommand)
    {
        std::fputs((strCommand + '\n').c_str(), m_pIn);
        std::fflush(m_pIn);
        EXPECT_EQ(ReadLine(), "ok\n") << strCommand;
    }

private:
    std::string ReadLine()
    {
        char szLine[1024] = "";
        return fgets(szLine, sizeof szLine, m_pOut) ? szLine : "";
    }

    pid_t m_nProcess = -1;
    int m_nStatus = -1;
    FILE* m_pIn = nullptr;
    FILE* m_pOut = nullptr;
    unsigned m_uRtsp = 0;
    std::vector<unsigned> m_auPorts;
};

/// The library with ONVIF devices on this machine, and a login to one of them.
class COnvifTest : public testing::Test
{
protected:
    COnvifTest() { API(Start)(64); }
    ~COnvifTest() override
    {
        if (m_nLogin != -1)
        {
            WORKS(UserLogout, m_nLogin);
        }
        API(Stop)();
    }
    int Login(int& nLogin, unsigned uPort, char const* szUser = "admin", char const* szPassword = "admin",
              char const* szAddress = "127.0.0.1")
    {
        tagUserLoginPara tPara{};
        strcpy(tPara.szAddress, szAddress);
        tPara.dwPort = uPort;
        strcpy(tPara.szUserName, szUser);
        strcpy(tPara.szPassword, szPassword);
        tPara.dwTimeoutMs = 20000;
        return API(UserLogin)(&nLogin, eProtocolOnvif, &tPara);
    }
    /// A device with these options, and a login to it.
    CTool& Device(std::vector<std::string> astrOptions = {})
    {
        m_pTool = std::make_unique<CTool>(std::move(astrOptions));
        EXPECT_EQ(Login(m_nLogin, m_pTool->Port()), 0);
        return *m_pTool;
    }
    template <class Record>
    int TryRead(eConfigType eType, Record& tRecord, uint32_t dwIndex = 0, uint32_t dwStream = 0)
    {
        const auto ptBlock = std::make_unique<tagConfigInformation>();
        ptBlock->type = static_cast<uint32_t>(eType);
        ptBlock->index = dwIndex;
        ptBlock->extra[1] = dwStream;
        const int nResult = API(GetConfig)(m_nLogin, ptBlock.get());
        std::memcpy(&tRecord, ptBlock->data, sizeof tRecord);
        return nResult;
    }
    template <class Record>
    Record Read(eConfigType eType, uint32_t dwIndex = 0, uint32_t dwStream = 0)
    {
        Record tRecord{};
        EXPECT_EQ(TryRead(eType, tRecord, dwIndex, dwStream), 0) << eType;
        return tRecord;
    }
    template <class Record>
    int Write(eConfigType eType, Record const& tRecord, uint32_t dwIndex = 0, uint32_t dwStream = 0)
    {
        const auto ptBlock = std::make_unique<tagConfigInformation>();
        ptBlock->type = static_cast<uint32_t>(eType);
        ptBlock->index = dwIndex;
        ptBlock->extra[1] = dwStream;
        std::memcpy(ptBlock->data, &tRecord, sizeof tRecord);
        return API(SetConfig)(m_nLogin, ptBlock.get());
    }
    /// Uploads a file; what it came to.
    uint32_t SendFile(uint32_t dwKind, std::string strFile)
    {
        CInbox<tagFileUploadState> tStates;
        auto tPara = Sized<tagFileUploadPara>();
        tPara.dwKind = dwKind;
        tPara.ullLength = strFile.size();
        tPara.pbyData = reinterpret_cast<unsigned char*>(strFile.data());
        int nUpload = -1;
        WORKS(FileUploadConnect, &nUpload, m_nLogin, &tPara);
        WORKS(
            FileUploadCB, nUpload,
            [](void*, tagFileUploadState tState, unsigned long dwUser)
            { return Target<CInbox<tagFileUploadState>>(dwUser).Put(tState), 0; },
            User(tStates));
        WORKS(FileUploadControl, nUpload, eTransferStart);
        const auto tEnd = tStates.Await([](auto const& t) { return t.dwState != eUploadRunning; });
        WORKS(FileUploadDisconnect, nUpload);
        return tEnd.dwState;
    }
    int Open(int& nMedia, uint32_t dwChannel = 0, uint32_t dwStreamKind = eStreamMain)
    {
        tagRealStreamPara tPara{dwChannel, 0, dwStreamKind, {}};
        return API(RealStreamConnect)(&nMedia, m_nLogin, &tPara);
    }
    void Subscribe() { WORKS(SubscribeEvent, m_nLogin, 0, OnEvent, User(m_tEvents)); }

    Events m_tEvents; // of m_nLogin, until it is logged out
    Frames m_tFrames;
    std::unique_ptr<CTool> m_pTool;
    int m_nLogin = -1;
};
