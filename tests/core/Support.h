#pragma once

#include "adapter/ClientAdapter.h"
#include "adapter/Globals.h"
#include "protocol/Operation.h"
#include "tests/recorder/Journal.h"

#include <cstdint>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <tuple>
#include <type_traits>
#include <unistd.h>
#include <utility>
#include <vector>

using Adapter_ApplicationLayer::Client;
using Adapter_ApplicationLayer::CSetCallBack;
using Adapter_ApplicationLayer::tagResource;
using Adapter_ProtocolSet::CClientProtocolBase;
using Adapter_ProtocolSet::CClientProtocolSet;
using Strings = std::vector<std::string>;

/// What the process writes to standard output while this object lives.
class CCapture
{
public:
    CCapture() : m_nFile(fileno(std::tmpfile())), m_nStdout(dup(STDOUT_FILENO))
    {
        std::fflush(stdout);
        dup2(m_nFile, STDOUT_FILENO);
    }
    ~CCapture()
    {
        Text();
        dup2(m_nStdout, STDOUT_FILENO);
        if (testing::Test::HasFailure()) // the failures' own messages were captured too
        {
            std::fputs(m_strAll.c_str(), stdout);
        }
        close(m_nStdout);
        close(m_nFile);
    }
    CCapture(CCapture const&) = delete;
    CCapture& operator=(CCapture const&) = delete;

    /// Everything since the last call.
    std::string Text()
    {
        std::fflush(stdout);
        const auto nSize = lseek(m_nFile, 0, SEEK_END);
        std::string strText(static_cast<std::size_t>(nSize), '\0');
        EXPECT_EQ(pread(m_nFile, strText.data(), strText.size(), 0), nSize);
        EXPECT_EQ(ftruncate(m_nFile, 0), 0);
        lseek(m_nFile, 0, SEEK_SET);
        m_strAll += strText;
        // A failure's own message, and whatever quotes it, stays in bounds.
        return testing::Test::HasFailure() ? strText.substr(0, 2000) : strText;
    }

private:
    int m_nFile;
    int m_nStdout;
    std::string m_strAll;
};

/// "[Tessaro] File.cpp Function 12 Failed.\n"
inline std::string Line(std::string const& strSource, std::string const& strFunction, int nLine,
                        std::string const& strText = "Failed")
{
    return "[Tessaro] " + strSource + ".cpp " + strFunction + " " + std::to_string(nLine) + " " + strText + ".\n";
}

inline CJournal& Journal()
{
    return CJournal::Instance();
}

/// The rows of a golden file, as a stream of words.
inline std::istringstream Golden(char const* szName)
{
    std::stringstream tText;
    tText << std::ifstream(std::string(TESSARO_GOLDEN) + "/" + szName).rdbuf();
    EXPECT_FALSE(tText.str().empty()) << szName;
    return std::istringstream(tText.str());
}

/// One protocol with its recorder plug-in.
struct tagProtocol
{
    eProtocolType eType;
    char const* szLibrary;
    char const* szPrefix;
    char chLookUp; ///< in the golden file
    char const* szName;
    int nCreateLine;
    int nOpenedLine; ///< 0: none

    std::string Path() const { return std::string(TESSARO_RECORDERS) + "/" + szLibrary; }
    std::string Source() const { return std::string("CProtocol") + szName; }
    std::string CreateText() const
    {
        return Line("CProtocolSet", "InsertProtocol", nCreateLine, "Create " + Source() + "\n");
    }
    /// What an insertion writes whose plug-in opens.
    std::string InsertText() const
    {
        return CreateText() +
               (nOpenedLine ? Line(Source(), "Intialize", nOpenedLine, std::string("CProtocolSet") + szName + " OPEN")
                            : "");
    }
    /// The entry points, in the order of look-up.
    Strings LookUp() const
    {
        Strings astrNames;
        std::istringstream tRows = Golden("lookup.txt");
        for (std::string strWhose, strName; tRows >> strWhose >> strName;)
        {
            if (strWhose.find(chLookUp) != std::string::npos)
            {
                astrNames.push_back(strName.find('_') == std::string::npos ? szPrefix + strName : strName);
            }
        }
        return astrNames;
    }
};
inline constexpr tagProtocol g_atProtocols[] = {
    {eProtocolPrivate, "libvornclient.so", "VornClient_", 'P', "Private", 51, 0},
    {eProtocolOnvif, "libonvifclient.so", "OnvifClient_", 'O', "Onvif", 44, 156},
    {eProtocolRTSP, "librtspclient.so", "RTSPClient_", 'R', "RTSP", 58, 51},
    {eProtocolVTQ, "libVTQ.so", "VTQClient_", 'V', "VTQ", 65, 159},
};

/// While it lives, a recorder plug-in lacks some of its entry points: their names are spoilt where the loader, which
/// keeps the plug-in open from here on, looks them up.
class CReducedPlugin
{
public:
    CReducedPlugin(tagProtocol const& tProtocol, Strings const& astrMissing)
    {
        void* const pPlugin = dlopen(tProtocol.Path().c_str(), RTLD_LAZY);
        const auto uPage = static_cast<std::uintptr_t>(getpagesize());
        for (std::string const& strName : astrMissing)
        {
            Dl_info tEntry{};
            dladdr(dlsym(pPlugin, strName.c_str()), &tEntry);
            EXPECT_EQ(tEntry.dli_sname, strName);
            const auto uName = reinterpret_cast<std::uintptr_t>(tEntry.dli_sname);
            mprotect(reinterpret_cast<void*>(uName - uName % uPage), uPage, PROT_READ | PROT_WRITE | PROT_EXEC);
            m_apchSpoilt.push_back(reinterpret_cast<char*>(uName));
            m_chSpoilt = std::exchange(*m_apchSpoilt.back(), '-');
        }
    }
    ~CReducedPlugin()
    {
        for (char* pchName : m_apchSpoilt)
        {
            *pchName = m_chSpoilt;
        }
    }
    CReducedPlugin(CReducedPlugin const&) = delete;
    CReducedPlugin& operator=(CReducedPlugin const&) = delete;

private:
    std::vector<char*> m_apchSpoilt;
    char m_chSpoilt = '-'; ///< the first letter of all names
};

/// An argument of any type, different for each position; nothing of ours looks behind the pointers.
template <class T>
T Argument(std::size_t i)
{
    if constexpr (std::is_same_v<T, tagConfigInformation*> || std::is_same_v<T, tagConfigInformationV2*> ||
                  std::is_same_v<T, tagUserLoginPara*>) // the records that the library may look into
    {
        static std::remove_pointer_t<T> g_tRecord{};
        return &g_tRecord;
    }
    else
    {
        return (T)(0x101 * (i + 1));
    }
}

/// Which arguments of a call are to differ from Argument<T>, by position; their bits are taken as they are.
using Overrides = std::map<std::size_t, std::uintptr_t>;

/// Calls fnCall with arguments of its own types, A..., and tells them as numbers in auArguments.
template <class... A, class F>
int CallWithArguments(F fnCall, Overrides const& tOverrides, std::vector<std::uintptr_t>& auArguments)
{
    return [&]<std::size_t... i>(std::index_sequence<i...>)
    {
        std::tuple<A...> tArguments{Argument<A>(i)...};
        for (auto const& [iArgument, uValue] : tOverrides)
        {
            ((i == iArgument ? (void)(std::get<i>(tArguments) = (A)uValue) : (void)0), ...);
        }
        auArguments = {(std::uintptr_t)std::get<i>(tArguments)...};
        return fnCall(std::get<i>(tArguments)...);
    }
    (std::index_sequence_for<A...>{});
}

/// A started service with the recorders, a VTQ login and a live stream.
class CSession : public testing::Test
{
protected:
    CSession()
    {
        ClientAdapter_Start(16);
        Login();
        Open();
        m_tCapture.Text();
    }
    ~CSession() override
    {
        Journal().Reset();
        ClientAdapter_RealStreamDisconnect(m_nMedia);
        ClientAdapter_UserLogout(m_nLogin);
        ClientAdapter_Stop();
    }

    void Login()
    {
        Journal().Reset();
        EXPECT_EQ(ClientAdapter_UserLogin(&m_nLogin, eProtocolVTQ, &m_tLogin), 0);
        m_uLogin = Journal().LastHandle();
        Journal().Take();
    }
    void Open()
    {
        Journal().Reset();
        EXPECT_EQ(ClientAdapter_RealStreamConnect(&m_nMedia, m_nLogin, &m_tStream), 0);
        m_uMedia = Journal().LastHandle();
        Journal().Take();
    }

    /// The trampoline that the last registration handed to the plug-in.
    template <class Function>
    Function Trampoline()
    {
        const auto auArguments = Journal().Take().back().auArguments;
        return reinterpret_cast<Function>(auArguments.at(auArguments.size() - 2));
    }

    CCapture m_tCapture;
    tagUserLoginPara m_tLogin{};
    tagRealStreamPara m_tStream{};
    int m_nLogin = -1;
    int m_nMedia = -1;
    std::uintptr_t m_uLogin = 0; ///< the plug-in's handles
    std::uintptr_t m_uMedia = 0;
};
